// Conversions between the C interface's records and the engine's: same fields, order and widths,
// so a record crosses by a byte copy (the layouts are checked field by field in c_records.cpp).
#pragma once

#include <bit>

#include "host/veltara.h"
#include "records/PublicTypes.h"

namespace veltara::host {

inline RenderRequest ToEngine(const vt_RenderRequest& r) { return std::bit_cast<RenderRequest>(r); }
inline vt_RenderRequest ToC(const RenderRequest& r) { return std::bit_cast<vt_RenderRequest>(r); }
inline OrbitalSetup ToEngine(const vt_OrbitalSetup& s) { return std::bit_cast<OrbitalSetup>(s); }
inline vt_OrbitalSetup ToC(const OrbitalSetup& s) { return std::bit_cast<vt_OrbitalSetup>(s); }
inline vt_RenderDCinfo ToC(const RenderDCinfo& d) { return std::bit_cast<vt_RenderDCinfo>(d); }
inline vt_OrbitalStats ToC(const OrbitalStats& s) { return std::bit_cast<vt_OrbitalStats>(s); }
inline vt_PointArray ToC(const PointArray& p) { return std::bit_cast<vt_PointArray>(p); }

/// The catalogue entry with its name as static UTF-8 (interned for the life of the process).
vt_OrbInfo ToC(const OrbInfo& info);

}  // namespace veltara::host
