#include "app/mesh_import.h"
#include "host/io/obj_reader.h"

#include <gtest/gtest.h>

namespace {

app::ImportedMesh import(const std::string& faces) {
    host::ObjDocument document;
    host::IoError error;
    EXPECT_TRUE(
        host::parse_obj("m", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 5\n" + faces, document, error))
        << error.message;
    return app::import_mesh(document);
}

using Ids = std::vector<uint32_t>;

TEST(ImportMesh, OrdinaryPolygonsStayAsTheyAre) {
    const app::ImportedMesh mesh = import("f 1 2 3 4\nf 4 3 1\n");
    EXPECT_EQ((Ids{0, 1, 2, 3, 3, 2, 0}), mesh.corner_vertex);
    EXPECT_EQ((Ids{0, 4, 7}), mesh.corner_begin);
    EXPECT_EQ(12u, mesh.positions.size());
    EXPECT_TRUE(mesh.copy_of.empty());
    EXPECT_EQ(0u, mesh.split_polygons);
}

TEST(ImportMesh, RepeatsGetVerticesOfTheirOwnAtTheSamePlace) {
    const app::ImportedMesh mesh = import("f 1 2 4 1 3\nf 1 2 3\n");
    EXPECT_EQ((Ids{0, 1, 3, 4, 2, 0, 1, 2}), mesh.corner_vertex);
    EXPECT_EQ(Ids{0}, mesh.copy_of);
    EXPECT_EQ((std::vector<float>{0, 0, 0}),
              std::vector<float>(mesh.positions.end() - 3, mesh.positions.end()));
    EXPECT_EQ(1u, mesh.split_polygons);
}

TEST(ImportMesh, NeighbouringRepeatsSpikesAndTriples) {
    const app::ImportedMesh mesh = import("f 1 1 2 3\nf 1 2 4 2\nf 3 3 3\n");
    EXPECT_EQ((Ids{0, 4, 1, 2, 0, 1, 3, 5, 2, 6, 7}), mesh.corner_vertex);
    EXPECT_EQ((Ids{0, 1, 2, 2}), mesh.copy_of);
    EXPECT_EQ(3u, mesh.split_polygons);
    EXPECT_EQ(24u, mesh.positions.size());
}

TEST(ImportMesh, EveryPolygonNamesEveryVertexOnce) {
    std::string face = "f";
    for (int i = 0; i < 1000; ++i)
        face += " " + std::to_string(1 + (i * 7) % 4);
    const app::ImportedMesh mesh = import(face + "\n");
    Ids sorted = mesh.corner_vertex;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted.end(), std::adjacent_find(sorted.begin(), sorted.end()));
    EXPECT_EQ(996u, mesh.copy_of.size());
}

} // namespace
