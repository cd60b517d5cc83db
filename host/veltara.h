/* veltara.h: the C interface of the Veltara hydrogen-orbital engine, version 1.1.
 *
 * One engine (vt_engine) holds a collection of orbitals. Add an orbital by catalogue index and
 * view, ask for pictures of it, read its statistics, re-sample its dot cloud, delete it.
 * Pictures are painted into off-screen surfaces: vt_render_to_buffer renders one and copies it
 * into the caller's buffer in one call; vt_get_render hands back the surfaces' device handles,
 * which vt_surface_read copies out. Pixels are 4 bytes in the order B, G, R, A (blue first, alpha
 * last, alpha being scratch storage of the engine, not transparency); rows top row first, no
 * padding between rows.
 *
 * Return convention: every function returns an int32_t error number, VT_OK (0) for success, and
 * hands its results back through pointers marked out (vt_error_text and vt_version, which return
 * static text, are the exceptions). An engine or surface pointer that is NULL gives
 * VT_ERR_OBJECT_NOT_SET; a NULL out pointer, or a NULL input that the call needs, gives
 * VT_ERR_ARGUMENT; an output array below the size the call needs gives VT_ERR_SUBSCRIPT. No
 * function lets an exception escape. The numbers are listed below with their meaning; the text
 * of each comes from vt_error_text.
 *
 * Objects are made with vt_<object>_new and freed with vt_<object>_free (vt_engine_new,
 * vt_engine_free, vt_memdc_new, vt_memdc_free). vt_memdc_create and vt_memdc_delete are the
 * surface's own operations on its bitmap, not the object's life. The 1.0 names vt_create and
 * vt_destroy remain as aliases.
 *
 * Linking: libveltara.so (shared) or libveltara.a (static; it needs the engine archive
 * libveltara_engine.a, -lstdc++ and -lm after it, which `pkg-config --static --libs veltara`
 * gives). Define VT_STATIC when using the static library on a platform with DLLs.
 *
 * Threads: one engine belongs to one thread at a time; the random generator and the clock
 * are per thread. Valid C99 and C++.
 */
#ifndef VELTARA_H
#define VELTARA_H

#include <stddef.h>
#include <stdint.h>
#include <veltara/veltara_version.h> /* VT_VERSION_MAJOR, _MINOR, _PATCH, VT_VERSION_STRING */

