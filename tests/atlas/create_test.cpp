// The engine's guarantees on meshes that each have one unusual property.
#include "atlas/geometry/adjacency.h"
#include "tests/atlas/shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace atlas_test;
using namespace tessora::atlas;

std::string all_faults(const Judgement& j) {
    std::string text;
    for (const std::string& fault : j.faults)
        text += fault + "\n";
    return text;
}

/// Unwraps in both modes and checks every guarantee; returns the judgement of quality mode.
Judgement unwrap(const TestMesh& mesh, Options options = {}, Result* kept = nullptr) {
    Judgement last;
    for (Quality quality : {Quality::fast, Quality::quality}) {
        options.quality = quality;
        Result result;
        const Failure failure = create(mesh.view(), options, result);
        EXPECT_EQ(failure.status, Status::ok) << describe(failure.status);
        if (failure.status != Status::ok)
            return last;
        last = judge(mesh, options, result, true, true);
        EXPECT_EQ(all_faults(last), "") << (quality == Quality::fast ? "fast" : "quality");
        if (kept != nullptr)
            *kept = result;
    }
    return last;
}

/// Unwraps in one of the modes.
Judgement unwrap_in(Quality quality, const TestMesh& mesh, Options options) {
    options.quality = quality;
    Result result;
    EXPECT_EQ(create(mesh.view(), options, result).status, Status::ok);
    return judge(mesh, options, result, true, true);
}

Options with_stretch(float stretch) {
    Options options;
    options.max_stretch = stretch;
    return options;
}

TEST(AtlasCreate, AnEmptyMeshGivesAnEmptyResult) {
    Result result;
    EXPECT_EQ(create(TestMesh{}.view(), {}, result).status, Status::ok);
    EXPECT_EQ(result.chart_count, 0u);
    EXPECT_TRUE(result.indices.empty());
}

TEST(AtlasCreate, OneTriangleIsOneUndistortedChart) {
    Result result;
    EXPECT_EQ(unwrap(loose_triangles(1), {}, &result).charts, 1u);
    EXPECT_EQ(result.stretch, 0.0f);
}

TEST(AtlasCreate, AFlatGridStaysOneChartWithoutSeams) {
    const Judgement j = unwrap(flat_grid(10, false), with_stretch(0));
    EXPECT_EQ(j.charts, 1u);
    EXPECT_EQ(j.seam, 0.0);
}

TEST(AtlasCreate, AFlatGridOfQuadsStaysOneChartWithoutSeams) {
    const Judgement j = unwrap(flat_grid(10, true), with_stretch(0));
    EXPECT_EQ(j.charts, 1u);
    EXPECT_EQ(j.seam, 0.0);
}

TEST(AtlasCreate, APlateWithAHoleStaysOneChartWithoutSeams) {
    const Judgement j = unwrap(washer(3), with_stretch(0));
    EXPECT_EQ(j.charts, 1u);
    EXPECT_EQ(j.seam, 0.0);
}

TEST(AtlasCreate, ACubeOfQuadsUnfoldsIntoOneChartWithoutStretch) {
    for (uint32_t n : {1u, 2u, 3u, 4u, 5u, 8u, 13u, 20u})
        for (Quality quality : {Quality::fast, Quality::quality}) {
            SCOPED_TRACE(std::to_string(n) + (quality == Quality::fast ? " fast" : " quality"));
            const TestMesh mesh = cube_of_quads(n);
            Options options;
            options.quality = quality;
            Result result;
            ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
            EXPECT_EQ(result.chart_count, 1u);
            EXPECT_EQ(result.stretch, 0.0f);
            EXPECT_EQ(all_faults(judge(mesh, options, result, true, n < 10)), "");
        }
}

TEST(AtlasCreate, ClosedSurfacesUnwrap) {
    unwrap(sphere(12));
    unwrap(torus(16, 32));
    unwrap(cylinder(24, 6, true));
}

TEST(AtlasCreate, AnOpenCylinderUnrollsToOneChart) {
    const Judgement j = unwrap(cylinder(24, 6, false));
    EXPECT_EQ(j.charts, 1u);
    EXPECT_LT(j.l2, 1.001);
}

TEST(AtlasCreate, APlateOfGenusFiveUnwraps) { unwrap(pierced_plate(5)); }

TEST(AtlasCreate, AMoebiusStripUnwraps) { unwrap(moebius(24)); }

TEST(AtlasCreate, AFanOfMoreThan360DegreesDoesNotOverlapItself) {
    unwrap(fan(12, 1.5));
    unwrap(fan(12, 3));
}

TEST(AtlasCreate, TwoTrianglesFoldedOntoEachOtherUnwrap) {
    TestMesh mesh;
    const uint32_t a = mesh.vertex(0, 0, 0), b = mesh.vertex(1, 0, 0);
    mesh.triangle(a, b, mesh.vertex(0, 1, 0));
    mesh.triangle(b, a, mesh.vertex(0.1f, 1, 0));
    mesh.connect();
    unwrap(mesh);
}

TEST(AtlasCreate, FalseEdgesThatCannotBelongToAPolygonBecomeReal) {
    TestMesh mesh;
    const uint32_t a = mesh.vertex(0, 0, 0), b = mesh.vertex(1, 0, 0), c = mesh.vertex(0, 1, 0);
    mesh.triangle(a, b, c);
    mesh.triangle(a, c, b);
    mesh.connect();
    mesh.false_edges.assign(6, 0u); // a closed surface
    Result result;
    ASSERT_EQ(create(mesh.view(), {}, result).status, Status::ok);
    mesh.false_edges.clear();
    EXPECT_EQ(all_faults(judge(mesh, {}, result, true, true)), "");
}

TestMesh three_on_one_edge() {
    TestMesh mesh;
    const uint32_t a = mesh.vertex(0, 0, 0), b = mesh.vertex(1, 0, 0);
    mesh.triangle(a, b, mesh.vertex(0, 1, 0));
    mesh.triangle(b, a, mesh.vertex(0, -1, 0));
    mesh.triangle(b, a, mesh.vertex(0, 0, 1));
    mesh.connect();
    return mesh;
}

TEST(AtlasCreate, ThreeTrianglesOnOneEdgeWithoutNeighboursHaveABorderThere) {
    EXPECT_EQ(unwrap(three_on_one_edge()).charts, 3u);
}

TEST(AtlasCreate, TwoOfThreeTrianglesOnOneEdgeThatNameEachOtherAreNeighbours) {
    TestMesh mesh = three_on_one_edge();
    mesh.adjacency[0] = 2;
    mesh.adjacency[6] = 0;
    Result result;
    EXPECT_EQ(unwrap(mesh, {}, &result).charts, 2u);
    EXPECT_EQ(result.chart[0], result.chart[2]);
}

TEST(AtlasCreate, NeighboursAtACrowdedEdgeThatDoNotNameEachOtherHaveABorderThere) {
    TestMesh mesh = three_on_one_edge();
    mesh.adjacency[0] = 2;
    mesh.adjacency[6] = 1;
    EXPECT_EQ(unwrap(mesh).charts, 3u);
}

TEST(AtlasCreate, NeighboursAtACrowdedEdgeThatRunAlikeHaveABorderThere) {
    TestMesh mesh = three_on_one_edge();
    mesh.adjacency[3] = 2;
    mesh.adjacency[6] = 1;
    EXPECT_EQ(unwrap(mesh).charts, 3u);
}

/// The mesh and a copy of it on the same vertices, wound alike or against it; each is adjacent to
/// itself only.
TestMesh doubled(TestMesh mesh, bool reversed) {
    const uint32_t corners = uint32_t(mesh.indices.size());
    mesh.false_edges.resize(corners, k_none);
    for (uint32_t h = 0; h < corners; h++) {
        const uint32_t t = h / 3, k = h % 3;
        const uint32_t corner = reversed ? 3 * t + (3 - k) % 3 : h;
        const uint32_t edge = reversed ? 3 * t + 2 - k : h;
        mesh.indices.push_back(mesh.indices[corner]);
        mesh.adjacency.push_back(
            mesh.adjacency[edge] == k_none ? k_none : mesh.adjacency[edge] + corners / 3);
        mesh.false_edges.push_back(mesh.false_edges[edge]);
    }
    return mesh;
}

