/* veltara.h: the C interface of the Veltara hydrogen-orbital engine.
 *
 * One engine (vt_engine) holds a collection of orbitals. Add an orbital by catalogue index and
 * view, ask for pictures of it, read its statistics, re-sample its dot cloud, delete it.
 * Pictures are painted into off-screen surfaces; vt_get_render hands back their device handles,
 * and vt_surface_read copies the visible picture out: rows top first, 4 bytes a pixel in the
 * order B, G, R, A.
 *
 * Return convention: every function that can fail returns an int32_t error number, 0 for
 * success, and hands its results back through pointers marked out. No function lets an
 * exception or a signal escape. The numbers (text from vt_error_text):
 *    5  invalid procedure call or argument (NaN, square root of a negative, bad argument)
 *    6  overflow (a value outside its width, an infinite result)
 *    7  out of memory
 *    9  subscript out of range (an index outside the collection, an unknown handle, a short buffer)
 *   11  division by zero
 *   13  type mismatch (an index string that is not a number)
 *   91  object variable not set (an empty slot, a NULL engine or surface)
 *
 * Threads: one engine belongs to one thread at a time; the random generator and the clock
 * are per thread. Valid C99 and C++.
 */
#ifndef VELTARA_H
#define VELTARA_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define VT_API __declspec(dllexport)
#else
#define VT_API __attribute__((visibility("default")))
#endif

/* Truth values are 16-bit: true is -1, false is 0. */
typedef int16_t vt_bool;
#define VT_TRUE ((vt_bool)-1)
#define VT_FALSE ((vt_bool)0)

/* RenderMode */
enum { VT_ORTHOGRAPHIC = 0, VT_PERSPECTIVE = 1, VT_ANAGLYPH = 2, VT_VOLUMETRIC = 3, VT_TRANSECT = 4 };
/* RenderSize: the value is the picture's edge in pixels */
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
    int32_t TransectDir;   /* VT_ALONG_* */
    int32_t Size;          /* VT_MAIN selects the 375-pixel surface, anything else the small one */
    int32_t Mode;          /* VT_ORTHOGRAPHIC ... VT_TRANSECT */
    int16_t VolQuality;    /* 0 (means 5) or 5..10 */
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
    int16_t AtomRadius;    /* half the edge of the sampled cube, Bohr radii */
    int16_t DotTarget;     /* dots wanted */
    uint8_t DotThreshold;  /* lowest probability level (0..255) a dot may have */
    uint8_t Reserved;
    int16_t OrbitalIndex;  /* catalogue index 0..39 */
    int32_t OrbitalViewMode; /* VT_PDF or VT_DRPDF */
} vt_OrbitalSetup;

/* Statistics of one orbital (1056 bytes). */
typedef struct vt_OrbitalStats {
    int32_t FramesRendered;
    int32_t ProbFreqs[256];
    int32_t TotalSamples;
    uint8_t Mode;
    uint8_t Reserved[3];
    int32_t CalcTime;      /* ms */
    int32_t CalcRate;      /* samples per ms */
    int32_t DotTarget;
    int32_t DotTotal;
    int32_t DotTime;       /* ms */
} vt_OrbitalStats;

