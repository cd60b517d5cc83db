// Files the command writes: complete or not at all, never at the cost of what was at the path.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "png_writer.h"

namespace vtcli {

/// What became of a write: `ok`, or `problem` says why not (from the system's error, e.g.
/// "File too large"); `problem` is empty when the producer itself gave up.
struct WriteOutcome {
    bool ok = false;
    std::string problem;
};

/// Writes the file at `path` with `produce`, which writes the whole content to the stream it is
/// handed and returns false to give up. A regular file (or a symlink to one, whose target is
/// written) is written to a temporary file in the same folder and renamed over the target only
/// when complete; on any failure the temporary file is removed and the path is as it was. A
/// target that is not a regular file (a device such as /dev/full, a pipe) is written in place
/// and never removed. "-" is standard output.
WriteOutcome WriteFileSafely(const std::string& path,
                             const std::function<bool(std::FILE*)>& produce);

/// Writes the picture as a PNG file, safely (see WriteFileSafely); an empty string on success,
/// else the reason.
std::string WritePng(const std::string& path, const vtjson::RgbImage& image);

/// Flushes standard output and reports whether everything written to it arrived; prints
/// "veltara: cannot write standard output: REASON" when not. Returns `rc`, or 1 on a failure.
int FinishStandardOutput(int rc);

}  // namespace vtcli