TEST(AtlasOrder, TheOrderOfTheTrianglesDoesNotMatter) {
    TestMesh mesh = torus(24, 10);
    for (size_t i = 0; i < mesh.positions.size(); ++i) // no two parts are alike
        mesh.positions[i] += 0.02f * float(std::sin(double(i * i)));
    TestMesh turned; // the same triangles from the middle on, then those before it
    turned.positions = mesh.positions;
    const size_t half = mesh.indices.size() / 6 * 3;
    turned.indices.assign(mesh.indices.begin() + long(half), mesh.indices.end());
    turned.indices.insert(turned.indices.end(), mesh.indices.begin(),
                          mesh.indices.begin() + long(half));
    mesh.false_edges.clear();
    mesh.connect();
    turned.connect();
    for (Quality quality : {Quality::fast, Quality::quality}) {
        Options options;
        options.quality = quality;
        Result first, second;
        std::vector<uint32_t> adjacency;
        ASSERT_EQ(partition(mesh.view(), options, first, adjacency).status, Status::ok);
        ASSERT_EQ(partition(turned.view(), options, second, adjacency).status, Status::ok);
        ASSERT_EQ(first.chart_count, second.chart_count);
        const size_t faces = mesh.faces(), moved = half / 3;
        for (size_t t = 0; t < faces; ++t) // the same triangles share a chart
            EXPECT_EQ(first.chart[t] == first.chart[0], second.chart[(t + faces - moved) % faces] ==
                                                            second.chart[(faces - moved) % faces]);
    }
}

TEST(AtlasSheets, ACopyHasTheChartsOfItsSheet) {
    for (const bool reversed : {false, true})
        for (const TestMesh& mesh : {cube_of_quads(3), sphere(12), torus(20, 8)}) {
            // partition() neither cuts for the texture nor compares modes by what they cover
            const TestMesh both = doubled(mesh, reversed);
            Result once, result;
            std::vector<uint32_t> adjacency;
            ASSERT_EQ(partition(mesh.view(), {}, once, adjacency).status, Status::ok);
            ASSERT_EQ(partition(both.view(), {}, result, adjacency).status, Status::ok);
            EXPECT_EQ(result.chart_count, 2 * once.chart_count);
            unwrap(both);
            for (uint32_t t = 0; t < mesh.faces(); t++)
                for (uint32_t other = 0; other < t; other++)
                    ASSERT_EQ(result.chart[t] == result.chart[other],
                              result.chart[t + mesh.faces()] == result.chart[other + mesh.faces()]);
        }
}

TEST(AtlasSheets, ACopyDividedAlongOtherDiagonalsHasTheChartsOfItsSheet) {
    TestMesh mesh = flat_grid(4, true);
    const uint32_t once = unwrap(mesh).charts, faces = mesh.faces();
    for (uint32_t t = 0; t < faces; t += 2) { // quads are (a b c)(a c d): now (b c d)(b d a)
        const uint32_t a = mesh.indices[3 * t], b = mesh.indices[3 * t + 1],
                       c = mesh.indices[3 * t + 2], d = mesh.indices[3 * t + 5];
        mesh.triangle(b, c, d);
        mesh.triangle(b, d, a);
    }
    // Neighbours by the quads' sides: the first grid's entry, looked up by its vertices.
    const TestMesh first = flat_grid(4, true);
    for (uint32_t h = 3 * faces; h < mesh.indices.size(); h++) {
        const uint32_t next = h % 3 == 2 ? h - 2 : h + 1;
        uint32_t neighbour = k_none, marked = k_none;
        for (uint32_t g = 3 * faces; g < mesh.indices.size(); g++)
            if (mesh.indices[g] == mesh.indices[next] &&
                mesh.indices[g % 3 == 2 ? g - 2 : g + 1] == mesh.indices[h]) {
                neighbour = g / 3;
                marked = (g - 3 * faces) / 6 == (h - 3 * faces) / 6 ? 0 : k_none;
            }
        mesh.adjacency.push_back(neighbour);
        mesh.false_edges.push_back(marked);
    }
    EXPECT_EQ(unwrap(mesh).charts, 2 * once);
}

TEST(AtlasSheets, SheetsThatCorrespondInPartOnlyAreNoCopies) {
    // Triangles 2 and 3 are twins of 0 and 1 and neighbours; but 0 is followed by another triangle,
    // and a chain of them leads around to 1.
    const uint32_t corners[][3] = {{0, 1, 2}, {1, 0, 3}, {0, 1, 2}, {1, 0, 3}, {1, 0, 4},
                                   {4, 0, 5}, {3, 0, 6}, {4, 5, 7}, {3, 6, 7}, {4, 7, 6}};
    TestMesh mesh;
    for (int v = 0; v < 8; ++v)
        mesh.vertex(float(std::cos(v)), float(std::sin(v)), float(v % 3));
    for (const auto& c : corners)
        mesh.triangle(c[0], c[1], c[2]);
    mesh.connect();
    const auto join = [&](uint32_t g, uint32_t h) {
        mesh.adjacency[g] = h / 3;
        mesh.adjacency[h] = g / 3;
    };
    join(3 * 2, 3 * 3);
    join(3 * 0, 3 * 4);
    join(3 * 1 + 1, 3 * 6);
    Result result;
    ASSERT_EQ(create(mesh.view(), {}, result).status, Status::ok);
    EXPECT_EQ(judge(mesh, {}, result, true, true).faults, std::vector<std::string>{});
}

TEST(AtlasSheets, TheStretchOfACopyDividedAlongOtherDiagonalsIsReported) {
    TestMesh mesh;
    for (const auto& p : {std::array<float, 3>{0, 0, 0}, {1, 0, 1}, {1, 1, 0}, {0, 1, 1}})
        mesh.vertex(p[0], p[1], p[2]);
    for (const auto& t : {std::array<uint32_t, 3>{0, 1, 2}, {0, 2, 3}, {1, 2, 3}, {1, 3, 0}})
        mesh.triangle(t[0], t[1], t[2]);
    mesh.adjacency.assign(12, k_none);
    mesh.false_edges.assign(12, k_none);
    for (const auto& [h, t] : {std::pair<uint32_t, uint32_t>{2, 1}, {3, 0}, {8, 3}, {9, 2}}) {
        mesh.adjacency[h] = t;
        mesh.false_edges[h] = 0;
    }
    Options options;
    options.max_stretch = 0.9f;
    Result result;
    ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
    EXPECT_EQ(result.chart_count, 2u);
    EXPECT_GT(result.stretch, 0.01f); // the first division alone unfolds without any
    EXPECT_EQ(judge(mesh, options, result, true, true).faults, std::vector<std::string>{});
}

/// A polygon and the same one wound against it, joined along its first `sides` sides.
TestMesh folded_pair(uint32_t corners, uint32_t sides) {
    TestMesh mesh;
    std::vector<uint32_t> front;
    for (uint32_t i = 0; i < corners; ++i)
        front.push_back(
            mesh.vertex(float(std::cos(2 * i)), float(std::sin(2 * i)), 0.1f * float(i)));
    mesh.polygon(front);
    mesh.connect();
    const TestMesh half = mesh;
    const uint32_t entries = uint32_t(half.indices.size());
    for (uint32_t h = 0; h < entries; ++h) { // corner order c, b, a: edge k lies at 1 - k
        const uint32_t t = h / 3, from = 3 * t + 2 - h % 3, edge = 3 * t + (4 - h % 3) % 3;
        mesh.indices.push_back(half.indices[from]);
        mesh.adjacency.push_back(
            half.adjacency[edge] == k_none ? k_none : half.adjacency[edge] + entries / 3);
        mesh.false_edges.push_back(half.false_edges[edge]);
    }
    const auto joins = [&](uint32_t from, uint32_t to) {
        return mesh.indices[from] < sides && mesh.indices[to] == (mesh.indices[from] + 1) % corners;
    };
    for (uint32_t g = 0; g < entries; ++g)
        for (uint32_t h = entries; h < 2 * entries; ++h) {
            const uint32_t g1 = g % 3 == 2 ? g - 2 : g + 1, h1 = h % 3 == 2 ? h - 2 : h + 1;
            if (mesh.indices[g] == mesh.indices[h1] && mesh.indices[g1] == mesh.indices[h] &&
                joins(g, g1)) {
                mesh.adjacency[g] = h / 3;
                mesh.adjacency[h] = g / 3;
            }
        }
    return mesh;
}

