// The engine on several threads: the same bits as on one. ./check --tsan runs this program alone
// under ThreadSanitizer.
#include "tests/atlas/shapes.h"
#include "tests/atlas/threads.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace atlas_test;
using namespace tessora::atlas;

std::vector<TestMesh> meshes() {
    return {cube_of_quads(4),       flat_grid(12, false),
            flat_grid(9, true),     cylinder(24, 8, true),
            cylinder(24, 8, false), sphere(16),
            torus(16, 32),          moebius(24),
            fan(12, 1.5),           washer(4),
            pierced_plate(3),       loose_triangles(300)};
}

/// A ball with dents, whose charts have many neighbours that they cannot be merged with.
TestMesh dented_ball(uint32_t rings) {
    TestMesh mesh = sphere(rings);
    uint32_t random = 1;
    for (size_t v = 0; v < mesh.positions.size() / 3; ++v) {
        random = random * 1664525 + 1013904223;
        const float scale = 1 - 0.06f * float(random >> 24) / 256;
        for (size_t k = 3 * v; k < 3 * v + 3; ++k)
            mesh.positions[k] *= scale;
    }
    return mesh;
}

void expect_same(const Result& a, const Result& b) {
    EXPECT_EQ(a.source_vertex, b.source_vertex);
    EXPECT_EQ(a.indices, b.indices);
    EXPECT_EQ(a.uvs, b.uvs);
    EXPECT_EQ(a.chart, b.chart);
    EXPECT_EQ(a.over_limit, b.over_limit);
    EXPECT_EQ(a.lost, b.lost);
    EXPECT_EQ(a.chart_count, b.chart_count);
    EXPECT_EQ(a.stretch, b.stretch);
}

constexpr ParallelFor k_executors[] = {run_on<1>, run_on<2>, run_on<8>, run_on<32>};

/// Fast mode packs as well; quality mode, whose packing takes long, does not.
Result unwrap(const TestMesh& mesh, Options options, Quality quality) {
    options.quality = quality;
    Result result;
    std::vector<uint32_t> adjacency;
    const Failure failure = quality == Quality::fast
                                ? create(mesh.view(), options, result)
                                : partition(mesh.view(), options, result, adjacency);
    EXPECT_EQ(failure.status, Status::ok);
    return result;
}

void expect_same_on_all_executors(const TestMesh& mesh, Options options) {
    for (Quality quality : {Quality::fast, Quality::quality}) {
        options.executor = nullptr;
        const Result serial = unwrap(mesh, options, quality);
        for (ParallelFor executor : k_executors) {
            options.executor = executor;
            expect_same(serial, unwrap(mesh, options, quality));
        }
    }
}

TEST(AtlasThreads, TheResultDoesNotDependOnTheirNumber) {
    Options options;
    options.min_parallel = 0;
    for (const TestMesh& mesh : meshes())
        expect_same_on_all_executors(mesh, options);
}

TEST(AtlasThreads, TheResultDoesNotDependOnTheirNumberWithTheUsualSizes) {
    expect_same_on_all_executors(torus(36, 72), {}); // more than min_parallel triangles
}

TEST(AtlasThreads, PairsThatFailAndAreTriedAgainDoNotDependOnTheirNumber) {
    expect_same_on_all_executors(dented_ball(44), {});
}

/// Runs everything on another thread while the calling one waits.
void run_elsewhere(size_t count, void (*function)(size_t i, void* user), void* user) {
    std::thread([&] { run_on<1>(count, function, user); }).join();
}

void expect_same_in_quality_mode(const TestMesh& mesh, int effort) {
    Options options;
    options.min_parallel = 0;
    options.effort = effort;
    Result serial, result;
    ASSERT_EQ(create(mesh.view(), options, serial).status, Status::ok);
    for (ParallelFor executor : {run_on<1>, run_on<2>, run_on<32>, run_elsewhere}) {
        options.executor = executor;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        expect_same(serial, result);
    }
}

