/* The C interface driven from C alone: layouts, catalogue, adding, every render mode, pixels
 * behind handles, statistics, refills with every kind of index, data access, pixel surfaces,
 * the clock, the about box and every error number a caller can reach.
 * Ends with "N passed, M failed". */
#include <math.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "veltara.h"

/* The layouts other-language hosts rely on. */
_Static_assert(sizeof(vt_RenderRequest) == 48, "RenderRequest size");
_Static_assert(offsetof(vt_RenderRequest, CameraPos) == 16, "CameraPos");
_Static_assert(offsetof(vt_RenderRequest, TransectDir) == 24, "TransectDir");
_Static_assert(offsetof(vt_RenderRequest, Size) == 28, "Size");
_Static_assert(offsetof(vt_RenderRequest, Mode) == 32, "Mode");
_Static_assert(offsetof(vt_RenderRequest, StereoFactor) == 46, "StereoFactor");
_Static_assert(sizeof(vt_RenderDCinfo) == 8, "RenderDCinfo size");
_Static_assert(sizeof(vt_OrbitalSetup) == 12, "OrbitalSetup size");
_Static_assert(offsetof(vt_OrbitalSetup, DotThreshold) == 4, "DotThreshold");
_Static_assert(offsetof(vt_OrbitalSetup, OrbitalIndex) == 6, "OrbitalIndex");
_Static_assert(offsetof(vt_OrbitalSetup, OrbitalViewMode) == 8, "OrbitalViewMode");
_Static_assert(sizeof(vt_OrbitalStats) == 1056, "OrbitalStats size");
_Static_assert(offsetof(vt_OrbitalStats, TotalSamples) == 1028, "TotalSamples");
_Static_assert(offsetof(vt_OrbitalStats, Mode) == 1032, "Mode");
_Static_assert(offsetof(vt_OrbitalStats, CalcTime) == 1036, "CalcTime");
_Static_assert(offsetof(vt_OrbitalStats, DotTime) == 1052, "DotTime");
_Static_assert(sizeof(vt_PointArray) == 8 && offsetof(vt_PointArray, P) == 6, "PointArray");
_Static_assert(sizeof(vt_RGBA) == 4 && offsetof(vt_RGBA, A) == 3, "RGBA");
_Static_assert(offsetof(vt_OrbInfo, OrbType) == sizeof(void *) + 16, "OrbInfo.OrbType");

static int passed = 0, failed = 0;

#define CHECK(cond)                                                                  \
    do {                                                                             \
        if (cond) {                                                                  \
            ++passed;                                                                \
        } else {                                                                     \
            ++failed;                                                                \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
        }                                                                            \
    } while (0)

/* Expects call to return error number n. */
#define CHECK_RC(call, n)                                                                      \
    do {                                                                                       \
        int32_t rc_ = (call);                                                                  \
        if (rc_ == (n)) {                                                                      \
            ++passed;                                                                          \
        } else {                                                                               \
            ++failed;                                                                          \
            fprintf(stderr, "%s:%d: %s returned %d, expected %d\n", __FILE__, __LINE__, #call, \
                    (int)rc_, (int)(n));                                                       \
        }                                                                                      \
    } while (0)

static const double kPi = 3.14159265358979323846;

/* The clock: fixed readings, so seeds and timings repeat. */
static int32_t fixed_clock(void *ctx) { return *(const int32_t *)ctx; }

static vt_OrbitalSetup make_setup(int16_t orbital, int16_t radius, uint8_t threshold, int16_t dots,
                                  int32_t view) {
    vt_OrbitalSetup s;
    memset(&s, 0, sizeof s);
    s.AtomRadius = radius;
    s.DotTarget = dots;
    s.DotThreshold = threshold;
    s.OrbitalIndex = orbital;
    s.OrbitalViewMode = view;
    return s;
}

static vt_RenderRequest make_request(int32_t mode, int32_t size) {
    vt_RenderRequest r;
    memset(&r, 0, sizeof r);
    r.Theta = 0.3;
    r.Phi = 0.6;
    r.CameraPos = 400;
    r.ProjectionPlane = 200;
    r.Size = size;
    r.Mode = mode;
    r.VolQuality = 5;
    r.VolFinal = VT_TRUE;
    r.StereoFactor = 20;
    return r;
}

