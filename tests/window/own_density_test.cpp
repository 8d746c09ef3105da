#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "window/own_density.h"

#include <gtest/gtest.h>

namespace {

using namespace window;
using host::graph::Scene;

/// Unit squares in a row. Chart i of the texture holds `charts[i]` squares in a row and has the
/// density `densities[i]`.
host::Mesh row_of_squares(const std::vector<int>& charts, const std::vector<float>& densities) {
    int squares = 0;
    for (const int count : charts)
        squares += count;
    std::vector<host::Float3> points;
    std::vector<uint32_t> corners;
    for (int i = 0; i <= squares; ++i)
        for (const float y : {0.0f, 1.0f})
            points.push_back({float(i), y, 0.0f});
    for (uint32_t i = 0; i < uint32_t(squares); ++i)
        corners.insert(corners.end(), {2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    host::Mesh mesh;
    EXPECT_TRUE(host::Mesh::make(points, std::vector<uint32_t>(size_t(squares), 4), corners, mesh));
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    set.corner_uvs.clear();
    for (size_t chart = 0; chart < charts.size(); ++chart) {
        const auto first = int32_t(set.u.size());
        const float side = 0.01f * densities[chart];
        for (int i = 0; i <= charts[chart]; ++i)
            for (const float y : {0.0f, 1.0f}) {
                set.u.push_back(0.1f + side * float(i));
                set.v.push_back(0.1f * float(1 + chart) + side * y);
            }
        for (int32_t i = 0; i < charts[chart]; ++i)
            set.corner_uvs.insert(set.corner_uvs.end(), {first + 2 * i, first + 2 * i + 2,
                                                         first + 2 * i + 3, first + 2 * i + 1});
    }
    return mesh;
}

std::vector<double> densities_after(const host::Mesh& now, const LaidOut& before,
                                    const host::Mesh& after) {
    return chart_densities(UvMap(after, 0, measure::Texture()), own_densities(now, 0, before));
}

TEST(OwnDensity, ChartKeepsWhatItWasGivenByHand) {
    const host::Mesh before = row_of_squares({3, 2}, {1, 1});
    const host::Mesh now = row_of_squares({3, 2}, {1, 2});
    const std::vector<double> kept = densities_after(now, {before, 0, true}, before);
    ASSERT_EQ(2u, kept.size());
    EXPECT_EQ(1.0, kept[0]);
    EXPECT_NEAR(2.0, kept[1], 1e-4);
}

TEST(OwnDensity, NewChartTakesTheDensityThatMostOfItsAreaHad) {
    const host::Mesh before = row_of_squares({4, 1, 2}, {1, 1, 1});
    const host::Mesh now = row_of_squares({4, 1, 2}, {1, 1, 0.5f});
    const host::Mesh merged = row_of_squares({4, 3}, {1, 1});
    const std::vector<double> kept = densities_after(now, {before, 0, true}, merged);
    ASSERT_EQ(2u, kept.size());
    EXPECT_EQ(1.0, kept[0]);
    EXPECT_NEAR(0.5, kept[1], 1e-4);
}

TEST(OwnDensity, SizeOfAllChartsIsNoOnesOwn) {
    const host::Mesh before = row_of_squares({3, 2}, {1, 1});
    EXPECT_TRUE(own_densities(row_of_squares({3, 2}, {2, 2}), 0, {before, 0, true}).empty());
}

TEST(OwnDensity, DensitiesOfLiveCountAgain) {
    const host::Mesh live = row_of_squares({3, 2}, {1, 2});
    EXPECT_NEAR(2.0, densities_after(live, {live, 0, true}, live).at(1), 1e-4);
}

TEST(OwnDensity, DensitiesOfAFilesOwnChartsAreNotMeant) {
    const host::Mesh file = row_of_squares({3, 2}, {1, 2});
    EXPECT_TRUE(own_densities(file, 0, {file, 0, false}).empty());
    const host::Mesh edited = row_of_squares({3, 2}, {1, 6});
    EXPECT_NEAR(3.0, densities_after(edited, {file, 0, false}, file).at(1), 1e-4);
}

TEST(OwnDensity, MeshWithOtherPolygonsHasNone) {
    const host::Mesh before = row_of_squares({3, 1}, {1, 1});
    EXPECT_TRUE(own_densities(row_of_squares({3, 2}, {1, 2}), 0, {before, 0, true}).empty());
    EXPECT_TRUE(own_densities(row_of_squares({3, 2}, {1, 2}), -1, {before, 0, true}).empty());
    EXPECT_TRUE(own_densities(row_of_squares({3, 2}, {1, 2}), 0, {before, -1, true}).empty());
}

TEST(OwnDensity, ChartsOfOneDensityAreScaledTogetherAndAllArePacked) {
    Subject subject;
    subject.mesh = row_of_squares({3, 1, 1}, {1, 1, 1});
    const UvMap map(subject.mesh, 0, subject.texture);
    EXPECT_EQ("{ polyEditUV -su 2 -sv 2 -pu 0 -pv 0 `polyListComponentConversion -toUV -uvShell "
              "\"|row.f[3]\" \"|row.f[4]\"`; polyLayoutUV -textureWidth 512 -textureHeight 512 "
              "-gutter 2 \"|row\"; }",
              statement_giving_densities({"|row", map}, subject, {1, 1, 1, 2, 2}));
    EXPECT_EQ("", statement_giving_densities({"|row", map}, subject, {1, 1, 1, 1, 1}));
    EXPECT_EQ("", statement_giving_densities({"|row", map}, subject, {}));
}

TEST(OwnDensity, EditsByHandAreHeldAgainstTheFile) {
    Scene::current().clear();
    const auto run = [](const std::string& text) {
        EXPECT_TRUE(host::script::Session::current().run(text, "test").ok) << text;
        update_meshes();
    };
    run("polyCube -n box; polyMapCut box.e[0:11]; select box;");
    EXPECT_TRUE(own_densities(find_subject({})).empty());
    run("polyEditUV -su 2 -sv 2 `polyListComponentConversion -toUV -uvShell box.f[0]`;");
    const std::vector<float> densities = own_densities(find_subject({}));
    ASSERT_EQ(6u, densities.size());
    EXPECT_NEAR(2.0f, densities[0], 1e-4f);
    EXPECT_NEAR(1.0f, densities[1], 1e-4f);
    Scene::current().clear();
}

} // namespace
