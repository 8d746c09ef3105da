/// adjacency_dump MESH.obj OUT: triangulates the mesh's polygons as fans and writes the adjacency
/// that the platform's mesh finds. Shape of OUT, 32-bit words: triangle count n, corners[3n],
/// adjacency[3n].
#include "corelib/math/atlas_context.h"
#include "corelib/math/atlas_mesh.h"
#include "host/io/obj_reader.h"

#include <cstdio>
#include <vector>

namespace {

bool read(const char* path, host::ObjDocument& document) {
    host::IoError error;
    std::string text;
    if (host::read_text(path, text, error) &&
        host::parse_obj(path, std::move(text), document, error))
        return true;
    std::fprintf(stderr, "%s\n", error.message.c_str());
    return false;
}

array<uint32_t> fans(const host::ObjDocument& document) {
    array<uint32_t> corners;
    for (size_t p = 0; p < document.polygon_count(); ++p) {
        const uint32_t begin = document.corner_begin[p], end = document.corner_begin[p + 1];
        for (uint32_t c = begin + 1; c + 1 < end; ++c)
            for (const uint32_t corner : {begin, c, c + 1})
                corners.append(document.corner_vertex[corner]);
    }
    return corners;
}

array<Vertex> positions(const host::ObjDocument& document) {
    array<Vertex> vertices;
    for (size_t v = 0; v < document.vertex_count(); ++v)
        vertices.append(Vertex{static_cast<float>(document.positions[3 * v]),
                               static_cast<float>(document.positions[3 * v + 1]),
                               static_cast<float>(document.positions[3 * v + 2]), 0.0f, 0.0f});
    return vertices;
}

bool write(const char* path, const array<uint32_t>& corners, const std::vector<DWORD>& adjacency) {
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr)
        return false;
    const uint32_t triangles = corners.count() / 3;
    bool good = std::fwrite(&triangles, 4, 1, file) == 1;
    good = good && std::fwrite(corners.data(), 4, corners.count(), file) == corners.count();
    good = good && std::fwrite(adjacency.data(), 4, adjacency.size(), file) == adjacency.size();
    return std::fclose(file) == 0 && good;
}

} // namespace

int main(int argc, char** argv) {
    host::ObjDocument document;
    if (argc != 3 || !read(argv[1], document))
        return 2;
    AtlasContext context = {};
    if (!create_device(context, nullptr, 0, 0.0f, 8, 8, 0.0f, false))
        return 1;
    const array<uint32_t> corners = fans(document);
    ID3DXMesh* const mesh = create_mesh(context, positions(document), fans(document));
    std::vector<DWORD> adjacency(corners.count());
    if (mesh == nullptr || FAILED(mesh->ConvertPointRepsToAdjacency(nullptr, adjacency.data())))
        return 1;
    mesh->Release();
    release_device(context);
    return write(argv[2], corners, adjacency) ? 0 : 1;
}