static vt_Variant variant_i16(int16_t v) {
    vt_Variant x;
    x.kind = VT_VARIANT_INT16;
    x.value.i16 = v;
    return x;
}
static vt_Variant variant_i32(int32_t v) {
    vt_Variant x;
    x.kind = VT_VARIANT_INT32;
    x.value.i32 = v;
    return x;
}
static vt_Variant variant_f64(double v) {
    vt_Variant x;
    x.kind = VT_VARIANT_DOUBLE;
    x.value.f64 = v;
    return x;
}
static vt_Variant variant_str(const char *v) {
    vt_Variant x;
    x.kind = VT_VARIANT_STRING;
    x.value.str = v;
    return x;
}

static void test_errors_and_catalogue(void) {
    vt_engine *e = NULL;
    vt_OrbInfo info[40];
    int16_t n = 0;

    /* Messages of the error table. */
    static const struct {
        int32_t number;
        const char *text;
    } messages[] = {{0, "Success"},
                    {5, "Invalid procedure call or argument"},
                    {6, "Overflow"},
                    {7, "Out of memory"},
                    {9, "Subscript out of range"},
                    {11, "Division by zero"},
                    {13, "Type mismatch"},
                    {91, "Object variable or With block variable not set"},
                    {12345, "Unknown error"}};
    size_t k;
    for (k = 0; k < sizeof messages / sizeof messages[0]; ++k) {
        CHECK(strcmp(vt_error_text(messages[k].number), messages[k].text) == 0);
    }

    CHECK_RC(vt_create(NULL), 5);
    CHECK_RC(vt_create(&e), 0);
    CHECK(e != NULL);
    n = vt_highest_n(e);
    CHECK(n == 4);
    CHECK_RC(vt_enum_orbitals(e, info), 0);

    /* Catalogue rows: names, quantum numbers, defaults and factors. */
    CHECK(strcmp(info[0].Name, "1S") == 0 && info[0].OrbType == VT_SINGLE_ORB);
    CHECK(strcmp(info[30].Name, "1S") == 0 && info[30].OrbType == VT_AVERAGE_ORBS);
    CHECK(strcmp(info[9].Name, "3Dz\xC2\xB2") == 0);
    CHECK(strcmp(info[23].Name, "4Fz\xC2\xB3") == 0);
    CHECK(strcmp(info[26].Name, "4Fz(x\xC2\xB2-y\xC2\xB2)") == 0);
    CHECK(info[3].n == 2 && info[3].l == 1 && info[3].M == -1);
    CHECK(info[2].DefaultPDFAtomRadius == 8 && info[2].DefaultDRPDFAtomRadius == 10);
    CHECK(info[14].DefaultPDFAtomRadius == 28 && info[14].DefaultDRPDFAtomRadius == 32);
    CHECK(info[31].DefaultPDFDotThreshold == 30 && info[30].DefaultPDFDotThreshold == 50);
    CHECK(info[28].PDFOptFactor == VT_F8 && info[28].DRPDFOptFactor == VT_F8);
    CHECK(info[27].PDFOptFactor == VT_F32 && info[27].DRPDFOptFactor == VT_F16XY);
    CHECK(strcmp(info[39].Name, "4F") == 0 && info[39].l == 3 && info[39].M == 0);

    /* Names are static: a second listing hands out the same text. */
    {
        vt_OrbInfo again[40];
        CHECK_RC(vt_enum_orbitals(e, again), 0);
        CHECK(strcmp(again[9].Name, info[9].Name) == 0);
    }

    /* NULL engine (91) and NULL out pointers (5). */
    CHECK_RC(vt_enum_orbitals(NULL, info), 91);
    CHECK_RC(vt_enum_orbitals(e, NULL), 5);
    CHECK(vt_highest_n(NULL) == 4);
    vt_destroy(e);
    vt_destroy(NULL);
}

