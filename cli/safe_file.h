// Files the command writes: complete or not at all, never at the cost of what was at the path.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "png_writer.h"

namespace vtcli {

/// What became of a write: `ok`, or `problem` says why not (from the system's error, e.g.
/// "File too large"); `problem` is empty when the producer itself gave up. `path` names the
/// output that failed.
struct WriteOutcome {
    bool ok = false;
    std::string problem;
    std::string path;
};

/// The outputs of one command, replaced together: nothing is replaced unless every one was
/// produced. Each output is written with a producer, which writes the whole content to the
/// stream it is handed and returns false to give up. A regular file (or a symlink to one, whose
/// target is written) is produced into a temporary file in the same folder and renamed over the
/// target by Commit; a set that is never committed removes its temporary files, leaving every
/// path as it was. A target that is not a regular file (a device such as /dev/full, a pipe) and
/// "-" (standard output) cannot wait: they are written at once, in place, and never removed.
class OutputFiles {
  public:
    OutputFiles() = default;
    ~OutputFiles();
    OutputFiles(const OutputFiles&) = delete;
    OutputFiles& operator=(const OutputFiles&) = delete;

    /// Produces the output at `path`; nothing is replaced yet.
    WriteOutcome Add(const std::string& path, const std::function<bool(std::FILE*)>& produce);

    /// Renames every temporary file over its target, in the order they were added. The renames
    /// stay within each folder, the last step after every output is complete on disk.
    WriteOutcome Commit();

  private:
    WriteOutcome Stage(const std::string& path, const std::function<bool(std::FILE*)>& produce);

    struct Pending {
        std::string temp;
        std::string target;
        std::string path;
    };
    std::vector<Pending> mPending;
};

/// One output on its own: OutputFiles::Add then Commit.
WriteOutcome WriteFileSafely(const std::string& path,
                             const std::function<bool(std::FILE*)>& produce);

/// Whether two output paths name one file: the same file on disk (through links too), the same
/// path once made absolute, or both "-".
bool SameOutput(const std::string& a, const std::string& b);

/// Produces the picture as a PNG file into `files` (see OutputFiles::Add).
WriteOutcome AddPng(OutputFiles& files, const std::string& path, const vtjson::RgbImage& image);

/// Flushes standard output and reports whether everything written to it arrived; prints
/// "veltara: cannot write standard output: REASON" when not. Returns `rc`, or 1 on a failure.
int FinishStandardOutput(int rc);

}  // namespace vtcli
