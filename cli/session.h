// One command's engine, catalogue and the steps every orbital subcommand shares.
#pragma once

#include <string>

#include "cli_common.h"
#include "png_writer.h"
#include "request_options.h"
#include "safe_file.h"

namespace vtcli {

using vtjson::Blit;
using vtjson::FromBgra;
using vtjson::RgbImage;

struct Session {
    Engine engine;
    Catalogue catalogue;
};

/// Creates the engine and reads the catalogue. kExitOk or kExitEngine with a message.
int OpenSession(Session& session);

/// The catalogue index of an orbital argument. kExitOk or kExitUsage with a message.
int ResolveArgument(const Session& session, const std::string& text, int& index);

/// Renders one picture of the orbital in `slot` and reads it back from its surface.
int RenderPicture(Session& session, int16_t slot, const vt_RenderRequest& request,
                  const std::string& what, RgbImage& picture);

/// Produces a PNG into `files` (replaced by CommitFiles); kExitOk or kExitEngine with a message
/// naming the file.
int AddPngFile(OutputFiles& files, const std::string& path, const RgbImage& picture);

/// Replaces every output of `files` with what was produced; kExitOk or kExitEngine with a
/// message naming the file that could not be written.
int CommitFiles(OutputFiles& files);

/// The message of a failed write: "cannot write PATH: PROBLEM"; kExitEngine.
int WriteError(const WriteOutcome& outcome);

}  // namespace vtcli
