#include "atlas/atlas.h"
#include "measure/measure.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace tessora::atlas;

namespace {

/// Charts as triangles over UVs of their own, in texture coordinates.
struct Charts {
    std::vector<float> uvs, area;
    std::vector<uint32_t> indices, chart;
    std::vector<uint8_t> keep;
    uint32_t count = 0;

    /// A fan around the centre of a ring of points, or around its first point.
    void fan(const std::vector<std::array<double, 2>>& ring, bool from_centre, bool kept = false) {
        const auto first = uint32_t(uvs.size() / 2), n = uint32_t(ring.size());
        double x = 0, y = 0;
        for (const auto& p : ring) {
            uvs.insert(uvs.end(), {float(p[0]), float(p[1])});
            x += p[0] / n;
            y += p[1] / n;
        }
        if (from_centre)
            uvs.insert(uvs.end(), {float(x), float(y)});
        for (uint32_t i = from_centre ? 0 : 1; i + (from_centre ? 0 : 1) < n; ++i)
            triangle(from_centre ? first + n : first, first + i, first + (i + 1) % n, kept);
        ++count;
    }
    void triangle(uint32_t a, uint32_t b, uint32_t c, bool kept) {
        indices.insert(indices.end(), {a, b, c});
        chart.push_back(count);
        keep.push_back(kept);
        area.push_back(1);
    }
    void box(double x, double y, double w, double h, bool kept = false) {
        fan({{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}}, false, kept);
    }
    UvMesh mesh() const {
        UvMesh mesh;
        mesh.uvs = {uvs.data(), uvs.size()};
        mesh.indices = {indices.data(), indices.size()};
        mesh.chart = {chart.data(), chart.size()};
        mesh.keep = {keep.data(), keep.size()};
        mesh.area = {area.data(), area.size()};
        return mesh;
    }
};

Charts random_charts(uint32_t seed, uint32_t count) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    Charts charts;
    for (uint32_t i = 0; i < count; ++i) {
        const double size = 0.02 / (0.1 + unit(random)), a2 = 0.4 * unit(random),
                     squash = 0.2 + 0.8 * unit(random);
        const bool mirrored = random() % 4 == 0;
        std::vector<std::array<double, 2>> ring;
        const uint32_t n = 3 + random() % 30;
        for (uint32_t k = 0; k < n; ++k) {
            const double t = 6.283185307179586 * k / n * (mirrored ? -1 : 1);
            const double r = size * (1 + a2 * std::cos(3 * t));
            ring.push_back({0.5 + r * std::cos(t), 0.5 + squash * r * std::sin(t)});
        }
        charts.fan(ring, true);
    }
    return charts;
}

/// The result as measured by the program's own judge; tiles are measured as one large texture.
measure::Measures measured(const Charts& charts, const PackSettings& settings,
                           const PackResult& result, uint32_t columns = 1) {
    measure::Layout layout;
    layout.uvs = result.uvs;
    for (float& f : layout.uvs)
        f /= float(columns);
    for (uint32_t corner = 0; corner < charts.indices.size(); ++corner) {
        // One vertex per UV of the input, so that charts are connected as there.
        const uint32_t id = charts.indices[corner];
        layout.corner_vertex.push_back(id);
        layout.corner_uv.push_back(corner);
        layout.triangle_corners.push_back(corner);
        if (corner % 3 == 0)
            layout.triangle_polygon.push_back(corner / 3);
    }
    for (size_t id = 0; id < charts.uvs.size() / 2; ++id)
        layout.positions.insert(layout.positions.end(),
                                {charts.uvs[2 * id], charts.uvs[2 * id + 1], float(id)});
    layout.polygon_count = uint32_t(charts.indices.size() / 3);
    return measure::measure(layout,
                            {double(settings.width) * columns, double(settings.height) * columns});
}

PackResult packed(const Charts& charts, const PackSettings& settings) {
    PackResult result;
    const Failure failure = pack(charts.mesh(), settings, result);
    EXPECT_EQ(failure.status, Status::ok) << describe(failure.status);
    return result;
}

Status status_of(const UvMesh& mesh, const PackSettings& settings, uint32_t* element = nullptr) {
    PackResult result;
    const Failure failure = pack(mesh, settings, result);
    EXPECT_TRUE(result.uvs.empty() || failure.status == Status::ok);
    if (element != nullptr)
        *element = failure.element;
    return failure.status;
}