static void test_orbitals(void) {
    vt_engine *e = NULL;
    int32_t clock_ms = 1000000;
    int16_t slot = -1;
    vt_OrbitalSetup s;
    vt_RenderRequest r;
    vt_RenderDCinfo dc;
    vt_OrbitalStats st;
    int32_t mode, result = -1, frames = 0, count = 0, w = 0, h = 0;
    uint8_t *pixels = NULL, *grid = NULL;
    vt_PointArray *dots = NULL;

    vt_set_clock(fixed_clock, &clock_ms);
    CHECK_RC(vt_create(&e), 0);

    /* Three orbitals in slots 0, 1, 2: 2Pz, 1S and the averaged 3D in the radial view. */
    s = make_setup(4, 8, 50, 5000, VT_PDF);
    CHECK_RC(vt_add(e, &s, &slot), 0);
    CHECK(slot == 0);
    s = make_setup(0, 2, 30, 3000, VT_PDF);
    CHECK_RC(vt_add(e, &s, &slot), 0);
    CHECK(slot == 1);
    s = make_setup(35, 20, 50, 2000, VT_DRPDF);
    CHECK_RC(vt_add(e, &s, &slot), 0);
    CHECK(slot == 2);

    /* Every mode at both sizes: the handle of the size drawn resolves to a picture of that edge
     * (375 for Main, 127 for Nano) that can be read. */
    pixels = malloc(375 * 375 * 4);
    for (mode = VT_ORTHOGRAPHIC; mode <= VT_TRANSECT; ++mode) {
        int size_i;
        for (size_i = 0; size_i < 2; ++size_i) {
            const int32_t size = size_i == 0 ? VT_MAIN : VT_NANO;
            const int32_t edge = size == VT_MAIN ? 375 : 127;
            int32_t handle, lit = 0, i;
            r = make_request(mode, size);
            CHECK_RC(vt_get_render(e, 0, &r, &dc), 0);
            ++frames;
            handle = size == VT_MAIN ? dc.MainHDC : dc.NanoHDC;
            CHECK(handle != 0);
            CHECK_RC(vt_surface_info(handle, &w, &h), 0);
            CHECK(w == edge && h == edge);
            CHECK_RC(vt_surface_read(handle, pixels, (size_t)edge * edge * 4), 0);
            /* A short buffer is refused. */
            CHECK_RC(vt_surface_read(handle, pixels, (size_t)edge * edge * 4 - 1), 9);
            /* 2Pz has density almost everywhere: every mode shows something. */
            for (i = 0; i < edge * edge; ++i) {
                if (pixels[4 * i] | pixels[4 * i + 1] | pixels[4 * i + 2]) ++lit;
            }
            CHECK(lit > 0);
        }
    }
    free(pixels);

    /* Statistics. */
    CHECK_RC(vt_get_stats(e, 0, &st), 0);
    CHECK(st.FramesRendered == frames);
    CHECK(st.TotalSamples == 2097152);
    CHECK(st.DotTarget == 5000);
    CHECK(st.CalcTime >= 1);
    CHECK_RC(vt_get_dots(e, 0, NULL, 0, &count), 0);
    CHECK(count == st.DotTotal && count > 0);

    /* The dots: grid coordinates within -127..127, levels at or above the threshold. */
    dots = malloc(sizeof *dots * (size_t)count);
    CHECK_RC(vt_get_dots(e, 0, dots, count - 1, &count), 9);
    CHECK_RC(vt_get_dots(e, 0, dots, count, &count), 0);
    {
        int32_t i, inside = 1;
        for (i = 0; i < count; ++i) {
            if (abs(dots[i].X) > 127 || abs(dots[i].Y) > 127 || abs(dots[i].Z) > 127 ||
                dots[i].P < 50) {
                inside = 0;
            }
        }
        CHECK(inside);
    }
    free(dots);

    /* The grid: 2Pz vanishes on the plane z = 0; 1S is brightest at the nucleus. */
    grid = malloc(VT_GRID_SIZE * VT_GRID_SIZE * VT_GRID_SIZE);
    CHECK_RC(vt_get_grid(e, 0, grid, VT_GRID_SIZE * VT_GRID_SIZE * VT_GRID_SIZE - 1), 9);
    CHECK_RC(vt_get_grid(e, 0, grid, VT_GRID_SIZE * VT_GRID_SIZE * VT_GRID_SIZE), 0);
    {
        int x, y, zero_plane = 1;
        for (y = 0; y < VT_GRID_SIZE; ++y) {
            for (x = 0; x < VT_GRID_SIZE; ++x) {
                if (grid[(0 * 128 + y) * 128 + x] != 0) zero_plane = 0;
            }
        }
        CHECK(zero_plane);
        CHECK(grid[(64 * 128 + 0) * 128 + 0] > 0); /* on the z axis, inside the lobe */
    }
    CHECK_RC(vt_get_grid(e, 1, grid, VT_GRID_SIZE * VT_GRID_SIZE * VT_GRID_SIZE), 0);
    CHECK(grid[0] == 255);
    free(grid);

    /* The setup as kept. */
    CHECK_RC(vt_get_setup(e, 2, &s), 0);
    CHECK(s.OrbitalIndex == 35 && s.AtomRadius == 20 && s.OrbitalViewMode == VT_DRPDF);

    /* Refill with every kind of index: a double and a string round half to even. */
    CHECK_RC(vt_refill_dot_matrix(e, &(vt_Variant){0}, 60, 1000, &result), 0); /* int16 0 */
    CHECK(result == 0);
    {
        /* Each kind of index reaches its slot; a double and a string round half to even. */
        const struct {
            vt_Variant index;
            int16_t slot;
        } refills[] = {
            {{VT_VARIANT_INT16, {.i16 = 1}}, 1},        {{VT_VARIANT_INT32, {.i32 = 2}}, 2},
            {{VT_VARIANT_DOUBLE, {.f64 = 0.5}}, 0},     {{VT_VARIANT_DOUBLE, {.f64 = 1.5}}, 2},
            {{VT_VARIANT_STRING, {.str = " 2.5 "}}, 2}, {{VT_VARIANT_STRING, {.str = "1e0"}}, 1},
        };
        size_t k;
        vt_Variant v;
        for (k = 0; k < sizeof refills / sizeof refills[0]; ++k) {
            const int32_t target = 1100 + 100 * (int32_t)k;
            CHECK_RC(vt_refill_dot_matrix(e, &refills[k].index, 40, target, &result), 0);
            CHECK_RC(vt_get_stats(e, refills[k].slot, &st), 0);
            CHECK(st.DotTarget == target && result == 0);
        }

        /* Refill errors: not a number 13, unknown kind 13, outside the slots 9, target outside
         * 16 bits 6, index outside 32 bits 6, NULL string 5. */
        v = variant_str("two");
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 13);
        v.kind = 99;
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 13);
        v = variant_f64(2.51);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 9);
        v = variant_i32(-1);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 9);
        v = variant_i16(0);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 40000, &result), 6);
        CHECK_RC(vt_get_stats(e, 0, &st), 0);
        CHECK(st.DotTarget == 1300); /* unchanged by the failed refill */
        v = variant_f64(3e9);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 6);
        v = variant_str(NULL);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, &result), 5);
        CHECK_RC(vt_refill_dot_matrix(e, NULL, 40, 1000, &result), 5);
        v = variant_i16(0);
        CHECK_RC(vt_refill_dot_matrix(e, &v, 40, 1000, NULL), 5);
        CHECK_RC(vt_refill_dot_matrix(NULL, &v, 40, 1000, &result), 91);
    }

    /* Render errors: slot outside 9, a volume quality of 3 9, a slice beyond 127 9, an
     * anaglyph without stereo factor 11. */
    r = make_request(VT_ORTHOGRAPHIC, VT_MAIN);
    CHECK_RC(vt_get_render(e, 3, &r, &dc), 9);
    CHECK_RC(vt_get_render(e, -1, &r, &dc), 9);
    r = make_request(VT_VOLUMETRIC, VT_MAIN);
    r.VolQuality = 3;
    CHECK_RC(vt_get_render(e, 1, &r, &dc), 9);
    r = make_request(VT_TRANSECT, VT_NANO);
    r.TransectNo = 128;
    CHECK_RC(vt_get_render(e, 1, &r, &dc), 9);
    r = make_request(VT_ANAGLYPH, VT_MAIN);
    r.StereoFactor = 0;
    CHECK_RC(vt_get_render(e, 1, &r, &dc), 11);
    CHECK_RC(vt_get_render(NULL, 1, &r, &dc), 91);
    CHECK_RC(vt_get_render(e, 1, NULL, &dc), 5);
    CHECK_RC(vt_get_render(e, 1, &r, NULL), 5);

    /* Deleting: an emptied slot reaches no object (91); its surfaces stop resolving (9). */
    r = make_request(VT_ORTHOGRAPHIC, VT_MAIN);
    CHECK_RC(vt_get_render(e, 1, &r, &dc), 0);
    CHECK_RC(vt_delete(e, 1), 0);
    CHECK_RC(vt_surface_info(dc.MainHDC, &w, &h), 9);
    CHECK_RC(vt_get_render(e, 1, &r, &dc), 91);
    CHECK_RC(vt_get_stats(e, 1, &st), 91);
    CHECK_RC(vt_get_dots(e, 1, NULL, 0, &count), 91);
    CHECK_RC(vt_delete(e, 1), 0); /* an empty slot may be deleted */
    CHECK_RC(vt_delete(e, 7), 9);
    CHECK_RC(vt_delete(NULL, 0), 91);
    CHECK_RC(vt_get_stats(e, 0, NULL), 5);
    CHECK_RC(vt_get_stats(NULL, 0, &st), 91);

    /* The next add takes the lowest empty slot. */
    s = make_setup(0, 2, 30, 100, VT_PDF);
    CHECK_RC(vt_add(e, &s, &slot), 0);
    CHECK(slot == 1);

    /* Adds that create nothing: a view other than PDF/DRPDF, an orbital outside 0..39. */
    s = make_setup(0, 2, 30, 100, 7);
    CHECK_RC(vt_add(e, &s, &slot), 91);
    s = make_setup(40, 2, 30, 100, VT_PDF);
    CHECK_RC(vt_add(e, &s, &slot), 91);
    CHECK_RC(vt_add(e, NULL, &slot), 5);
    CHECK_RC(vt_add(e, &s, NULL), 5);
    CHECK_RC(vt_add(NULL, &s, &slot), 91);

    /* A density that is zero over the whole cube: 1S 3000 Bohr out underflows. */
    s = make_setup(0, 3000, 30, 100, VT_PDF);
    CHECK_RC(vt_add(e, &s, &slot), 11);

    /* Readings below 32768 ms seed the generator with 0, which draws no dots: a first fill
     * without a dot has no cloud to keep and fails with 9. */
    clock_ms = 1000;
    s = make_setup(0, 2, 30, 3000, VT_PDF);
    {
        vt_engine *e2 = NULL;
        CHECK_RC(vt_create(&e2), 0);
        CHECK_RC(vt_add(e2, &s, &slot), 9);
        clock_ms = 1000000;
        /* The failed renderer stayed in slot 0 without the next index moving on: the next add
         * fills slot 0 again. */
        CHECK_RC(vt_add(e2, &s, &slot), 0);
        CHECK(slot == 0);
        vt_destroy(e2);
    }
    vt_destroy(e);
    vt_set_clock(NULL, NULL);
}

