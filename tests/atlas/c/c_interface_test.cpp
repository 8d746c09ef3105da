#include "atlas/c/tessora_atlas.h"
#include "tests/atlas/threads.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

const float k_square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
const uint32_t k_corners[] = {0, 1, 2, 3};
const uint32_t k_offsets[] = {0, 4};

tessora_mesh square() {
    tessora_mesh mesh;
    tessora_mesh_init(&mesh, sizeof mesh);
    mesh.positions = {k_square, 4, 0, TESSORA_FLOAT32};
    mesh.indices = {k_corners, 4, 0, TESSORA_UINT32};
    mesh.offsets = {k_offsets, 2, 0, TESSORA_UINT32};
    return mesh;
}

tessora_options defaults() {
    tessora_options options;
    tessora_options_init(&options, sizeof options);
    return options;
}

struct Owned {
    ~Owned() { tessora_atlas_free(atlas); }
    tessora_atlas* atlas = nullptr;
};

std::string failure(const tessora_mesh* mesh, const tessora_options* options, int code) {
    tessora_error error;
    Owned made;
    made.atlas = reinterpret_cast<tessora_atlas*>(&error);
    EXPECT_EQ(tessora_create(mesh, options, &made.atlas, &error), code);
    EXPECT_EQ(made.atlas, nullptr);
    EXPECT_EQ(error.code, code);
    return error.text;
}

TEST(CInterface, UnwrapsAPolygonWithDefaultOptions) {
    const tessora_mesh mesh = square();
    Owned made;
    tessora_error error;
    ASSERT_EQ(tessora_create(&mesh, nullptr, &made.atlas, &error), TESSORA_OK);
    EXPECT_STREQ(error.text, "");
    EXPECT_EQ(tessora_atlas_chart_count(made.atlas), 1u);
    EXPECT_LT(tessora_atlas_stretch(made.atlas), 1e-5f);
    size_t count = 0;
    const float* const uvs = tessora_atlas_uvs(made.atlas, &count);
    ASSERT_EQ(count, 4u);
    EXPECT_GT(*std::max_element(uvs, uvs + 8), 0.9f);
    EXPECT_EQ(*tessora_atlas_source_vertices(made.atlas, &count), 0u);
    EXPECT_EQ(count, 4u);
    tessora_atlas_corner_vertices(made.atlas, &count);
    EXPECT_EQ(count, 4u);
    tessora_atlas_indices(made.atlas, &count);
    EXPECT_EQ(count, 6u);
    tessora_atlas_triangle_corners(made.atlas, &count);
    EXPECT_EQ(count, 6u);
    tessora_atlas_charts(made.atlas, &count);
    EXPECT_EQ(count, 2u);
    tessora_atlas_over_limit(made.atlas, &count);
    EXPECT_EQ(count, 0u);
    tessora_atlas_lost(made.atlas, &count);
    EXPECT_EQ(count, 0u);
    tessora_atlas_neighbours(made.atlas, &count);
    EXPECT_EQ(count, 0u);
}

TEST(CInterface, PartitionsWithoutPacking) {
    const tessora_mesh mesh = square();
    Owned made;
    ASSERT_EQ(tessora_partition(&mesh, nullptr, &made.atlas, nullptr), TESSORA_OK);
    size_t count = 0;
    const uint32_t* const neighbours = tessora_atlas_neighbours(made.atlas, &count);
    ASSERT_EQ(count, 6u);
    EXPECT_EQ(std::count(neighbours, neighbours + 6, TESSORA_NONE), 4);
}

TEST(CInterface, KnowsItsVersions) {
    EXPECT_EQ(tessora_abi_version(), static_cast<uint32_t>(TESSORA_ABI_VERSION));
    EXPECT_STREQ(tessora_version(), "2.11");
}