TEST(AtlasSheets, APolygonFoldedOntoItsTwinIsOneChartWithIt) {
    for (const uint32_t corners : {3u, 4u})
        for (uint32_t sides = 1; sides <= corners; ++sides)
            EXPECT_EQ(unwrap(folded_pair(corners, sides)).charts, 1u) << corners << ' ' << sides;
}

TEST(AtlasSheets, APolygonFoldedOntoItsTwinIsApartFromItWhereCopiesStack) {
    Options options;
    options.stack = true;
    Result result;
    ASSERT_EQ(create(folded_pair(4, 2).view(), options, result).status, Status::ok);
    EXPECT_EQ(result.chart_count, 2u);
}

TEST(AtlasSheets, ClosedSetsOfFalseEdgesAreNoTwins) {
    TestMesh mesh;
    for (int v = 0; v < 4; ++v)
        mesh.vertex(float(v == 1), float(v == 2), float(v == 3));
    for (const auto& t : {std::array<uint32_t, 3>{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}})
        mesh.triangle(t[0], t[1], t[2]);
    mesh.connect();
    mesh.false_edges.assign(12, 0u);
    TestMesh twice = doubled(mesh, false);
    Result result;
    ASSERT_EQ(create(twice.view(), {}, result).status, Status::ok);
    twice.false_edges.clear();
    EXPECT_EQ(judge(twice, {}, result, true, true).faults, std::vector<std::string>{});
}

TEST(AtlasSheets, StackedCopiesShareThePlaceOfTheirSheet) {
    for (const bool reversed : {false, true}) {
        const TestMesh once = cube_of_quads(2), twice = doubled(once, reversed);
        Options options;
        options.stack = true;
        Result result;
        ASSERT_EQ(create(twice.view(), options, result).status, Status::ok);
        for (uint32_t t = 0; t < once.faces(); t++)
            for (uint32_t k = 0; k < 3; k++)
                for (uint32_t j = 0; j < 3; j++) {
                    const uint32_t a = result.indices[3 * t + k];
                    const uint32_t b = result.indices[3 * (t + once.faces()) + j];
                    if (result.source_vertex[a] != result.source_vertex[b])
                        continue;
                    EXPECT_NE(a, b);
                    EXPECT_EQ(result.uvs[2 * a], result.uvs[2 * b]);
                    EXPECT_EQ(result.uvs[2 * a + 1], result.uvs[2 * b + 1]);
                }
    }
}

TEST(AtlasSheets, PartitionOpensCopiesLikeTheirSheets) {
    const TestMesh once = cube_of_quads(2), twice = doubled(once, false);
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(twice.view(), {}, result, adjacency).status, Status::ok);
    for (uint32_t h = 0; h < once.indices.size(); h++)
        EXPECT_EQ(adjacency[h] == k_none, adjacency[h + once.indices.size()] == k_none);
}

/// Adds a part again: each vertex where `place` puts it, every polygon wound the other way if
/// `reversed`, from its last corner then, so that quads get other diagonals.
template <class Place>
void add_part(TestMesh& mesh, const TestMesh& part, bool reversed, const Place& place) {
    const uint32_t first = uint32_t(mesh.positions.size() / 3);
    for (size_t v = 0; v < part.positions.size(); v += 3) {
        const std::array<float, 3> p = place(
            std::array<float, 3>{part.positions[v], part.positions[v + 1], part.positions[v + 2]});
        mesh.vertex(p[0], p[1], p[2]);
    }
    for (size_t c = 0; c < part.indices.size(); c += 6) { // quads are (a b c)(a c d)
        const uint32_t* const v = &part.indices[c];
        std::vector<uint32_t> corners = {first + v[0], first + v[1], first + v[2], first + v[5]};
        if (reversed)
            std::reverse(corners.begin(), corners.end());
        mesh.polygon(corners);
    }
}

/// A bent sheet of quads without any symmetry.
TestMesh bent_sheet() {
    TestMesh sheet = flat_grid(12, true);
    for (size_t v = 0; v < sheet.positions.size(); v += 3)
        sheet.positions[v + 2] +=
            2 * float(std::sin(0.013 * double(v)) * std::cos(0.21 * sheet.positions[v]));
    return sheet;
}

/// Per vertex and vertex of a part: whether their distance in the texture is that of the part's
/// first instance; -1 for pairs in different charts. Pairs of neighbours in a polygon only.
std::vector<double> side_lengths(const TestMesh& mesh, const Result& result, uint32_t instance,
                                 uint32_t instances) {
    const uint32_t vertices = uint32_t(mesh.positions.size() / 3) / instances;
    std::vector<std::array<double, 3>> sides; // (from, to, length)
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        const uint32_t next = h % 3 == 2 ? h - 2 : h + 1;
        const uint32_t a = mesh.indices[h], b = mesh.indices[next];
        if (a / vertices != instance || mesh.false_edges[h] != k_none)
            continue;
        const float* p = &result.uvs[2 * size_t(result.indices[h])];
        const float* q = &result.uvs[2 * size_t(result.indices[next])];
        sides.push_back({double(std::min(a, b) % vertices), double(std::max(a, b) % vertices),
                         std::hypot(p[0] - q[0], p[1] - q[1])});
    }
    std::sort(sides.begin(), sides.end());
    std::vector<double> lengths;
    for (const auto& side : sides)
        lengths.push_back(side[2]);
    return lengths;
}

TEST(AtlasRepeats, PartsThatRepeatAreLaidOutAlike) {
    const TestMesh part = bent_sheet();
    TestMesh mesh;
    add_part(mesh, part, false, [](std::array<float, 3> p) { return p; });
    add_part(mesh, part, false, [](std::array<float, 3> p) {
        return std::array<float, 3>{p[1] + 40, p[2], p[0]};
    });
    add_part(mesh, part, true, [](std::array<float, 3> p) { // a mirror image
        return std::array<float, 3>{-p[0] - 7, p[1], p[2]};
    });
    mesh.connect();
    Result result;
    const Judgement judgement = unwrap(mesh, {}, &result);
    EXPECT_EQ(judgement.charts % 3, 0u);
    const std::vector<double> first = side_lengths(mesh, result, 0, 3);
    for (const uint32_t instance : {1u, 2u}) {
        const std::vector<double> other = side_lengths(mesh, result, instance, 3);
        ASSERT_EQ(first.size(), other.size());
        for (size_t i = 0; i < first.size(); ++i)
            ASSERT_NEAR(first[i], other[i], 3e-7) << instance;
    }
}

/// The same triangles in another order: every `step`-th one from the last on, from each start.
TestMesh listed_in_steps(const TestMesh& mesh, uint32_t step, std::vector<uint32_t>& place) {
    std::vector<uint32_t> order;
    for (uint32_t first = 0; first < step; ++first)
        for (uint32_t t = first; t < mesh.faces(); t += step)
            order.push_back(mesh.faces() - 1 - t);
    place.assign(order.size(), 0);
    for (uint32_t i = 0; i < order.size(); ++i)
        place[order[i]] = i;
    TestMesh listed;
    listed.positions = mesh.positions;
    for (uint32_t t : order)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            const uint32_t other = mesh.adjacency[h];
            listed.indices.push_back(mesh.indices[h]);
            listed.adjacency.push_back(other == k_none ? k_none : place[other]);
            listed.false_edges.push_back(mesh.false_edges[h]);
        }
    return listed;
}

