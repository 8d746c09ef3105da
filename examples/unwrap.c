/* Unwraps a cube of six quads and prints the texture coordinates of its corners.
 *     cc unwrap.c $(pkg-config --cflags --libs tessora_atlas) && ./a.out */
#include <atlas/c/tessora_atlas.h>
#include <stdio.h>

int main(void) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0,
                               0, 0, 1, 1, 0, 1, 0, 1, 1, 1, 1, 1};
    const uint32_t corners[] = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4,
                                2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    const uint32_t offsets[] = {0, 4, 8, 12, 16, 20, 24};
    tessora_mesh mesh;
    tessora_mesh_init(&mesh, sizeof mesh);
    mesh.positions = (tessora_array){positions, 8, 0, TESSORA_FLOAT32};
    mesh.indices = (tessora_array){corners, 24, 0, TESSORA_UINT32};
    mesh.offsets = (tessora_array){offsets, 7, 0, TESSORA_UINT32};
    tessora_options options;
    tessora_options_init(&options, sizeof options);
    options.gutter = 4;
    tessora_atlas* atlas;
    tessora_error error;
    if (tessora_create(&mesh, &options, &atlas, &error) != TESSORA_OK) {
        fprintf(stderr, "%s\n", error.text);
        return 1;
    }
    const float* uvs = tessora_atlas_uvs(atlas, NULL);
    const uint32_t* vertices = tessora_atlas_corner_vertices(atlas, NULL);
    for (int c = 0; c < 24; ++c)
        printf("%d: %.6f %.6f\n", c, uvs[2 * vertices[c]], uvs[2 * vertices[c] + 1]);
    printf("charts: %u\n", (unsigned)tessora_atlas_chart_count(atlas));
    tessora_atlas_free(atlas);
    return 0;
}
