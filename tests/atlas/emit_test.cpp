#include "atlas/road/finish.h"
#include "tests/atlas/pack_fixture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace tessora::atlas;
using namespace tessora::atlas::test;

namespace {

template <class T>
Span<T> span(const std::vector<T>& v) {
    return {v.data(), v.size()};
}

/// Owns the arrays of EmitCharts.
struct FlatCharts {
    std::vector<uint32_t> indices, corner_class, chart;
    std::vector<double> class_uv, stretch;
    std::vector<uint8_t> over;

    EmitCharts face() const {
        return {span(indices), span(corner_class), span(class_uv),
                span(chart),   span(stretch),      span(over)};
    }
};

/// Two triangles over one quad, in two charts; source vertex 5 is unused.
FlatCharts two_charts() {
    FlatCharts flat;
    flat.indices = {3, 1, 2, 0, 1, 3};
    flat.corner_class = {0, 1, 2, 5, 3, 4};
    flat.chart = {0, 1};
    flat.class_uv = {0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0};
    flat.stretch = {0.125, 5e-7};
    return flat;
}

/// A grid of quads, two triangles each, in one chart; `place` maps grid positions to UV.
template <class Place>
FlatCharts grid(uint32_t columns, uint32_t rows, Place place) {
    FlatCharts flat;
    for (uint32_t y = 0; y <= rows; ++y)
        for (uint32_t x = 0; x <= columns; ++x) {
            const Point p = place(x, y);
            flat.class_uv.insert(flat.class_uv.end(), {p.x, p.y});
        }
    for (uint32_t y = 0; y < rows; ++y)
        for (uint32_t x = 0; x < columns; ++x) {
            const uint32_t a = y * (columns + 1) + x, b = a + 1, c = a + columns + 2,
                           d = a + columns + 1;
            flat.indices.insert(flat.indices.end(), {a, b, c, a, c, d});
            flat.chart.insert(flat.chart.end(), {0, 0});
        }
    flat.corner_class = flat.indices;
    flat.stretch = {0};
    return flat;
}

PackOptions options_of(uint32_t width, uint32_t height, float gutter) {
    PackOptions options;
    options.width = width;
    options.height = height;
    options.gutter = gutter;
    options.quality = Quality::fast;
    return options;
}

Packing pack_one(const FlatCharts& flat, const PackOptions& options) {
    std::vector<uint32_t> edges, begin{0};
    for (size_t t = 0; t < flat.chart.size(); ++t)
        for (int k = 0; k < 3; ++k)
            edges.insert(edges.end(),
                         {flat.corner_class[3 * t + k], flat.corner_class[3 * t + (k + 1) % 3]});
    begin.push_back(uint32_t(edges.size() / 2));
    return pack_charts({span(flat.class_uv), span(edges), span(begin)}, options);
}

uint32_t count_flips(const Result& result, const std::vector<float>& uvs) {
    uint32_t flips = 0;
    for (size_t t = 0; 3 * t < result.indices.size(); ++t) {
        long double p[6];
        for (int k = 0; k < 3; ++k) {
            p[2 * k] = uvs[2 * result.indices[3 * t + k]];
            p[2 * k + 1] = uvs[2 * result.indices[3 * t + k] + 1];
        }
        flips += (p[2] - p[0]) * (p[5] - p[1]) - (p[3] - p[1]) * (p[4] - p[0]) > 0 ? 0 : 1;
    }
    return flips;
}

} // namespace

TEST(Emit, VerticesAreOrderedBySourceThenFirstCorner) {
    const FlatCharts flat = two_charts();
    Result result;
    emit_unpacked(flat.face(), result);
    EXPECT_EQ(result.source_vertex, (std::vector<uint32_t>{0, 1, 1, 2, 3, 3}));
    EXPECT_EQ(result.indices, (std::vector<uint32_t>{4, 1, 3, 0, 2, 5}));
}

TEST(Emit, TrianglesKeepTheirOrderAndCorners) {
    const FlatCharts flat = two_charts();
    Result result;
    emit_unpacked(flat.face(), result);
    ASSERT_EQ(result.indices.size(), flat.indices.size());
    for (size_t i = 0; i < flat.indices.size(); ++i)
        EXPECT_EQ(result.source_vertex[result.indices[i]], flat.indices[i]);
    EXPECT_EQ(result.chart, flat.chart);
    EXPECT_EQ(result.chart_count, 2u);
}

