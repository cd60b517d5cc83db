// Call sequences on the C interface: each input is read as up to 32 calls of veltara.h, with
// their arguments, on one engine and one pixel surface. Every call must return one of its
// documented numbers, and nothing may crash, leak or read out of bounds.
//
// A full add samples 128^3 grid points and a refill draws for each of them (tenths of a second
// under the sanitizers), so the engine and surface live across inputs as a host's do, holding
// orbitals added once at the start. Only every 1024th sequence may change the collection (add
// an orbital or delete a live one, once) and only every 32nd may make one costly call (a refill
// or a small volume), which keeps a run at hundreds of sequences a second whatever the inputs
// hold. The first input of a run may do both, so a report usually reproduces from its input
// alone; when it does not, it depends on an earlier change of the collection or dots.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "veltara.h"

namespace {

int32_t gClockMs = 100000;
int32_t ReadClock(void*) { return gClockMs; }

/// The engine and surface shared by every input, and what the harness knows of the collection.
struct Host {
    vt_engine* engine = nullptr;
    vt_memdc* surface = nullptr;
    int32_t live = 0;
    uint64_t inputs = 0;
};

/// Stops the run when a call returns a number outside its documented list.
void Expect(bool documented, const char* call, int32_t rc) {
    if (documented) return;
    std::fprintf(stderr, "%s returned %d, not one of its documented numbers\n", call, rc);
    std::abort();
}

bool OneOf(int32_t rc, std::initializer_list<int32_t> numbers) {
    for (int32_t n : numbers) {
        if (rc == n) return true;
    }
    return false;
}

/// A single orbital in each view and an averaged shell; the second is deleted again, leaving an
/// empty slot between live ones.
constexpr vt_OrbitalSetup kSetups[] = {
    {6, 300, 20, 0, 3, VT_PDF}, {8, 200, 10, 0, 35, VT_DRPDF}, {12, 100, 30, 0, 25, VT_PDF}};

Host& TheHost() {
    static Host host = [] {
        Host h;
        vt_set_clock(ReadClock, nullptr);
        if (vt_engine_new(&h.engine) != VT_OK || vt_memdc_new(&h.surface) != VT_OK) std::abort();
        for (const vt_OrbitalSetup& s : kSetups) {
            int16_t slot = 0;
            if (vt_add(h.engine, &s, &slot) == VT_OK) ++h.live;
        }
        vt_delete(h.engine, 1);
        --h.live;
        return h;
    }();
    // A sequence that deleted every orbital leaves the next one the first orbital back.
    if (host.live == 0) {
        gClockMs = 100000;
        int16_t slot = 0;
        if (vt_add(host.engine, &kSetups[0], &slot) == VT_OK) ++host.live;
    }
    return host;
}

/// A slot: mostly one of the first few, sometimes any 16-bit value.
int16_t Slot(FuzzedDataProvider& in) {
    return in.ConsumeBool() ? in.ConsumeIntegralInRange<int16_t>(-1, 5)
                            : in.ConsumeIntegral<int16_t>();
}

/// A count for a buffer the harness allocates: mostly small, sometimes beyond the need.
int32_t Count(FuzzedDataProvider& in, int32_t need) {
    switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0:
            return need;
        case 1:
            return need - 1;
        case 2:
            return in.ConsumeIntegralInRange<int32_t>(-2, 64);
        default:
            return in.ConsumeIntegralInRange<int32_t>(0, need + 64);
    }
}

static_assert(sizeof(vt_RenderRequest) == 48, "a request is read from up to 48 raw bytes");

vt_RenderRequest Request(FuzzedDataProvider& in) {
    vt_RenderRequest q{};
    vt_render_request_init(&q);
    // Raw bytes over the defaults, then the fields that reach deep pulled to meaningful values.
    const std::vector<uint8_t> raw = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange(0, 48));
    if (!raw.empty()) std::memcpy(&q, raw.data(), raw.size());
    if (in.ConsumeBool()) {
        q.Mode = in.ConsumeIntegralInRange(0, 5);
        q.Size = in.ConsumeBool() ? VT_NANO : VT_MAIN;
        q.VolQuality = in.ConsumeIntegralInRange<int16_t>(-1, 11);
        q.TransectDir = in.ConsumeIntegralInRange(-1, 3);
        q.TransectNo = in.ConsumeIntegralInRange<int16_t>(-130, 130);
    }
    return q;
}

