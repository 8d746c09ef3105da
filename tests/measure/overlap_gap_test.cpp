#include "measure/measure.h"
#include "tests/measure/layouts.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace measure;

namespace {

const Texture k_square{512, 512};

Layout two_rectangles(const UvCorners& first, const UvCorners& second) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), first);
    add_polygon(layout, rectangle(5, 0, 6, 1), second);
    return layout;
}

double gap_of(const Layout& layout, const Texture& texture = k_square) {
    const Measures m = measure::measure(layout, texture);
    return m.gap ? m.gap->texels : -1.0;
}

/// Area of the part of triangle `a` that lies in triangle `b`: I. E. Sutherland, G. W. Hodgman,
/// "Reentrant polygon clipping" (1974).
double common_area(const UvCorners& a, UvCorners b) {
    const auto turn = [](const auto& p, const auto& q, const auto& r) {
        return (double(q[0]) - p[0]) * (double(r[1]) - p[1]) -
               (double(q[1]) - p[1]) * (double(r[0]) - p[0]);
    };
    if (turn(b[0], b[1], b[2]) < 0)
        std::swap(b[1], b[2]);
    std::vector<std::array<double, 2>> part;
    for (const auto& corner : a)
        part.push_back({corner[0], corner[1]});
    for (size_t k = 0; k < 3; ++k) {
        std::vector<std::array<double, 2>> kept;
        for (size_t i = 0; i < part.size(); ++i) {
            const auto &p = part[i], &q = part[(i + 1) % part.size()];
            const double side_p = turn(b[k], b[(k + 1) % 3], p);
            const double side_q = turn(b[k], b[(k + 1) % 3], q);
            if (side_p >= 0)
                kept.push_back(p);
            if ((side_p > 0 && side_q < 0) || (side_p < 0 && side_q > 0)) {
                const double t = side_p / (side_p - side_q);
                kept.push_back({p[0] + t * (q[0] - p[0]), p[1] + t * (q[1] - p[1])});
            }
        }
        part = kept;
    }
    double area = 0.0;
    for (size_t i = 2; i < part.size(); ++i)
        area += 0.5 * turn(part[0], part[i - 1], part[i]);
    return std::abs(area);
}

} // namespace

TEST(Overlap, CrossingRectanglesOverlap) {
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0.4f, 1, 0.6f), rectangle(0.4f, 0, 0.6f, 1)), k_square);
    EXPECT_GT(m.overlaps.pairs_between, 0u);
    EXPECT_EQ(m.overlaps.pairs_within, 0u);
    ASSERT_TRUE(m.gap);
    EXPECT_EQ(m.gap->texels, 0.0);
}

TEST(Overlap, NestedRectanglesWithoutCrossingBordersOverlap) {
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0, 1, 1), rectangle(0.6f, 0.2f, 0.7f, 0.3f)), k_square);
    EXPECT_EQ(m.overlaps.pairs_between, 2u);
    EXPECT_EQ(m.overlaps.triangles, (std::vector<uint32_t>{0, 2, 3}));
}

TEST(Overlap, IdenticalRectanglesOverlap) {
    const Measures m =
        measure::measure(two_rectangles(rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1)), k_square);
    EXPECT_EQ(m.overlaps.pairs_between, 2u);
}

TEST(Overlap, ChartsThatTouchAlongAnEdgeDoNotOverlap) {
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0, 0.5f, 1), rectangle(0.5f, 0, 1, 1)), k_square);
    EXPECT_TRUE(m.overlaps.triangles.empty());
    EXPECT_EQ(m.gap->texels, 0.0);
}

TEST(Overlap, SidesOfASlitDoNotOverlap) {
    // Two quads whose common edge has one shared vertex and, at its other end, two vertices with
    // equal UVs.
    Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0, 2, 1, 0, 1, 1, 0};
    add_face(layout, {0, 1, 2, 3}, rectangle(0, 0, 0.25f, 0.25f));
    add_face(layout, {1, 4, 5, 6}, rectangle(0.25f, 0, 0.5f, 0.25f));
    EXPECT_TRUE(measure::measure(layout, k_square).overlaps.triangles.empty());
}

TEST(Overlap, PenetrationByRoundingErrorIsNoOverlap) {
    const float just_inside = std::nextafter(0.5f, 0.0f);
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0, 0.5f, 1), rectangle(just_inside, 0, 1, 1)), k_square);
    EXPECT_TRUE(m.overlaps.triangles.empty());
}

TEST(Overlap, PenetrationByAHundredthOfATexelIsAnOverlap) {
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0, 0.5f, 1), rectangle(0.5f - 0.01f / 512, 0, 1, 1)), k_square);
    EXPECT_FALSE(m.overlaps.triangles.empty());
}