TEST(Emit, StretchIsTheMaximumOverCharts) {
    FlatCharts flat = two_charts();
    Result result;
    emit_unpacked(flat.face(), result);
    EXPECT_EQ(result.stretch, 0.125f);
    flat.stretch = {2e-7, 9e-7};
    emit_unpacked(flat.face(), result);
    EXPECT_EQ(result.stretch, 0.0f);
}

/// A right triangle in space, half as wide in the texture.
struct HalvedTriangle {
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const std::vector<uint32_t> indices = {0, 1, 2}, adjacency = {k_none, k_none, k_none};
    const Mesh mesh = {span(positions), span(indices), span(adjacency), {}};
    Result result;

    HalvedTriangle() {
        result.uvs = {0, 0, 0.25f, 0, 0, 0.5f};
        result.indices = indices;
        result.chart = {0};
        result.chart_count = 1;
    }
    static constexpr float stretch = 0.10557281f; ///< 1 - 1/L2, L2 = sqrt(2.5 * 0.5)
};

TEST(Emit, StretchThatRoundingHasChangedVisiblyIsMeasuredAnew) {
    HalvedTriangle halved;
    halved.result.stretch = 0.2f;
    report_rounded_stretch(halved.mesh, halved.result);
    EXPECT_FLOAT_EQ(halved.result.stretch, halved.stretch);
    for (size_t v = 0; v < 3; ++v) // a copy that shares the place of its sheet
        halved.result.uvs[2 * v] *= -1;
    halved.result.stretch = 0;
    report_rounded_stretch(halved.mesh, halved.result);
    EXPECT_FLOAT_EQ(halved.result.stretch, halved.stretch);
}

TEST(Emit, StretchThatRoundingHasHardlyChangedIsReportedAsItWasBefore) {
    HalvedTriangle halved;
    halved.result.stretch = halved.stretch - 1e-3f;
    report_rounded_stretch(halved.mesh, halved.result);
    EXPECT_EQ(halved.result.stretch, halved.stretch - 1e-3f);
}

TEST(Emit, OverLimitListsTrianglesOfChartsOverTheLimit) {
    FlatCharts flat = two_charts();
    Result result;
    result.over_limit = {7};
    emit_unpacked(flat.face(), result);
    EXPECT_TRUE(result.over_limit.empty());
    flat.over = {0, 1};
    emit_unpacked(flat.face(), result);
    EXPECT_EQ(result.over_limit, (std::vector<uint32_t>{1}));
}

TEST(Emit, UnpackedChartsKeepTheirSizeAndStartAtTheOrigin) {
    const FlatCharts flat = grid(3, 2, [](uint32_t x, uint32_t y) {
        return Point{100.0 + x, -50.0 + y};
    });
    Result result;
    emit_unpacked(flat.face(), result);
    EXPECT_TRUE(result.lost.empty());
    for (size_t v = 0; v < result.source_vertex.size(); ++v) {
        EXPECT_EQ(result.uvs[2 * v], float(result.source_vertex[v] % 4));
        EXPECT_EQ(result.uvs[2 * v + 1], float(result.source_vertex[v] / 4));
    }
}

TEST(Emit, NoTrianglesGiveEmptyArrays) {
    const FlatCharts flat;
    Result result;
    emit_unpacked(flat.face(), result);
    EXPECT_TRUE(result.lost.empty());
    EXPECT_TRUE(result.indices.empty());
    EXPECT_TRUE(result.uvs.empty());
    EXPECT_EQ(result.chart_count, 0u);
}