TEST(CInterface, ReadsTheShorterStructOfAnOlderProgram) {
    tessora_options options = defaults();
    options.max_stretch = 0.5f;
    options.width = 0; // an older program's struct ends before this member
    options.struct_size = offsetof(tessora_options, width);
    const tessora_mesh mesh = square();
    Owned made;
    EXPECT_EQ(tessora_create(&mesh, &options, &made.atlas, nullptr), TESSORA_OK);
}

TEST(CInterface, ReadsTheLongerStructOfANewerProgram) {
    struct Newer {
        tessora_options options;
        int more[8];
    } newer;
    std::memset(&newer, 0xFF, sizeof newer);
    tessora_options_init(&newer.options, sizeof newer);
    EXPECT_EQ(newer.options.struct_size, sizeof newer);
    EXPECT_EQ(newer.more[7], 0);
    const tessora_mesh mesh = square();
    Owned made;
    EXPECT_EQ(tessora_create(&mesh, &newer.options, &made.atlas, nullptr), TESSORA_OK);
}

TEST(CInterface, RefusesAStructThatWasNotInitialised) {
    tessora_mesh mesh = {};
    EXPECT_EQ(failure(&mesh, nullptr, TESSORA_INVALID_ARGUMENT),
              "mesh: struct_size is 0; initialise the struct first");
    mesh = square();
    const tessora_options options = {};
    EXPECT_EQ(failure(&mesh, &options, TESSORA_INVALID_ARGUMENT),
              "options: struct_size is 0; initialise the struct first");
}

TEST(CInterface, RefusesASizeThatEndsWithinAPointer) {
    tessora_options options = defaults();
    options.progress = [](const char*, float, void*) { return 0; };
    options.struct_size = offsetof(tessora_options, progress) + sizeof options.progress / 2;
    const tessora_mesh mesh = square();
    EXPECT_EQ(failure(&mesh, &options, TESSORA_INVALID_ARGUMENT),
              "options: struct_size is " + std::to_string(options.struct_size) +
                  ", which no version has; initialise the struct first");
}

