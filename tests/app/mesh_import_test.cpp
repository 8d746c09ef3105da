#include "app/mesh_import.h"
#include "host/io/obj_reader.h"
#include "polygon/twins.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace {

struct Import {
    app::ImportedMesh imported;
    host::Mesh mesh;

    std::vector<uint32_t> corner_vertex() const {
        const host::Connectivity& polygons = mesh.connectivity();
        std::vector<uint32_t> vertices;
        for (uint32_t c = 0; c < polygons.corner_count(); ++c)
            vertices.push_back(polygons.corner_vertex(c));
        return vertices;
    }
};

Import import(const std::string& faces) {
    host::ObjDocument document;
    host::IoError error;
    EXPECT_TRUE(host::parse_obj(
        "m", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 5\nv 2 2 0\nv 3 0 1\n" + faces, document, error))
        << error.message;
    Import result;
    EXPECT_TRUE(app::import_mesh(document, result.imported, result.mesh));
    EXPECT_EQ(6 + result.imported.copy_of.size(), result.mesh.points().size());
    EXPECT_EQ(document.polygon_count(), result.mesh.connectivity().polygon_count());
    for (uint32_t p = 0; p < document.polygon_count(); ++p)
        EXPECT_EQ(document.corner_begin[p], result.mesh.connectivity().first_corner(p));
    return result;
}

using Ids = std::vector<uint32_t>;

TEST(ImportMesh, KeepsPolygonsWithoutRepeatedVertices) {
    const Import mesh = import("f 1 2 3 4\nf 4 3 5\n");
    EXPECT_EQ((Ids{0, 1, 2, 3, 3, 2, 4}), mesh.corner_vertex());
    EXPECT_EQ(6u, mesh.mesh.points().size());
    EXPECT_TRUE(mesh.imported.copy_of.empty());
    EXPECT_EQ(0u, mesh.imported.repeat_polygons);
}

TEST(ImportMesh, RepeatedVerticesBecomeAddedVerticesAtTheSamePosition) {
    const Import mesh = import("f 1 2 4 1 3\n");
    EXPECT_EQ((Ids{0, 1, 3, 6, 2}), mesh.corner_vertex());
    EXPECT_EQ(Ids{0}, mesh.imported.copy_of);
    const host::Float3 added = mesh.mesh.points().back();
    EXPECT_EQ(0.0f, added.x);
    EXPECT_EQ(0.0f, added.y);
    EXPECT_EQ(0.0f, added.z);
    EXPECT_EQ(1u, mesh.imported.repeat_polygons);
}

TEST(ImportMesh, SplitsAdjacentRepeatsSpikesAndTriples) {
    const Import neighbours = import("f 1 1 2 3\n");
    EXPECT_EQ((Ids{0, 6, 1, 2}), neighbours.corner_vertex());
    const Import spike = import("f 1 2 4 2\n");
    EXPECT_EQ((Ids{0, 1, 3, 6}), spike.corner_vertex());
    EXPECT_EQ(Ids{1}, spike.imported.copy_of);
    const Import triple = import("f 3 3 3\nf 1 2 3\n");
    EXPECT_EQ((Ids{2, 6, 7, 0, 1, 2}), triple.corner_vertex());
    EXPECT_EQ((Ids{2, 2}), triple.imported.copy_of);
    EXPECT_EQ(1u, triple.imported.repeat_polygons);
    EXPECT_EQ(8u, triple.mesh.points().size());
}

TEST(ImportMesh, NoPolygonOfTheResultRepeatsAVertex) {
    std::string face = "f";
    for (int i = 0; i < 1000; ++i)
        face += " " + std::to_string(1 + (i * 7) % 4);
    const Import mesh = import(face + "\n");
    Ids sorted = mesh.corner_vertex();
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted.end(), std::adjacent_find(sorted.begin(), sorted.end()));
    EXPECT_EQ(996u, mesh.imported.copy_of.size());
}

/// Number of diagonals that are also an edge, or a diagonal of another polygon that is not on the
/// same vertices.
size_t shared_diagonals(const host::Mesh& mesh) {
    const host::Connectivity& connectivity = mesh.connectivity();
    const std::vector<uint32_t> twins = tessora::polygon::first_twins(connectivity.polygons());
    std::map<std::pair<uint32_t, uint32_t>, std::set<uint32_t>> users; // polygons, by their twins
    std::set<std::pair<uint32_t, uint32_t>> edges;
    for (uint32_t e = 0; e < connectivity.edge_count(); ++e)
        edges.insert(std::minmax({connectivity.edge(e).first, connectivity.edge(e).second}));
    for (uint32_t p = 0; p < connectivity.polygon_count(); ++p) {
        const uint32_t n = connectivity.corners_of(p);
        for (uint32_t i = 0; i < mesh.triangles(p).size(); ++i) {
            const uint32_t a = mesh.triangles(p)[i];
            const uint32_t b = mesh.triangles(p)[i - i % 3 + (i + 1) % 3];
            const uint32_t first = connectivity.first_corner(p);
            if ((a + 1) % n != b && (b + 1) % n != a)
                users[std::minmax({connectivity.corner_vertex(first + a),
                                   connectivity.corner_vertex(first + b)})]
                    .insert(twins[p]);
        }
    }
    return static_cast<size_t>(std::count_if(users.begin(), users.end(), [&](const auto& use) {
        return use.second.size() != 1 || edges.count(use.first) != 0;
    }));
}

TEST(ImportMesh, CopiesOfAQuadAreNeverIsolated) {
    const Import four = import("f 1 2 3 4\nf 1 2 3 4\nf 4 3 2 1\nf 2 3 4 1\n");
    EXPECT_EQ(0u, four.imported.isolated_polygons);
    EXPECT_TRUE(four.imported.copy_of.empty());
    EXPECT_EQ(0u, shared_diagonals(four.mesh));
}

TEST(ImportMesh, APolygonWithARepeatedCornerKeepsItsEdges) {
    // The quad 1 2 3 5 with its first corner twice, and a neighbour across the edge 1-2.
    const Import repeat = import("f 1 1 2 3 5\nf 2 1 6\n");
    EXPECT_EQ(0u, repeat.imported.isolated_polygons);
    EXPECT_EQ(Ids{0}, repeat.imported.copy_of);
    const host::IndexSpan triangles = repeat.mesh.triangles(0);
    EXPECT_EQ((Ids{0, 1, 2}), Ids(triangles.begin(), triangles.begin() + 3)); // has no area
}

TEST(ImportMesh, QuadIsIsolatedIfBothDiagonalsAreEdges) {
    const Import both = import("f 1 2 3 4\nf 1 3 5\nf 2 4 6\n");
    EXPECT_EQ(1u, both.imported.isolated_polygons);
    EXPECT_EQ((Ids{6, 7, 8, 9, 0, 2, 4, 1, 3, 5}), both.corner_vertex());
    EXPECT_EQ(0u, import("f 1 2 3 4\nf 1 3 5\n").imported.isolated_polygons);
}

TEST(ImportMesh, PolygonsShareADiagonalOnlyIfTheyAreOnTheSameVertices) {
    std::mt19937 random(42);
    for (int round = 0; round < 300; ++round) {
        std::string faces;
        for (int p = 0; p < 8; ++p) {
            int ids[] = {1, 2, 3, 4, 5, 6};
            std::shuffle(ids, ids + 6, random);
            faces += "f";
            const size_t corners = 3 + random() % 4;
            for (size_t i = 0; i < corners; ++i)
                faces += " " + std::to_string(ids[i]);
            faces += "\n";
        }
        ASSERT_EQ(0u, shared_diagonals(import(faces).mesh)) << "round " << round << "\n" << faces;
    }
}

} // namespace
