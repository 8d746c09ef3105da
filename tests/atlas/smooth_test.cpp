// Borders between charts: which polygons change sides, and what is left as it was.
#include "atlas/smooth.h"
#include "check_result.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tessora::atlas;
using atlas_test::TestMesh;

/// A grid of unit cells over the plane, laid flat as it is, in two charts.
class BorderTest : public testing::Test {
protected:
    using Height = std::function<float(int x, int y)>;
    /// In chart 0 or 1? 2 leaves a hole. `upper` tells the two triangles of a cell apart.
    using Side = std::function<uint32_t(int x, int y, bool upper)>;

    void build(int columns, int rows, bool quads, const Side& side, const Height& height) {
        TestMesh mesh;
        for (int y = 0; y <= rows; y++)
            for (int x = 0; x <= columns; x++)
                mesh.vertex(float(x), float(y), height(x, y));
        std::vector<uint32_t> chart;
        for (int y = 0; y < rows; y++)
            for (int x = 0; x < columns; x++) {
                if (side(x, y, false) == 2)
                    continue;
                const uint32_t a = uint32_t(y * (columns + 1) + x), b = a + 1;
                const uint32_t d = a + uint32_t(columns) + 1, c = d + 1;
                if (quads) {
                    mesh.polygon({a, b, c, d});
                } else {
                    mesh.triangle(a, b, c);
                    mesh.triangle(a, c, d);
                }
                chart.push_back(side(x, y, false));
                chart.push_back(side(x, y, !quads));
            }
        mesh.connect();
        ASSERT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
        atoms = build_atoms(surface);
        hard.assign(surface.face_count, 0);
        set = std::make_unique<ChartSet>(surface);
        Chart charts[2];
        for (uint32_t t = 0; t < surface.face_count; t++)
            charts[chart[t]].faces.push_back(t);
        for (uint32_t h = 0; h < 3 * surface.face_count; h++)
            if (surface.mate[h] != k_none && chart[h / 3] == chart[surface.mate[h] / 3])
                set->set_glued(h, true);
        for (Chart& c : charts) {
            set->rebuild_nodes(c.faces);
            for (uint32_t t : c.faces)
                for (uint32_t corner = 3 * t; corner < 3 * t + 3; corner++) {
                    const Vec3 p = surface.position[surface.vertex[corner]];
                    set->uv[set->node[corner]] = {p.x, p.y};
                }
            set->refresh(c);
            set->add_chart(std::move(c));
        }
    }
    void build_flat(int columns, int rows, bool quads, const Side& side) {
        build(columns, rows, quads, side, [](int, int) { return 0.0f; });
    }
    void smooth(double limit = 1.176) {
        FlattenOptions options;
        options.limit = limit;
        Flattener flattener(*set, options);
        ProgressMeter progress(nullptr, nullptr);
        ASSERT_TRUE(BorderSmoother(flattener, atoms, hard).run(progress));
    }
    /// Charts of the triangles, two of a cell in a row.
    std::string sides() const {
        std::string text;
        for (uint32_t c : set->chart)
            text += char('0' + c);
        return text;
    }
    void expect_undistorted() {
        for (const Chart& c : set->charts) {
            EXPECT_EQ(c.stretch.flipped, 0u);
            EXPECT_NEAR(set->measure(c.faces).l2(), 1, 1e-12);
            for (uint32_t t : c.faces)
                EXPECT_EQ(set->charts[set->chart[t]].faces.data(), c.faces.data());
        }
    }

    Surface surface;
    Atoms atoms;
    std::vector<uint8_t> hard;
    std::unique_ptr<ChartSet> set;
};

TEST_F(BorderTest, TeethOfTrianglesGoOver) {
    build_flat(4, 3, false,
               [](int x, int, bool upper) { return x < 2 || (x == 2 && upper) ? 0 : 1; });
    EXPECT_EQ(sides(), "000010110000101100001011");
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
    expect_undistorted();
}

