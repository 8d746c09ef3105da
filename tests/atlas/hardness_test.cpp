// How hard surfaces are told from smooth ones, and how the number of charts follows the stretch
// that the caller allows.
#include "atlas/charts/clusters.h"
#include "tests/atlas/shapes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace {

using namespace atlas_test;
using namespace tessora::atlas;

std::vector<float> hardness_of(const TestMesh& mesh) {
    Surface surface;
    EXPECT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
    return measure_hardness(surface, find_flat_pieces(surface));
}

/// What clusters are made of.
Components planes_of(const TestMesh& mesh) {
    Surface surface;
    EXPECT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
    const Atoms atoms = build_atoms(surface);
    const Components pieces = find_flat_pieces(surface);
    return find_planes(surface, atoms, pieces, measure_hardness(surface, pieces));
}

float mean(const std::vector<float>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0f) / float(values.size());
}
float highest(const std::vector<float>& values) {
    return *std::max_element(values.begin(), values.end());
}
float lowest(const std::vector<float>& values) {
    return *std::min_element(values.begin(), values.end());
}

/// Moves every vertex by up to `size` in each direction.
void shake(TestMesh& mesh, float size, uint32_t seed) {
    std::mt19937 random(seed);
    for (float& coordinate : mesh.positions)
        coordinate += size * (float(random()) / 4294967296.0f * 2 - 1);
}

/// Which cells of a square sheet are left out.
enum class Gap { none, middle, bay };

/// A square sheet of rolling hills, two triangles a cell.
TestMesh hills(int cells, float height, Gap gap = Gap::none) {
    TestMesh mesh;
    for (int y = 0; y <= cells; ++y)
        for (int x = 0; x <= cells; ++x) {
            const double a = 6.0 * x / cells, b = 6.0 * y / cells;
            mesh.vertex(float(x), float(y), float(height * std::sin(a) * std::cos(b)));
        }
    const auto at = [&](int x, int y) { return uint32_t(y * (cells + 1) + x); };
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x) {
            const bool middle = std::min(x, y) > cells / 3 && std::max(x, y) < 2 * cells / 3;
            const bool bay = x > cells / 3 && x < 2 * cells / 3 && y > cells / 3;
            if ((middle && gap == Gap::middle) || (bay && gap == Gap::bay))
                continue;
            mesh.triangle(at(x, y), at(x + 1, y), at(x + 1, y + 1));
            mesh.triangle(at(x, y), at(x + 1, y + 1), at(x, y + 1));
        }
    mesh.connect();
    return mesh;
}

/// A box of five quads, open above.
TestMesh open_box() {
    TestMesh mesh;
    for (float z : {0.0f, 1.0f})
        for (uint32_t i = 0; i < 4; ++i)
            mesh.vertex(i == 1 || i == 2 ? 1.0f : 0.0f, i >= 2 ? 1.0f : 0.0f, z);
    mesh.polygon({0, 3, 2, 1});
    for (uint32_t i = 0; i < 4; ++i)
        mesh.polygon({i, (i + 1) % 4, (i + 1) % 4 + 4, i + 4});
    mesh.connect();
    return mesh;
}

