/* render_png: renders one orbital to a PNG file through the Veltara C interface alone.
 *
 *   render_png OUT.png [INDEX]      INDEX: catalogue index 0..VT_CATALOGUE_SIZE - 1 (default 9, 3Dz²)
 *
 * Adds the orbital with the catalogue's defaults for the density view, renders a Main
 * orthographic picture of its dot cloud into a buffer and writes it as an 8-bit RGB PNG with
 * libpng's simplified interface. */
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <veltara/veltara.h>

/* A fixed clock reading, so that the dots are the same on every run (above 32768 ms). */
static int32_t fixed_clock(void *ctx) {
    (void)ctx;
    return 1000000;
}

static int fail(const char *what, int32_t rc) {
    fprintf(stderr, "render_png: error %d: %s (while %s)\n", (int)rc, vt_error_text(rc), what);
    return 1;
}

int main(int argc, char **argv) {
    vt_engine *engine = NULL;
    vt_OrbInfo catalogue[VT_CATALOGUE_SIZE];
    vt_OrbitalSetup setup;
    vt_RenderRequest request;
    int16_t slot = 0;
    int32_t width = 0, height = 0, rc = 0;
    int index = 9, status = 1;
    uint8_t *bgra = NULL, *rgb = NULL;
    png_image png;
    size_t i, pixels;

    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: render_png OUT.png [INDEX 0..%d]\n", VT_CATALOGUE_SIZE - 1);
        return 2;
    }
    if (argc == 3) index = atoi(argv[2]);
    if (index < 0 || index >= VT_CATALOGUE_SIZE) {
        fprintf(stderr, "render_png: INDEX: %d is outside 0..%d\n", index, VT_CATALOGUE_SIZE - 1);
        return 2;
    }

    vt_set_clock(fixed_clock, NULL);
    if ((rc = vt_engine_new(&engine)) != VT_OK) return fail("creating the engine", rc);
    if ((rc = vt_enum_orbitals_into(engine, catalogue, VT_CATALOGUE_SIZE, &width)) != VT_OK) {
        status = fail("reading the catalogue", rc);
        goto done;
    }

    memset(&setup, 0, sizeof setup);
    setup.AtomRadius = catalogue[index].DefaultPDFAtomRadius;
    setup.DotTarget = 10000;
    setup.DotThreshold = (uint8_t)catalogue[index].DefaultPDFDotThreshold;
    setup.OrbitalIndex = (int16_t)index;
    setup.OrbitalViewMode = VT_PDF;
    if ((rc = vt_add(engine, &setup, &slot)) != VT_OK) {
        status = fail("adding the orbital", rc);
        goto done;
    }

    /* The defaults (Main, orthographic, camera 400, ...), seen from a slight angle. */
    vt_render_request_init(&request);
    request.Theta = 0.35; /* radians */
    request.Phi = 0.5;

    /* The buffer takes B, G, R, A with rows top first; the PNG wants R, G, B. */
    width = height = VT_PICTURE_EDGE(request.Size);
    pixels = (size_t)width * (size_t)height;
    bgra = malloc(pixels * 4);
    rgb = malloc(pixels * 3);
    if (bgra == NULL || rgb == NULL) {
        fprintf(stderr, "render_png: out of memory\n");
        goto done;
    }
    rc = vt_render_to_buffer(engine, slot, &request, bgra, pixels * 4, &width, &height);
    if (rc != VT_OK) {
        status = fail("rendering", rc);
        goto done;
    }
    for (i = 0; i < pixels; ++i) {
        rgb[3 * i + 0] = bgra[4 * i + 2];
        rgb[3 * i + 1] = bgra[4 * i + 1];
        rgb[3 * i + 2] = bgra[4 * i + 0];
    }

    memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = (png_uint_32)width;
    png.height = (png_uint_32)height;
    png.format = PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&png, argv[1], 0, rgb, width * 3, NULL)) {
        fprintf(stderr, "render_png: cannot write %s: %s\n", argv[1], png.message);
        png_image_free(&png);
        goto done;
    }
    printf("wrote %s (%dx%d, %s)\n", argv[1], (int)width, (int)height, catalogue[index].Name);
    status = 0;

done:
    free(bgra);
    free(rgb);
    vt_engine_free(engine);
    vt_set_clock(NULL, NULL);
    return status;
}
