/* A C consumer of the installed package: prints the library's version and one catalogue entry. */
#include <stdio.h>
#include <string.h>
#include <veltara/veltara.h>

int main(void) {
    vt_engine *engine = NULL;
    vt_OrbInfo entries[VT_CATALOGUE_SIZE];
    int32_t count = 0;
    int32_t rc;

    if (strcmp(vt_version(), VT_VERSION_STRING) != 0) {
        fprintf(stderr, "header %s, library %s\n", VT_VERSION_STRING, vt_version());
        return 1;
    }
    if ((rc = vt_engine_new(&engine)) != VT_OK) return 1;
    rc = vt_enum_orbitals_into(engine, entries, VT_CATALOGUE_SIZE, &count);
    vt_engine_free(engine);
    if (rc != VT_OK) {
        fprintf(stderr, "error %d: %s\n", (int)rc, vt_error_text(rc));
        return 1;
    }
    printf("veltara %s (%d.%d.%d): %d orbitals, entry 9 is %s\n", vt_version(), VT_VERSION_MAJOR,
           VT_VERSION_MINOR, VT_VERSION_PATCH, (int)count, entries[9].Name);
    return 0;
}