/// A staircase: square quads of size 1 in a row, at right angles to each other.
TestMesh stairs(uint32_t steps) {
    TestMesh mesh;
    for (uint32_t i = 0; i <= steps; ++i)
        for (float y : {0.0f, 1.0f})
            mesh.vertex(float((i + 1) / 2), y, float(i / 2));
    for (uint32_t i = 0; i < steps; ++i)
        mesh.polygon({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    mesh.connect();
    return mesh;
}

/// Half a sphere of `sides` x `rings` flat quads, each divided into four, open at both ends.
TestMesh faceted_dome(uint32_t sides, uint32_t rings) {
    TestMesh mesh;
    const uint32_t columns = 2 * sides;
    const auto corner = [&](uint32_t i, uint32_t j, int k) {
        const double a = 6.283185307 * double(i % sides) / sides, b = 1.3 * double(j) / rings;
        return float(k == 2 ? std::sin(b) : std::cos(b) * (k == 0 ? std::cos(a) : std::sin(a)));
    };
    for (uint32_t j = 0; j <= 2 * rings; ++j)
        for (uint32_t i = 0; i < columns; ++i) {
            float p[3] = {0, 0, 0};
            for (uint32_t dj : {j / 2, (j + 1) / 2})
                for (uint32_t di : {i / 2, (i + 1) / 2})
                    for (int k = 0; k < 3; ++k)
                        p[k] += corner(di, dj, k) / 4;
            mesh.vertex(p[0], p[1], p[2]);
        }
    for (uint32_t j = 0; j < 2 * rings; ++j)
        for (uint32_t i = 0; i < columns; ++i) {
            const uint32_t next = (i + 1) % columns;
            mesh.polygon({j * columns + i, j * columns + next, (j + 1) * columns + next,
                          (j + 1) * columns + i});
        }
    mesh.connect();
    return mesh;
}

uint32_t charts_at(const TestMesh& mesh, float stretch, Quality quality) {
    Options options;
    options.max_stretch = stretch;
    options.quality = quality;
    Result result;
    std::vector<uint32_t> adjacency;
    EXPECT_EQ(partition(mesh.view(), options, result, adjacency).status, Status::ok);
    return result.chart_count;
}

TEST(Hardness, IsOneOnAllFacesOfABox) { EXPECT_EQ(lowest(hardness_of(cube_of_quads(4))), 1.0f); }

TEST(Hardness, IsZeroOnASphereOfPlanarQuads) { EXPECT_EQ(highest(hardness_of(sphere(24))), 0.0f); }

TEST(Hardness, IsZeroWhereNoiseBendsEveryEdgeSharply) {
    TestMesh mesh = flat_grid(20, false);
    shake(mesh, 0.4f, 7);
    EXPECT_LT(mean(hardness_of(mesh)), 0.05f); // a pair may lie in one plane by chance
}

TEST(Hardness, IsDecidedPieceByPieceWithinOneComponent) {
    // Hills with a flat wall below their front row: the wall is hard, the hills are not.
    constexpr uint32_t k_cells = 12;
    TestMesh mesh = hills(int(k_cells), 1.5f);
    const uint32_t hilly = mesh.faces();
    for (uint32_t x = 0; x <= k_cells; ++x) {
        mesh.positions[3 * x + 2] = 0; // a straight front row
        mesh.vertex(float(x), 0, -9);
    }
    const uint32_t below = uint32_t(mesh.positions.size() / 3) - k_cells - 1;
    for (uint32_t x = 0; x < k_cells; ++x)
        mesh.polygon({x + 1, x, below + x, below + x + 1});
    mesh.connect();
    const std::vector<float> hardness = hardness_of(mesh);
    EXPECT_LT(mean({hardness.begin(), hardness.begin() + hilly}), 0.2f);
    EXPECT_EQ(lowest({hardness.begin() + hilly, hardness.end()}), 1.0f);
}

/// A square ring with walls around it, whose hole is `share` of its side.
TestMesh frame(double share) {
    TestMesh mesh;
    for (double side : {1.0, share})
        for (uint32_t i = 0; i < 4; ++i)
            mesh.vertex(float(i == 1 || i == 2 ? side : -side), float(i >= 2 ? side : -side), 0);
    for (uint32_t i = 0; i < 4; ++i)
        mesh.vertex(mesh.positions[3 * i], mesh.positions[3 * i + 1], -1);
    for (uint32_t i = 0; i < 4; ++i) {
        mesh.polygon({i, (i + 1) % 4, (i + 1) % 4 + 4, i + 4});
        mesh.polygon({(i + 1) % 4, i, i + 8, (i + 1) % 4 + 8});
    }
    mesh.connect();
    return mesh;
}

/// The length of seams between triangles in one plane.
double seam_inside_planes(const TestMesh& mesh, Quality quality) {
    Options options;
    options.quality = quality;
    Result result;
    std::vector<uint32_t> adjacency;
    EXPECT_EQ(partition(mesh.view(), options, result, adjacency).status, Status::ok);
    Surface surface;
    EXPECT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
    double sum = 0;
    for (uint32_t h = 0; h < adjacency.size(); ++h)
        if (adjacency[h] == k_none && surface.mate[h] != k_none &&
            dot(surface.normal[h / 3], surface.normal[surface.mate[h] / 3]) > 0.9999)
            sum += 0.5 * surface.edge_length(h) * surface.unit;
    return sum;
}

TEST(Planes, AreTheSidesOfABox) { EXPECT_EQ(planes_of(cube_of_quads(5)).count, 6u); }

TEST(Planes, AreNotLookedForOnSmoothSurfaces) {
    const TestMesh mesh = sphere(24);
    EXPECT_EQ(planes_of(mesh).count, mesh.faces());
}

TEST(Planes, FillHalfOfTheirHull) {
    EXPECT_EQ(planes_of(frame(0.65)).count, 4u + 1u);
    EXPECT_EQ(planes_of(frame(0.75)).count, 4u + 4u);
}

TEST(Planes, AreLargerThanAFewTexels) {
    TestMesh mesh = cube_of_quads(2);
    const uint32_t a = mesh.vertex(9, 0, 0), b = mesh.vertex(99, 0, 0), c = mesh.vertex(99, 99, 0);
    mesh.polygon({a, b, c});
    mesh.connect();
    EXPECT_EQ(planes_of(mesh).count, 6u + 1u); // a side has 1/1000 of the area
    mesh.positions[3 * b] = mesh.positions[3 * c] = 999;
    EXPECT_EQ(planes_of(mesh).count, 24u + 1u);
}

TEST(Planes, ArePolygonsThatDoNotBend) {
    TestMesh mesh = cube_of_quads(3);
    for (size_t i = 0; i < mesh.positions.size(); i += 3)
        if (mesh.positions[i] == 1 && mesh.positions[i + 1] == 1 && mesh.positions[i + 2] == 3)
            mesh.positions[i + 2] = 3.5f; // bends four of nine polygons
    EXPECT_EQ(planes_of(mesh).count, 5u + 4u + 1u);
}

TEST(Planes, HaveNoSeamInside) {
    for (Quality quality : {Quality::fast, Quality::quality})
        EXPECT_EQ(seam_inside_planes(pierced_plate(6), quality), 0);
}

TEST(StretchLimit, NoiseOnASmoothSurfaceDoesNotMultiplyTheCharts) {
    TestMesh mesh = hills(40, 4);
    const uint32_t clean = charts_at(mesh, 0.15f, Quality::quality);
    shake(mesh, 0.5f, 3);
    const uint32_t noisy = charts_at(mesh, 0.15f, Quality::quality);
    EXPECT_LE(noisy, clean + 12);
}

TEST(StretchLimit, MoreStretchNeverTakesMoreChartsAtTheStepsOfMerging) {
    TestMesh mesh = sphere(24);
    shake(mesh, 0.05f, 11);
    for (Quality quality : {Quality::fast, Quality::quality}) {
        uint32_t before = mesh.faces();
        for (float stretch : {0.03f, 0.05f, 0.1f, 0.15f, 0.2f, 0.3f, 0.4f, 0.5f, 0.7f, 1.0f}) {
            const uint32_t charts = charts_at(mesh, stretch, quality);
            EXPECT_LE(charts, before) << "at " << stretch;
            before = charts;
        }
    }
}

TEST(StretchLimit, TheMoreIsAllowedTheLongerMayChartsBe) {
    const TestMesh strip = stairs(40); // unfolds without any stretch
    for (Quality quality : {Quality::fast, Quality::quality}) {
        uint32_t before = strip.faces();
        for (float stretch : {0.15f, 0.3f, 0.5f, 1.0f}) {
            const uint32_t charts = charts_at(strip, stretch, quality);
            EXPECT_LT(charts, before) << "at " << stretch;
            before = charts;
        }
        EXPECT_EQ(before, 1u);
    }
}

TEST(StretchLimit, TheMoreIsAllowedTheLessAreFlatPiecesKept) {
    const TestMesh dome = faceted_dome(10, 2); // closed all around: its facets unfold in sectors
    ASSERT_GT(mean(hardness_of(dome)), 0.3f);
    for (Quality quality : {Quality::fast, Quality::quality}) {
        EXPECT_GT(charts_at(dome, 0.15f, quality), 1u);
        EXPECT_EQ(charts_at(dome, 0.95f, quality), 1u);
    }
}

TEST(StretchLimit, StretchOverAWholeMeshIsWorthMoreThanASeamUntilAnyIsAllowed) {
    const TestMesh mesh = hills(24, 14);
    Options options;
    for (Quality quality : {Quality::fast, Quality::quality}) {
        options.quality = quality;
        options.max_stretch = 0.3f;
        Result result;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        EXPECT_LT(judge(mesh, options, result, true, false).l2, 1.09);
        EXPECT_EQ(charts_at(mesh, 1, quality), 1u);
    }
}

TEST(StretchLimit, RoomAroundABayIsWorthMoreThanAShortSeamUntilAnyIsAllowed) {
    const TestMesh horseshoe = hills(24, 14, Gap::bay);
    EXPECT_GT(charts_at(horseshoe, 0.3f, Quality::quality), 2u);
    EXPECT_EQ(charts_at(horseshoe, 1, Quality::quality), 1u);
}

TEST(StretchLimit, AtOneAnOpenSurfaceIsOneChartHoweverSteep) {
    EXPECT_EQ(charts_at(hills(30, 60), 1, Quality::fast), 1u);
    EXPECT_EQ(charts_at(hills(30, 60), 1, Quality::quality), 1u);
}

TEST(StretchLimit, AtOneAnOpenSurfaceOfQuadsIsOneChartThoughTheyMustStayConvex) {
    Options options;
    options.max_stretch = 1;
    for (uint32_t seed = 0; seed < 8; ++seed) {
        TestMesh mesh = open_box();
        shake(mesh, 0.2f, seed);
        Result result;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        EXPECT_EQ(result.chart_count, 1u) << seed;
        EXPECT_EQ(judge(mesh, options, result, true, true).faults, std::vector<std::string>{});
    }
}

/// Merging unfolds a box to a cross, with slits between its arms.
TEST(StretchLimit, AtOneAnOpenSurfaceHasNoSlit) {
    const TestMesh box = open_box();
    for (Quality quality : {Quality::fast, Quality::quality}) {
        Options options;
        options.quality = quality;
        options.max_stretch = 1;
        Result result;
        ASSERT_EQ(create(box.view(), options, result).status, Status::ok);
        EXPECT_EQ(judge(box, options, result, true, true).seam, 0);
    }
}

TEST(StretchLimit, AtOneAnOpenSurfaceIsLaidOutInStepsThatCanBeStopped) {
    const TestMesh mesh = hills(60, 120);
    Options options;
    options.quality = Quality::fast;
    options.max_stretch = 1;
    size_t asked = 0;
    options.user = &asked;
    options.stage_progress = [](Stage stage, float, void* user) {
        return stage == Stage::regions && ++*static_cast<size_t*>(user) > 8 ? 1 : 0;
    };
    Result result;
    EXPECT_EQ(create(mesh.view(), options, result).status, Status::aborted);
}

TEST(StretchLimit, AtOneARingIsOneChart) {
    EXPECT_EQ(charts_at(hills(30, 60, Gap::middle), 1, Quality::fast), 1u);
}

TEST(StretchLimit, AtOneAChartHasLittleMoreStretchThanItsShapeNeeds) {
    const TestMesh horseshoe = hills(40, 30, Gap::bay), ring = hills(30, 60, Gap::middle);
    Options options;
    options.max_stretch = 1;
    for (Quality quality : {Quality::fast, Quality::quality})
        for (const auto& [mesh, most] : {std::pair(&horseshoe, 1.1), std::pair(&ring, 1.25)}) {
            options.quality = quality;
            Result result;
            ASSERT_EQ(create(mesh->view(), options, result).status, Status::ok);
            EXPECT_EQ(result.chart_count, 1u);
            const Judgement verdict = judge(*mesh, options, result, true, true);
            EXPECT_EQ(verdict.faults, std::vector<std::string>{});
            EXPECT_LT(verdict.l2, most);
        }
}

TEST(StretchLimit, AtOneSurfacesThatNoCutOpensStayValid) {
    for (const TestMesh& mesh : {sphere(12), pierced_plate(3), moebius(24)}) {
        Options options;
        options.max_stretch = 1;
        Result result;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        EXPECT_TRUE(judge(mesh, options, result, true, true).faults.empty());
    }
}

} // namespace
