/* The C interface driven from C alone: the layouts and names of interface 1.1, records and
 * pictures crossing the boundary (row order included), capacities of output arrays, callbacks,
 * and the numbers returned for NULL and short arguments. The engine's own behaviour is tested
 * in C++. Ends with "N passed, M failed". */
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
_Static_assert(offsetof(vt_RenderRequest, VolQuality) == 36, "VolQuality");
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

/* The names of interface 1.1 and their values. */
_Static_assert(VT_OK == 0 && VT_ERR_ARGUMENT == 5 && VT_ERR_OVERFLOW == 6, "error numbers");
_Static_assert(VT_ERR_OUT_OF_MEMORY == 7 && VT_ERR_SUBSCRIPT == 9, "error numbers");
_Static_assert(VT_ERR_DIVISION_BY_ZERO == 11 && VT_ERR_TYPE_MISMATCH == 13, "error numbers");
_Static_assert(VT_ERR_OBJECT_NOT_SET == 91, "error numbers");
_Static_assert(VT_VERSION_MAJOR == 1 && VT_VERSION_MINOR == 2 && VT_VERSION_PATCH == 0, "1.2.0");
_Static_assert(sizeof(vt_state) == 24 && sizeof(vt_term) == 40, "state records");
_Static_assert(sizeof(vt_state_facts) == 64 && sizeof(vt_beat) == 24, "facts records");
_Static_assert(VT_PICTURE_EDGE(VT_MAIN) == 375 && VT_PICTURE_EDGE(VT_NANO) == 127, "edges");
_Static_assert(VT_GRID_SIZE == 128, "sizes");

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

static int32_t fixed_clock(void *ctx) { return *(const int32_t *)ctx; }

static vt_OrbitalSetup make_setup(int16_t orbital, int16_t radius, uint8_t threshold,
                                  int16_t dots) {
    vt_OrbitalSetup s;
    memset(&s, 0, sizeof s);
    s.AtomRadius = radius;
    s.DotTarget = dots;
    s.DotThreshold = threshold;
    s.OrbitalIndex = orbital;
    s.OrbitalViewMode = VT_PDF;
    return s;
}