PackSettings fast(uint32_t size = 512, float gutter = 2) {
    PackSettings settings;
    settings.width = settings.height = size;
    settings.gutter = gutter;
    settings.quality = Quality::fast;
    return settings;
}

double edge(const std::vector<float>& uvs, size_t a, size_t b) {
    return std::hypot(double(uvs[2 * a]) - uvs[2 * b], double(uvs[2 * a + 1]) - uvs[2 * b + 1]);
}

/// The factor by which pack() scaled a chart, and that it scaled all its edges by it.
double scale_of(const Charts& charts, const PackResult& result, uint32_t chart) {
    double scale = 0;
    for (uint32_t t = 0; t < charts.chart.size(); ++t)
        for (uint32_t k = 0; k < 3 && charts.chart[t] == chart; ++k) {
            const size_t a = 3 * size_t(t) + k, b = 3 * size_t(t) + (k + 1) % 3;
            const double ratio =
                edge(result.uvs, a, b) / edge(charts.uvs, charts.indices[a], charts.indices[b]);
            if (scale == 0)
                scale = ratio;
            EXPECT_NEAR(ratio, scale, 1e-3 * scale);
        }
    return scale;
}

} // namespace

TEST(Repack, KeepsTheGutterTheRangeAndTheRelativeSizes) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        const Charts charts = random_charts(seed, 5 + 3 * seed);
        PackSettings settings = fast(256, float(seed % 4) * 1.5f);
        const PackResult result = packed(charts, settings);
        const measure::Measures seen = measured(charts, settings, result);
        ASSERT_TRUE(seen.gap);
        EXPECT_GE(seen.gap->texels, settings.gutter - 1e-4) << seed;
        EXPECT_EQ(seen.overlaps.pairs_between, 0u);
        EXPECT_TRUE(seen.outside.empty());
        EXPECT_NEAR(seen.coverage, result.coverage[0], 1e-3);
        EXPECT_TRUE(result.lost.empty());
        const double scale = scale_of(charts, result, 0);
        for (uint32_t c = 1; c < charts.count; ++c)
            EXPECT_NEAR(scale_of(charts, result, c), scale, 1e-3 * scale);
    }
}

TEST(Repack, GivesTheSameBitsTwice) {
    const Charts charts = random_charts(3, 25);
    const PackResult a = packed(charts, fast()), b = packed(charts, fast());
    EXPECT_EQ(std::memcmp(a.uvs.data(), b.uvs.data(), a.uvs.size() * sizeof(float)), 0);
}

TEST(Repack, TellsWhereEachChartWent) {
    const Charts charts = random_charts(5, 20);
    const PackSettings settings = fast();
    const PackResult result = packed(charts, settings);
    ASSERT_EQ(result.charts.size(), charts.count);
    for (size_t corner = 0; corner < charts.indices.size(); ++corner) {
        const PackedChart& to = result.charts[result.chart[corner / 3]];
        const double x = double(charts.uvs[2 * size_t(charts.indices[corner])]) * 512;
        const double y = double(charts.uvs[2 * size_t(charts.indices[corner]) + 1]) * 512;
        EXPECT_NEAR(result.uvs[2 * corner] * 512, to.scale * (to.cosine * x - to.sine * y) + to.x,
                    1e-3);
        EXPECT_NEAR(result.uvs[2 * corner + 1] * 512,
                    to.scale * (to.sine * x + to.cosine * y) + to.y, 1e-3);
    }
}

TEST(Repack, FindsChartsBySharedUvs) {
    Charts charts = random_charts(2, 9);
    UvMesh mesh = charts.mesh();
    mesh.chart = {};
    PackResult result;
    ASSERT_EQ(pack(mesh, fast(), result).status, Status::ok);
    EXPECT_EQ(result.chart, charts.chart);
}

TEST(Repack, PacksIntoTexturesThatAreNotSquare) {
    const Charts charts = random_charts(4, 30);
    PackSettings settings = fast();
    settings.width = 1024;
    settings.height = 256;
    const PackResult result = packed(charts, settings);
    const measure::Measures seen = measured(charts, settings, result);
    EXPECT_GE(seen.gap->texels, 2 - 1e-4);
    EXPECT_TRUE(seen.outside.empty());
}

