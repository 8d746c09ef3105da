/// Benchmarks of the engine's kernels and of the whole engine, on a bumpy sheet.
#include "atlas/charts/clusters.h"
#include "atlas/charts/patch.h"
#include "atlas/geometry/box.h"

#include <benchmark/benchmark.h>
#include <cmath>

namespace {

using namespace tessora::atlas;

/// A bumpy sheet of n x n cells, two triangles each.
struct Sheet {
    std::vector<float> positions;
    std::vector<uint32_t> indices, adjacency;

    explicit Sheet(int64_t triangles) {
        const uint32_t n = uint32_t(std::sqrt(double(triangles) / 2));
        for (uint32_t y = 0; y <= n; ++y)
            for (uint32_t x = 0; x <= n; ++x) {
                const float u = float(x) / float(n), v = float(y) / float(n);
                for (float p : {u, v, 0.12f * std::sin(21 * u) * std::cos(17 * v)})
                    positions.push_back(p);
            }
        // Neighbours across the edges that start at corners 0, 1 and 2.
        for (uint32_t cell = 0; cell < n * n; ++cell) {
            const uint32_t x = cell % n, y = cell / n, a = y * (n + 1) + x, t = 2 * cell;
            for (uint32_t v : {a, a + 1, a + n + 2, a, a + n + 2, a + n + 1})
                indices.push_back(v);
            for (uint32_t other :
                 {y > 0 ? t - 2 * n + 1 : k_none, x + 1 < n ? t + 3 : k_none, t + 1, t,
                  y + 1 < n ? t + 2 * n : k_none, x > 0 ? t - 2 : k_none})
                adjacency.push_back(other);
        }
    }
    Mesh view() const {
        return {{positions.data(), positions.size()},
                {indices.data(), indices.size()},
                {adjacency.data(), adjacency.size()},
                {nullptr, 0}};
    }
    int64_t triangles() const { return int64_t(indices.size() / 3); }
};

void surface(benchmark::State& state) {
    const Sheet sheet(state.range(0));
    for (auto _ : state) {
        Surface s;
        benchmark::DoNotOptimize(build_surface(sheet.view(), s));
    }
    state.SetItemsProcessed(state.iterations() * sheet.triangles());
}

void clusters(benchmark::State& state) {
    const Sheet sheet(state.range(0));
    Surface s;
    build_surface(sheet.view(), s);
    const Atoms atoms = build_atoms(s);
    const Components pieces = find_flat_pieces(s);
    const std::vector<float> hardness = measure_hardness(s, pieces);
    const Components planes = find_planes(s, atoms, pieces, hardness);
    const ClusterOptions options{hardness, state.range(1) == 0};
    for (auto _ : state) {
        ProgressMeter progress{Options{}};
        ClusterTree tree;
        benchmark::DoNotOptimize(build_cluster_tree(s, planes, options, progress, tree));
    }
    state.SetItemsProcessed(state.iterations() * sheet.triangles());
}

/// The sheet projected along z, as a start for the solvers.
Patch projected(const Surface& s) {
    Patch patch;
    for (uint32_t v = 0; v < s.vertex_count; ++v)
        patch.add_vertex({s.position[v].x, s.position[v].y}, false);
    for (uint32_t t = 0; t < s.face_count; ++t)
        patch.add_face(s.frame[t], s.vertex[3 * t], s.vertex[3 * t + 1], s.vertex[3 * t + 2]);
    return patch;
}

template <class Solve>
void solve(benchmark::State& state, Solve run) {
    const Sheet sheet(state.range(0));
    Surface s;
    build_surface(sheet.view(), s);
    const Patch start = projected(s);
    for (auto _ : state) {
        Patch patch = start;
        run(patch);
        benchmark::DoNotOptimize(patch.uv.data());
    }
    state.SetItemsProcessed(state.iterations() * sheet.triangles());
}

void relax_one_sweep(benchmark::State& state) {
    solve(state, [](Patch& patch) { patch.relax(1); });
}

void arap_two_steps(benchmark::State& state) {
    solve(state, [](Patch& patch) { patch.arap(2); });
}

void smallest_box(benchmark::State& state) {
    std::vector<Vec2> ring(size_t(state.range(0)));
    for (size_t i = 0; i < ring.size(); ++i) {
        const double turn = 6.283185307179586 * double(i) / double(ring.size());
        const double radius = 1 + 0.1 * std::sin(9 * turn);
        ring[i] = {radius * std::cos(turn), radius * std::sin(turn)};
    }
    for (auto _ : state) {
        std::vector<Vec2> points = ring;
        benchmark::DoNotOptimize(min_area_box(points));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void everything(benchmark::State& state) {
    const Sheet sheet(state.range(0));
    Options options;
    options.quality = state.range(1) == 0 ? Quality::fast : Quality::quality;
    for (auto _ : state) {
        Result result;
        if (create(sheet.view(), options, result).status != Status::ok)
            state.SkipWithError("no atlas");
        benchmark::DoNotOptimize(result.uvs.data());
    }
    state.SetItemsProcessed(state.iterations() * sheet.triangles());
}

BENCHMARK(surface)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(clusters)
    ->Args({10'000, 0})
    ->Args({100'000, 0})
    ->Args({100'000, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(relax_one_sweep)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(arap_two_steps)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(smallest_box)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(everything)->Args({100'000, 0})->Args({100'000, 1})->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