static void test_names_and_catalogue(void) {
    static const struct {
        int32_t number;
        const char *text;
    } messages[] = {{VT_OK, "Success"},
                    {VT_ERR_ARGUMENT, "Invalid procedure call or argument"},
                    {VT_ERR_OVERFLOW, "Overflow"},
                    {VT_ERR_OUT_OF_MEMORY, "Out of memory"},
                    {VT_ERR_SUBSCRIPT, "Subscript out of range"},
                    {VT_ERR_DIVISION_BY_ZERO, "Division by zero"},
                    {VT_ERR_TYPE_MISMATCH, "Type mismatch"},
                    {VT_ERR_OBJECT_NOT_SET, "Object variable or With block variable not set"},
                    {12345, "Unknown error"}};
    vt_engine *e = NULL;
    vt_OrbInfo info[VT_CATALOGUE_SIZE + 1];
    vt_RenderRequest r;
    vt_Name name;
    const int32_t last = VT_CATALOGUE_SIZE - 1;
    int32_t count = -1, rows = 0;
    int16_t highest = 0;
    size_t k;
    for (k = 0; k < sizeof messages / sizeof messages[0]; ++k) {
        CHECK(strcmp(vt_error_text(messages[k].number), messages[k].text) == 0);
    }
    CHECK(strcmp(vt_version(), "1.2.0") == 0 && strcmp(VT_VERSION_STRING, "1.2.0") == 0);
    {
        /* One of the path names; refused only when VELTARA_SIMD asked for what cannot be had. */
        int32_t refused = -1;
        const char *path = vt_simd(&refused);
        const char *asked = getenv("VELTARA_SIMD");
        CHECK(strstr(" scalar sse2 avx2 avx512 simd128 ", path) != NULL && strlen(path) >= 4);
        CHECK(refused == (asked != NULL && *asked != '\0' && strcmp(asked, path) != 0));
        CHECK(vt_simd(NULL) == path);
    }

    /* The defaults a host starts from, as the interface documents them. */
    memset(&r, 0x5A, sizeof r);
    CHECK_RC(vt_render_request_init(&r), VT_OK);
    CHECK(r.Size == VT_MAIN && r.Mode == VT_ORTHOGRAPHIC && r.Theta == 0 && r.Phi == 0);
    CHECK(r.CameraPos == 400 && r.ProjectionPlane == 200 && r.StereoFactor == 20);
    CHECK(r.VolQuality == 10 && r.VolFinal == VT_TRUE && r.Transector == VT_FALSE);
    CHECK(r.TransectNo == 0 && r.TransectDir == VT_ALONG_X && r.ShowProbLevelOnDots == 0);
    CHECK_RC(vt_render_request_init(NULL), VT_ERR_ARGUMENT);

    /* The 1.0 names still work beside the 1.1 ones. */
    CHECK_RC(vt_create(&e), VT_OK);
    vt_destroy(e);
    CHECK_RC(vt_engine_new(NULL), VT_ERR_ARGUMENT);
    CHECK_RC(vt_engine_new(&e), VT_OK);

    /* The catalogue into arrays with their capacities: count only, too short, exact. */
    CHECK_RC(vt_enum_orbitals_into(e, NULL, 0, &count), VT_OK);
    CHECK(count == VT_CATALOGUE_SIZE);
    info[last].Name = NULL;
    CHECK_RC(vt_enum_orbitals_into(e, info, last, &count), VT_ERR_SUBSCRIPT);
    CHECK(count == VT_CATALOGUE_SIZE && info[last].Name == NULL);
    info[last + 1].Name = "untouched";
    CHECK_RC(vt_enum_orbitals_into(e, info, last + 2, &count), VT_OK);
    CHECK(strcmp(info[last + 1].Name, "untouched") == 0);
    CHECK(strcmp(info[9].Name, "3Dz\xC2\xB2") == 0 && info[9].n == 3 && info[9].l == 2);
    CHECK(strcmp(info[30].Name, "1S") == 0 && info[30].OrbType == VT_AVERAGE_ORBS);
    CHECK(strcmp(info[26].Name, "4Fz(x\xC2\xB2-y\xC2\xB2)") == 0 && info[3].M == -1);
    CHECK_RC(vt_enum_orbitals_into(e, NULL, count, &count), VT_ERR_ARGUMENT);
    CHECK_RC(vt_enum_orbitals_into(e, info, count, NULL), VT_ERR_ARGUMENT);
    CHECK_RC(vt_enum_orbitals_into(NULL, info, count, &count), VT_ERR_OBJECT_NOT_SET);
    CHECK_RC(vt_enum_orbitals(e, info), VT_OK);
    CHECK_RC(vt_enum_orbitals(e, NULL), VT_ERR_ARGUMENT);
    CHECK_RC(vt_enum_orbitals(NULL, info), VT_ERR_OBJECT_NOT_SET);
    for (k = 0; k < VT_CATALOGUE_SIZE; ++k) highest = info[k].n > highest ? info[k].n : highest;
    CHECK(vt_highest_n(NULL) == highest);

    /* The names of modes, views and sizes, each row with its enumeration's value. */
    CHECK_RC(vt_name_count(VT_NAMES_MODE, &rows), VT_OK);
    CHECK(rows == 5);
    CHECK_RC(vt_name(VT_NAMES_MODE, 2, &name), VT_OK);
    CHECK(name.Value == VT_ANAGLYPH && strcmp(name.Key, "anaglyph") == 0 &&
          strcmp(name.Title, "Anaglyph") == 0);
    CHECK_RC(vt_name(VT_NAMES_VIEW, 1, &name), VT_OK);
    CHECK(name.Value == VT_DRPDF && strcmp(name.Key, "drpdf") == 0);
    CHECK_RC(vt_name(VT_NAMES_SIZE, 1, &name), VT_OK);
    CHECK(name.Value == VT_NANO && strcmp(name.Title, "Nano") == 0);
    CHECK_RC(vt_name(VT_NAMES_SIZE, 2, &name), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_name_count(3, &rows), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_name(VT_NAMES_MODE, 0, NULL), VT_ERR_ARGUMENT);
    vt_engine_free(e);
    vt_engine_free(NULL);
}

/* A picture that is not symmetric top to bottom crosses the boundary: a small random cloud of
 * 2Pz seen with both angles 0, where an orthographic Main frame puts dot (X, Y, Z) in column
 * 187 + X and, counting rows from the top, row 187 - Z (Z upwards). Every dot must light its
 * pixel and nothing else may be lit, so rows flipped anywhere on the way are caught. */