TEST(AtlasThreads, LayoutsMadeBesideEachOtherDoNotDependOnTheirNumber) {
    for (const TestMesh& mesh : {cube_of_quads(2), dented_ball(8), moebius(24)})
        expect_same_in_quality_mode(mesh, 0);
    expect_same_in_quality_mode(washer(4), 6); // a third layout, with less stretch
}

TEST(AtlasThreads, LayoutsMadeBesideEachOtherFailAsOneAfterAnother) {
    for (const auto& [size, charts] : {std::pair<uint32_t, uint32_t>{4, 0}, {512, 1}}) {
        Options options;
        options.min_parallel = 0;
        options.quality = Quality::quality;
        options.width = options.height = size;
        options.max_charts = charts;
        Result result;
        const Failure serial = create(loose_triangles(30).view(), options, result);
        ASSERT_NE(serial.status, Status::ok);
        options.executor = run_on<8>;
        const Failure failure = create(loose_triangles(30).view(), options, result);
        EXPECT_EQ(failure.status, serial.status);
        EXPECT_EQ(failure.element, serial.element);
    }
}

/// Counts the loops that reach the executor.
size_t loops = 0;
void count_loops(size_t count, void (*function)(size_t i, void* user), void* user) {
    ++loops;
    run_on<1>(count, function, user);
}

TEST(AtlasThreads, SmallMeshesStayOnTheCallingThread) {
    Options options;
    options.executor = count_loops;
    Result result;
    loops = 0;
    ASSERT_EQ(create(torus(16, 32).view(), options, result).status, Status::ok);
    EXPECT_EQ(loops, 0u);
    options.min_parallel = 0;
    ASSERT_EQ(create(torus(16, 32).view(), options, result).status, Status::ok);
    EXPECT_GT(loops, 0u);
}

struct Watch {
    std::thread::id thread = std::this_thread::get_id();
    size_t calls = 0, elsewhere = 0, stop_after = SIZE_MAX;
    static int note(Stage, float, void* user) {
        Watch& self = *static_cast<Watch*>(user);
        self.elsewhere += std::this_thread::get_id() != self.thread;
        return ++self.calls >= self.stop_after;
    }
};

void expect_callbacks_here(Options options, const TestMesh& mesh, size_t most_stops) {
    Watch watch;
    options.min_parallel = 0;
    options.stage_progress = Watch::note;
    options.user = &watch;
    Result result;
    for (ParallelFor executor : {run_elsewhere, run_on<8>}) {
        options.executor = executor;
        watch.calls = 0;
        ASSERT_EQ(create(mesh.view(), options, result).status, Status::ok);
        EXPECT_EQ(watch.elsewhere, 0u);
    }
    EXPECT_GT(watch.calls, most_stops);
    for (size_t stop = 1; stop < most_stops; ++stop) {
        watch.calls = 0;
        watch.stop_after = stop;
        EXPECT_EQ(create(mesh.view(), options, result).status, Status::aborted);
        EXPECT_TRUE(result.indices.empty());
    }
}

TEST(AtlasThreads, CallbacksComeOnTheCallingThreadAndMayStopTheWork) {
    Options options;
    options.quality = Quality::fast;
    expect_callbacks_here(options, loose_triangles(300), 12);
}

TEST(AtlasThreads, CallbacksOfLayoutsMadeBesideEachOtherComeOnTheCallingThread) {
    Options options;
    options.quality = Quality::quality;
    options.effort = 0;
    expect_callbacks_here(options, torus(8, 12), 12);
}

/// Counts the calls behind the share of packing that the caller's own layout takes.
int note_others(Stage stage, float fraction, void* user) {
    *static_cast<size_t*>(user) += stage == Stage::packing && fraction > 0.7f && fraction < 1;
    return 0;
}

TEST(AtlasThreads, LayoutsThatWaitForTheCallingThreadReportTheirProgress) {
    size_t calls = 0;
    Options options;
    options.quality = Quality::quality;
    options.effort = 0;
    options.min_parallel = 0;
    options.stage_progress = note_others;
    options.user = &calls;
    options.executor = run_on<1>;
    Result result;
    ASSERT_EQ(create(dented_ball(8).view(), options, result).status, Status::ok);
    EXPECT_GT(calls, 10u);
}

} // namespace