TEST_F(BorderTest, APolygonGoesOverWhole) {
    build_flat(4, 3, true, [](int x, int y, bool) { return x < 2 || (x == 2 && y == 1) ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
    expect_undistorted();
}

TEST_F(BorderTest, AToothBehindAToothGoesOverToo) {
    build_flat(5, 3, true, [](int x, int y, bool) { return x < 2 || (x < 4 && y == 1) ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011111100001111110000111111");
    expect_undistorted();
}

TEST_F(BorderTest, AStraightBorderStays) {
    build_flat(4, 3, true, [](int x, int, bool) { return x < 2 ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
}

TEST_F(BorderTest, TheBorderSlidesIntoACrease) {
    build(
        5, 1, true, [](int x, int, bool) { return x < 2 ? 0 : 1; },
        [](int x, int) { return x > 3 ? float(x - 3) : 0.0f; });
    smooth();
    EXPECT_EQ(sides(), "0000001111");
}

TEST_F(BorderTest, AnEarOfAHardSurfaceHasToFitExactly) {
    const Side side = [](int x, int y, bool) { return x < 2 || (x == 2 && y == 1) ? 0 : 1; };
    const auto build_squeezed = [&](uint8_t is_hard) {
        build_flat(4, 3, true, side);
        hard.assign(surface.face_count, is_hard);
        for (uint32_t t : set->charts[1].faces) // chart 1 lies there a tenth too high
            for (uint32_t c = 3 * t; c < 3 * t + 3; c++)
                if (set->node[c] == c)
                    set->uv[c].y *= 1.1;
        set->refresh(set->charts[1]);
    };
    build_squeezed(1);
    const std::string before = sides();
    smooth();
    EXPECT_EQ(sides(), before);
    build_squeezed(0);
    smooth();
    EXPECT_NE(sides(), before);
}

TEST_F(BorderTest, WhatHoldsAChartTogetherStays) {
    // Cell (1, 1) joins the one on its left to those above it, over two creases that the border
    // would like; there are holes around. Cell (2, 3) is a tooth of the same border.
    const char* const rows[] = {".111", "0011", ".0.1", "0001", "..11"};
    const auto side = [&](int x, int y, bool) {
        return rows[y][x] == '.' ? 2u : uint32_t(rows[y][x] - '0');
    };
    build(4, 5, true, side, [](int x, int y) { return float(-(x < 1) - std::max(0, y - 2)); });
    EXPECT_EQ(sides(), "111111000011110011000000111111");
    smooth(2); // slopes are laid flat without regard for their length
    EXPECT_EQ(sides(), "111111000011110011000011111111");
}

TEST_F(BorderTest, AllGoesBackWhenAChartIsNotLegalAfterwards) {
    build_flat(5, 3, true, [](int x, int y, bool) { return x < 2 || (x < 4 && y == 1) ? 0 : 1; });
    for (uint32_t t : set->charts[1].faces) // a far corner of chart 1 lies across its other side
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++)
            if (surface.vertex[c] == 5 && set->node[c] == c)
                set->uv[c].y += 100;
    set->refresh(set->charts[1]);
    const ChartSet before = *set;
    smooth();
    EXPECT_EQ(set->chart, before.chart);
    EXPECT_EQ(set->glued, before.glued);
    EXPECT_EQ(set->node, before.node);
    EXPECT_TRUE(set->uv == before.uv);
    for (size_t i = 0; i < 2; i++) {
        std::vector<uint32_t> now = set->charts[i].faces;
        std::sort(now.begin(), now.end());
        EXPECT_EQ(now, before.charts[i].faces);
        EXPECT_EQ(set->charts[i].border_length, before.charts[i].border_length);
    }
}

TEST_F(BorderTest, TheCallerCanStopIt) {
    build_flat(4, 3, true, [](int x, int, bool) { return x < 2 ? 0 : 1; });
    Flattener flattener(*set, FlattenOptions{});
    ProgressMeter progress([](float, void*) { return 1; }, nullptr);
    EXPECT_FALSE(BorderSmoother(flattener, atoms, hard).run(progress));
}

} // namespace