static void test_real_density(void) {
    /* Normalised densities against their closed forms: 1s e^(-2r)/pi, 2pz z^2 e^(-r)/(32 pi). */
    const double pts[] = {0, 0, 0, 1, 0, 0, 0.3, -0.4, 1.2, 0, 0, 2};
    double out[4];
    const double r3 = sqrt(0.09 + 0.16 + 1.44);
    CHECK_RC(vt_real_density(0, VT_PDF, pts, 4, out), 0);
    CHECK(fabs(out[0] - 1 / kPi) < 1e-12);
    CHECK(fabs(out[1] - exp(-2.0) / kPi) < 1e-12);
    CHECK(fabs(out[2] - exp(-2 * r3) / kPi) < 1e-12);
    CHECK_RC(vt_real_density(4, VT_PDF, pts, 4, out), 0);
    CHECK(out[0] == 0);
    CHECK(fabs(out[3] - 4 * exp(-2.0) / (32 * kPi)) < 1e-12);
    /* The radial view of a single orbital weighs by rho r: zero on the z axis. */
    CHECK_RC(vt_real_density(0, VT_DRPDF, pts, 4, out), 0);
    CHECK(out[3] == 0);
    CHECK(fabs(out[1] - exp(-2.0) / kPi) < 1e-12);
    CHECK_RC(vt_real_density(40, VT_PDF, pts, 1, out), 91);
    CHECK_RC(vt_real_density(0, 2, pts, 1, out), 5);
    CHECK_RC(vt_real_density(0, VT_PDF, NULL, 1, out), 5);
    CHECK_RC(vt_real_density(0, VT_PDF, NULL, 0, NULL), 0);
}