#ifdef __cplusplus
extern "C" {
#endif

/* VT_API marks the functions of the library. VT_BUILDING is defined while the library itself is
 * compiled (exported); a user of the shared library defines nothing (imported), a user of the
 * static one defines VT_STATIC (which the CMake target and pkg-config set where it matters). */
#if defined(VT_STATIC)
#define VT_API
#elif defined(_WIN32)
#if defined(VT_BUILDING)
#define VT_API __declspec(dllexport)
#else
#define VT_API __declspec(dllimport)
#endif
#elif defined(VT_BUILDING)
#define VT_API __attribute__((visibility("default")))
#else
#define VT_API
#endif

/* ---- Error numbers (stable; the text of each from vt_error_text) ----------------------- */

/* success */
#define VT_OK 0
/* invalid procedure call or argument: a NULL pointer, a bad argument, NaN, the square root of a
 * negative number */
#define VT_ERR_ARGUMENT 5
/* overflow: a value outside its width (byte, 16 or 32 bits), an infinite result */
#define VT_ERR_OVERFLOW 6
/* out of memory */
#define VT_ERR_OUT_OF_MEMORY 7
/* subscript out of range: an index outside the collection, an unknown or freed handle, an
 * output array smaller than the call needs */
#define VT_ERR_SUBSCRIPT 9
/* division by zero */
#define VT_ERR_DIVISION_BY_ZERO 11
/* type mismatch: an untyped index that is not a number */
#define VT_ERR_TYPE_MISMATCH 13
/* object variable not set: an empty slot, a NULL engine or surface */
#define VT_ERR_OBJECT_NOT_SET 91

/* Truth values are 16-bit: true is -1, false is 0. */
typedef int16_t vt_bool;
#define VT_TRUE ((vt_bool)-1)
#define VT_FALSE ((vt_bool)0)

/* RenderMode */
enum {
    VT_ORTHOGRAPHIC = 0,
    VT_PERSPECTIVE = 1,
    VT_ANAGLYPH = 2,
    VT_VOLUMETRIC = 3,
    VT_TRANSECT = 4
};
/* RenderSize: the value is the surface's edge in pixels (the visible Nano picture is 127) */
enum { VT_MAIN = 375, VT_NANO = 128 };
/* TransectDirection */
enum { VT_ALONG_X = 0, VT_ALONG_Y = 1, VT_ALONG_Z = 2 };
/* OrbitalType */
enum { VT_SINGLE_ORB = 0, VT_AVERAGE_ORBS = 1 };
/* ViewMode */
enum { VT_PDF = 0, VT_DRPDF = 1 };
/* OptFactor */
enum { VT_F8 = 0, VT_F16XY = 1, VT_F16YZ = 2, VT_F16XZ = 3, VT_F32 = 4 };

/* One picture to render (48 bytes). Angles in radians. */
typedef struct vt_RenderRequest {
    double Theta;
    double Phi;
    int16_t CameraPos;
    int16_t ProjectionPlane;
    int16_t TransectNo;
    vt_bool Transector;
    int32_t TransectDir; /* VT_ALONG_* */
    int32_t Size;        /* VT_MAIN selects the 375-pixel surface, anything else the small one */
    int32_t Mode;        /* VT_ORTHOGRAPHIC ... VT_TRANSECT */
    int16_t VolQuality;  /* 0 (means 5) or 5..10 */
    vt_bool VolFinal;
    vt_bool ShowProbLevelOnDots;
    vt_bool ShowProbLevelOnTrans;
    vt_bool UseColouredTransector;
    int16_t StereoFactor;
} vt_RenderRequest;

/* Device handles of an orbital's two surfaces as last drawn (0 before the first picture). */
typedef struct vt_RenderDCinfo {
    int32_t MainHDC;
    int32_t NanoHDC;
} vt_RenderDCinfo;

/* How to add an orbital (12 bytes). */
typedef struct vt_OrbitalSetup {
    int16_t AtomRadius;   /* half the edge of the sampled cube, Bohr radii */
    int16_t DotTarget;    /* dots wanted */
    uint8_t DotThreshold; /* a dot needs a probability level above this (0..255) */
    uint8_t Reserved;
    int16_t OrbitalIndex;    /* catalogue index 0..VT_CATALOGUE_SIZE - 1 */
    int32_t OrbitalViewMode; /* VT_PDF or VT_DRPDF */
} vt_OrbitalSetup;

/* Statistics of one orbital (1056 bytes). */
typedef struct vt_OrbitalStats {
    int32_t FramesRendered;
    int32_t ProbFreqs[256];
    int32_t TotalSamples;
    uint8_t Mode;
    uint8_t Reserved[3];
    int32_t CalcTime; /* ms */
    int32_t CalcRate; /* samples per ms */
    int32_t DotTarget;
    int32_t DotTotal;
    int32_t DotTime; /* ms */
} vt_OrbitalStats;

/* One catalogue entry. Name points to static UTF-8 text that lives as long as the process
 * (superscripts as U+00B2, U+00B3). The fields follow the pointer, so the offsets depend on
 * the pointer's size: 40 bytes with 8-byte pointers, 32 with 4-byte ones. */
typedef struct vt_OrbInfo {
    const char *Name;
    int16_t DefaultPDFAtomRadius;
    int16_t DefaultDRPDFAtomRadius;
    int16_t DefaultPDFDotThreshold;
    int16_t DefaultDRPDFDotThreshold;
    int16_t n;
    int16_t l;
    int16_t M;
    uint8_t Reserved[2];
    int32_t OrbType; /* VT_SINGLE_ORB or VT_AVERAGE_ORBS */
    int32_t PDFOptFactor;
    int32_t DRPDFOptFactor;
} vt_OrbInfo;

/* One dot: grid coordinates -127..127 and its probability level (8 bytes). */
typedef struct vt_PointArray {
    int16_t X, Y, Z;
    uint8_t P;
    uint8_t Reserved;
} vt_PointArray;

/* One pixel, blue first (4 bytes). */
typedef struct vt_RGBA {
    uint8_t B, G, R, A;
} vt_RGBA;

/* The untyped orbital index of vt_refill_dot_matrix. */
enum { VT_VARIANT_INT16 = 0, VT_VARIANT_INT32 = 1, VT_VARIANT_DOUBLE = 2, VT_VARIANT_STRING = 3 };
typedef struct vt_Variant {
    int32_t kind; /* VT_VARIANT_* */
    union {
        int16_t i16;
        int32_t i32;
        double f64;
        const char *str; /* NUL-terminated; converted like a number, e.g. "2.5" */
    } value;
} vt_Variant;

/* The about box's texts. */
typedef struct vt_AboutBox {
    const char *Caption;
    const char *FrameCaption;
    const char *Label;
    const char *YearsLabel;
} vt_AboutBox;

typedef struct vt_engine vt_engine;
typedef struct vt_memdc vt_memdc;

/* ---- Errors and version ---------------------------------------------------------------- */

/* The message of an error number ("Success" for VT_OK, "Unknown error" for a number the engine
 * never gives). Never NULL; the text is static. Cannot fail. */
VT_API const char *vt_error_text(int32_t number);

/* The library's version as "MAJOR.MINOR.PATCH" (static text). It equals VT_VERSION_STRING of
 * the header a program was compiled with when the two match. Cannot fail. */
VT_API const char *vt_version(void);

/* ---- Engine ---------------------------------------------------------------------------- */

/* A new engine with an empty collection (one empty slot, index 0).
 * out: the engine, to be freed with vt_engine_free.
 * Returns VT_OK, VT_ERR_ARGUMENT (out NULL), VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_engine_new(vt_engine **out);
/* Frees the engine, its orbitals and their surfaces; their device handles stop resolving.
 * NULL is allowed and does nothing. */
VT_API void vt_engine_free(vt_engine *e);
/* 1.0 names of vt_engine_new and vt_engine_free, kept as aliases. */
VT_API int32_t vt_create(vt_engine **out);
VT_API void vt_destroy(vt_engine *e);

/* Number of entries in the orbital catalogue (the engine checks it against its table). */
#define VT_CATALOGUE_SIZE 40

/* The catalogue entries, index 0..VT_CATALOGUE_SIZE - 1, in catalogue order, into out (capacity records).
 * count (out): VT_CATALOGUE_SIZE. Pass out NULL and capacity 0 to ask for the count only.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (capacity below the count: nothing copied, count still
 * written), VT_ERR_OBJECT_NOT_SET (e NULL), VT_ERR_ARGUMENT (count NULL, or out NULL with a
 * capacity). */
VT_API int32_t vt_enum_orbitals_into(vt_engine *e, vt_OrbInfo *out, int32_t capacity,
                                     int32_t *count);
/* The 1.0 form: the VT_CATALOGUE_SIZE entries into out, which must hold as many records.
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET (e NULL), VT_ERR_ARGUMENT (out NULL). */
VT_API int32_t vt_enum_orbitals(vt_engine *e, vt_OrbInfo out[VT_CATALOGUE_SIZE]);
/* The highest principal quantum number of the catalogue (a constant of the catalogue, so it
 * needs no engine and cannot fail; NULL is answered too). */
VT_API int16_t vt_highest_n(vt_engine *e);

/* Adds an orbital: samples its probability grid and draws its first dot cloud (the call blocks
 * for the whole calculation; the random generator is seeded from the clock).
 * index (out): its handle, the lowest free slot.
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET (e NULL; a view other than VT_PDF and VT_DRPDF, or an
 * orbital outside the catalogue: the slot stays empty), VT_ERR_OVERFLOW (a byte above 255, a 32768th
 * dot, the 32768th slot), VT_ERR_DIVISION_BY_ZERO (a density that is zero over the whole cube,
 * or a first cloud whose every dot lies at the nucleus), VT_ERR_SUBSCRIPT (a first dot cloud
 * without a single dot, e.g. with a clock below 32768 ms), VT_ERR_ARGUMENT (setup or index
 * NULL), VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_add(vt_engine *e, const vt_OrbitalSetup *setup, int16_t *index);
/* Deletes an orbital; deleting an empty slot is allowed. Only the last slot is removed from the
 * collection (and never slot 0); other slots stay, empty, for later adds.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (outside the slots), VT_ERR_OBJECT_NOT_SET (e NULL). */
VT_API int32_t vt_delete(vt_engine *e, int16_t index);

/* Fills req with the request a host starts from: Main size, orthographic, angles 0, camera 400,
 * projection plane 200, stereo factor 20, volume quality 10, a final (not preview) picture,
 * every other field 0. The command, the viewer server and the page start from the same values.
 * Returns VT_OK, VT_ERR_ARGUMENT (req NULL). */
VT_API int32_t vt_render_request_init(vt_RenderRequest *req);

/* The edge in pixels of the visible picture of a request's Size: 375 for VT_MAIN, 127 for every
 * other value (the small surface is 128 wide but shows 127 pixels). */
#define VT_PICTURE_EDGE(size) ((size) == VT_MAIN ? 375 : 127)

/* Renders one picture of an orbital and copies it into bgra: width x height pixels of 4 bytes
 * (B, G, R, A), rows top row first, no padding, so capacity must be at least
 * VT_PICTURE_EDGE(req->Size)^2 * 4 bytes. width, height (out): the picture's size.
 * Returns VT_OK, the errors of vt_get_render, VT_ERR_SUBSCRIPT (capacity too small: the picture
 * was rendered and counted, width and height written, nothing copied), VT_ERR_ARGUMENT (bgra,
 * width or height NULL). */
VT_API int32_t vt_render_to_buffer(vt_engine *e, int16_t index, const vt_RenderRequest *req,
                                   uint8_t *bgra, size_t capacity, int32_t *width, int32_t *height);

/* Renders one picture of an orbital into its surface of the requested size.
 * out: both surfaces' device handles as last drawn (0 for a size never drawn); read the
 * picture with vt_surface_read.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (index outside the slots, a volumetric quality other than 0
 * and 5..10, a slice beyond 127), VT_ERR_OBJECT_NOT_SET (e NULL, empty slot), VT_ERR_OVERFLOW,
 * VT_ERR_DIVISION_BY_ZERO (anaglyph with StereoFactor 0), VT_ERR_ARGUMENT (req or out NULL),
 * VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_get_render(vt_engine *e, int16_t index, const vt_RenderRequest *req,
                             vt_RenderDCinfo *out);

/* Draws a new dot cloud from the orbital's existing grid: about target dots, each at a grid
 * point whose level is strictly above threshold (a point at the threshold counts towards the
 * target's share but never becomes a dot). target 0 gives one dot at the nucleus, level 0.
 * index is untyped: a 16-bit or 32-bit integer, a double or a numeric string, rounded half to
 * even. result (out): always 0.
 * Returns VT_OK, VT_ERR_TYPE_MISMATCH (a string that is not a number, or an unknown kind;
 * checked before anything else), VT_ERR_OVERFLOW (index outside 32 bits, target outside 16
 * bits, a 32768th dot), VT_ERR_SUBSCRIPT (index outside the slots), VT_ERR_DIVISION_BY_ZERO
 * (every dot at the nucleus), VT_ERR_OBJECT_NOT_SET (e NULL, empty slot), VT_ERR_ARGUMENT
 * (index, index->value.str or result NULL). A refill that accepts no dot keeps the old cloud. */
VT_API int32_t vt_refill_dot_matrix(vt_engine *e, const vt_Variant *index, uint8_t threshold,
                                    int32_t target, int32_t *result);

/* The orbital's statistics. out: a copy.
 * Returns VT_OK, VT_ERR_SUBSCRIPT, VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (out NULL). */
VT_API int32_t vt_get_stats(vt_engine *e, int16_t index, vt_OrbitalStats *out);

/* ---- Read-only data of an orbital ------------------------------------------------------ */

/* The setup the orbital was added with, with the target and threshold of its last refill.
 * out: a copy.
 * Returns VT_OK, VT_ERR_SUBSCRIPT, VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (out NULL). */
VT_API int32_t vt_get_setup(vt_engine *e, int16_t index, vt_OrbitalSetup *out);

/* A copy of the orbital's dot cloud into dots (capacity records). Dot i is at grid point
 * (X, Y, Z), -127..127 on each axis, that is X * AtomRadius / 127 Bohr radii from the nucleus,
 * with probability level P. count (out): the number of dots held. Pass dots NULL and capacity 0
 * to ask for the count only.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (index outside the slots, or capacity below the count:
 * nothing copied, count still written), VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (count NULL, or
 * dots NULL with a capacity). */
VT_API int32_t vt_get_dots(vt_engine *e, int16_t index, vt_PointArray *dots, int32_t capacity,
                           int32_t *count);

/* Points per axis of the probability grid. */
#define VT_GRID_SIZE 128
/* A copy of the orbital's probability grid into grid (size bytes): VT_GRID_SIZE^3 = 2097152
 * levels 0..255 over one octant of the cube, grid point (x, y, z) (0..127 each; 0 at the
 * nucleus, 127 at AtomRadius) at byte (z * 128 + y) * 128 + x. The other seven octants are its
 * mirror images.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (index outside the slots, or size below 2097152),
 * VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (grid NULL). */
VT_API int32_t vt_get_grid(vt_engine *e, int16_t index, uint8_t *grid, size_t size);

/* The normalised density of catalogue orbital `orbital` (0..VT_CATALOGUE_SIZE - 1) in view `view` at count points,
 * each given as x, y, z in Bohr radii (xyz[3 * i] .. xyz[3 * i + 2]): per cubic Bohr radius for
 * VT_PDF, the radially weighted density for VT_DRPDF. Needs no engine. out: count values.
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET (orbital outside the catalogue), VT_ERR_ARGUMENT (a view other
 * than VT_PDF and VT_DRPDF, xyz or out NULL with count above 0, and the density's own invalid
 * operations), VT_ERR_OVERFLOW. */
VT_API int32_t vt_real_density(int16_t orbital, int32_t view, const double *xyz, size_t count,
                               double *out);

/* ---- Surfaces behind device handles ---------------------------------------------------- */

/* Width and height (out) of the visible picture behind a device handle (375 x 375 for Main
 * pictures, 127 x 127 for Nano ones).
 * Returns VT_OK, VT_ERR_SUBSCRIPT (0, unknown or freed handle), VT_ERR_ARGUMENT (an out NULL). */
VT_API int32_t vt_surface_info(int32_t handle, int32_t *width, int32_t *height);
/* Copies the visible picture behind a device handle into bgra: width x height pixels of 4 bytes
 * (B, G, R, A), rows top row first, no padding. size: the bytes bgra holds.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (unknown handle, or size below width x height x 4),
 * VT_ERR_ARGUMENT (bgra NULL). */
VT_API int32_t vt_surface_read(int32_t handle, uint8_t *bgra, size_t size);

/* ---- The public pixel surface ---------------------------------------------------------- */

/* A new, empty surface object (no bitmap until vt_memdc_create). out: it, to be freed with
 * vt_memdc_free. Returns VT_OK, VT_ERR_ARGUMENT (out NULL), VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_memdc_new(vt_memdc **out);
/* Deletes the surface's bitmap and frees the object. NULL is allowed. Always VT_OK. */
VT_API int32_t vt_memdc_free(vt_memdc *m);
/* The surface's Create operation: makes a width x (height + 1) bitmap, all zero (the extra row
 * is a spare below the picture), deleting the old one first. A size below 1 or above 16384
 * gives no bitmap (handle 0 for it). hdc (out, may be NULL): the new device handle.
 * Returns VT_OK, VT_ERR_OVERFLOW (height + 1 overflows), VT_ERR_OBJECT_NOT_SET (m NULL),
 * VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_memdc_create(vt_memdc *m, int32_t width, int32_t height, int32_t *hdc);
/* Copies the visible picture into bits, an array of cols x rows pixels (its capacity):
 * element (x, j) at j * cols + x, j counted from the bottom row of the picture. Pass the
 * surface's own width and height; a smaller array receives the part that fits.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (cols or rows below 1), VT_ERR_OBJECT_NOT_SET,
 * VT_ERR_ARGUMENT (bits NULL). */
VT_API int32_t vt_memdc_get_all_bits(vt_memdc *m, vt_RGBA *bits, int32_t cols, int32_t rows);
/* The inverse of vt_memdc_get_all_bits; the spare row is left alone. Returns as it. */
VT_API int32_t vt_memdc_set_all_bits(vt_memdc *m, const vt_RGBA *bits, int32_t cols, int32_t rows);
/* Row y counted from the top (y = height: the spare row; a row the bitmap does not have reads
 * as zeros) into out, count pixels at most (its capacity). written (out): the pixels written
 * (the surface's width, or count if smaller).
 * Returns VT_OK, VT_ERR_OVERFLOW (height - y overflows), VT_ERR_OBJECT_NOT_SET,
 * VT_ERR_ARGUMENT (written NULL, count negative, or out NULL with count above 0). */
VT_API int32_t vt_memdc_get_bits(vt_memdc *m, int32_t y, vt_RGBA *out, int32_t count,
                                 int32_t *written);
/* Writes scan_lines rows from row y (from the top) upwards: source row k of data (the surface's
 * width in pixels, count pixels in all) goes to row y - k, its first length pixels (0: the rest
 * of the row) at columns x onwards; clipped at the edges.
 * Returns VT_OK, VT_ERR_SUBSCRIPT (count 0), VT_ERR_OVERFLOW (height - y or width - x
 * overflows), VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (count negative, or data NULL with count
 * above 0). */
VT_API int32_t vt_memdc_set_bits(vt_memdc *m, const vt_RGBA *data, int32_t count, int32_t x,
                                 int32_t y, int32_t scan_lines, int32_t length);
/* The device-context and bitmap handles (out): 0 before the first create, the old, no longer
 * resolving values after a delete.
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (an out NULL). */
VT_API int32_t vt_memdc_handles(vt_memdc *m, int32_t *hdc, int32_t *hbmp);
/* Width and height (out) of the last create (0 before it).
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET, VT_ERR_ARGUMENT (an out NULL). */
VT_API int32_t vt_memdc_size(vt_memdc *m, int32_t *width, int32_t *height);
/* The surface's Delete operation: frees the bitmap; the handles no longer resolve. Deleting
 * twice is allowed. Returns VT_OK, VT_ERR_OBJECT_NOT_SET. */
VT_API int32_t vt_memdc_delete(vt_memdc *m);

/* ---- Names of modes, views and sizes ------------------------------------------------- */

/* The tables of names every host reads: render modes (VT_NAMES_MODE), views (VT_NAMES_VIEW)
 * and picture sizes (VT_NAMES_SIZE). */
#define VT_NAMES_MODE 0
#define VT_NAMES_VIEW 1
#define VT_NAMES_SIZE 2

/* One row: the value (a size's value is its pixel count), the lower-case key hosts accept
 * ("orthographic"), the title records and JSON use ("Orthographic") and the label people read
 * ("Dots"); static UTF-8 strings. */
typedef struct vt_Name {
    int32_t Value;
    const char *Key;
    const char *Title;
    const char *Label;
} vt_Name;

/* count (out): the rows of table `table`. Returns VT_OK, VT_ERR_SUBSCRIPT (no such table),
 * VT_ERR_ARGUMENT (count NULL). */
VT_API int32_t vt_name_count(int32_t table, int32_t *count);
/* out: row `row` of table `table`. Returns VT_OK, VT_ERR_SUBSCRIPT (no such table or row),
 * VT_ERR_ARGUMENT (out NULL). */
VT_API int32_t vt_name(int32_t table, int32_t row, vt_Name *out);

/* ---- Clock and about box --------------------------------------------------------------- */

/* Replaces the millisecond clock of the calling thread with clock(ctx); NULL restores the
 * system clock (milliseconds since boot, wrapping at 32 bits). Renderers seed their random
 * generator from it, so a fixed clock gives the same dots every run; readings below 32768
 * give seed 0, which draws no dots (vt_add then fails with VT_ERR_SUBSCRIPT). Cannot fail. */
VT_API void vt_set_clock(int32_t (*clock)(void *ctx), void *ctx);

/* The about box's texts (out): static UTF-8. Returns VT_OK, VT_ERR_ARGUMENT (out NULL). */
VT_API int32_t vt_about_texts(vt_AboutBox *out);
/* Installs the presenter of the about box for the process: show is called with the texts (valid
 * during the call) and returns when the dialog closes; then set_top_most(VT_TRUE) (may be
 * NULL). NULL show removes the presenter. Returns VT_OK, VT_ERR_OUT_OF_MEMORY. */
VT_API int32_t vt_set_about_presenter(void (*show)(const vt_AboutBox *box, void *ctx),
                                      void (*set_top_most)(vt_bool on_top, void *ctx), void *ctx);
/* Shows the about box through the installed presenter (nothing without one).
 * Returns VT_OK, VT_ERR_OBJECT_NOT_SET (e NULL). */
VT_API int32_t vt_about(vt_engine *e);

#ifdef __cplusplus
}
#endif