/// Renders through one of the two ways out of the engine. A volume costs a thousand dot frames:
/// a costly call, and small.
void Render(Host& h, FuzzedDataProvider& in, bool& costlyDone) {
    const int16_t slot = Slot(in);
    vt_RenderRequest q = Request(in);
    if (q.Mode == VT_VOLUMETRIC) {
        if (costlyDone) q.Mode = VT_ORTHOGRAPHIC;
        q.Size = VT_NANO;
        costlyDone = true;
    }
    if (in.ConsumeBool()) {
        const int32_t edge = VT_PICTURE_EDGE(q.Size);
        const size_t need = static_cast<size_t>(edge) * static_cast<size_t>(edge) * 4;
        const size_t capacity =
            in.ConsumeBool() ? need : in.ConsumeIntegralInRange<size_t>(0, need);
        std::vector<uint8_t> bgra(capacity);
        int32_t width = 0, height = 0;
        const int32_t rc =
            vt_render_to_buffer(h.engine, slot, &q, bgra.data(), capacity, &width, &height);
        Expect(OneOf(rc, {0, 5, 6, 7, 9, 11, 91}), "vt_render_to_buffer", rc);
        return;
    }
    vt_RenderDCinfo dc{};
    const int32_t rc = vt_get_render(h.engine, slot, &q, in.ConsumeBool() ? &dc : nullptr);
    Expect(OneOf(rc, {0, 5, 6, 7, 9, 11, 91}), "vt_get_render", rc);
    const int32_t handle = in.ConsumeBool() ? (in.ConsumeBool() ? dc.MainHDC : dc.NanoHDC)
                                            : in.ConsumeIntegral<int32_t>();
    int32_t width = 0, height = 0;
    const int32_t info = vt_surface_info(handle, &width, &height);
    Expect(OneOf(info, {0, 9}), "vt_surface_info", info);
    const size_t need = info == VT_OK ? static_cast<size_t>(width) * height * 4 : 64;
    std::vector<uint8_t> bgra(need);
    const int32_t read =
        vt_surface_read(handle, bgra.data(), in.ConsumeIntegralInRange<size_t>(0, need));
    Expect(OneOf(read, {0, 9}), "vt_surface_read", read);
}

/// The orbital's index in one of its four untyped forms, or an unknown kind. A refill scans the
/// whole grid, drawing for every point above the threshold: a costly call.
void Refill(Host& h, FuzzedDataProvider& in, bool& costlyDone) {
    vt_Variant index{};
    index.kind = in.ConsumeIntegralInRange<int32_t>(0, 4);
    std::string text;
    switch (index.kind) {
        case VT_VARIANT_INT16:
            index.value.i16 = Slot(in);
            break;
        case VT_VARIANT_INT32:
            index.value.i32 = in.ConsumeIntegral<int32_t>();
            break;
        case VT_VARIANT_DOUBLE:
            index.value.f64 = in.ConsumeFloatingPoint<double>();
            break;
        case VT_VARIANT_STRING:
            text = in.ConsumeRandomLengthString(24);
            index.value.str = text.c_str();
            break;
        default:
            index.kind = in.ConsumeIntegral<int32_t>();
            break;
    }
    const uint8_t threshold = in.ConsumeIntegral<uint8_t>();
    if (costlyDone) return;
    costlyDone = true;
    const int32_t target = in.ConsumeBool() ? in.ConsumeIntegralInRange<int32_t>(-2, 3000)
                                            : in.ConsumeIntegral<int32_t>();
    int32_t result = 0;
    const int32_t rc = vt_refill_dot_matrix(h.engine, &index, threshold, target, &result);
    Expect(OneOf(rc, {0, 5, 6, 7, 9, 11, 13, 91}), "vt_refill_dot_matrix", rc);
}

