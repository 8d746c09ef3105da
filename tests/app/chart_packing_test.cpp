#include "app/chart_packing.h"
#include "app/measure_layout.h"
#include "host/io/obj_reader.h"

#include <gtest/gtest.h>

namespace {

namespace atlas = tessora::atlas;

/// Two squares of a mesh in a texture of 100 texels, with a gutter of 10.
class PackingCheck : public testing::Test {
protected:
    PackingCheck() {
        host::IoError failure;
        EXPECT_TRUE(host::parse_obj("m",
                                    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                                    "v 3 0 0\nv 4 0 0\nv 4 1 0\nv 3 1 0\n"
                                    "vt 0 0\nvt .2 0\nvt .2 .2\nvt 0 .2\n"
                                    "vt .5 0\nvt .7 0\nvt .7 .2\nvt .5 .2\n"
                                    "f 1/1 2/2 3/3 4/4\nf 5/5 6/6 7/7 8/8\n",
                                    document, failure));
        std::string error;
        EXPECT_TRUE(app::list_charts({{&document, nullptr, {}}}, list, error)) << error;
        settings.width = settings.height = 100;
        settings.gutter = 10;
        settings.tiles = 1;
        result.chart = list.chart;
        result.charts.resize(2);
        for (const uint32_t vertex : list.indices)
            result.uvs.insert(result.uvs.end(), {list.uvs[2 * vertex], list.uvs[2 * vertex + 1]});
    }
    /// What is said once the second square is moved by `u`.
    std::string said_after_moving(float u) {
        atlas::PackResult moved = result;
        for (size_t corner = 0; corner < list.indices.size(); ++corner)
            if (result.chart[corner / 3] == 1)
                moved.uvs[2 * corner] += u;
        return app::refusal_text(app::check_packing(list, settings, moved).breaches);
    }

    host::ObjDocument document;
    app::ChartList list;
    atlas::PackSettings settings;
    atlas::PackResult result;
    const std::string begin = "the result is not good enough to be written:";
};

TEST_F(PackingCheck, MoreCornersThanAListMayHaveAreRefused) {
    std::string error;
    EXPECT_TRUE(
        app::list_charts({{&document, nullptr, {}}}, list, error, measure::SameUv::coordinates, 8))
        << error;
    EXPECT_FALSE(
        app::list_charts({{&document, nullptr, {}}}, list, error, measure::SameUv::coordinates, 7));
    EXPECT_EQ("the meshes have too many polygons together", error);
}

TEST_F(PackingCheck, KeptPromisesAreNoBreaches) { EXPECT_EQ(begin, said_after_moving(0.0f)); }

TEST_F(PackingCheck, ChartsThatAreTooCloseAreNamed) {
    EXPECT_EQ(begin + "\n  two charts are 5 texels apart, not 10: m: polygons 0, 1",
              said_after_moving(-0.25f));
}

TEST_F(PackingCheck, ChartsThatOverlapAreNamed) {
    const std::string said = said_after_moving(-0.45f);
    EXPECT_NE(std::string::npos, said.find("\n  charts overlap: m: polygons 0, 1")) << said;
}

TEST_F(PackingCheck, TrianglesOutsideTheTextureAreNamed) {
    EXPECT_EQ(begin + "\n  triangles leave the texture: m: polygon 1", said_after_moving(0.4f));
}

} // namespace
