#include "window/layout_words.h"

#include <gtest/gtest.h>

namespace {

using namespace window;

/// `count` unit squares in a row, each a chart; the last one is `stretched` times as wide in the
/// texture.
UvMap squares(uint32_t count, float stretched = 1.0f) {
    std::vector<host::Float3> points;
    std::vector<uint32_t> sizes(count, 4), corners;
    host::UvSet uvs;
    for (uint32_t i = 0; i < count; ++i)
        for (const auto& [x, y] :
             {std::pair(0.0f, 0.0f), {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}}) {
            corners.push_back(uint32_t(points.size()));
            uvs.corner_uvs.push_back(int32_t(points.size()));
            points.push_back({x + 2.0f * float(i), y, 0.0f});
            uvs.u.push_back(0.2f * float(i) + 0.1f * x * (i + 1 == count ? stretched : 1.0f));
            uvs.v.push_back(0.1f * y);
        }
    host::Mesh mesh;
    EXPECT_TRUE(host::Mesh::make(points, sizes, corners, mesh));
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    set.u = uvs.u;
    set.v = uvs.v;
    set.corner_uvs = uvs.corner_uvs;
    return UvMap(mesh, 0, measure::Texture{100.0, 100.0});
}

TEST(LayoutWords, CountChartsAndTellStretchAndCoverage) {
    EXPECT_EQ("1 chart, worst stretch 0.0000, 1.0 % covered", words_about(squares(1)));
    EXPECT_EQ("3 charts, worst stretch 0.0000, 3.0 % covered", words_about(squares(3)));
}

TEST(LayoutWords, TellHowManyCutsWereAddedToTheSeams) {
    EXPECT_EQ("3 charts along your seams, worst stretch 0.0000, 3.0 % covered",
              words_along_seams(squares(3), 3));
    EXPECT_EQ(
        "3 charts along your seams (2 more than they make: the rest cannot be laid flat), worst "
        "stretch 0.0000, 3.0 % covered",
        words_along_seams(squares(3), 1));
}

TEST(LayoutWords, NameWhatTakesStretchAwayThatTheSeamsCannot) {
    const std::string words = words_along_seams(squares(3, 3.0f), 3);
    EXPECT_NE(std::string::npos, words.find(". 1 chart beyond 0.15: Suggest the rest cuts it"))
        << words;
}

} // namespace
