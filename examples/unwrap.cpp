// Unwraps a cube of six quads and prints the texture coordinates of its corners; CMakeLists.txt
// builds it.
#include <atlas/polygon_mesh.h>
#include <cstdio>

int main() {
    using namespace tessora::atlas;
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0,
                               0, 0, 1, 1, 0, 1, 0, 1, 1, 1, 1, 1};
    const uint32_t corners[] = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4,
                                2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    const uint32_t offsets[] = {0, 4, 8, 12, 16, 20, 24};
    PolygonMesh mesh;
    mesh.positions = {positions, 8, 0, Type::float32};
    mesh.indices = {corners, 24, 0, Type::uint32};
    mesh.offsets = {offsets, 7, 0, Type::uint32};
    Options options;
    options.quality = Quality::fast;
    options.gutter = 4;
    PolygonAtlas atlas;
    const Fault fault = create(mesh, options, UvSpace::texture, atlas);
    if (fault.status != Status::ok) {
        std::fprintf(stderr, "%s\n", fault.text);
        return 1;
    }
    for (size_t c = 0; c < 24; ++c) {
        const float* const uv = &atlas.triangles.uvs[2 * atlas.corner_vertex[c]];
        std::printf("%zu: %.6f %.6f\n", c, static_cast<double>(uv[0]), static_cast<double>(uv[1]));
    }
    std::printf("charts: %u\n", atlas.triangles.chart_count);
}