TEST(Overlap, MirroredTrianglesAreTestedLikeOthers) {
    const Measures m = measure::measure(
        two_rectangles(rectangle(0, 0, 1, 1), {{1, 0}, {0, 0}, {0, 1}, {1, 1}}), k_square);
    EXPECT_GT(m.overlaps.pairs_between, 0u);
}

TEST(Overlap, CountingStopsAtTheLimitButAllTrianglesAreFound) {
    Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    for (uint32_t i = 0; i < 3000; ++i)
        add_face(layout, {0, 1, 2}, {{0, 0}, {1, 0}, {0, 1}});
    const Measures m = measure::measure(layout, k_square);
    EXPECT_TRUE(m.overlaps.is_cut_short);
    EXPECT_EQ(m.overlaps.triangles.size(), 3000u);
    EXPECT_EQ(m.overlaps.pairs_within + m.overlaps.pairs_between, k_max_pairs);
}

TEST(Overlap, RegularGridHasNoOverlaps) {
    const Measures m = measure::measure(grid(64), k_square);
    EXPECT_TRUE(m.overlaps.triangles.empty());
    EXPECT_FALSE(m.gap);
}

TEST(Gap, IsEuclideanInTexels) {
    EXPECT_NEAR(gap_of(two_rectangles(rectangle(0, 0, 0.25f, 0.25f),
                                      rectangle(0.25f + 3 / 512.0f, 0.25f + 4 / 512.0f, 1, 1))),
                5.0, 1e-4);
}

TEST(Gap, IsInTexelsOfEachAxisOnANonSquareTexture) {
    const Texture wide{1024, 256};
    EXPECT_NEAR(gap_of(two_rectangles(rectangle(0, 0, 0.5f, 0.25f),
                                      rectangle(0, 0.25f + 8 / 256.0f, 0.5f, 1)),
                       wide),
                8.0, 1e-3);
    EXPECT_NEAR(
        gap_of(two_rectangles(rectangle(0, 0, 0.5f, 1), rectangle(0.5f + 8 / 1024.0f, 0, 1, 1)),
               wide),
        8.0, 1e-3);
}

TEST(Gap, NamesOneTriangleOfEachChart) {
    const Measures m = measure::measure(strip(3, 0.01f), k_square);
    ASSERT_TRUE(m.gap);
    EXPECT_NE(m.triangle_chart[m.gap->triangles[0]], m.triangle_chart[m.gap->triangles[1]]);
}

TEST(Gap, SingleChartHasNoGap) { EXPECT_EQ(gap_of(cube_net()), -1.0); }

// Compared with brute force over all pairs of edges.
TEST(Gap, EqualsTheMinimumOverAllPairsOfRandomCharts) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(0.0f, 0.95f), size(0.001f, 0.02f);
    for (int run = 0; run < 20; ++run) {
        Layout layout;
        std::vector<std::array<float, 4>> boxes;
        for (int i = 0; i < 40; ++i) {
            const float x = place(random), y = place(random);
            boxes.push_back({x, y, x + size(random), y + size(random)});
            add_polygon(layout, rectangle(0, 0, 1, 1),
                        rectangle(boxes[i][0], boxes[i][1], boxes[i][2], boxes[i][3]));
        }
        double smallest = 1e30;
        bool overlap = false;
        for (size_t i = 0; i < boxes.size(); ++i)
            for (size_t j = 0; j < i; ++j) {
                const auto &a = boxes[i], &b = boxes[j];
                const double dx = std::max({0.0, double(a[0]) - b[2], double(b[0]) - a[2]});
                const double dy = std::max({0.0, double(a[1]) - b[3], double(b[1]) - a[3]});
                smallest = std::min(smallest, 512 * std::sqrt(dx * dx + dy * dy));
                overlap |= dx == 0.0 && dy == 0.0;
            }
        const Measures m = measure::measure(layout, k_square);
        ASSERT_TRUE(m.gap);
        if (!overlap) {
            EXPECT_NEAR(m.gap->texels, smallest, 1e-9) << "run " << run;
        }
        EXPECT_EQ(!m.overlaps.triangles.empty(), overlap) << "run " << run;
    }
}

