// The viewer page's files, built into the command (generated from web/ at build time).
#pragma once

#include <cstddef>

namespace vtcli {

struct WebAsset {
    const char* path;         ///< URL path, e.g. "/viewer.js"
    const char* contentType;  ///< MIME type with charset
    const unsigned char* data;
    size_t size;
};

extern const WebAsset kWebAssets[];
extern const size_t kWebAssetCount;

}  // namespace vtcli