TEST(CInterface, NamesANullArgument) {
    EXPECT_EQ(failure(nullptr, nullptr, TESSORA_INVALID_ARGUMENT), "mesh is null");
    const tessora_mesh mesh = square();
    tessora_error error;
    EXPECT_EQ(tessora_create(&mesh, nullptr, nullptr, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "atlas is null");
    EXPECT_EQ(tessora_to_texture(nullptr, 1, 1, 1, 0, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "uvs is null");
}

TEST(CInterface, RefusesAnUnknownQuality) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    options.quality = 7;
    EXPECT_EQ(failure(&mesh, &options, TESSORA_INVALID_ARGUMENT),
              "quality is 7; it must be 0 to 1");
}

TEST(CInterface, TellsStatusAndElement) {
    const uint32_t corners[] = {0, 1, 2, 9};
    tessora_mesh mesh = square();
    mesh.indices.data = corners;
    tessora_error error;
    Owned made;
    EXPECT_EQ(tessora_create(&mesh, nullptr, &made.atlas, &error), TESSORA_INDEX_OUT_OF_RANGE);
    EXPECT_EQ(error.element, 3u);
    EXPECT_STREQ(error.text, "indices[3] is 9, but there are 4 vertices");
}

TEST(CInterface, TriangulatesIntoTheCallersArray) {
    const tessora_mesh mesh = square();
    uint32_t corners[6];
    tessora_error error;
    EXPECT_EQ(tessora_triangulate(&mesh, corners, 6, &error), TESSORA_OK);
    EXPECT_EQ(std::vector<uint32_t>(corners, corners + 6),
              (std::vector<uint32_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(tessora_triangulate(&mesh, corners, 5, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "triangle_corners has 5 entries; 6 are needed");
    EXPECT_EQ(tessora_triangulate(&mesh, nullptr, 6, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "triangle_corners is null");
}

TEST(CInterface, FindsNeighbours) {
    const tessora_mesh mesh = square();
    uint32_t neighbours[6];
    ASSERT_EQ(tessora_neighbours(&mesh, neighbours, 6, nullptr), TESSORA_OK);
    constexpr uint32_t none = TESSORA_NONE;
    EXPECT_EQ(std::vector<uint32_t>(neighbours, neighbours + 6),
              (std::vector<uint32_t>{none, none, 1, 0, none, none}));
}

TEST(CInterface, ToTextureChecksTheTexture) {
    float uvs[] = {0.5f, 0.5f};
    tessora_error error;
    EXPECT_EQ(tessora_to_texture(uvs, 1, 0, 512, 2, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "width is 0; it must be at least 1");
    EXPECT_EQ(tessora_to_texture(uvs, 1, 512, 512, 2, &error), TESSORA_OK);
}

TEST(CInterface, ReportsProgressUpToOne) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    std::vector<float> fractions;
    options.user = &fractions;
    options.progress = [](const char* stage, float fraction, void* user) {
        EXPECT_NE(std::strlen(stage), 0u);
        static_cast<std::vector<float>*>(user)->push_back(fraction);
        return 0;
    };
    Owned made;
    ASSERT_EQ(tessora_create(&mesh, &options, &made.atlas, nullptr), TESSORA_OK);
    ASSERT_GT(fractions.size(), 6u);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_EQ(fractions.front(), 0.0f);
    EXPECT_EQ(fractions.back(), 1.0f);
}

TEST(CInterface, AProgressFunctionCancels) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    options.progress = [](const char*, float, void*) { return 1; };
    EXPECT_EQ(failure(&mesh, &options, TESSORA_CANCELLED), "the caller stopped the work");
}

/// A torus with bumps, of so many triangles that loops over its charts may run on several threads.
struct LargeMesh {
    LargeMesh() {
        constexpr uint32_t around = 120, across = 40;
        constexpr float turn = 6.2831853f;
        for (uint32_t i = 0; i < around; ++i)
            for (uint32_t k = 0; k < across; ++k) {
                const float a = turn * float(i) / around, b = turn * float(k) / across;
                const float radius = 0.4f + 0.15f * std::sin(5 * a) * std::sin(3 * b);
                positions.insert(positions.end(),
                                 {std::cos(a) * (1 + radius * std::cos(b)),
                                  std::sin(a) * (1 + radius * std::cos(b)), radius * std::sin(b)});
                const uint32_t next_i = (i + 1) % around, next_k = (k + 1) % across;
                const uint32_t quad[] = {i * across + k, next_i * across + k,
                                         next_i * across + next_k, i * across + next_k};
                corners.insert(corners.end(),
                               {quad[0], quad[1], quad[2], quad[0], quad[2], quad[3]});
            }
    }
    tessora_mesh mesh() const {
        tessora_mesh mesh;
        tessora_mesh_init(&mesh, sizeof mesh);
        mesh.positions = {positions.data(), positions.size() / 3, 0, TESSORA_FLOAT32};
        mesh.indices = {corners.data(), corners.size(), 0, TESSORA_UINT32};
        return mesh;
    }
    std::vector<float> positions;
    std::vector<uint32_t> corners;
};

std::vector<float> uvs_of(const LargeMesh& shape, const tessora_options& options) {
    const tessora_mesh mesh = shape.mesh();
    Owned made;
    tessora_error error;
    EXPECT_EQ(tessora_create(&mesh, &options, &made.atlas, &error), TESSORA_OK) << error.text;
    size_t count = 0;
    const float* const uvs = tessora_atlas_uvs(made.atlas, &count);
    return {uvs, uvs + 2 * count};
}

size_t loops_lent = 0;

void lend_threads(size_t count, void (*function)(size_t i, void* user), void* user) {
    ++loops_lent;
    atlas_test::run_on<4>(count, function, user);
}

TEST(CInterface, RunsLoopsOnTheCallersThreadsAndGivesTheSameBits) {
    const LargeMesh shape;
    tessora_options options = defaults();
    const std::vector<float> expected = uvs_of(shape, options);
    options.parallel_for = lend_threads;
    loops_lent = 0;
    EXPECT_EQ(uvs_of(shape, options), expected);
    EXPECT_GT(loops_lent, 0u);
}

TEST(CInterface, GivesTheSameBitsForAnyNumberOfThreads) {
    const LargeMesh shape;
    tessora_options options = defaults();
    EXPECT_EQ(options.threads, 1u);
    const std::vector<float> expected = uvs_of(shape, options);
    for (const uint32_t threads : {0u, 2u, 7u}) {
        options.threads = threads;
        EXPECT_EQ(uvs_of(shape, options), expected);
    }
}

TEST(CInterface, MoreEffortGivesAnotherLayout) {
    const LargeMesh shape;
    tessora_options options = defaults();
    EXPECT_EQ(options.effort, 4);
    const std::vector<float> usual = uvs_of(shape, options);
    options.effort = 0;
    EXPECT_NE(uvs_of(shape, options), usual);
}

TEST(CInterface, RefusesEffortsOutOfRange) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    for (const int32_t effort : {-1, 11}) {
        options.effort = effort;
        EXPECT_EQ(failure(&mesh, &options, TESSORA_INVALID_ARGUMENT),
                  "effort is " + std::to_string(effort) + "; it must be 0 to 10");
    }
}

TEST(CInterface, RefusesTooManyThreads) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    options.threads = 1025;
    EXPECT_EQ(failure(&mesh, &options, TESSORA_INVALID_ARGUMENT),
              "threads is 1025; it must be 0 to 1024");
}

#if defined(__linux__)
TEST(CInterface, StartsTheThreadsThatAreAskedFor) {
    const auto threads_now = [] {
        const std::filesystem::directory_iterator tasks("/proc/self/task");
        return std::distance(begin(tasks), end(tasks));
    };
    const LargeMesh shape;
    std::atomic<std::ptrdiff_t> most{0};
    std::atomic<bool> is_done{false};
    std::thread watch([&] {
        while (!is_done)
            most = std::max<std::ptrdiff_t>(most, threads_now());
    });
    tessora_options options = defaults();
    uvs_of(shape, options);
    const std::ptrdiff_t alone = std::max<std::ptrdiff_t>(most, threads_now());
    options.threads = 4;
    // The watch may have missed a run.
    for (int run = 0; run < 100 && most == alone; ++run)
        uvs_of(shape, options);
    is_done = true;
    watch.join();
    EXPECT_GT(most, alone);
}
#endif

TEST(CInterface, PacksChartsThatExist) {
    const tessora_mesh mesh = square();
    const float coordinates[] = {0, 0, 0.25f, 0, 0.25f, 0.25f, 0, 0.25f};
    tessora_uvs uvs;
    tessora_uvs_init(&uvs, sizeof uvs);
    uvs.uvs = {coordinates, 4, 0, TESSORA_FLOAT32};
    tessora_pack_options options;
    tessora_pack_options_init(&options, sizeof options);
    options.turns = TESSORA_TURN_NONE;
    float last = 0;
    options.user = &last;
    options.progress = [](const char*, float fraction, void* user) {
        *static_cast<float*>(user) = fraction;
        return 0;
    };
    Owned made;
    tessora_error error;
    ASSERT_EQ(tessora_pack(&mesh, &uvs, &options, &made.atlas, &error), TESSORA_OK) << error.text;
    EXPECT_EQ(last, 1.0f);
    size_t count = 0;
    EXPECT_GT(*tessora_atlas_coverage(made.atlas, &count), 0.9);
    EXPECT_EQ(count, 1u);
    EXPECT_GT(tessora_atlas_texels_per_unit(made.atlas), 500.0);
    EXPECT_EQ(tessora_atlas_chart_tile(made.atlas, 0), 0u);
    EXPECT_EQ(tessora_atlas_chart_stacked_on(made.atlas, 0), TESSORA_NONE);
    EXPECT_EQ(tessora_atlas_chart_stacked_on(made.atlas, 99), TESSORA_NONE);
}

TEST(CInterface, PackNamesWhatIsWrong) {
    const tessora_mesh mesh = square();
    tessora_pack_options options;
    tessora_pack_options_init(&options, sizeof options);
    options.turns = 3;
    tessora_uvs uvs;
    tessora_uvs_init(&uvs, sizeof uvs);
    tessora_atlas* atlas = nullptr;
    tessora_error error;
    EXPECT_EQ(tessora_pack(&mesh, &uvs, &options, &atlas, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "turns is 3; it must be 0 to 2");
    EXPECT_EQ(tessora_pack(&mesh, nullptr, nullptr, &atlas, &error), TESSORA_INVALID_ARGUMENT);
    EXPECT_STREQ(error.text, "uvs is null");
    EXPECT_EQ(atlas, nullptr);
}

/// Packs two triangles at `first` and `second` in the texture that are both kept.
std::string kept_failure(const std::vector<float>& coordinates, int code) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0};
    const uint32_t corners[] = {0, 1, 2, 3, 4, 5};
    const uint8_t keep[] = {1, 1};
    tessora_mesh mesh;
    tessora_mesh_init(&mesh, sizeof mesh);
    mesh.positions = {positions, 6, 0, TESSORA_FLOAT32};
    mesh.indices = {corners, 6, 0, TESSORA_UINT32};
    tessora_uvs uvs;
    tessora_uvs_init(&uvs, sizeof uvs);
    uvs.uvs = {coordinates.data(), 6, 0, TESSORA_FLOAT32};
    uvs.keep = {keep, 2, 0, TESSORA_UINT8};
    Owned made;
    tessora_error error;
    EXPECT_EQ(tessora_pack(&mesh, &uvs, nullptr, &made.atlas, &error), code);
    EXPECT_EQ(error.element, 1u);
    return error.text;
}

TEST(CInterface, NamesAPolygonOfKeptChartsThatCollide) {
    EXPECT_EQ(kept_failure({0.1f, 0.1f, 0.4f, 0.1f, 0.1f, 0.4f, 0.1f, 0.1f, 0.4f, 0.1f, 0.1f, 0.4f},
                           TESSORA_KEPT_CHARTS_COLLIDE),
              "polygon 1: charts that are to stay where they are lie closer than the gutter");
}

TEST(CInterface, NamesAPolygonOfAKeptChartOutsideTheTexture) {
    EXPECT_EQ(kept_failure({0.1f, 0.1f, 0.4f, 0.1f, 0.1f, 0.4f, 2.1f, 0.1f, 2.4f, 0.1f, 2.1f, 0.4f},
                           TESSORA_KEPT_CHART_OUTSIDE),
              "polygon 1: a chart that is to stay where it is lies in no tile");
}

/// The coordinates of the square in a texture of a width.
std::vector<float> square_in(uint32_t width) {
    const tessora_mesh mesh = square();
    tessora_options options = defaults();
    options.width = width;
    options.height = 64;
    Owned made;
    if (tessora_create(&mesh, &options, &made.atlas, nullptr) != TESSORA_OK)
        return {};
    size_t count = 0;
    const float* const uvs = tessora_atlas_uvs(made.atlas, &count);
    return {uvs, uvs + 2 * count};
}

TEST(CInterface, CallsOnTwoThreadsDoNotDisturbEachOther) {
    constexpr uint32_t widths[] = {64, 96};
    const std::vector<float> expected[] = {square_in(widths[0]), square_in(widths[1])};
    EXPECT_NE(expected[0], expected[1]);
    const auto count_right = [&](size_t i) {
        int right = 0;
        for (int round = 0; round < 20; ++round)
            right += square_in(widths[i]) == expected[i];
        return right;
    };
    int on_other = 0;
    std::thread other([&] { on_other = count_right(1); });
    EXPECT_EQ(count_right(0), 20);
    other.join();
    EXPECT_EQ(on_other, 20);
}

} // namespace
