#include "measure/coverage.h"
#include "measure/overlaps.h"
#include "tests/measure/layouts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace measure;

namespace {

bool is_proved(const Layout& layout) { return is_covered_once(layout, find_charts(layout)); }

/// Adds a grid of n x n quads in a plane of its own; `place` maps its points, 0..n in both
/// directions, to the texture.
template <class Place>
void add_grid(Layout& layout, uint32_t n, Place place) {
    const uint32_t first = layout.vertex_count();
    const float away = float(layout.polygon_count) * 10.0f;
    for (uint32_t y = 0; y <= n; ++y)
        for (uint32_t x = 0; x <= n; ++x)
            layout.positions.insert(layout.positions.end(), {float(x), float(y), away});
    std::vector<std::array<float, 2>> uvs;
    for (uint32_t y = 0; y <= n; ++y)
        for (uint32_t x = 0; x <= n; ++x)
            uvs.push_back(place(x, y));
    for (uint32_t y = 0; y < n; ++y)
        for (uint32_t x = 0; x < n; ++x) {
            const uint32_t a = y * (n + 1) + x, b = a + 1, c = b + n + 1, d = a + n + 1;
            add_face(layout, {first + a, first + b, first + c, first + d},
                     {uvs[a], uvs[b], uvs[c], uvs[d]});
        }
}

/// A few grids, each turned, perhaps mirrored, with its points moved at random by up to `shake` of
/// a quad, at places that may or may not overlap.
Layout random_layout(std::mt19937& random) {
    const auto real = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    Layout layout;
    const double shake = random() % 3 == 0 ? 0.8 : 0.2;
    const auto charts = 1 + random() % 4;
    for (size_t c = 0; c < charts; ++c) {
        const auto n = uint32_t(1 + random() % 4);
        const double size = real(0.05, 0.3) / n, turn = real(0, 6.28);
        const double mirror = random() % 4 == 0 ? -1 : 1;
        const double left = real(0.3, 0.7), bottom = real(0.3, 0.7);
        add_grid(layout, n, [&](uint32_t x, uint32_t y) {
            const double u = size * mirror * (x + real(-shake, shake));
            const double v = size * (y + real(-shake, shake));
            return std::array<float, 2>{float(left + u * std::cos(turn) - v * std::sin(turn)),
                                        float(bottom + u * std::sin(turn) + v * std::cos(turn))};
        });
    }
    return layout;
}

} // namespace

TEST(Coverage, NoProofContradictsTheComparisonOfAllPairs) {
    std::mt19937 random(7);
    int proved = 0, without_overlaps = 0;
    for (int run = 0; run < 3000; ++run) {
        const Layout layout = random_layout(random);
        const ChartTable charts = find_charts(layout);
        const Overlaps pairs = compare_all_pairs(layout, {512, 512}, charts, 1e-6);
        without_overlaps += pairs.triangles.empty() ? 1 : 0;
        if (!is_covered_once(layout, charts))
            continue;
        ++proved;
        EXPECT_TRUE(pairs.triangles.empty()) << "run " << run;
    }
    EXPECT_GT(proved, 300);
    EXPECT_GT(3000 - without_overlaps, 300);
    EXPECT_GE(proved, without_overlaps - 3);
}

TEST(Coverage, ANetOfACubeIsProved) { EXPECT_TRUE(is_proved(cube_net())); }

TEST(Coverage, ChartsBesideEachOtherAreProved) { EXPECT_TRUE(is_proved(strip(8, 0.01f))); }

TEST(Coverage, ChartsInsideEachOtherAreNot) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1));
    add_polygon(layout, rectangle(5, 0, 6, 1), rectangle(0.6f, 0.2f, 0.7f, 0.3f));
    EXPECT_FALSE(is_proved(layout));
}

TEST(Coverage, IdenticalChartsAreNotProved) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1));
    add_polygon(layout, rectangle(5, 0, 6, 1), rectangle(0, 0, 1, 1));
    EXPECT_FALSE(is_proved(layout));
}

TEST(Coverage, AChartMirroredOntoAnotherIsNotProved) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1));
    add_polygon(layout, rectangle(5, 0, 6, 1), rectangle(1, 0, 0, 1));
    EXPECT_FALSE(is_proved(layout));
}

TEST(Coverage, AMirroredChartIsProved) {
    Layout layout;
    add_grid(layout, 3, [](uint32_t x, uint32_t y) {
        return std::array<float, 2>{1.0f - 0.25f * float(x), 0.25f * float(y)};
    });
    EXPECT_TRUE(is_proved(layout));
}

TEST(Coverage, AChartInTheHoleOfAnotherIsProved) {
    Layout layout;
    const UvCorners outer = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    const UvCorners inner = {{0.25f, 0.25f}, {0.75f, 0.25f}, {0.75f, 0.75f}, {0.25f, 0.75f}};
    for (const UvCorners& ring : {outer, inner})
        for (const auto& p : ring)
            layout.positions.insert(layout.positions.end(), {p[0], p[1], 0.0f});
    for (uint32_t k = 0; k < 4; ++k) {
        const uint32_t next = (k + 1) % 4;
        add_face(layout, {k, next, 4 + next, 4 + k},
                 {outer[k], outer[next], inner[next], inner[k]});
    }
    EXPECT_TRUE(is_proved(layout));
    add_polygon(layout, rectangle(5, 0, 6, 1), rectangle(0.3f, 0.3f, 0.7f, 0.7f));
    EXPECT_TRUE(is_proved(layout));
    add_polygon(layout, rectangle(8, 0, 9, 1), rectangle(0.5f, 0.5f, 0.6f, 0.6f));
    EXPECT_FALSE(is_proved(layout));
}

TEST(Coverage, TheSidesOfASlitMayTouch) {
    Layout layout; // two quads that are apart in space and touch along an edge in the texture
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 0.5f, 1));
    add_polygon(layout, rectangle(5, 0, 6, 1), rectangle(0.5f, 0, 1, 1));
    EXPECT_TRUE(is_proved(layout));
}

TEST(Coverage, AFoldIsNotProved) {
    Layout layout;
    add_grid(layout, 2, [](uint32_t x, uint32_t y) {
        return std::array<float, 2>{x == 1 ? 0.5f : 0.125f * float(x), 0.25f * float(y)};
    });
    EXPECT_FALSE(is_proved(layout));
}

TEST(Coverage, AFullTurnTooManyAroundAPointIsNotProved) {
    Layout layout; // a fan of 720 degrees: its outline winds twice around the hub
    layout.positions = {0, 0, 0};
    for (int i = 0; i <= 16; ++i)
        layout.positions.insert(layout.positions.end(), {float(i), 1, 0});
    const auto rim = [](int i) {
        const double radius = 0.3 + 0.01 * i, angle = 0.7853981633974483 * i;
        return std::array<float, 2>{float(0.5 + radius * std::cos(angle)),
                                    float(0.5 + radius * std::sin(angle))};
    };
    for (int i = 0; i < 16; ++i)
        add_face(layout, {0, uint32_t(i + 1), uint32_t(i + 2)}, {{0.5f, 0.5f}, rim(i), rim(i + 1)});
    EXPECT_FALSE(is_proved(layout));
}