static void test_memdc(void) {
    vt_memdc *m = NULL;
    int32_t hdc = 0, hbmp = 0, w = 0, h = 0, written = 0, x, j;
    vt_RGBA row[4], all[12], back[12], spare[4];
    uint8_t bgra[4 * 3 * 4];

    CHECK_RC(vt_memdc_new(NULL), 5);
    CHECK_RC(vt_memdc_new(&m), 0);
    CHECK_RC(vt_memdc_handles(m, &hdc, &hbmp), 0);
    CHECK(hdc == 0 && hbmp == 0);
    CHECK_RC(vt_memdc_create(m, 4, 3, &hdc), 0);
    CHECK(hdc != 0);
    CHECK_RC(vt_memdc_size(m, &w, &h), 0);
    CHECK(w == 4 && h == 3);

    /* Row 0 is the top row: written with set_bits, it is the first row surface_read gives and
     * the last (j = height - 1) of get_all_bits, which counts from the bottom. */
    for (x = 0; x < 4; ++x) {
        row[x].B = (uint8_t)(10 + x);
        row[x].G = 20;
        row[x].R = 30;
        row[x].A = 40;
    }
    CHECK_RC(vt_memdc_set_bits(m, row, 4, 0, 0, 1, 0), 0);
    CHECK_RC(vt_surface_info(hdc, &w, &h), 0);
    CHECK(w == 4 && h == 3);
    CHECK_RC(vt_surface_read(hdc, bgra, sizeof bgra), 0);
    CHECK(bgra[0] == 10 && bgra[1] == 20 && bgra[2] == 30 && bgra[3] == 40 && bgra[12] == 13);
    CHECK(bgra[16] == 0); /* row 1 untouched */
    CHECK_RC(vt_memdc_get_all_bits(m, all, 4, 3), 0);
    CHECK(all[2 * 4 + 0].B == 10 && all[2 * 4 + 3].B == 13 && all[0].B == 0);

    /* Whole-picture round trip; the spare row (y = height) stays untouched. */
    for (j = 0; j < 12; ++j) {
        all[j].B = (uint8_t)j;
        all[j].G = (uint8_t)(j * 2);
        all[j].R = (uint8_t)(j * 3);
        all[j].A = 255;
    }
    CHECK_RC(vt_memdc_set_all_bits(m, all, 4, 3), 0);
    CHECK_RC(vt_memdc_get_all_bits(m, back, 4, 3), 0);
    CHECK(memcmp(all, back, sizeof all) == 0);
    CHECK_RC(vt_memdc_get_bits(m, 3, spare, 4, &written), 0);
    CHECK(written == 4 && spare[0].A == 0 && spare[3].B == 0);
    /* Row 0 from the top is j = 2 from the bottom. */
    CHECK_RC(vt_memdc_get_bits(m, 0, spare, 4, &written), 0);
    CHECK(spare[1].B == 9 && spare[1].R == 27);
    CHECK_RC(vt_memdc_get_bits(m, 0, spare, 2, &written), 0);
    CHECK(written == 2);

    /* set_bits with several scan lines goes upwards: source row k to row y - k. */
    CHECK_RC(vt_memdc_set_bits(m, all, 8, 0, 2, 2, 0), 0);
    CHECK_RC(vt_memdc_get_bits(m, 1, spare, 4, &written), 0);
    CHECK(spare[0].B == 4); /* source row 1 */

    /* Errors: empty arrays 9, count 0 9, height + 1 overflowing 6, NULL surface 91. */
    CHECK_RC(vt_memdc_get_all_bits(m, back, 0, 3), 9);
    CHECK_RC(vt_memdc_set_all_bits(m, all, 4, 0), 9);
    CHECK_RC(vt_memdc_set_bits(m, row, 0, 0, 0, 1, 0), 9);
    CHECK_RC(vt_memdc_set_bits(m, NULL, 4, 0, 0, 1, 0), 5);
    CHECK_RC(vt_memdc_get_all_bits(m, NULL, 4, 3), 5);
    CHECK_RC(vt_memdc_get_bits(m, 0, NULL, 4, &written), 5);
    CHECK_RC(vt_memdc_get_bits(m, 0, spare, 4, NULL), 5);
    CHECK_RC(vt_memdc_create(NULL, 4, 3, &hdc), 91);
    CHECK_RC(vt_memdc_get_all_bits(NULL, back, 4, 3), 91);
    CHECK_RC(vt_memdc_handles(NULL, &hdc, &hbmp), 91);
    CHECK_RC(vt_memdc_delete(NULL), 91);
    CHECK_RC(vt_memdc_create(m, 4, 2147483647, NULL), 6);

    /* After delete the handles keep their values but resolve no more. */
    CHECK_RC(vt_memdc_create(m, 4, 3, &hdc), 0);
    CHECK_RC(vt_memdc_delete(m), 0);
    CHECK_RC(vt_memdc_handles(m, &w, &hbmp), 0);
    CHECK(w == hdc);
    CHECK_RC(vt_surface_info(hdc, &w, &h), 9);
    CHECK_RC(vt_surface_read(hdc, bgra, sizeof bgra), 9);
    CHECK_RC(vt_surface_info(0, &w, &h), 9);
    CHECK_RC(vt_surface_info(hdc, NULL, &h), 5);
    CHECK_RC(vt_memdc_free(m), 0);
    CHECK_RC(vt_memdc_free(NULL), 0);
}

