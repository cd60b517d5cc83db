// The files the server hands out as they are (the viewer's page), built into the program from a
// table that CMake generates: path, content type and bytes.
#pragma once

#include <cstddef>

namespace vtserve {

struct StaticAsset {
    const char* path;         ///< URL path, e.g. "/viewer.js" ("/" for index.html)
    const char* contentType;  ///< MIME type, with a charset for text
    const unsigned char* data;
    size_t size;
};

extern const StaticAsset kStaticAssets[];
extern const size_t kStaticAssetCount;

}  // namespace vtserve