#endif /* VELTARA_H */

/* ---- Science: the signed wavefunction and the facts of each orbital --------------------- */
#ifndef VELTARA_SCIENCE_H
#define VELTARA_SCIENCE_H

#ifdef __cplusplus
extern "C" {
#endif

/* The signed wavefunction psi of single orbital `orbital` (0..29) at count points, each given
 * as x, y, z in Bohr radii (xyz[3 * i] .. xyz[3 * i + 2]), in a0^(-3/2). psi squared is the
 * density of vt_real_density's VT_PDF view to rounding; the sign is that of the orbital's
 * unsquared factors (x for 2Px, xy for 3Dxy, 3z^2 - r^2 for 3Dz2, the radial polynomial
 * positive at the nucleus). Needs no engine.
 * out: count values. Errors: 5 (an averaged shell: a mixture has no sign; xyz or out
 * NULL with count above 0), 9 (orbital outside the catalogue), and the density's own errors (5, 6). */
VT_API int32_t vt_wavefunction(int16_t orbital, const double *xyz, size_t count, double *out);

/* What a chemist reads off an orbital (40 bytes). An averaged shell shares n and l with its
 * members and has m 0. */
typedef struct vt_OrbitalFacts {
    int16_t n, l, m;
    int16_t reserved;
    int32_t radialNodes;       /* n - l - 1 */
    int32_t angularNodes;      /* l */
    double energyHartree;      /* -1 / (2 n^2) */
    double meanRadius;         /* <r> = (3 n^2 - l (l + 1)) / 2, Bohr radii */
    double mostProbableRadius; /* where r^2 R_nl(r)^2 is largest, Bohr radii */
} vt_OrbitalFacts;

/* The facts of catalogue orbital `orbital` (0..VT_CATALOGUE_SIZE - 1). out: them. Errors: 9 (orbital outside
 * the catalogue), 5 (out NULL). */
VT_API int32_t vt_orbital_facts(int16_t orbital, vt_OrbitalFacts *out);

/* The radial distribution P(r) = r^2 R_nl(r)^2 of orbital `orbital` (0..VT_CATALOGUE_SIZE - 1) at count distances
 * r (Bohr radii, not negative); it integrates to 1 over r.
 * out: count values. Errors: 9 (orbital outside the catalogue), 5 (a negative or NaN distance; r or
 * out NULL with count above 0), 6 (an infinite distance). */
VT_API int32_t vt_radial_distribution(int16_t orbital, const double *r, size_t count, double *out);

#ifdef __cplusplus
}
#endif

#endif /* VELTARA_SCIENCE_H */