/// Adds an orbital (small radii and clouds, mostly) or deletes a live one.
void ChangeCollection(Host& h, FuzzedDataProvider& in, bool add) {
    if (add) {
        vt_OrbitalSetup s{};
        s.AtomRadius = in.ConsumeBool() ? in.ConsumeIntegralInRange<int16_t>(-1, 16)
                                        : in.ConsumeIntegral<int16_t>();
        s.DotTarget = in.ConsumeBool() ? in.ConsumeIntegralInRange<int16_t>(-1, 400)
                                       : in.ConsumeIntegral<int16_t>();
        s.DotThreshold = in.ConsumeIntegral<uint8_t>();
        s.OrbitalIndex = in.ConsumeIntegralInRange<int16_t>(-1, 40);
        s.OrbitalViewMode = in.ConsumeIntegralInRange<int32_t>(-1, 2);
        int16_t slot = 0;
        const int32_t rc = vt_add(h.engine, &s, &slot);
        Expect(OneOf(rc, {0, 5, 6, 7, 9, 11, 91}), "vt_add", rc);
        if (rc == VT_OK) ++h.live;
        return;
    }
    const int16_t slot = Slot(in);
    vt_OrbitalSetup s{};
    const bool wasLive = vt_get_setup(h.engine, slot, &s) == VT_OK;
    const int32_t rc = vt_delete(h.engine, slot);
    Expect(OneOf(rc, {0, 9}), "vt_delete", rc);
    if (rc == VT_OK && wasLive) --h.live;
}

void ReadOrbital(Host& h, FuzzedDataProvider& in) {
    const int16_t slot = Slot(in);
    switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0: {
            vt_OrbitalStats stats{};
            const int32_t rc = vt_get_stats(h.engine, slot, in.ConsumeBool() ? &stats : nullptr);
            Expect(OneOf(rc, {0, 5, 9, 91}), "vt_get_stats", rc);
            break;
        }
        case 1: {
            vt_OrbitalSetup setup{};
            const int32_t rc = vt_get_setup(h.engine, slot, in.ConsumeBool() ? &setup : nullptr);
            Expect(OneOf(rc, {0, 5, 9, 91}), "vt_get_setup", rc);
            break;
        }
        case 2: {
            int32_t count = 0;
            vt_get_dots(h.engine, slot, nullptr, 0, &count);
            const int32_t capacity = Count(in, count);
            std::vector<vt_PointArray> dots(static_cast<size_t>(capacity > 0 ? capacity : 0));
            const int32_t rc = vt_get_dots(h.engine, slot, in.ConsumeBool() ? dots.data() : nullptr,
                                           capacity, &count);
            Expect(OneOf(rc, {0, 5, 9, 91}), "vt_get_dots", rc);
            break;
        }
        default: {
            constexpr size_t kGrid = size_t{VT_GRID_SIZE} * VT_GRID_SIZE * VT_GRID_SIZE;
            const size_t size = in.ConsumeBool() ? kGrid : in.ConsumeIntegralInRange<size_t>(0, 64);
            std::vector<uint8_t> grid(size);
            const int32_t rc =
                vt_get_grid(h.engine, slot, in.ConsumeBool() ? grid.data() : nullptr, size);
            Expect(OneOf(rc, {0, 5, 9, 91}), "vt_get_grid", rc);
            break;
        }
    }
}

/// The engine-free science calls at a few points the input chooses (any doubles).
void Science(FuzzedDataProvider& in) {
    const int16_t orbital = in.ConsumeIntegralInRange<int16_t>(-1, 40);
    const size_t count = in.ConsumeIntegralInRange<size_t>(0, 8);
    std::vector<double> xyz(3 * count), out(count);
    for (double& v : xyz) v = in.ConsumeFloatingPoint<double>();
    int32_t rc = 0;
    switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0:
            rc = vt_real_density(orbital, in.ConsumeIntegralInRange(-1, 2), xyz.data(), count,
                                 out.data());
            break;
        case 1:
            rc = vt_wavefunction(orbital, xyz.data(), count, out.data());
            break;
        case 2:
            rc = vt_radial_distribution(orbital, xyz.data(), count, out.data());
            break;
        default: {
            vt_OrbitalFacts facts{};
            rc = vt_orbital_facts(orbital, &facts);
            break;
        }
    }
    Expect(OneOf(rc, {0, 5, 6, 9, 91}), "a science call", rc);
}

void Catalogue(Host& h, FuzzedDataProvider& in) {
    vt_OrbInfo entries[VT_CATALOGUE_SIZE];
    const int32_t capacity = in.ConsumeIntegralInRange<int32_t>(-1, VT_CATALOGUE_SIZE);
    int32_t count = 0;
    const int32_t rc = vt_enum_orbitals_into(in.ConsumeBool() ? h.engine : nullptr,
                                             in.ConsumeBool() ? entries : nullptr, capacity,
                                             in.ConsumeBool() ? &count : nullptr);
    Expect(OneOf(rc, {0, 5, 9, 91}), "vt_enum_orbitals_into", rc);
    if (vt_error_text(in.ConsumeIntegral<int32_t>()) == nullptr) std::abort();
}