TEST(Repack, SpreadsChartsOverTiles) {
    const Charts charts = random_charts(7, 60);
    PackSettings settings = fast(128, 2);
    const double one = scale_of(charts, packed(charts, settings), 0);
    settings.tiles = 3;
    const PackResult result = packed(charts, settings);
    EXPECT_GT(scale_of(charts, result, 0), 1.4 * one);
    std::set<uint32_t> used;
    for (size_t corner = 0; corner < charts.indices.size(); ++corner) {
        const uint32_t tile = result.charts[result.chart[corner / 3]].tile;
        used.insert(tile);
        EXPECT_GE(result.uvs[2 * corner], float(tile));
        EXPECT_LE(result.uvs[2 * corner], float(tile + 1));
        EXPECT_GE(result.uvs[2 * corner + 1], 0);
        EXPECT_LE(result.uvs[2 * corner + 1], 1);
    }
    EXPECT_EQ(used.size(), 3u);
    const measure::Measures seen = measured(charts, settings, result, 3);
    EXPECT_GE(seen.gap->texels, 2 - 1e-4);
    EXPECT_EQ(seen.overlaps.pairs_between, 0u);
}

TEST(Repack, LeavesKeptChartsWhereTheyAreAndPacksAroundThem) {
    Charts charts = random_charts(8, 20);
    charts.box(0.3, 0.35, 0.4, 0.3, true);
    charts.box(0.05, 0.05, 0.1, 0.1, true);
    const PackSettings settings = fast();
    const PackResult result = packed(charts, settings);
    for (size_t corner = 0; corner < charts.indices.size(); ++corner)
        if (charts.keep[corner / 3] != 0) {
            EXPECT_EQ(result.uvs[2 * corner], charts.uvs[2 * charts.indices[corner]]);
            EXPECT_EQ(result.uvs[2 * corner + 1], charts.uvs[2 * charts.indices[corner] + 1]);
        }
    const measure::Measures seen = measured(charts, settings, result);
    EXPECT_GE(seen.gap->texels, 2 - 1e-4);
    EXPECT_EQ(seen.overlaps.pairs_between, 0u);
    EXPECT_LE(scale_of(charts, result, 0), 1 + 1e-5);
}

TEST(Repack, KeepsChartsOfAnyTile) {
    Charts charts = random_charts(9, 30);
    charts.box(1.25, 0.25, 0.5, 0.5, true);
    PackSettings settings = fast(128, 2);
    settings.tiles = 2;
    const PackResult result = packed(charts, settings);
    EXPECT_EQ(result.charts.back().tile, 1u);
    EXPECT_GE(measured(charts, settings, result, 2).gap->texels, 2 - 1e-4);
}

TEST(Repack, RefusesKeptChartsThatCollide) {
    Charts apart;
    apart.box(0.1, 0.1, 0.2, 0.2, true);
    apart.box(0.305, 0.1, 0.2, 0.2, true); // 2.56 texels
    EXPECT_EQ(status_of(apart.mesh(), fast(512, 2)), Status::ok);
    uint32_t element = k_none;
    EXPECT_EQ(status_of(apart.mesh(), fast(512, 3), &element), Status::kept_charts_collide);
    EXPECT_EQ(element, 2u);
    Charts inside;
    inside.box(0.1, 0.1, 0.8, 0.8, true);
    inside.box(0.55, 0.2, 0.1, 0.1, true);
    EXPECT_EQ(status_of(inside.mesh(), fast()), Status::kept_charts_collide);
}

TEST(Repack, RefusesKeptChartsOutsideTheTiles) {
    Charts charts;
    charts.box(0.1, 0.1, 0.2, 0.2);
    charts.box(0.9, 0.1, 0.2, 0.2, true);
    uint32_t element = k_none;
    EXPECT_EQ(status_of(charts.mesh(), fast(), &element), Status::kept_chart_outside);
    EXPECT_EQ(element, 2u);
}

TEST(Repack, DoesNotTurnChartsThatMayNotTurn) {
    const Charts charts = random_charts(10, 25);
    PackSettings settings = fast();
    settings.turns = Turns::none;
    for (const PackedChart& chart : packed(charts, settings).charts)
        EXPECT_EQ(chart.cosine, 1);
    settings.turns = Turns::quarter;
    bool turned = false;
    for (const PackedChart& chart : packed(charts, settings).charts) {
        EXPECT_NEAR(std::abs(chart.cosine) + std::abs(chart.sine), 1, 1e-12);
        turned = turned || std::abs(chart.cosine) < 0.5;
    }
    EXPECT_TRUE(turned);
}