static void test_records_and_row_order(void) {
    int32_t clock_ms = 1000000, count = 0, width = 0, height = 0, i, lit = 0, placed = 1;
    vt_engine *e = NULL;
    vt_OrbitalSetup s = make_setup(4, 8, 50, 40), kept;
    vt_OrbitalStats st;
    vt_RenderRequest r;
    vt_RenderDCinfo dc;
    vt_PointArray dots[200];
    int16_t slot = -1;
    uint8_t *bgra = malloc(375 * 375 * 4), *again = malloc(375 * 375 * 4);
    uint8_t *grid = malloc(VT_GRID_SIZE * VT_GRID_SIZE * VT_GRID_SIZE);

    vt_set_clock(fixed_clock, &clock_ms);
    CHECK_RC(vt_engine_new(&e), VT_OK);
    CHECK_RC(vt_add(e, &s, &slot), VT_OK);
    CHECK(slot == 0);
    CHECK_RC(vt_get_setup(e, slot, &kept), VT_OK);
    CHECK(memcmp(&kept, &s, sizeof s) == 0);
    CHECK_RC(vt_get_dots(e, slot, NULL, 0, &count), VT_OK);
    CHECK(count > 5 && count < 200);
    CHECK_RC(vt_get_dots(e, slot, dots, count - 1, &count), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_get_dots(e, slot, dots, 200, &count), VT_OK);
    CHECK_RC(vt_get_stats(e, slot, &st), VT_OK);
    CHECK(st.DotTotal == count && st.DotTarget == 40 && st.TotalSamples == 128 * 128 * 128);
    CHECK_RC(vt_get_grid(e, slot, grid, 128 * 128 * 128 - 1), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_get_grid(e, slot, grid, 128 * 128 * 128), VT_OK);
    CHECK(grid[0] == 0 && grid[(64 * 128 + 0) * 128 + 0] > 0); /* 2Pz: node at z = 0 */

    vt_render_request_init(&r);
    CHECK_RC(vt_render_to_buffer(e, slot, &r, bgra, 375 * 375 * 4 - 1, &width, &height),
             VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_render_to_buffer(e, slot, &r, bgra, 375 * 375 * 4, &width, &height), VT_OK);
    CHECK(width == 375 && height == 375);
    for (i = 0; i < count; ++i) {
        const uint8_t *p = bgra + 4 * ((187 - dots[i].Z) * 375 + (187 + dots[i].X));
        if ((p[0] | p[1] | p[2]) == 0) placed = 0;
    }
    for (i = 0; i < 375 * 375; ++i) lit += (bgra[4 * i] | bgra[4 * i + 1] | bgra[4 * i + 2]) != 0;
    CHECK(placed && lit <= count && lit > count / 2);

    /* The same picture behind the handle, and the small size. */
    CHECK_RC(vt_get_render(e, slot, &r, &dc), VT_OK);
    CHECK_RC(vt_surface_read(dc.MainHDC, again, 375 * 375 * 4), VT_OK);
    CHECK(memcmp(bgra, again, 375 * 375 * 4) == 0);
    r.Size = VT_NANO;
    CHECK_RC(vt_render_to_buffer(e, slot, &r, bgra, 127 * 127 * 4, &width, &height), VT_OK);
    CHECK(width == 127 && height == 127);
    CHECK_RC(vt_render_to_buffer(e, slot, &r, NULL, 0, &width, &height), VT_ERR_ARGUMENT);
    CHECK_RC(vt_render_to_buffer(e, 1, &r, bgra, 127 * 127 * 4, &width, &height), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_render_to_buffer(NULL, 0, &r, bgra, 127 * 127 * 4, &width, &height),
             VT_ERR_OBJECT_NOT_SET);
    CHECK_RC(vt_get_stats(e, slot, &st), VT_OK);
    CHECK(st.FramesRendered == 4); /* the short buffer's frame was rendered too */

    /* The untyped index crosses as each of its kinds; a double rounds half to even. */
    {
        const vt_Variant kinds[] = {{VT_VARIANT_INT16, {.i16 = 0}},
                                    {VT_VARIANT_INT32, {.i32 = 0}},
                                    {VT_VARIANT_DOUBLE, {.f64 = 0.5}},
                                    {VT_VARIANT_STRING, {.str = " 0.4 "}}};
        vt_Variant bad = {VT_VARIANT_STRING, {.str = "zero"}};
        int32_t result = -1;
        for (i = 0; i < 4; ++i) {
            CHECK_RC(vt_refill_dot_matrix(e, &kinds[i], 40, 100 + i, &result), VT_OK);
            CHECK_RC(vt_get_stats(e, 0, &st), VT_OK);
            CHECK(st.DotTarget == 100 + i && result == 0);
        }
        CHECK_RC(vt_refill_dot_matrix(e, &bad, 40, 100, &result), VT_ERR_TYPE_MISMATCH);
        bad.kind = 99;
        CHECK_RC(vt_refill_dot_matrix(e, &bad, 40, 100, &result), VT_ERR_TYPE_MISMATCH);
        bad.kind = VT_VARIANT_STRING;
        bad.value.str = NULL;
        CHECK_RC(vt_refill_dot_matrix(e, &bad, 40, 100, &result), VT_ERR_ARGUMENT);
    }

    /* NULL arguments: 91 for the engine, 5 for what the call needs. */
    CHECK_RC(vt_add(NULL, &s, &slot), VT_ERR_OBJECT_NOT_SET);
    CHECK_RC(vt_add(e, NULL, &slot), VT_ERR_ARGUMENT);
    CHECK_RC(vt_get_stats(e, 0, NULL), VT_ERR_ARGUMENT);
    CHECK_RC(vt_get_render(e, 0, NULL, &dc), VT_ERR_ARGUMENT);
    CHECK_RC(vt_delete(NULL, 0), VT_ERR_OBJECT_NOT_SET);
    CHECK_RC(vt_delete(e, 0), VT_OK);
    CHECK_RC(vt_surface_info(dc.MainHDC, &width, &height), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_get_stats(e, 0, &st), VT_ERR_OBJECT_NOT_SET);
    vt_engine_free(e);
    vt_set_clock(NULL, NULL);
    free(bgra);
    free(again);
    free(grid);
}