// Compared with the area of one triangle clipped by the other.
TEST(Overlap, OfRandomTrianglesMatchesTheirIntersectionArea) {
    std::mt19937 random(23);
    std::uniform_real_distribution<float> place(0.0f, 1.0f);
    int overlapping = 0;
    for (int run = 0; run < 3000; ++run) {
        Layout layout;
        std::vector<UvCorners> both;
        for (int i = 0; i < 2; ++i) {
            both.push_back({{place(random), place(random)},
                            {place(random), place(random)},
                            {place(random), place(random)}});
            add_polygon(layout, {{0, 0}, {1, 0}, {0, 1}}, both.back());
        }
        const double common = common_area(both[0], both[1]);
        if (common > 0.0 && common < 1e-6)
            continue; // too close to the overlap tolerance to decide
        overlapping += common > 0.0;
        EXPECT_EQ(measure::measure(layout, k_square).overlaps.pairs_between, common > 0.0)
            << "run " << run;
    }
    EXPECT_GT(overlapping, 500);
    EXPECT_LT(overlapping, 2500);
}

// Compared with brute force over all pairs.
TEST(Overlap, TreeFindsTheSamePairsAsTestingAll) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> place(0.0f, 1.0f), offset(-0.05f, 0.05f);
    Layout layout;
    for (int i = 0; i < 300; ++i) {
        const float x = place(random), y = place(random);
        UvCorners corners;
        for (int k = 0; k < 3; ++k)
            corners.push_back({x + offset(random), y + offset(random)});
        add_polygon(layout, {{0, 0}, {1, 0}, {0, 1}}, corners);
    }
    const Measures all = measure::measure(layout, k_square);
    uint64_t pairs = 0;
    for (uint32_t i = 0; i < 300; ++i)
        for (uint32_t j = 0; j < i; ++j) {
            Layout two;
            for (uint32_t t : {i, j}) {
                UvCorners corners;
                for (uint32_t k = 0; k < 3; ++k)
                    corners.push_back(
                        {layout.uvs[2 * (3 * t + k)], layout.uvs[2 * (3 * t + k) + 1]});
                add_polygon(two, {{0, 0}, {1, 0}, {0, 1}}, corners);
            }
            pairs += measure::measure(two, k_square).overlaps.pairs_between;
        }
    EXPECT_GT(pairs, 100u);
    EXPECT_EQ(all.overlaps.pairs_between, pairs);
}

// Slivers around two points; some overlap, some span the angle where a full turn wraps around. With
// a shared vertex they are tested as a fan, by angle; with separate vertices pair by pair.
TEST(Overlap, OfTrianglesAroundAPointDoesNotDependOnSharedVertices) {
    std::mt19937 random(12);
    std::uniform_real_distribution<float> turn(0.0f, 6.2831853f), width(0.001f, 0.02f);
    Layout shared, apart;
    shared.positions = {0, 0, 0, 1, 0, 0};
    for (uint32_t i = 0; i < 600; ++i) {
        const std::array<float, 2> centre = {i % 2 ? 0.3f : 0.6f, 0.5f};
        const float from = turn(random), to = from + width(random);
        const UvCorners corners = {
            centre,
            {centre[0] + 0.25f * std::cos(from), centre[1] + 0.25f * std::sin(from)},
            {centre[0] + 0.25f * std::cos(to), centre[1] + 0.25f * std::sin(to)}};
        const auto vertex = static_cast<uint32_t>(shared.positions.size() / 3);
        shared.positions.insert(shared.positions.end(), {0, float(i), 1, 1, float(i),
                                                         1}); // vertices used by this triangle only
        add_face(shared, {i % 2, vertex, vertex + 1}, corners);
        add_polygon(apart, {{0, 0}, {1, 0}, {0, 1}}, corners);
    }
    const Overlaps by_angle = measure::measure(shared, k_square).overlaps;
    const Overlaps one_by_one = measure::measure(apart, k_square).overlaps;
    EXPECT_GT(one_by_one.pairs_between, 600u);
    EXPECT_EQ(by_angle.pairs_between + by_angle.pairs_within,
              one_by_one.pairs_between + one_by_one.pairs_within);
    EXPECT_EQ(by_angle.triangles, one_by_one.triangles);
}

TEST(Overlap, ClosedFanAroundAPointHasNoOverlaps) {
    constexpr uint32_t k_count = 4096;
    Layout layout;
    layout.positions = {0, 0, 0};
    UvCorners rim;
    for (uint32_t i = 0; i < k_count; ++i) {
        const double angle = 6.283185307179586 * i / k_count;
        rim.push_back({static_cast<float>(0.5 + 0.45 * std::cos(angle)),
                       static_cast<float>(0.5 + 0.45 * std::sin(angle))});
        layout.positions.insert(layout.positions.end(), {rim[i][0], rim[i][1], 0});
    }
    for (uint32_t i = 0; i < k_count; ++i)
        add_face(layout, {0, 1 + i, 1 + (i + 1) % k_count},
                 {{0.5f, 0.5f}, rim[i], rim[(i + 1) % k_count]});
    EXPECT_TRUE(measure::measure(layout, k_square).overlaps.triangles.empty());
}