TEST(AtlasRepeats, TheOrderOfTheTrianglesDoesNotMatterWhereManyPartsRepeat) {
    TestMesh mesh;
    for (uint32_t i = 0; i < 12; ++i) {
        const float shift = 40 * float(i);
        add_part(mesh, bent_sheet(), i % 3 == 0, [&](std::array<float, 3> p) {
            return i % 3 == 0   ? std::array<float, 3>{-p[0] - shift, p[1], p[2]}
                   : i % 3 == 1 ? std::array<float, 3>{p[1] + shift, p[2], p[0]}
                                : std::array<float, 3>{p[0], p[1] + shift, p[2]};
        });
    }
    mesh.connect();
    Result result;
    EXPECT_EQ(create(mesh.view(), {}, result).status, Status::ok);
    for (const uint32_t step : {2u, 7u, 100u}) {
        std::vector<uint32_t> place;
        const TestMesh listed = listed_in_steps(mesh, step, place);
        Result other;
        EXPECT_EQ(create(listed.view(), {}, other).status, Status::ok);
        double farthest = 0; // the same corners in the two layouts
        for (uint32_t c = 0; c < mesh.indices.size(); ++c)
            for (uint32_t k = 0; k < 2; ++k)
                farthest = std::max(
                    farthest, std::abs(double(result.uvs[2 * result.indices[c] + k]) -
                                       other.uvs[2 * other.indices[3 * place[c / 3] + c % 3] + k]));
        EXPECT_LT(farthest, 1e-5) << step;
    }
}

TEST(AtlasRepeats, PartsThatDifferInOneVertexAreLaidOutEachByItself) {
    const TestMesh part = flat_grid(6, true);
    TestMesh mesh;
    add_part(mesh, part, false, [](std::array<float, 3> p) { return p; });
    add_part(mesh, part, false, [&](std::array<float, 3> p) {
        const bool moved = p[0] == part.positions[72] && p[1] == part.positions[73];
        return std::array<float, 3>{p[0] + (moved ? 20.05f : 20), p[1], p[2]};
    });
    mesh.connect();
    Result result;
    EXPECT_NEAR(unwrap(mesh, {}, &result).l2, 1, 1e-6);
    const std::vector<double> first = side_lengths(mesh, result, 0, 2),
                              other = side_lengths(mesh, result, 1, 2);
    double largest = 0;
    for (size_t i = 0; i < first.size(); ++i)
        largest = std::max(largest, std::abs(first[i] / other[i] - 1));
    EXPECT_GT(largest, 0.02);
}

TEST(AtlasRepeats, StackingTwinsLeavesRepeatsApart) {
    TestMesh mesh;
    const TestMesh part = bent_sheet();
    add_part(mesh, part, false, [](std::array<float, 3> p) { return p; });
    add_part(mesh, part, false, [](std::array<float, 3> p) {
        return std::array<float, 3>{p[0], p[1], p[2] + 9};
    });
    mesh.connect();
    Options options;
    options.stack = true;
    unwrap(mesh, options); // finds overlaps
}

TEST(AtlasRepeats, PartsThatAreDoubledAndRepeatedUnwrap) {
    const TestMesh part = doubled(cube_of_quads(2), true);
    TestMesh mesh;
    for (const float x : {0.0f, 5.0f}) {
        const uint32_t first = uint32_t(mesh.positions.size() / 3), face = mesh.faces();
        for (size_t i = 0; i < part.positions.size(); ++i)
            mesh.positions.push_back(part.positions[i] + (i % 3 == 0 ? x : 0));
        for (size_t h = 0; h < part.indices.size(); ++h) {
            mesh.indices.push_back(part.indices[h] + first);
            mesh.adjacency.push_back(part.adjacency[h] == k_none ? k_none
                                                                 : part.adjacency[h] + face);
            mesh.false_edges.push_back(part.false_edges[h]);
        }
    }
    EXPECT_EQ(unwrap(mesh).charts % 4, 0u);
}

TEST(AtlasLoose, TrianglesThatRepeatAVertexCostNoChartAndOpenNothing) {
    TestMesh mesh = flat_grid(4, false);
    const uint32_t faces = mesh.faces();
    for (uint32_t t = 0; t < faces; t += 2) {
        const uint32_t a = mesh.indices[3 * t], b = mesh.indices[3 * t + 1];
        mesh.triangle(a, b, b);
        mesh.triangle(b, a, b);
        mesh.triangle(a, a, a);
    }
    mesh.adjacency.resize(mesh.indices.size(), k_none);
    EXPECT_EQ(unwrap(mesh, with_stretch(0)).charts, 1u);
}

/// Every third triangle followed by one on its first edge, with two corners in one place.
TestMesh with_repeats(const TestMesh& clean) {
    TestMesh mesh;
    mesh.positions = clean.positions;
    for (uint32_t t = 0; t < clean.faces(); ++t) {
        const uint32_t* v = &clean.indices[3 * t];
        mesh.triangle(v[0], v[1], v[2]);
        const float* p = &clean.positions[3 * v[1]];
        if (t % 3 == 0)
            mesh.triangle(v[0], v[1], mesh.vertex(p[0], p[1], p[2]));
    }
    return mesh;
}

void connect_as_sheets(TestMesh& mesh) {
    mesh.adjacency.resize(mesh.indices.size());
    ASSERT_EQ(face_adjacency(mesh.indices.data(), mesh.faces(), uint32_t(mesh.positions.size() / 3),
                             {reinterpret_cast<const unsigned char*>(mesh.positions.data()), 12},
                             mesh.adjacency.data()),
              AdjacencyResult::ok);
}

/// A sphere, one of whose triangles is divided in two; a first triangle without area connects them
/// to their neighbour.
TestMesh patched_sphere() {
    const TestMesh whole = sphere(8);
    TestMesh mesh;
    mesh.positions = whole.positions;
    const uint32_t a = whole.indices[0], b = whole.indices[1], c = whole.indices[2];
    const auto middle = [&](int axis) {
        return (whole.positions[3 * a + axis] + whole.positions[3 * b + axis]) / 2;
    };
    const uint32_t m = mesh.vertex(middle(0), middle(1), middle(2));
    mesh.triangle(a, b, m);
    mesh.triangle(a, m, c);
    mesh.triangle(m, b, c);
    for (uint32_t t = 1; t < whole.faces(); ++t)
        mesh.triangle(whole.indices[3 * t], whole.indices[3 * t + 1], whole.indices[3 * t + 2]);
    return mesh;
}

TEST(AtlasLoose, TrianglesThatRepeatAPlaceMoveNoOther) {
    TestMesh clean = patched_sphere();
    TestMesh repeats = with_repeats(clean);
    connect_as_sheets(clean);
    connect_as_sheets(repeats);
    for (const Quality quality : {Quality::fast, Quality::quality}) {
        Options options;
        options.quality = quality;
        Result expected, result;
        ASSERT_EQ(create(clean.view(), options, expected).status, Status::ok);
        ASSERT_EQ(create(repeats.view(), options, result).status, Status::ok);
        EXPECT_EQ(result.chart_count, expected.chart_count);
        for (uint32_t t = 0; t < clean.faces(); ++t)
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
                const uint32_t own = result.indices[c + 3 * ((t + 2) / 3)];
                const uint32_t other = expected.indices[c];
                EXPECT_EQ(result.uvs[2 * own], expected.uvs[2 * other]);
                EXPECT_EQ(result.uvs[2 * own + 1], expected.uvs[2 * other + 1]);
            }
    }
}

TEST(AtlasLoose, ATriangleWithoutAreaLiesOnItsNeighboursEdge) {
    TestMesh mesh;
    const uint32_t a = mesh.vertex(0, 0, 0), b = mesh.vertex(1, 0, 0), c = mesh.vertex(0, 1, 0);
    mesh.triangle(a, b, c);
    mesh.triangle(b, a, mesh.vertex(0.25f, 0, 0));
    mesh.adjacency.assign(6, k_none);
    Result result;
    EXPECT_EQ(unwrap(mesh, {}, &result).charts, 1u);
    const auto uv = [&](uint32_t corner, int axis) {
        return result.uvs[2 * result.indices[corner] + axis];
    };
    for (int axis = 0; axis < 2; axis++)
        EXPECT_NEAR(uv(5, axis), 0.75f * uv(0, axis) + 0.25f * uv(1, axis), 1e-6f);
}

