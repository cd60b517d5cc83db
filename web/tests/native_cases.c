/* For every (orbital, view) pair under a fixed clock, what the WebAssembly engine must repeat:
 * written to stdout as int32 error; on success the histogram (256 int32), the dot count, the
 * dots (8 bytes each) and the final volumetric Main picture (375 x 375 x 4 bytes). */
#include <stdio.h>

#include "veltara.h"

static int32_t FixedClock(void *ctx) { return *(const int32_t *)ctx; }

int main(void) {
    static int32_t clock = 40000;
    static vt_PointArray dots[32768];
    static uint8_t picture[375 * 375 * 4];
    vt_engine *e = NULL;
    vt_OrbInfo info[VT_CATALOGUE_SIZE];
    if (vt_create(&e) || vt_enum_orbitals(e, info)) return 1;
    vt_set_clock(FixedClock, &clock);
    for (int16_t o = 0; o < VT_CATALOGUE_SIZE; ++o) {
        for (int32_t v = VT_PDF; v <= VT_DRPDF; ++v) {
            vt_OrbitalSetup setup = {0};
            setup.AtomRadius = v ? info[o].DefaultDRPDFAtomRadius : info[o].DefaultPDFAtomRadius;
            setup.DotThreshold =
                (uint8_t)(v ? info[o].DefaultDRPDFDotThreshold : info[o].DefaultPDFDotThreshold);
            setup.DotTarget = 10000;
            setup.OrbitalIndex = o;
            setup.OrbitalViewMode = v;
            vt_RenderRequest req = {0.3,      0.5,        400,      200,           0,
                                    VT_FALSE, VT_ALONG_Z, VT_MAIN,  VT_VOLUMETRIC, 10,
                                    VT_TRUE,  VT_FALSE,   VT_FALSE, VT_FALSE,      20};
            vt_OrbitalStats stats;
            vt_RenderDCinfo dc;
            int16_t h = 0;
            int32_t n = 0;
            int32_t rc = vt_add(e, &setup, &h);
            if (!rc) rc = vt_get_stats(e, h, &stats);
            if (!rc) rc = vt_get_dots(e, h, dots, 32768, &n);
            if (!rc) rc = vt_get_render(e, h, &req, &dc);
            if (!rc) rc = vt_surface_read(dc.MainHDC, picture, sizeof picture);
            fwrite(&rc, 4, 1, stdout);
            if (!rc) {
                fwrite(stats.ProbFreqs, 4, 256, stdout);
                fwrite(&n, 4, 1, stdout);
                fwrite(dots, 8, (size_t)n, stdout);
                fwrite(picture, 1, sizeof picture, stdout);
            }
            vt_delete(e, h);
        }
    }
    vt_destroy(e);
    return 0;
}
