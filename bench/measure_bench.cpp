/// Benchmarks of the measures, from ten thousand triangles to a million.
#include "measure/charts.h"
#include "measure/measure.h"
#include "measure/shape.h"
#include "measure/verify.h"

#include <benchmark/benchmark.h>
#include <cmath>

namespace {

/// A layout of side x side charts of n x n quads each, separated by a gutter.
measure::Layout patches(uint32_t side, uint32_t n) {
    measure::Layout layout;
    const float cell = 1.0f / static_cast<float>(side), step = 0.9f * cell / static_cast<float>(n);
    for (uint32_t patch = 0; patch < side * side; ++patch) {
        const float left = cell * static_cast<float>(patch % side);
        const float low = cell * static_cast<float>(patch / side);
        const uint32_t first = layout.vertex_count();
        for (uint32_t y = 0; y <= n; ++y)
            for (uint32_t x = 0; x <= n; ++x) {
                const float u = left + step * static_cast<float>(x);
                const float v = low + step * static_cast<float>(y);
                layout.positions.insert(layout.positions.end(), {u, v, 0.1f * std::sin(20.0f * u)});
                layout.uvs.insert(layout.uvs.end(), {u, v});
            }
        for (uint32_t quad = 0; quad < n * n; ++quad) {
            const uint32_t v = first + quad / n * (n + 1) + quad % n;
            const uint32_t corner = static_cast<uint32_t>(layout.corner_vertex.size());
            for (uint32_t at : {v, v + 1, v + n + 2, v + n + 1}) {
                layout.corner_vertex.push_back(at);
                layout.corner_uv.push_back(at);
            }
            for (uint32_t k : {0u, 1u, 2u, 0u, 2u, 3u})
                layout.triangle_corners.push_back(corner + k);
            layout.triangle_polygon.insert(layout.triangle_polygon.end(), 2, layout.polygon_count);
            ++layout.polygon_count;
        }
    }
    return layout;
}

/// 25 charts with about `triangles` triangles in total.
measure::Layout of_size(int64_t triangles) {
    return patches(5, static_cast<uint32_t>(std::sqrt(static_cast<double>(triangles) / 50.0)));
}

const measure::Texture k_texture{1024, 1024};

void charts(benchmark::State& state) {
    const measure::Layout layout = of_size(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(measure::find_charts(layout));
    state.SetItemsProcessed(state.iterations() * layout.triangle_count());
}

void overlaps(benchmark::State& state) {
    const measure::Layout layout = of_size(state.range(0));
    const measure::ChartTable table = measure::find_charts(layout);
    const double depth = 4.0 * measure::uv_spacing(layout, k_texture);
    for (auto _ : state)
        benchmark::DoNotOptimize(measure::find_overlaps(layout, k_texture, table, depth));
    state.SetItemsProcessed(state.iterations() * layout.triangle_count());
}

void gap(benchmark::State& state) {
    const measure::Layout layout = of_size(state.range(0));
    const measure::ChartTable table = measure::find_charts(layout);
    for (auto _ : state)
        benchmark::DoNotOptimize(measure::smallest_gap(layout, k_texture, table));
    state.SetItemsProcessed(state.iterations() * layout.triangle_count());
}

void everything(benchmark::State& state) {
    const measure::Layout layout = of_size(state.range(0));
    for (auto _ : state) {
        const measure::Measures measures = measure::measure(layout, k_texture);
        benchmark::DoNotOptimize(measure::verify(layout, measures, {2.0, 0.15}));
    }
    state.SetItemsProcessed(state.iterations() * layout.triangle_count());
}

void many_charts(benchmark::State& state) {
    const measure::Layout layout = patches(static_cast<uint32_t>(state.range(0)), 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(measure::measure(layout, k_texture));
    state.SetItemsProcessed(state.iterations() * layout.triangle_count());
}

} // namespace

BENCHMARK(charts)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(overlaps)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(gap)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(everything)->RangeMultiplier(10)->Range(10'000, 1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(many_charts)->RangeMultiplier(3)->Range(11, 99)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