TEST(AtlasLoose, TrianglesWithoutAreaAndNeighboursAreChartsOfTheirOwn) {
    TestMesh mesh;
    for (float x : {0.0f, 5.0f}) {
        const uint32_t a = mesh.vertex(x, 0, 0), b = mesh.vertex(x + 1, 0, 0);
        mesh.triangle(a, b, mesh.vertex(x + 0.5f, 0, 0));
    }
    mesh.triangle(0, 1, 1); // hangs on the first
    mesh.adjacency.assign(9, k_none);
    EXPECT_EQ(unwrap(mesh).charts, 2u);
}

/// The part of the unit sphere within `angle` of its pole.
TestMesh dome(double angle, uint32_t rings) {
    constexpr double k_turn = 6.283185307179586;
    const uint32_t around = 2 * rings;
    TestMesh mesh;
    mesh.vertex(0, 0, 1);
    for (uint32_t j = 1; j <= rings; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const double a = k_turn * i / around, b = angle * j / rings;
            mesh.vertex(float(std::sin(b) * std::cos(a)), float(std::sin(b) * std::sin(a)),
                        float(std::cos(b)));
        }
    for (uint32_t j = 0; j < rings; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const uint32_t c = 1 + j * around + i, d = 1 + j * around + (i + 1) % around;
            if (j == 0) {
                mesh.triangle(0, c, d);
                continue;
            }
            mesh.triangle(c - around, c, d);
            mesh.triangle(c - around, d, d - around);
        }
    mesh.connect();
    return mesh;
}

TEST(AtlasCreate, ADomeIsOneChart) {
    for (const uint32_t rings : {8u, 12u, 20u})
        EXPECT_EQ(unwrap(dome(1.57, rings)).charts, 1u) << rings << " rings";
}

TEST(AtlasCreate, AnOpeningOnOneSideIsABorderOnBoth) {
    TestMesh mesh = flat_grid(1, false);
    mesh.adjacency[3] = mesh.adjacency[4] = mesh.adjacency[5] = k_none;
    EXPECT_EQ(unwrap(mesh).charts, 2u);
}

TEST(AtlasCreate, AVertexSharedByTwoSheetsIsSplit) {
    TestMesh mesh;
    const uint32_t hub = mesh.vertex(0, 0, 0);
    mesh.triangle(hub, mesh.vertex(1, 0, 0), mesh.vertex(1, 1, 0));
    mesh.triangle(hub, mesh.vertex(-1, 0, 0), mesh.vertex(-1, -1, 0));
    mesh.connect();
    EXPECT_EQ(unwrap(mesh).charts, 2u);
}

TEST(AtlasCreate, LinesFarShorterThanTheMeshGetFiniteCoordinates) {
    TestMesh mesh;
    mesh.vertex(-29, -25.75f, 0);
    const uint32_t a = mesh.vertex(0, 0, 0), b = mesh.vertex(0, 0, 9e-44f);
    mesh.triangle(b, a, b);
    mesh.triangle(b, 0, 0);
    mesh.connect();
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(mesh.view(), Options(), result, adjacency).status, Status::ok);
    for (const float coordinate : result.uvs)
        EXPECT_TRUE(std::isfinite(coordinate));
}

TEST(AtlasCreate, PointsBesideATinyLineGetFiniteCoordinates) {
    TestMesh mesh;
    for (int i = 0; i < 9; ++i)
        mesh.vertex(0, 0, i == 1 ? 8.5e-44f : 0);
    mesh.indices.assign(29, 0);
    for (const uint32_t v :
         {5, 0, 8, 0, 0, 8, 3, 3, 3, 3, 3, 3, 3, 3, 5, 1, 6, 4, 3, 5, 5, 3, 3, 3, 6})
        mesh.indices.push_back(v);
    mesh.adjacency.assign(54, k_none);
    Options options;
    options.quality = Quality::quality;
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(mesh.view(), options, result, adjacency).status, Status::ok);
    for (const float coordinate : result.uvs)
        EXPECT_TRUE(std::isfinite(coordinate)) << coordinate;
}

TEST(AtlasCreate, DegenerateTrianglesAreKept) {
    TestMesh mesh = flat_grid(4, false);
    const uint32_t a = mesh.vertex(9, 9, 9);
    mesh.triangle(0, 0, 1);
    mesh.triangle(a, a, a);
    mesh.triangle(2, 3, a);
    mesh.positions[3 * a] = mesh.positions[6];
    mesh.positions[3 * a + 1] = mesh.positions[7];
    mesh.positions[3 * a + 2] = mesh.positions[8];
    mesh.connect();
    unwrap(mesh);
}

TEST(AtlasCreate, DuplicateTrianglesAreKept) {
    TestMesh mesh = flat_grid(2, false);
    mesh.triangle(mesh.indices[0], mesh.indices[1], mesh.indices[2]);
    mesh.triangle(mesh.indices[0], mesh.indices[1], mesh.indices[2]);
    mesh.connect();
    unwrap(mesh);
}

TEST(AtlasCreate, AThousandLooseTrianglesKeepTheGutter) {
    EXPECT_EQ(unwrap(loose_triangles(1000)).charts, 1000u);
}

TEST(AtlasCreate, APolygonWithAHoleStaysOneChart) {
    Result result;
    const Judgement j = unwrap(ring_polygon(12), with_stretch(0), &result);
    EXPECT_EQ(j.charts, 1u);
    EXPECT_TRUE(result.over_limit.empty());
}

TEST(AtlasCreate, ANonPlanarPolygonBeyondTheStretchLimitIsListed) {
    TestMesh mesh;
    std::vector<uint32_t> corners;
    for (int i = 0; i < 8; ++i) // a zigzag around the hub
        corners.push_back(mesh.vertex(float(std::cos(i * 0.785)), float(std::sin(i * 0.785)),
                                      i % 2 ? 3.0f : -3.0f));
    const uint32_t hub = mesh.vertex(0, 0, 0);
    for (int i = 0; i < 8; ++i)
        mesh.triangle(hub, corners[size_t(i)], corners[size_t(i + 1) % 8]);
    mesh.connect();
    for (uint32_t n : mesh.adjacency)
        mesh.false_edges.push_back(n == k_none ? n : 0u);
    Result result;
    unwrap(mesh, {}, &result);
    EXPECT_EQ(result.over_limit.size(), 8u);
}

TEST(AtlasCreate, QuadsAMillionTimesAsHighAsWideUnwrap) {
    TestMesh mesh;
    std::vector<uint32_t> low, high;
    for (int i = 0; i < 20; ++i) {
        low.push_back(mesh.vertex(float(i) * 1e-6f, 0, 0));
        high.push_back(mesh.vertex(float(i) * 1e-6f, 1, 0.1f * float(i % 2)));
    }
    for (size_t i = 0; i + 1 < low.size(); ++i)
        mesh.polygon({low[i], low[i + 1], high[i + 1], high[i]});
    mesh.connect();
    unwrap(mesh);
}

TEST(AtlasCreate, ScalingTheMeshDoesNotChangeTheResult) {
    for (const TestMesh& original : {torus(16, 32), cube_of_quads(3), fan(12, 1.5)}) {
        Result first;
        ASSERT_EQ(create(original.view(), {}, first).status, Status::ok);
        for (float factor : {1.0f / 1048576, 1048576.0f}) {
            TestMesh mesh = original;
            for (float& x : mesh.positions)
                x *= factor;
            Result result;
            ASSERT_EQ(create(mesh.view(), {}, result).status, Status::ok);
            EXPECT_EQ(result.chart, first.chart);
            EXPECT_EQ(result.uvs, first.uvs);
        }
    }
}

TEST(AtlasCreate, TheSameInputGivesIdenticalResults) {
    const TestMesh mesh = torus(16, 32);
    Result first, second;
    ASSERT_EQ(create(mesh.view(), {}, first).status, Status::ok);
    const std::vector<char> other_memory(12345, 'x');
    const TestMesh copy = mesh;
    ASSERT_EQ(create(copy.view(), {}, second).status, Status::ok);
    EXPECT_EQ(first.uvs, second.uvs);
    EXPECT_EQ(first.indices, second.indices);
}