/// The public pixel surface's operations, with sizes kept to a few hundred pixels.
void Surface(Host& h, FuzzedDataProvider& in) {
    vt_memdc* m = in.ConsumeBool() ? h.surface : nullptr;
    // The last size asked for, which a refused create may have left far beyond any bitmap.
    int32_t asked = 0, askedHeight = 0;
    vt_memdc_size(h.surface, &asked, &askedHeight);
    const int32_t width = std::clamp(asked, 0, 300), height = std::clamp(askedHeight, 0, 300);
    std::vector<vt_RGBA> bits(static_cast<size_t>(width) * static_cast<size_t>(height + 1) + 64);
    const int32_t room = static_cast<int32_t>(bits.size());
    int32_t rc = 0;
    switch (in.ConsumeIntegralInRange(0, 5)) {
        case 0: {
            const bool huge = in.ConsumeIntegralInRange(0, 7) == 0;
            const int32_t w =
                huge ? in.ConsumeIntegral<int32_t>() : in.ConsumeIntegralInRange<int32_t>(-1, 300);
            const int32_t ht = in.ConsumeIntegralInRange<int32_t>(-1, 300);
            // Sizes above 16384 are refused; between 300 and 16384 only the width may go.
            const int32_t checked = w > 300 && w <= 16384 ? 300 : w;
            int32_t hdc = 0;
            rc = vt_memdc_create(m, checked, huge ? std::numeric_limits<int32_t>::max() : ht, &hdc);
            break;
        }
        case 1: {
            const int32_t cols = in.ConsumeIntegralInRange<int32_t>(-1, width + 1);
            const int32_t rows = cols > 0 ? in.ConsumeIntegralInRange<int32_t>(-1, room / cols) : 1;
            rc = in.ConsumeBool() ? vt_memdc_get_all_bits(m, bits.data(), cols, rows)
                                  : vt_memdc_set_all_bits(m, bits.data(), cols, rows);
            break;
        }
        case 2: {
            int32_t written = 0;
            rc = vt_memdc_get_bits(m, in.ConsumeIntegral<int32_t>(), bits.data(),
                                   in.ConsumeIntegralInRange<int32_t>(-1, room), &written);
            break;
        }
        case 3:
            rc = vt_memdc_set_bits(m, bits.data(), in.ConsumeIntegralInRange<int32_t>(-1, room),
                                   in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(),
                                   in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>());
            break;
        case 4: {
            int32_t hdc = 0, hbmp = 0;
            rc = vt_memdc_handles(m, &hdc, &hbmp);
            break;
        }
        default:
            rc = vt_memdc_delete(m);
            break;
    }
    Expect(OneOf(rc, {0, 5, 6, 7, 9, 91}), "a surface call", rc);
}

}  // namespace

// The first orbitals are added before the first input, outside its time limit.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TheHost();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Host& h = TheHost();
    FuzzedDataProvider in(data, size);
    gClockMs = in.ConsumeBool() ? 100000 : in.ConsumeIntegral<int32_t>();
    const bool mayChange = h.inputs % 1024 == 0;
    bool changed = false, costlyDone = h.inputs % 32 != 0;
    ++h.inputs;
    for (int call = 0; call < 32 && in.remaining_bytes() > 0; ++call) {
        switch (in.ConsumeIntegralInRange(0, 7)) {
            case 0:
            case 1:
                Render(h, in, costlyDone);
                break;
            case 2:
                Refill(h, in, costlyDone);
                break;
            case 3: {
                // At most four live orbitals, so the engine's memory stays bounded.
                const bool add = in.ConsumeBool() && h.live < 4;
                if (mayChange && !changed) ChangeCollection(h, in, add);
                changed = true;
                break;
            }
            case 4:
                ReadOrbital(h, in);
                break;
            case 5:
                Science(in);
                break;
            case 6:
                Catalogue(h, in);
                break;
            default:
                Surface(h, in);
                break;
        }
    }
    return 0;
}