TEST(Repack, MakesTheDensityUniform) {
    Charts charts;
    charts.box(0, 0, 0.1, 0.1);
    charts.box(0, 0, 0.2, 0.2);
    PackSettings settings = fast();
    settings.density = Density::uniform;
    const PackResult result = packed(charts, settings);
    EXPECT_NEAR(scale_of(charts, result, 0), 2 * scale_of(charts, result, 1), 1e-4);
    EXPECT_NEAR(edge(result.uvs, 0, 1), edge(result.uvs, 6, 7), 1e-4);
}

TEST(Repack, GivesAFixedDensityOrDoesNotFit) {
    Charts charts;
    charts.box(0, 0, 0.1, 0.1); // of area 2
    charts.box(0, 0, 0.2, 0.2);
    PackSettings settings = fast();
    settings.density = Density::fixed;
    settings.texels_per_unit = 100;
    const PackResult result = packed(charts, settings);
    EXPECT_NEAR(edge(result.uvs, 0, 1) * 512, 100 * std::sqrt(2.0), 1e-3);
    EXPECT_NEAR(result.texels_per_unit, 100, 1e-6);
    settings.texels_per_unit = 300;
    uint32_t element = k_none;
    EXPECT_EQ(status_of(charts.mesh(), settings, &element), Status::does_not_fit);
    EXPECT_EQ(element, 2u);
    settings.tiles = 2;
    EXPECT_NEAR(packed(charts, settings).texels_per_unit, 300, 1e-6);
}

TEST(Repack, StacksCongruentCharts) {
    Charts charts;
    const auto hook = [&](double angle, bool mirrored) {
        std::vector<std::array<double, 2>> ring = {{0, 0},     {0.3, 0},   {0.3, 0.1},
                                                   {0.1, 0.1}, {0.1, 0.2}, {0, 0.2}};
        for (auto& p : ring)
            p = {0.5 + std::cos(angle) * p[0] * (mirrored ? -1 : 1) - std::sin(angle) * p[1],
                 0.5 + std::sin(angle) * p[0] * (mirrored ? -1 : 1) + std::cos(angle) * p[1]};
        charts.fan(ring, false);
    };
    hook(0, false);
    hook(1, false);
    hook(2, true);
    charts.box(0, 0, 0.3, 0.3);
    PackSettings settings = fast();
    const PackResult apart = packed(charts, settings);
    settings.stack = Stack::congruent;
    const PackResult congruent = packed(charts, settings);
    settings.stack = Stack::mirrored;
    const PackResult mirrored = packed(charts, settings);
    EXPECT_EQ(apart.charts[1].stacked_on, k_none);
    EXPECT_EQ(congruent.charts[1].stacked_on, 0u);
    EXPECT_EQ(congruent.charts[2].stacked_on, k_none);
    EXPECT_EQ(congruent.charts[3].stacked_on, k_none);
    EXPECT_EQ(mirrored.charts[1].stacked_on, 0u);
    EXPECT_EQ(mirrored.charts[2].stacked_on, 0u);
    EXPECT_TRUE(mirrored.charts[2].turned_over);
    for (uint32_t i = 0; i < 12; ++i)
        for (uint32_t chart : {1u, 2u})
            for (uint32_t k = 0; k < 2; ++k)
                EXPECT_NEAR(mirrored.uvs[2 * (12 * chart + i) + k], mirrored.uvs[2 * i + k], 1e-5);
    EXPECT_GT(scale_of(charts, mirrored, 0), scale_of(charts, apart, 0));
}

TEST(Repack, NamesMirroredAndTangledChartsAndKeepsOthersOutOfThem) {
    Charts charts;
    charts.box(0, 0, 0.3, 0.3);
    charts.fan({{0, 0}, {0, 0.3}, {0.3, 0.3}, {0.3, 0}}, false); // clockwise
    // Two triangles of the same chart, one over the other: the even-odd rule would call it a hole.
    const auto first = uint32_t(charts.uvs.size() / 2);
    charts.uvs.insert(charts.uvs.end(),
                      {0, 0, 0.4f, 0, 0, 0.4f, 0.01f, 0.01f, 0.38f, 0.01f, 0.01f, 0.38f});
    charts.triangle(first, first + 1, first + 2, false);
    charts.triangle(first + 3, first + 4, first + 5, false);
    ++charts.count;
    charts.box(0, 0, 0.05, 0.05);
    const PackSettings settings = fast();
    const PackResult result = packed(charts, settings);
    EXPECT_FALSE(result.charts[0].mirrored || result.charts[0].tangled);
    EXPECT_TRUE(result.charts[1].mirrored && !result.charts[1].tangled);
    EXPECT_TRUE(result.charts[2].tangled);
    EXPECT_FALSE(result.charts[3].tangled);
    EXPECT_EQ(measured(charts, settings, result).overlaps.pairs_between, 1u); // the two triangles
}