/* The about box: shown first, made top-most after. */
static char about_log[64];
static void on_show(const vt_AboutBox *box, void *ctx) {
    (void)ctx;
    strcat(about_log, strcmp(box->Caption, "About: Corvane") == 0 ? "show;" : "wrong;");
}
static void on_top(vt_bool on, void *ctx) {
    (void)ctx;
    strcat(about_log, on == VT_TRUE ? "top;" : "bottom;");
}

static void test_about(void) {
    vt_AboutBox box;
    vt_engine *e = NULL;
    CHECK_RC(vt_about_texts(&box), 0);
    CHECK(strcmp(box.Caption, "About: Corvane") == 0);
    CHECK(strcmp(box.FrameCaption, "Warning:") == 0);
    CHECK(strcmp(box.Label, "Corvane Pro 2002 - Veltara core component. Have a nice day.") == 0);
    CHECK_RC(vt_about_texts(NULL), 5);
    CHECK_RC(vt_create(&e), 0);
    CHECK_RC(vt_about(e), 0); /* no presenter: nothing happens */
    CHECK(about_log[0] == '\0');
    CHECK_RC(vt_set_about_presenter(on_show, on_top, NULL), 0);
    CHECK_RC(vt_about(e), 0);
    CHECK(strcmp(about_log, "show;top;") == 0);
    CHECK_RC(vt_set_about_presenter(NULL, NULL, NULL), 0);
    CHECK_RC(vt_about(e), 0);
    CHECK(strcmp(about_log, "show;top;") == 0);
    CHECK_RC(vt_about(NULL), 91);
    vt_destroy(e);
}

int main(void) {
    test_errors_and_catalogue();
    test_orbitals();
    test_real_density();
    test_memdc();
    test_about();
    printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? 0 : 1;
}