/* The public surface: row 0 is the top row, the first one vt_surface_read gives and the last one
 * (j = height - 1) of get_all_bits, which counts from the bottom. */
static void test_memdc(void) {
    vt_memdc *m = NULL;
    int32_t hdc = 0, hbmp = 0, written = 0, x;
    vt_RGBA row[4], all[12];
    uint8_t bgra[4 * 3 * 4];
    CHECK_RC(vt_memdc_new(NULL), VT_ERR_ARGUMENT);
    CHECK_RC(vt_memdc_new(&m), VT_OK);
    CHECK_RC(vt_memdc_create(m, 4, 3, &hdc), VT_OK);
    for (x = 0; x < 4; ++x) {
        row[x].B = (uint8_t)(10 + x);
        row[x].G = 20;
        row[x].R = 30;
        row[x].A = 40;
    }
    CHECK_RC(vt_memdc_set_bits(m, row, 4, 0, 0, 1, 0), VT_OK);
    CHECK_RC(vt_surface_read(hdc, bgra, sizeof bgra), VT_OK);
    CHECK(bgra[0] == 10 && bgra[1] == 20 && bgra[2] == 30 && bgra[3] == 40 && bgra[12] == 13);
    CHECK(bgra[16] == 0);
    CHECK_RC(vt_surface_read(hdc, bgra, sizeof bgra - 1), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_memdc_get_all_bits(m, all, 4, 3), VT_OK);
    CHECK(all[2 * 4 + 0].B == 10 && all[2 * 4 + 3].B == 13 && all[0].B == 0);
    CHECK_RC(vt_memdc_get_bits(m, 0, row, 2, &written), VT_OK);
    CHECK(written == 2 && row[1].B == 11);
    CHECK_RC(vt_memdc_get_bits(m, 0, NULL, 4, &written), VT_ERR_ARGUMENT);
    CHECK_RC(vt_memdc_handles(m, &x, &hbmp), VT_OK);
    CHECK(x == hdc && hbmp != 0);
    CHECK_RC(vt_memdc_delete(m), VT_OK);
    CHECK_RC(vt_surface_info(hdc, &x, &written), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_memdc_create(NULL, 4, 3, &hdc), VT_ERR_OBJECT_NOT_SET);
    CHECK_RC(vt_memdc_free(m), VT_OK);
    CHECK_RC(vt_memdc_free(NULL), VT_OK);
}

/* The about box through the host's callbacks: shown first, made top-most after. */
static char about_log[64];
static void on_show(const vt_AboutBox *box, void *ctx) {
    strcat(about_log,
           strcmp(box->Caption, "About: Corvane") == 0 && ctx == about_log ? "show;" : "bad;");
}
static void on_top(vt_bool on, void *ctx) {
    (void)ctx;
    strcat(about_log, on == VT_TRUE ? "top;" : "bottom;");
}

static void test_about(void) {
    vt_AboutBox box;
    vt_engine *e = NULL;
    CHECK_RC(vt_about_texts(&box), VT_OK);
    CHECK(strcmp(box.Label, "Corvane Pro 2002 - Veltara core component. Have a nice day.") == 0);
    CHECK_RC(vt_engine_new(&e), VT_OK);
    CHECK_RC(vt_set_about_presenter(on_show, on_top, about_log), VT_OK);
    CHECK_RC(vt_about(e), VT_OK);
    CHECK(strcmp(about_log, "show;top;") == 0);
    CHECK_RC(vt_set_about_presenter(NULL, NULL, NULL), VT_OK);
    CHECK_RC(vt_about(NULL), VT_ERR_OBJECT_NOT_SET);
    vt_engine_free(e);
}