TEST(AtlasCreate, CoordinatesStayWithinNarrowTextures) {
    Options options;
    options.width = 1024;
    options.height = 256;
    options.gutter = 8;
    unwrap(cube_of_quads(2), options);
    std::swap(options.width, options.height);
    unwrap(cube_of_quads(2), options);
}

TEST(AtlasCreate, AGutterAsWideAsTheTextureDoesNotFit) {
    Options options;
    options.gutter = 512;
    Result result;
    const Failure failure = create(loose_triangles(3).view(), options, result);
    EXPECT_EQ(failure.status, Status::does_not_fit);
    EXPECT_EQ(failure.element, 3u);
    EXPECT_TRUE(result.indices.empty());
}

TEST(AtlasCreate, ExceedingTheChartLimitFailsWithTheNumberOfCharts) {
    Options options;
    options.max_charts = 2;
    Result result;
    const Failure failure = create(loose_triangles(3).view(), options, result);
    EXPECT_EQ(failure.status, Status::chart_limit);
    EXPECT_EQ(failure.element, 3u);
    options.max_charts = 3;
    EXPECT_EQ(create(loose_triangles(3).view(), options, result).status, Status::ok);
}

/// A row of quads, each 1 wide and `height` high.
TestMesh row_of_quads(uint32_t count, float height = 1) {
    TestMesh mesh;
    for (uint32_t i = 0; i <= count; ++i) {
        mesh.vertex(float(i), 0, 0);
        mesh.vertex(float(i), height, 0);
    }
    for (uint32_t i = 0; i < count; ++i)
        mesh.polygon({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    mesh.connect();
    return mesh;
}

TEST(AtlasCutToPack, ALongStripIsCutAndCoverageGrows) {
    const TestMesh strip = row_of_quads(40);
    Options options;
    const Judgement whole = unwrap(strip, options);
    EXPECT_EQ(whole.charts, 1u);
    options.cut_to_pack = true;
    const Judgement cut = unwrap(strip, options);
    EXPECT_GT(cut.charts, 3u);
    EXPECT_LT(cut.charts, 26u);
    EXPECT_GT(cut.coverage, 5 * whole.coverage);
    EXPECT_NEAR(cut.l2, 1, 1e-5);
}

/// Rows of quads apart from each other, each a chart of its own.
TestMesh separate_rows(const std::vector<TestMesh>& rows) {
    TestMesh mesh;
    for (size_t k = 0; k < rows.size(); ++k) {
        const uint32_t first = uint32_t(mesh.positions.size() / 3);
        for (size_t i = 0; i < rows[k].positions.size(); ++i)
            mesh.positions.push_back(rows[k].positions[i] + (i % 3 == 2 ? 5.0f * float(k) : 0.0f));
        for (uint32_t v = first; v + 3 < mesh.positions.size() / 3; v += 2)
            mesh.polygon({v, v + 2, v + 3, v + 1});
    }
    mesh.connect();
    return mesh;
}

/// A long strip and short ones.
TestMesh separate_strips(uint32_t strips) {
    std::vector<TestMesh> rows(strips, row_of_quads(4));
    rows.front() = row_of_quads(40);
    return separate_rows(rows);
}

TEST(AtlasCutToPack, QualityModeCutsWhereSeveralChartsShareTheTexture) {
    const TestMesh strips = separate_strips(4);
    Options options;
    options.max_stretch = 1; // nothing is cut
    const Judgement whole = unwrap(strips, options);
    EXPECT_EQ(whole.charts, 4u);
    options.max_stretch = 0.15f;
    const Judgement cut = unwrap(strips, options);
    EXPECT_GT(cut.charts, 4u);
    EXPECT_GT(cut.coverage, 2 * whole.coverage);
}

TEST(AtlasCutToPack, WhoAllowsHalfOfTheSamplingRateToBeLostGetsNoCutUnasked) {
    Options options;
    options.max_stretch = 0.5f;
    EXPECT_EQ(unwrap(separate_strips(4), options).charts, 4u);
}

TEST(AtlasCreate, RingsAlongATubeAreDividedWhereTheyWouldSurroundMuchVoid) {
    // Facets along the tube bend less than those across: clusters are rings.
    for (const Quality quality : {Quality::fast, Quality::quality})
        EXPECT_GT(unwrap_in(quality, torus(6, 48, 6), {}).coverage, 0.6);
}

/// Tubes bent to closed rings of several sizes, side by side.
TestMesh rings_of_tube(uint32_t around) {
    TestMesh rings;
    float shift = 0;
    for (const uint32_t along : {30, 32, 34, 36}) {
        const TestMesh ring = torus(around, along, 0.15 * along);
        const uint32_t first = uint32_t(rings.positions.size() / 3);
        for (size_t i = 0; i < ring.positions.size(); i += 3)
            rings.vertex(ring.positions[i] + shift, ring.positions[i + 1], ring.positions[i + 2]);
        const auto corner = [&](size_t i) { return first + ring.indices[i]; };
        for (size_t i = 0; i < ring.indices.size(); i += 6) // quads, two triangles each
            rings.polygon({corner(i), corner(i + 1), corner(i + 2), corner(i + 5)});
        shift += 30;
    }
    rings.connect();
    return rings;
}

TEST(AtlasCreate, FastModeLeavesTubesOfQuadsInFewPieces) {
    for (const uint32_t around : {8, 10, 12}) {
        const Judgement judgement = unwrap_in(Quality::fast, rings_of_tube(around), {});
        EXPECT_LE(judgement.charts, 4u * 5) << around;
        EXPECT_GT(judgement.coverage, 0.5) << around;
    }
}

TEST(AtlasCreate, FastModeKeepsItsGuaranteesWhereItStartsFromGroupsOfTriangles) {
    const TestMesh ring = torus(65, 130);       // of quads, which no group may divide
    EXPECT_GT(ring.indices.size() / 3, 16000u); // on fewer it starts from single ones
    const Judgement judgement = unwrap_in(Quality::fast, ring, {});
    EXPECT_EQ(all_faults(judgement), "");
    EXPECT_LE(judgement.charts, 10u);
}

/// A torus in both modes.
struct BothModes {
    Judgement fast, quality;
    uint32_t merged; ///< charts that merging leaves in quality mode
    bool fast_covers_more() const { return fast.coverage > quality.coverage + 1e-6; }
};

/// Tori of few charts, of which fast mode makes now more, now fewer.
std::vector<BothModes> tori_in_both_modes(float stretch) {
    std::vector<BothModes> tori;
    for (const uint32_t around : {8, 10, 14, 18})
        for (const uint32_t along : {12, 14, 24}) {
            const TestMesh ring = torus(around, along, 2);
            Options options = with_stretch(stretch);
            options.quality = Quality::quality;
            Result merged;
            std::vector<uint32_t> adjacency;
            EXPECT_EQ(partition(ring.view(), options, merged, adjacency).status, Status::ok);
            tori.push_back({unwrap_in(Quality::fast, ring, options),
                            unwrap_in(Quality::quality, ring, options), merged.chart_count});
        }
    return tori;
}

TEST(AtlasBestLayout, WhoAllowsMoreStretchThanUsualGetsNoMoreChartsForTheRoomThatFastModeFills) {
    // Quality mode hardly cuts at such a limit: its own charts are those that merging leaves.
    int declined = 0;
    for (const BothModes& modes : tori_in_both_modes(0.45f)) {
        EXPECT_FALSE(modes.fast.charts > modes.merged &&
                     modes.fast.coverage == modes.quality.coverage);
        declined += modes.fast.charts > modes.quality.charts && modes.fast_covers_more();
    }
    EXPECT_GT(declined, 0) << "fast mode's charts are no temptation";
}

TEST(AtlasBestLayout, WhoAllowsHalfOfTheSamplingRateToBeLostGetsNoMoreChartsForMoreRoom) {
    int declined = 0;
    for (const BothModes& modes : tori_in_both_modes(0.5f)) {
        EXPECT_LE(modes.quality.charts, modes.merged);
        declined += modes.fast.charts > modes.quality.charts && modes.fast_covers_more();
    }
    EXPECT_GT(declined, 0) << "fast mode's charts are no temptation";
}

TEST(AtlasBestLayout, ChartsOfFastModeThatAreMoreAreTakenIfTheyCoverEnoughForIt) {
    int declined = 0, taken = 0;
    for (const BothModes& modes : tori_in_both_modes(0.15f)) {
        const double ratio = double(modes.fast.charts) / modes.quality.charts;
        if (modes.fast_covers_more()) {
            EXPECT_GT(ratio, 1);
            EXPECT_LT(modes.fast.coverage - modes.quality.coverage, 0.04 * (ratio - 1));
        }
        declined += modes.fast_covers_more();
        taken += modes.fast.charts > 1 && modes.fast.coverage == modes.quality.coverage;
    }
    EXPECT_GT(declined, 0) << "fast mode's charts are no temptation";
    EXPECT_GT(taken, 0);
}

TEST(AtlasEffort, MoreThanUsualNeverCoversLess) {
    for (const Quality quality : {Quality::fast, Quality::quality})
        for (const uint32_t along : {12, 16, 20, 24}) {
            Options options;
            const TestMesh ring = torus(8, along, 2);
            const double usual = unwrap_in(quality, ring, options).coverage;
            ++options.effort;
            EXPECT_GE(unwrap_in(quality, ring, options).coverage, usual - 1e-6) << along;
        }
}

TEST(AtlasEffort, MoreThanUsualReportsProgressThatNeverDecreases) {
    for (const Quality quality : {Quality::fast, Quality::quality}) {
        struct Seen {
            Stage stage = Stage::surface;
            float fraction = 0;
            int decreases = 0, reports = 0;
        } seen;
        Options options;
        options.quality = quality;
        options.effort = k_usual_effort + 1;
        options.user = &seen;
        options.stage_progress = [](Stage stage, float fraction, void* user) {
            Seen& last = *static_cast<Seen*>(user);
            last.decreases +=
                stage < last.stage || (stage == last.stage && fraction < last.fraction);
            last.stage = stage;
            last.fraction = fraction;
            ++last.reports;
            return 0;
        };
        Result result;
        const TestMesh ring = torus(10, 12, 2);
        EXPECT_EQ(create(ring.view(), options, result).status, Status::ok);
        EXPECT_EQ(seen.decreases, 0);
        EXPECT_GT(seen.reports, 20);
    }
}

TEST(AtlasCutToPack, QualityModeLeavesOneChartWhole) {
    EXPECT_EQ(unwrap(row_of_quads(40)).charts, 1u);
}

TEST(AtlasCutToPack, OneOfTwoSquaresIsHalvedInQualityMode) {
    const auto squares = [](double stretch) {
        Options options;
        options.max_stretch = float(stretch);
        return unwrap(separate_rows({row_of_quads(10, 10), row_of_quads(10, 10.25f)}), options);
    };
    const Judgement whole = squares(1); // nothing is cut
    EXPECT_EQ(whole.charts, 2u);
    EXPECT_LT(whole.coverage, 0.55);
    const Judgement cut = squares(0.15);
    EXPECT_EQ(cut.charts, 3u);
    EXPECT_GT(cut.coverage, 0.6);
}

/// A strip of 20 x 1 and squares of about `side`.
TestMesh strip_and_squares(uint32_t side, int squares) {
    std::vector<TestMesh> rows = {row_of_quads(20)};
    for (int i = 0; i < squares; ++i)
        rows.push_back(row_of_quads(side, float(side) + 0.25f * float(i)));
    return separate_rows(rows);
}

TEST(AtlasCutToPack, QualityModeLeavesChartsWholeThatFillTheTextureWell) {
    const Judgement whole = unwrap(strip_and_squares(10, 4));
    EXPECT_EQ(whole.charts, 5u);
    EXPECT_GT(whole.coverage, 0.76);
}

TEST(AtlasCutToPack, QualityModeCutsChartsThatFillTheTextureLessWell) {
    Options options;
    options.max_stretch = 1; // nothing is cut
    EXPECT_LT(unwrap(strip_and_squares(7, 3), options).coverage, 0.6);
    EXPECT_GT(unwrap(strip_and_squares(7, 3)).charts, 4u);
}

TEST(AtlasCutToPack, CopiesAreNotCutUnasked) {
    EXPECT_EQ(unwrap(doubled(separate_strips(4), true)).charts, 8u);
}

TEST(AtlasCutToPack, AChartThatFillsTheTextureIsNotCut) {
    Options options;
    options.cut_to_pack = true;
    EXPECT_EQ(unwrap(flat_grid(8, true), options).charts, 1u);
}

TEST(AtlasCutToPack, ACutThatDoesNotRaiseTheScaleIsUndone) {
    Options options;
    options.cut_to_pack = true;
    EXPECT_EQ(unwrap(row_of_quads(4, 3), options).charts, 1u);
}

TEST(AtlasCutToPack, CuttingRespectsTheChartLimit) {
    Options options;
    options.cut_to_pack = true;
    options.max_charts = 3;
    const Judgement cut = unwrap(row_of_quads(40), options);
    EXPECT_GT(cut.charts, 1u);
    EXPECT_LE(cut.charts, 3u);
}

TEST(AtlasCutToPack, PolygonsAreNotCut) {
    TestMesh strip; // the middle of the strip is inside a polygon
    const uint32_t a = strip.vertex(0, 0, 0), b = strip.vertex(61, 0, 0),
                   c = strip.vertex(100, 0, 0);
    const uint32_t d = strip.vertex(100, 1, 0), e = strip.vertex(61, 1, 0),
                   f = strip.vertex(0, 1, 0);
    strip.polygon({a, b, e, f});
    strip.polygon({b, c, d, e});
    strip.connect();
    Options options;
    options.cut_to_pack = true;
    EXPECT_EQ(unwrap(strip, options).charts, 2u);
}

TEST(AtlasCreate, InvalidArraysFailWithStatusAndElement) {
    Result result;
    TestMesh mesh = loose_triangles(2);
    mesh.indices[4] = 6;
    Failure failure = create(mesh.view(), {}, result);
    EXPECT_EQ(failure.status, Status::index_out_of_range);
    EXPECT_EQ(failure.element, 4u);

    mesh = loose_triangles(2);
    mesh.adjacency[3] = 2;
    failure = create(mesh.view(), {}, result);
    EXPECT_EQ(failure.status, Status::adjacency_out_of_range);
    EXPECT_EQ(failure.element, 3u);

    mesh = loose_triangles(2);
    mesh.positions[10] = std::numeric_limits<float>::quiet_NaN();
    failure = create(mesh.view(), {}, result);
    EXPECT_EQ(failure.status, Status::non_finite_position);
    EXPECT_EQ(failure.element, 3u);

    mesh = loose_triangles(2);
    mesh.adjacency.pop_back();
    EXPECT_EQ(create(mesh.view(), {}, result).status, Status::invalid_argument);
}

TEST(AtlasCreate, MoreCornersThan32BitsCanNumberAreInvalidArguments) {
    constexpr size_t k_corners = 3 * ((size_t(1) << 32) / 3 + 1);
    Mesh mesh; // sizes alone: nothing may be read
    mesh.indices = {nullptr, k_corners};
    mesh.adjacency = {nullptr, k_corners};
    Result result;
    EXPECT_EQ(create(mesh, {}, result).status, Status::invalid_argument);
    mesh = {};
    mesh.positions = {nullptr, k_corners * 3};
    EXPECT_EQ(create(mesh, {}, result).status, Status::invalid_argument);
    EXPECT_TRUE(result.indices.empty());
}

TEST(AtlasCreate, OptionsOutOfRangeAreInvalidArguments) {
    const TestMesh mesh = loose_triangles(2);
    Result result;
    for (float bad : {-0.1f, 1.1f, std::numeric_limits<float>::quiet_NaN()}) {
        Options options;
        options.max_stretch = bad;
        EXPECT_EQ(create(mesh.view(), options, result).status, Status::invalid_argument);
    }
    for (float bad : {-1.0f, std::numeric_limits<float>::infinity()}) {
        Options options;
        options.gutter = bad;
        EXPECT_EQ(create(mesh.view(), options, result).status, Status::invalid_argument);
    }
    Options options;
    options.width = 0;
    EXPECT_EQ(create(mesh.view(), options, result).status, Status::invalid_argument);
}

struct Calls {
    std::vector<float> fractions;
    size_t stop_after = 100;
    static int note(float fraction, void* user) {
        Calls& calls = *static_cast<Calls*>(user);
        calls.fractions.push_back(fraction);
        return calls.fractions.size() >= calls.stop_after;
    }
};

TEST(AtlasProgress, IncreasesToOneInAtMostElevenCalls) {
    Calls calls;
    Options options;
    options.progress = Calls::note;
    options.user = &calls;
    Result result;
    ASSERT_EQ(create(torus(16, 32).view(), options, result).status, Status::ok);
    EXPECT_LE(calls.fractions.size(), 11u);
    EXPECT_EQ(calls.fractions.back(), 1.0f);
    for (size_t i = 1; i < calls.fractions.size(); ++i)
        EXPECT_LT(calls.fractions[i - 1], calls.fractions[i]);
}

TEST(AtlasProgress, ReturningNonZeroAbortsAtAnyCall) {
    for (size_t stop = 1; stop <= 11; ++stop) {
        Calls calls;
        calls.stop_after = stop;
        Options options;
        options.progress = Calls::note;
        options.user = &calls;
        Result result;
        EXPECT_EQ(create(torus(16, 32).view(), options, result).status, Status::aborted) << stop;
        EXPECT_EQ(calls.fractions.size(), stop);
        EXPECT_TRUE(result.indices.empty());
    }
}

/// Records the calls of the stage callback.
struct StageCalls {
    struct Call {
        Stage stage;
        float fraction;
    };
    std::vector<Call> calls;
    size_t stop_after = SIZE_MAX;
    static int note(Stage stage, float fraction, void* user) {
        StageCalls& self = *static_cast<StageCalls*>(user);
        self.calls.push_back({stage, fraction});
        return self.calls.size() >= self.stop_after;
    }
    Options options() {
        Options options;
        options.stage_progress = note;
        options.user = this;
        return options;
    }
};

TEST(AtlasStageProgress, StagesComeInOrderWithFractionsThatNeverDecrease) {
    for (Quality quality : {Quality::fast, Quality::quality})
        for (bool cut : {false, true}) {
            StageCalls seen;
            Options options = seen.options();
            options.quality = quality;
            options.cut_to_pack = cut;
            Result result;
            ASSERT_EQ(create(cube_of_quads(4).view(), options, result).status, Status::ok);
            ASSERT_FALSE(seen.calls.empty());
            EXPECT_EQ(seen.calls.front().stage, Stage::surface);
            EXPECT_EQ(seen.calls.back().stage, Stage::emission);
            EXPECT_EQ(seen.calls.back().fraction, 1.0f);
            for (size_t i = 0; i < seen.calls.size(); ++i) {
                const StageCalls::Call& call = seen.calls[i];
                EXPECT_GE(call.fraction, 0.0f);
                EXPECT_LE(call.fraction, 1.0f);
                if (i == 0)
                    continue;
                EXPECT_GE(call.stage, seen.calls[i - 1].stage);
                if (call.stage == seen.calls[i - 1].stage) {
                    EXPECT_GE(call.fraction, seen.calls[i - 1].fraction);
                }
            }
        }
}

TEST(AtlasStageProgress, EveryStageIsReportedAndHasAName) {
    StageCalls seen;
    Result result;
    ASSERT_EQ(create(torus(16, 32).view(), seen.options(), result).status, Status::ok);
    for (int stage = 0; stage <= int(Stage::emission); ++stage) {
        EXPECT_TRUE(std::any_of(seen.calls.begin(), seen.calls.end(),
                                [&](const StageCalls::Call& c) { return c.stage == Stage(stage); }))
            << stage;
        EXPECT_GT(std::string(describe(Stage(stage))).size(), 8u);
    }
}

/// Callers cancel within a second: on a large mesh no stage does much work without asking.
TEST(AtlasStageProgress, StagesThatTakeLongAskOftenHowLargeTheMeshMayBe) {
    const TestMesh mesh = torus(96, 160);
    const size_t triangles = mesh.indices.size() / 3;
    for (Quality quality : {Quality::fast, Quality::quality}) {
        StageCalls seen;
        Options options = seen.options();
        options.quality = quality;
        options.effort = 0;
        Result result;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        std::vector<size_t> asked(int(Stage::emission) + 1);
        for (const StageCalls::Call& call : seen.calls)
            ++asked[size_t(call.stage)];
        for (const Stage stage :
             {Stage::clusters, Stage::regions, Stage::merging, Stage::smoothing})
            EXPECT_GT(asked[size_t(stage)], triangles / 2000) << describe(stage);
        EXPECT_GT(asked[size_t(Stage::packing)], 10u);
    }
}

TEST(AtlasStageProgress, ReturningNonZeroAbortsAtAnyCall) {
    const TestMesh mesh = torus(8, 16);
    StageCalls all;
    Options options = all.options();
    options.quality = Quality::fast;
    Result result;
    ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
    constexpr size_t k_most_runs = 50; // more would take minutes under the sanitizers
    const size_t step = 1 + all.calls.size() / k_most_runs;
    for (size_t stop = 1; stop <= all.calls.size(); stop += step) {
        StageCalls calls;
        calls.stop_after = stop;
        options.user = &calls;
        EXPECT_EQ(create(mesh.view(), options, result).status, Status::aborted) << stop;
        EXPECT_EQ(calls.calls.size(), stop);
        EXPECT_TRUE(result.indices.empty());
    }
}

TEST(AtlasStageProgress, PartitionReportsAndAborts) {
    StageCalls calls;
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(torus(8, 16).view(), calls.options(), result, adjacency).status,
              Status::ok);
    EXPECT_EQ(calls.calls.back().stage, Stage::emission);
    calls.stop_after = calls.calls.size();
    calls.calls.clear();
    EXPECT_EQ(partition(torus(8, 16).view(), calls.options(), result, adjacency).status,
              Status::aborted);
    EXPECT_TRUE(result.indices.empty());
}

TEST(AtlasPartition, AdjacencyIsOpenedAlongChartBorders) {
    const TestMesh mesh = cube_of_quads(2);
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(mesh.view(), {}, result, adjacency).status, Status::ok);
    EXPECT_EQ(all_faults(judge(mesh, {}, result, false, true)), "");
    ASSERT_EQ(adjacency.size(), mesh.adjacency.size());
    for (size_t h = 0; h < adjacency.size(); ++h) {
        if (adjacency[h] != k_none) {
            EXPECT_EQ(adjacency[h], mesh.adjacency[h]);
            EXPECT_EQ(result.chart[h / 3], result.chart[adjacency[h]]);
        }
    }
}

TEST(AtlasPartition, TotalUvAreaIsOne) {
    const TestMesh mesh = cube_of_quads(2);
    Result result;
    std::vector<uint32_t> adjacency;
    ASSERT_EQ(partition(mesh.view(), {}, result, adjacency).status, Status::ok);
    double area = 0;
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        const auto u = [&](uint32_t k) {
            return double(result.uvs[2 * result.indices[3 * t + k]]);
        };
        const auto v = [&](uint32_t k) {
            return double(result.uvs[2 * result.indices[3 * t + k] + 1]);
        };
        area += 0.5 * ((u(1) - u(0)) * (v(2) - v(0)) - (v(1) - v(0)) * (u(2) - u(0)));
    }
    EXPECT_NEAR(area, 1.0, 1e-5);
}

TEST(AtlasDescribe, EveryStatusHasADescription) {
    for (int s = 0; s <= int(Status::non_finite_uv); ++s)
        EXPECT_GT(std::string(describe(Status(s))).size(), 10u);
}

} // namespace