TEST(Emit, CoordinatesAreInUnitsOfTheLongerSide) {
    for (const auto& sides : {std::pair<uint32_t, uint32_t>{1024, 256},
                              {256, 1024},
                              {512, 512},
                              {300, 100},
                              {8192, 8}}) {
        const uint32_t width = sides.first, height = sides.second;
        const FlatCharts flat = grid(8, 8, [](uint32_t x, uint32_t y) {
            return Point{3.0 * x, 1.0 * y};
        });
        for (float gutter : {0.0f, 2.0f}) {
            const PackOptions options = options_of(width, height, gutter);
            const Packing packing = pack_one(flat, options);
            ASSERT_EQ(packing.status, Status::ok);
            Result result;
            emit(flat.face(), packing, options, result);
            EXPECT_TRUE(result.lost.empty());
            const float longer = float(std::max(width, height));
            for (size_t v = 0; v < result.uvs.size(); v += 2) {
                EXPECT_GE(result.uvs[v], 0.0f);
                EXPECT_GE(result.uvs[v + 1], 0.0f);
                EXPECT_LE(result.uvs[v], float(width) / longer);
                EXPECT_LE(result.uvs[v + 1], float(height) / longer);
            }
            std::vector<float> final_uvs = result.uvs;
            adjust_like_the_caller(final_uvs, width, height, gutter);
            for (float f : final_uvs) {
                EXPECT_GE(f, 0.0f);
                EXPECT_LE(f, 1.0f);
            }
            // Shapes are undistorted in texels: the grid is three times as wide as high.
            const auto at = [&](size_t v) {
                return Point{final_uvs[2 * v] * double(width),
                             final_uvs[2 * v + 1] * double(height)};
            };
            const double side = std::hypot(at(8).x - at(0).x, at(8).y - at(0).y);
            const double other = std::hypot(at(72).x - at(0).x, at(72).y - at(0).y);
            EXPECT_NEAR(side, 3 * other, 0.01);
            EXPECT_NEAR(side, 24 * packing.scale, 0.01);
        }
    }
}

TEST(Emit, NeedlesSurviveRounding) {
    // One row of the grid is 3e-7 high and 40 wide: less than a lattice step after packing.
    const FlatCharts flat = grid(40, 6, [](uint32_t x, uint32_t y) {
        return Point{1.0 * x, y <= 3 ? 5.0 * y : 5.0 * y - 5.0 + 3e-7};
    });
    const PackOptions options = options_of(512, 512, 2);
    const Packing packing = pack_one(flat, options);
    Result result;
    emit(flat.face(), packing, options, result);
    EXPECT_TRUE(result.lost.empty());
    EXPECT_EQ(count_flips(result, result.uvs), 0u);
    std::vector<float> final_uvs = result.uvs;
    adjust_like_the_caller(final_uvs, 512, 512, 2);
    EXPECT_EQ(count_flips(result, final_uvs), 0u);
}

TEST(Emit, TrianglesThatCannotBeKeptAreListedAsLost) {
    // Four thousand triangles inside one lattice step.
    const FlatCharts flat = grid(60, 60, [](uint32_t x, uint32_t y) {
        return Point{x == 60 ? 1.0 : 1e-10 * x, y == 60 ? 1.0 : 1e-10 * y};
    });
    const PackOptions options = options_of(512, 512, 2);
    Result result;
    emit(flat.face(), pack_one(flat, options), options, result);
    ASSERT_FALSE(result.lost.empty());
    for (size_t i = 1; i < result.lost.size(); ++i)
        EXPECT_LT(result.lost[i - 1], result.lost[i]);
    std::vector<float> final_uvs = result.uvs;
    adjust_like_the_caller(final_uvs, 512, 512, 2);
    EXPECT_LE(count_flips(result, final_uvs), result.lost.size());
}

TEST(EmitProperty, ThinRandomGridsKeepTheirOrientation) {
    for (uint32_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        std::vector<double> x{0}, y{0};
        for (int i = 0; i < 12; ++i) {
            x.push_back(x.back() + (i % 3 == 1 && random() % 2 == 0 ? 2e-7 : 0.5 + unit(random)));
            y.push_back(y.back() + 0.5 + unit(random));
        }
        const double shear = unit(random);
        const FlatCharts flat = grid(12, 12, [&](uint32_t i, uint32_t j) {
            return Point{x[i] + shear * y[j], y[j]};
        });
        const PackOptions options = options_of(256, 128, 3);
        Result result;
        emit(flat.face(), pack_one(flat, options), options, result);
        EXPECT_TRUE(result.lost.empty());
        std::vector<float> final_uvs = result.uvs;
        adjust_like_the_caller(final_uvs, 256, 128, 3);
        EXPECT_EQ(count_flips(result, result.uvs), 0u);
        EXPECT_EQ(count_flips(result, final_uvs), 0u);
    }
}