/* States: made, refused with a sentence, written back, and added like a catalogue orbital. */
static void test_states(void) {
    vt_superposition *s = NULL, *named = NULL, *bad = NULL;
    vt_term terms[2] = {{3.0, 0.0, {2, 1, 0, VT_BASIS_REAL, 1, 0}},
                        {0.0, 4.0, {1, 0, 0, VT_BASIS_REAL, 1, 0}}};
    vt_term back[2];
    int32_t count = 0;
    char text[64];
    size_t length = 0;
    CHECK_RC(vt_superposition_new(terms, 2, &s), VT_OK);
    CHECK_RC(vt_superposition_terms(s, back, 1, &count), VT_ERR_SUBSCRIPT);
    CHECK(count == 2);
    CHECK_RC(vt_superposition_terms(s, back, 2, &count), VT_OK);
    /* 3 and 4i scaled by 1/5. */
    CHECK(back[0].re == 0.6 && back[1].im == 0.8 && back[1].state.n == 1);
    CHECK_RC(vt_format_state(s, text, 2, &length), VT_ERR_SUBSCRIPT);
    CHECK_RC(vt_format_state(s, text, sizeof text, &length), VT_OK);
    CHECK(length == strlen(text));
    CHECK_RC(vt_parse_state(text, &named), VT_OK);
    CHECK_RC(vt_superposition_terms(named, back, 2, &count), VT_OK);
    CHECK(count == 2 && back[0].re == 0.6 && back[1].im == 0.8);
    vt_superposition_free(named);

    terms[0].state.m = 2; /* |m| above l = 1 */
    CHECK_RC(vt_superposition_new(terms, 2, &bad), VT_ERR_ARGUMENT);
    CHECK(bad == NULL && strstr(vt_last_error_detail(), "m must") != NULL);
    CHECK_RC(vt_parse_state("2,1,x", &bad), VT_ERR_ARGUMENT);
    CHECK(strstr(vt_last_error_detail(), "character 5") != NULL);
    CHECK_RC(vt_hybrid(VT_HYBRID_SP3, 4, 0, &bad), VT_ERR_ARGUMENT);
    CHECK_RC(vt_state_facts_of(NULL, NULL), VT_ERR_OBJECT_NOT_SET);
    vt_superposition_free(s);

    /* 3Dz2 as a state and as catalogue orbital 9: the same grid. */
    {
        vt_engine *e = NULL;
        vt_OrbitalSetup setup = {18, 500, 30, 0, 9, VT_PDF};
        int16_t a = -1, b = -1;
        static uint8_t ga[128 * 128 * 128], gb[128 * 128 * 128];
        CHECK_RC(vt_engine_new(&e), VT_OK);
        CHECK_RC(vt_parse_state("3,2,0", &s), VT_OK);
        CHECK_RC(vt_add(e, &setup, &a), VT_OK);
        CHECK_RC(vt_add_state(e, s, 0.0, &setup, &b), VT_OK);
        CHECK_RC(vt_get_grid(e, a, ga, sizeof ga), VT_OK);
        CHECK_RC(vt_get_grid(e, b, gb, sizeof gb), VT_OK);
        CHECK(a != b && memcmp(ga, gb, sizeof ga) == 0);
        vt_superposition_free(s);
        vt_engine_free(e);
    }

    /* The 1s surface holding 90 %: its level L is e^(-2R)/pi on the sphere r = R, and the
     * probability inside that sphere, 1 - e^(-2R)(1 + 2R + 2R²), is 0.9. */
    {
        vt_surface *m = NULL;
        double level = 0, r = 0;
        int32_t vertices = 0, triangles = 0;
        CHECK_RC(vt_parse_state("1,0,0", &s), VT_OK);
        CHECK_RC(vt_surface_new(s, 0.0, 0.9, 16, &m), VT_OK);
        CHECK_RC(vt_surface_counts(m, &level, &vertices, &triangles), VT_OK);
        r = level > 0 ? -log(3.14159265358979 * level) / 2 : 0;
        CHECK(fabs(1 - exp(-2 * r) * (1 + 2 * r + 2 * r * r) - 0.9) < 0.002 && triangles > 0);
        vt_surface_free(m);
        vt_superposition_free(s);
    }
}

int main(void) {
    test_names_and_catalogue();
    test_states();
    test_records_and_row_order();
    test_memdc();
    test_about();
    printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? 0 : 1;
}