TEST(Repack, TakesChartsThatTouchThemselvesOrHaveHoles) {
    Charts charts;
    // A square frame of eight triangles, and one without the first, whose ends share a corner.
    charts.uvs = {0,    0,    0.3f, 0,    0.3f, 0.3f, 0,    0.3f,
                  0.1f, 0.1f, 0.2f, 0.1f, 0.2f, 0.2f, 0.1f, 0.2f};
    for (bool whole : {true, false}) {
        for (uint32_t k = 0; k < 4; ++k) {
            if (whole || k > 0)
                charts.triangle(k, (k + 1) % 4, 4 + k, false);
            charts.triangle((k + 1) % 4, 4 + (k + 1) % 4, 4 + k, false);
        }
        ++charts.count;
    }
    for (const PackedChart& chart : packed(charts, fast()).charts)
        EXPECT_FALSE(chart.tangled);
}

TEST(Repack, PacksAnUprightNeedleThatMayNotTurn) {
    Charts charts;
    charts.fan({{0, 0}, {1e-20, 0.5}, {0, 0.9}}, false);
    PackSettings settings = fast();
    settings.turns = Turns::none;
    const PackResult result = packed(charts, settings);
    ASSERT_EQ(result.uvs.size(), 6u);
    EXPECT_NEAR(result.uvs[5] - result.uvs[1], 1, 0.02);
}

TEST(Repack, KeepsALineThatSticksOutOfItsChartInTheTexture) {
    Charts charts;
    charts.box(0, 0, 0.2, 0.2);
    charts.uvs.insert(charts.uvs.end(), {0.9f, 0.9f});
    charts.count = 0; // still in the chart of the box
    charts.triangle(1, 4, 1, false);
    charts.count = 1;
    const PackResult result = packed(charts, fast());
    ASSERT_EQ(result.charts.size(), 1u);
    const auto distance = [&](size_t a, size_t b) {
        return std::hypot(result.uvs[2 * a] - result.uvs[2 * b],
                          result.uvs[2 * a + 1] - result.uvs[2 * b + 1]);
    };
    EXPECT_NEAR(distance(6, 7) / distance(0, 1), std::hypot(0.7, 0.9) / 0.2, 1e-3);
}

TEST(Repack, TakesEmptyInputAndChartsWithoutArea) {
    EXPECT_EQ(status_of({}, fast()), Status::ok);
    Charts charts;
    charts.fan({{0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3}}, false);
    charts.fan({{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}}, false);
    charts.box(0, 0, 0.2, 0.1);
    const PackResult result = packed(charts, fast());
    for (float f : result.uvs)
        EXPECT_TRUE(f >= 0 && f <= 1);
}

TEST(Repack, RefusesBadArguments) {
    Charts charts = random_charts(1, 3);
    const auto with = [&](auto change) {
        PackSettings settings = fast();
        change(settings);
        return status_of(charts.mesh(), settings);
    };
    EXPECT_EQ(with([](PackSettings& s) { s.width = 0; }), Status::invalid_argument);
    EXPECT_EQ(with([](PackSettings& s) { s.gutter = -1; }), Status::invalid_argument);
    EXPECT_EQ(with([](PackSettings& s) { s.tiles = 0; }), Status::invalid_argument);
    EXPECT_EQ(with([](PackSettings& s) { s.tiles = 101; }), Status::invalid_argument);
    EXPECT_EQ(with([](PackSettings& s) { s.effort = 11; }), Status::invalid_argument);
    EXPECT_EQ(with([](PackSettings& s) { s.density = Density::fixed; }), Status::invalid_argument);
    UvMesh mesh = charts.mesh();
    mesh.area = {};
    PackSettings uniform = fast();
    uniform.density = Density::uniform;
    EXPECT_EQ(status_of(mesh, uniform), Status::invalid_argument);
    mesh.keep.size = 1;
    EXPECT_EQ(status_of(mesh, fast()), Status::invalid_argument);
}

