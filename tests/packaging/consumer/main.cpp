#include <atlas/atlas.h>
#include <cstdio>

int main() {
    namespace atlas = tessora::atlas;
    const float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const uint32_t indices[] = {0, 1, 2, 0, 2, 3};
    const uint32_t adjacency[] = {atlas::k_none, atlas::k_none, 1, 0, atlas::k_none, atlas::k_none};
    atlas::Mesh mesh;
    mesh.positions = {positions, 12};
    mesh.indices = {indices, 6};
    mesh.adjacency = {adjacency, 6};
    atlas::Result result;
    const atlas::Failure failure = atlas::create(mesh, atlas::Options(), result);
    std::printf("%s, charts: %u\n", atlas::describe(failure.status), result.chart_count);
    return failure.status == atlas::Status::ok && result.chart_count == 1 ? 0 : 1;
}
