// The C interface of the main atom class and its orbital collection.
#include <algorithm>
#include <new>
#include <string>

#include "electron/catalogue.h"
#include "engine/cOrbitalCol.h"
#include "host/c_guard.h"
#include "host/c_objects.h"
#include "host/c_records.h"
#include "support/error.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;
using veltara::host::kNullObject;
using veltara::host::ToC;
using veltara::host::ToEngine;

// The C header states the catalogue's size as a literal for C callers; it follows the table.
static_assert(VT_CATALOGUE_SIZE == veltara::kCatalogueSize);

namespace {

/// The untyped index as the collection takes it; an unknown kind is a value that does not
/// convert (13), like a string that is not a number.
veltara::OrbitalIndexValue ToIndexValue(const vt_Variant& v) {
    switch (v.kind) {
        case VT_VARIANT_INT16:
            return v.value.i16;
        case VT_VARIANT_INT32:
            return v.value.i32;
        case VT_VARIANT_DOUBLE:
            return v.value.f64;
        case VT_VARIANT_STRING:
            return std::string(v.value.str);
        default:
            veltara::Raise(veltara::kErrTypeMismatch);
    }
}

}  // namespace

extern "C" {

int32_t vt_engine_new(vt_engine** out) {
    if (out == nullptr) return kNullArgument;
    *out = nullptr;
    return Guard([&] { *out = new vt_engine; });
}

void vt_engine_free(vt_engine* e) { delete e; }

int32_t vt_create(vt_engine** out) { return vt_engine_new(out); }

void vt_destroy(vt_engine* e) { vt_engine_free(e); }

int32_t vt_enum_orbitals_into(vt_engine* e, vt_OrbInfo* out, int32_t capacity, int32_t* count) {
    if (e == nullptr) return kNullObject;
    if (count == nullptr || (out == nullptr && capacity != 0)) return kNullArgument;
    return Guard([&]() -> int32_t {
        const std::vector<veltara::OrbInfo> list = e->engine.EnumOrbitals();
        *count = static_cast<int32_t>(list.size());
        if (out == nullptr) return VT_OK;
        if (capacity < 0 || static_cast<size_t>(capacity) < list.size()) return VT_ERR_SUBSCRIPT;
        std::transform(list.begin(), list.end(), out,
                       [](const veltara::OrbInfo& info) { return ToC(info); });
        return VT_OK;
    });
}

int32_t vt_enum_orbitals(vt_engine* e, vt_OrbInfo out[VT_CATALOGUE_SIZE]) {
    int32_t count = 0;
    if (e != nullptr && out == nullptr) return kNullArgument;
    return vt_enum_orbitals_into(e, out, VT_CATALOGUE_SIZE, &count);
}

int16_t vt_highest_n(vt_engine* e) {
    // A constant of the catalogue: the same answer with or without an engine.
    return e != nullptr ? e->engine.HighestN() : veltara::cVeltara().HighestN();
}

int32_t vt_add(vt_engine* e, const vt_OrbitalSetup* setup, int16_t* index) {
    if (e == nullptr) return kNullObject;
    if (setup == nullptr || index == nullptr) return kNullArgument;
    return Guard([&] { *index = e->engine.Orbitals()->Add(ToEngine(*setup)); });
}

int32_t vt_delete(vt_engine* e, int16_t index) {
    if (e == nullptr) return kNullObject;
    return Guard([&] { e->engine.Orbitals()->Delete(index); });
}

int32_t vt_render_request_init(vt_RenderRequest* req) {
    if (req == nullptr) return kNullArgument;
    *req = ToC(veltara::DefaultRenderRequest());
    return VT_OK;
}

int32_t vt_get_render(vt_engine* e, int16_t index, const vt_RenderRequest* req,
                      vt_RenderDCinfo* out) {
    if (e == nullptr) return kNullObject;
    if (req == nullptr || out == nullptr) return kNullArgument;
    return Guard([&] { *out = ToC(e->engine.Orbitals()->GetRender(index, ToEngine(*req))); });
}

int32_t vt_refill_dot_matrix(vt_engine* e, const vt_Variant* index, uint8_t threshold,
                             int32_t target, int32_t* result) {
    if (e == nullptr) return kNullObject;
    if (index == nullptr || result == nullptr) return kNullArgument;
    if (index->kind == VT_VARIANT_STRING && index->value.str == nullptr) return kNullArgument;
    return Guard([&] {
        *result = e->engine.Orbitals()->ReFillDotMatrix(ToIndexValue(*index), threshold, target);
    });
}

int32_t vt_get_stats(vt_engine* e, int16_t index, vt_OrbitalStats* out) {
    if (e == nullptr) return kNullObject;
    if (out == nullptr) return kNullArgument;
    return Guard([&] { *out = ToC(e->engine.Orbitals()->GetStats(index)); });
}

int32_t vt_about(vt_engine* e) {
    if (e == nullptr) return kNullObject;
    return Guard([&] { e->engine.About(); });
}

}  // extern "C"
