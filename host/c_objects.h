// What the C interface's opaque handles stand for.
#pragma once

#include "engine/cVeltara.h"
#include "host/veltara.h"
#include "support/cMemoryDCEx.h"

/// One engine: the main atom class with its collection.
struct vt_engine {
    veltara::cVeltara engine;
};

/// One public pixel surface.
struct vt_memdc {
    veltara::cMemoryDCEx surface;
};