TEST(Repack, NamesTheElementOfBadInput) {
    Charts charts = random_charts(1, 3);
    uint32_t element = 0;
    charts.indices[4] = uint32_t(charts.uvs.size() / 2);
    EXPECT_EQ(status_of(charts.mesh(), fast(), &element), Status::index_out_of_range);
    EXPECT_EQ(element, 4u);
    charts.indices[4] = 0;
    charts.uvs[7] = std::nanf("");
    EXPECT_EQ(status_of(charts.mesh(), fast(), &element), Status::non_finite_uv);
    EXPECT_EQ(element, 3u);
}

TEST(Repack, RefusesWhatDoesNotFit) {
    const Charts charts = random_charts(6, 40);
    uint32_t element = 0;
    EXPECT_EQ(status_of(charts.mesh(), fast(16, 8), &element), Status::does_not_fit);
    EXPECT_EQ(element, 40u);
}

TEST(Repack, StopsWhenTheCallerSays) {
    const Charts charts = random_charts(6, 40);
    PackSettings settings = fast();
    settings.progress = [](float done, void*) { return done > 0.25f ? 1 : 0; };
    EXPECT_EQ(status_of(charts.mesh(), settings), Status::aborted);
    std::vector<float> seen;
    settings.user = &seen;
    settings.progress = [](float done, void* user) {
        static_cast<std::vector<float>*>(user)->push_back(done);
        return 0;
    };
    EXPECT_EQ(status_of(charts.mesh(), settings), Status::ok);
    EXPECT_EQ(seen.back(), 1.0f);
}

TEST(Repack, PacksTighterWithMoreEffort) {
    double least = 0, most = 0;
    for (uint32_t seed = 11; seed < 16; ++seed) {
        const Charts charts = random_charts(seed, 30);
        PackSettings settings = fast();
        settings.quality = Quality::quality;
        settings.effort = 0;
        least += packed(charts, settings).coverage[0] / 5;
        settings.effort = 6;
        most += packed(charts, settings).coverage[0] / 5;
    }
    EXPECT_GT(most, least + 0.01);
}

TEST(Repack, StandsChartsWithStraightBorderStraight) {
    // Half disks, so that the smallest box does not tell; the straight side at odd angles.
    Charts charts;
    for (int i = 0; i < 12; ++i) {
        std::vector<std::array<double, 2>> ring;
        for (int k = 0; k <= 20; ++k) {
            const double t = 3.141592653589793 * k / 20, turn = 0.37 * i;
            const double x = 0.1 * std::cos(t), y = (0.08 + 0.01 * i) * std::sin(t) + 0.03 * x;
            ring.push_back({0.5 + std::cos(turn) * x - std::sin(turn) * y,
                            0.5 + std::sin(turn) * x + std::cos(turn) * y});
        }
        charts.fan(ring, false);
    }
    const PackResult result = packed(charts, fast());
    for (uint32_t c = 0; c < charts.count; ++c) {
        // The chord joins the first corner of the fan to the last corner of its last triangle.
        const size_t a = 3 * size_t(result.charts[c].first_triangle), b = a + 3 * 18 + 2;
        const double du = std::abs(double(result.uvs[2 * a]) - result.uvs[2 * b]);
        const double dv = std::abs(double(result.uvs[2 * a + 1]) - result.uvs[2 * b + 1]);
        EXPECT_LT(std::min(du, dv), 0.005 * std::max(du, dv)) << c;
    }
}

TEST(Repack, AlignsWithoutTurningFurtherThanNeeded) {
    Charts charts;
    for (double angle : {0.3, 1.2, -0.4, 3.0}) {
        std::vector<std::array<double, 2>> ring = {{0, 0}, {0.3, 0}, {0.3, 0.1}, {0, 0.1}};
        for (auto& p : ring)
            p = {std::cos(angle) * p[0] - std::sin(angle) * p[1],
                 std::sin(angle) * p[0] + std::cos(angle) * p[1]};
        charts.fan(ring, false);
    }
    PackSettings settings = fast();
    settings.turns = Turns::none;
    settings.align = true;
    const PackResult result = packed(charts, settings);
    for (const PackedChart& chart : result.charts) {
        EXPECT_GT(chart.cosine, 0.7);
        const size_t a = 3 * size_t(chart.first_triangle);
        const double du = std::abs(double(result.uvs[2 * a]) - result.uvs[2 * a + 2]);
        const double dv = std::abs(double(result.uvs[2 * a + 1]) - result.uvs[2 * a + 3]);
        EXPECT_LT(std::min(du, dv), 1e-4);
    }
}