/* One catalogue entry. Name points to static UTF-8 text (superscripts as U+00B2, U+00B3). */
typedef struct vt_OrbInfo {
    const char *Name;
    int16_t DefaultPDFAtomRadius;
    int16_t DefaultDRPDFAtomRadius;
    int16_t DefaultPDFDotThreshold;
    int16_t DefaultDRPDFDotThreshold;
    int16_t n;
    int16_t l;
    int16_t M;
    int32_t OrbType;       /* VT_SINGLE_ORB or VT_AVERAGE_ORBS */
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
    int32_t kind;          /* VT_VARIANT_* */
    union {
        int16_t i16;
        int32_t i32;
        double f64;
        const char *str;   /* NUL-terminated; converted like a number, e.g. "2.5" */
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

/* ---- Errors ---------------------------------------------------------------------------- */

/* The message of an error number ("Success" for 0, "Unknown error" otherwise). Never NULL. */
VT_API const char *vt_error_text(int32_t number);

/* ---- Engine ---------------------------------------------------------------------------- */

/* A new engine with an empty collection. out: the engine. Errors: 5 (out NULL), 7. */
VT_API int32_t vt_create(vt_engine **out);
/* Frees the engine, its orbitals and their surfaces. NULL is allowed. */
VT_API void vt_destroy(vt_engine *e);

/* The 40 catalogue entries, index 0..39. out: an array of 40. Errors: 5 (out NULL), 91. */
VT_API int32_t vt_enum_orbitals(vt_engine *e, vt_OrbInfo out[40]);
/* The highest principal quantum number of the catalogue: 4. */
VT_API int16_t vt_highest_n(vt_engine *e);

/* Adds an orbital: samples its probability grid and draws its first dot cloud.
 * index (out): its handle, the lowest free slot. Errors: 91 (a view other than VT_PDF and
 * VT_DRPDF, or an index outside 0..39: the slot stays empty), 6 (a byte above 255, a
 * 32768th dot, the 32768th slot), 11 (a density that is zero over the whole cube). */
VT_API int32_t vt_add(vt_engine *e, const vt_OrbitalSetup *setup, int16_t *index);
/* Deletes an orbital; deleting an empty slot is allowed. Errors: 9 outside the slots. */
VT_API int32_t vt_delete(vt_engine *e, int16_t index);

/* Renders one picture of an orbital. out: both surfaces' device handles.
 * Errors: 9 (index, or a volumetric quality other than 0 and 5..10, or a slice beyond 127),
 * 91 (empty slot), 6, 11 (anaglyph with StereoFactor 0). */
VT_API int32_t vt_get_render(vt_engine *e, int16_t index, const vt_RenderRequest *req,
                             vt_RenderDCinfo *out);

/* Draws a new dot cloud from the orbital's grid. result (out): always 0.
 * Errors: 13 (index not a number), 9, 91, 6 (target outside 16 bits, a 32768th dot). */
VT_API int32_t vt_refill_dot_matrix(vt_engine *e, const vt_Variant *index, uint8_t threshold,
                                    int32_t target, int32_t *result);

/* The orbital's statistics. out: a copy. Errors: 9, 91. */
VT_API int32_t vt_get_stats(vt_engine *e, int16_t index, vt_OrbitalStats *out);

/* ---- Surfaces behind device handles ---------------------------------------------------- */

/* Width and height (out) of the visible picture behind a device handle. Errors: 9 unknown. */
VT_API int32_t vt_surface_info(int32_t handle, int32_t *width, int32_t *height);
/* Copies the visible picture behind a device handle into bgra (width x height x 4 bytes,
 * rows top first, B, G, R, A). Errors: 9 (unknown handle, or size too small). */
VT_API int32_t vt_surface_read(int32_t handle, uint8_t *bgra, size_t size);

/* ---- The public pixel surface ---------------------------------------------------------- */

/* A new, empty surface object (no bitmap until vt_memdc_create). */
VT_API int32_t vt_memdc_new(vt_memdc **out);
/* Deletes the surface's bitmap and frees the object. NULL is allowed. */
VT_API void vt_memdc_free(vt_memdc *m);
/* Makes a width x (height + 1) bitmap (the extra row is a spare below the picture).
 * hdc (out, may be NULL): the new device handle. Errors: 6 (height + 1 overflows). */
VT_API int32_t vt_memdc_create(vt_memdc *m, int32_t width, int32_t height, int32_t *hdc);
/* Copies the visible picture into bits (cols x rows, element (x, j) at j * cols + x, j counted
 * from the bottom row of the picture). Errors: 9 (cols or rows 0). */
VT_API int32_t vt_memdc_get_all_bits(vt_memdc *m, vt_RGBA *bits, int32_t cols, int32_t rows);
/* The inverse of vt_memdc_get_all_bits; the spare row is left alone. */
VT_API int32_t vt_memdc_set_all_bits(vt_memdc *m, const vt_RGBA *bits, int32_t cols,
                                     int32_t rows);
/* Row y counted from the top (y = height: the spare row) into out (count pixels at most).
 * written (out, may be NULL): pixels written (the surface's width, or count if smaller). */
VT_API int32_t vt_memdc_get_bits(vt_memdc *m, int32_t y, vt_RGBA *out, int32_t count,
                                 int32_t *written);
/* Writes scan_lines rows from row y upwards, each source row `width` pixels of data, the first
 * length (0: the rest of the row) at column x; clipped at the edges. Errors: 9 (count 0), 6. */
VT_API int32_t vt_memdc_set_bits(vt_memdc *m, const vt_RGBA *data, int32_t count, int32_t x,
                                 int32_t y, int32_t scan_lines, int32_t length);
/* The device-context and bitmap handles (0 before the first create). */
VT_API int32_t vt_memdc_handles(vt_memdc *m, int32_t *hdc, int32_t *hbmp);
/* Frees the bitmap; the handles no longer resolve. */
VT_API int32_t vt_memdc_delete(vt_memdc *m);

/* ---- Clock and about box --------------------------------------------------------------- */

/* Replaces the millisecond clock of the calling thread; NULL restores the system clock.
 * Renderers seed their random generator from it: readings below 32768 give seed 0. */
VT_API void vt_set_clock(int32_t (*clock)(void *ctx), void *ctx);

/* The about box's texts (static). */
VT_API int32_t vt_about_texts(vt_AboutBox *out);
/* Installs the presenter of the about box: show is called with the texts and returns when the
 * dialog closes; then set_top_most(VT_TRUE). NULL show removes it. */
VT_API void vt_set_about_presenter(void (*show)(const vt_AboutBox *box, void *ctx),
                                   void (*set_top_most)(vt_bool on_top, void *ctx), void *ctx);
/* Shows the about box through the installed presenter (nothing without one). */
VT_API int32_t vt_about(vt_engine *e);

#ifdef __cplusplus
}
#endif

#endif /* VELTARA_H */
