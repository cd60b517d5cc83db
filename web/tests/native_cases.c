/* For every (orbital, view) pair under a fixed clock, what the WebAssembly engine must repeat:
 * written to stdout as int32 error; on success the histogram (256 int32), the dot count, the
 * dots (8 bytes each) and, for each of the five modes in Main then Nano size, the FNV-1a hash
 * (uint32) of the picture's B, G, R, A bytes, rows top first. */
#include <stdio.h>

#include "veltara.h"

static int32_t FixedClock(void *ctx) { return *(const int32_t *)ctx; }

static uint32_t Fnv1a(const uint8_t *bytes, size_t size) {
    uint32_t h = 2166136261u;
    for (size_t i = 0; i < size; ++i) h = (h ^ bytes[i]) * 16777619u;
    return h;
}

int main(void) {
    static int32_t clock = 40000;
    static vt_PointArray dots[32768];
    static uint8_t picture[375 * 375 * 4];
    vt_engine *e = NULL;
    vt_OrbInfo info[40];
    if (vt_create(&e) || vt_enum_orbitals(e, info)) return 1;
    vt_set_clock(FixedClock, &clock);
    for (int16_t o = 0; o < 40; ++o) {
        for (int32_t v = VT_PDF; v <= VT_DRPDF; ++v) {
            vt_OrbitalSetup setup = {0};
            setup.AtomRadius = v ? info[o].DefaultDRPDFAtomRadius : info[o].DefaultPDFAtomRadius;
            setup.DotThreshold =
                (uint8_t)(v ? info[o].DefaultDRPDFDotThreshold : info[o].DefaultPDFDotThreshold);
            setup.DotTarget = 10000;
            setup.OrbitalIndex = o;
            setup.OrbitalViewMode = v;
            vt_RenderRequest req;
            vt_OrbitalStats stats;
            vt_RenderDCinfo dc;
            int16_t h = 0;
            int32_t n = 0;
            uint32_t hashes[10] = {0};
            int32_t rc = vt_render_request_init(&req);
            req.Theta = 0.3;
            req.Phi = 0.5;
            req.VolFinal = VT_TRUE;
            req.Transector = VT_TRUE;
            req.TransectNo = 20;
            if (!rc) rc = vt_add(e, &setup, &h);
            if (!rc) rc = vt_get_stats(e, h, &stats);
            if (!rc) rc = vt_get_dots(e, h, dots, 32768, &n);
            for (int32_t k = 0; k < 10 && !rc; ++k) {
                const int32_t main = k % 2 == 0, edge = main ? 375 : 127;
                req.Mode = k / 2;
                req.Size = main ? VT_MAIN : VT_NANO;
                rc = vt_get_render(e, h, &req, &dc);
                if (!rc)
                    rc = vt_surface_read(main ? dc.MainHDC : dc.NanoHDC, picture,
                                         (size_t)edge * edge * 4);
                hashes[k] = Fnv1a(picture, (size_t)edge * edge * 4);
            }
            fwrite(&rc, 4, 1, stdout);
            if (!rc) {
                fwrite(stats.ProbFreqs, 4, 256, stdout);
                fwrite(&n, 4, 1, stdout);
                fwrite(dots, 8, (size_t)n, stdout);
                fwrite(hashes, 4, 10, stdout);
            }
            vt_delete(e, h);
        }
    }
    vt_destroy(e);
    return 0;
}
