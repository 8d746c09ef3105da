#include "atlas/c/tessora_atlas.h"

#include <algorithm>
#include <cstring>
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

TEST(CInterface, TwoThreadsGetTheSameBits) {
    std::vector<float> uvs[2];
    const auto work = [&](size_t i) {
        for (int round = 0; round < 20; ++round) {
            const tessora_mesh mesh = square();
            Owned made;
            if (tessora_create(&mesh, nullptr, &made.atlas, nullptr) != TESSORA_OK)
                return;
            const float* const first = tessora_atlas_uvs(made.atlas, nullptr);
            uvs[i].insert(uvs[i].end(), first, first + 8);
        }
    };
    std::thread other(work, 1);
    work(0);
    other.join();
    EXPECT_EQ(uvs[0].size(), 160u);
    EXPECT_EQ(uvs[0], uvs[1]);
}

} // namespace
