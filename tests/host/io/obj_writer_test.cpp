#include "host/io/obj_reader.h"
#include "host/io/obj_writer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace {

using host::IoError;
using host::k_obj_none;
using host::ObjDocument;
using host::ObjUvs;

ObjDocument read(const std::string& text) {
    ObjDocument document;
    IoError error;
    EXPECT_TRUE(host::parse_obj("m.obj", text, document, error)) << error.message;
    return document;
}

std::string write(const ObjDocument& document, const ObjUvs& uvs) {
    std::string text, error;
    EXPECT_TRUE(host::format_obj(document, uvs, text, error)) << error;
    return text;
}

std::string refusal(const ObjDocument& document, const ObjUvs& uvs) {
    std::string text, error;
    EXPECT_FALSE(host::format_obj(document, uvs, text, error));
    return error;
}

/// The document's own UVs.
ObjUvs own_uvs(const ObjDocument& document) {
    ObjUvs uvs;
    for (size_t i = 0; i < document.texture_count(); ++i) {
        uvs.u.push_back(document.texture_coords[2 * i]);
        uvs.v.push_back(document.texture_coords[2 * i + 1]);
    }
    for (const uint32_t id : document.corner_texture)
        uvs.corner_uv.push_back(id == k_obj_none ? -1 : static_cast<int32_t>(id));
    return uvs;
}

const std::string k_triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
const ObjUvs k_three = {{0, 0.5f, 0.25f}, {0, 0.125f, 1}, {0, 1, 2}};

TEST(ObjWriter, AddsCoordinatesAfterTheVerticesIfThereWereNone) {
    EXPECT_EQ("# c\n" + k_triangle + "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\ng a\nf 1/1 2/2 3/3\n",
              write(read("# c\n" + k_triangle + "g a\nf 1 2 3\n"), k_three));
}

TEST(ObjWriter, WritesNewCoordinatesAtTheFirstOldOne) {
    EXPECT_EQ(
        "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\n" + k_triangle + "vn 0 0 1\nf 1/1/1 2/2/1 3/3/1\n",
        write(read("vt 7 7 7\n" + k_triangle + "vt 8 8\nvn 0 0 1\nf 1/2/1 2/1/1 3//1\n"), k_three));
}

TEST(ObjWriter, WritesCoordinatesBeforeTheFirstFace) {
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\nf 1/1 2/2 3/3\n\n# end\n",
              write(read(k_triangle + "f 1/1 2/1 3/1\n\nvt 7 7\n# end\n"), k_three));
    EXPECT_EQ("vt 0 0\nvt 0.5 0.125\nvt 0.25 1\nf 1/1 2/2 3/3\n" + k_triangle,
              write(read("f 1 2 3\n" + k_triangle), k_three));
}

TEST(ObjWriter, WritesTheIndexIntoCornersOfEveryForm) {
    const ObjDocument d = read(k_triangle + "vt 0 0\nvn 0 0 1\nf 1 2/1 3//1 -3/1/1 2/1/ 3/ 1//\n");
    const ObjUvs uvs = {{0.5f}, {0.5f}, {0, 0, 0, 0, 0, 0, 0}};
    EXPECT_EQ(k_triangle + "vt 0.5 0.5\nvn 0 0 1\nf 1/1 2/1 3/1/1 -3/1/1 2/1/ 3/1 1/1/\n",
              write(d, uvs));
}

TEST(ObjWriter, RemovesTheIndexFromCornersWithoutUv) {
    const ObjDocument d = read(k_triangle + "vt 0 0\nvn 0 0 1\nf 1 2/1 3//1 -3/1/1 2/1/ 3/ 1//\n");
    const ObjUvs uvs = {{}, {}, std::vector<int32_t>(7, -1)};
    EXPECT_EQ(k_triangle + "vn 0 0 1\nf 1 2 3//1 -3//1 2 3 1\n", write(d, uvs));
}

TEST(ObjWriter, RemovesTextureIndicesFromLinesSurfacesAndTwoCornerFaces) {
    const ObjDocument d = read(k_triangle + "vt 0 0\nl 1/1 2/1\nsurf 0 1 0 1 1/1/1 2/1\n"
                                            "f 1/1 2/1\nf 1/1 2/1 3/1\n");
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\nl 1 2\nsurf 0 1 0 1 1//1 2\nf 1 2\n"
                           "f 1/1 2/2 3/3\n",
              write(d, k_three));
}

TEST(ObjWriter, LeavesWordsOfALineThatAreNoNumbers) {
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\nl \\/\nl a/1 1\nf 1/1 2/2 3/3\n",
              write(read(k_triangle + "l \\/\nl a/1 1/1\nf 1 2 3\n"), k_three));
}

TEST(ObjWriter, KeepsLinesBeforeTheFaces) {
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 0.5 0.125\nvt 0.25 1\nl 1 2 3\nf 1/1 2/2 3/3\n",
              write(read(k_triangle + "l 1 2 3\nf 1 2 3\n"), k_three));
}

TEST(ObjWriter, KeepsAllOtherBytes) {
    const std::string head = "\xEF\xBB\xBF# \tcomment \r\nmtllib a b.mtl\r\n";
    const std::string vertices = "v  0.10 0 0\r\nv 1e0\t0 0 \r\nv 0 1.000000000001 0\r\n";
    const std::string middle = "foo \\\r\n bar\r\ns off\r\n  ";
    const std::string text = head + vertices + "  vt 9 \\\r\n 9 # gone\r\n" + middle +
                             "f  1/1\t2/1 \\\r\n3/1 # kept\r\n";
    EXPECT_EQ(head + vertices + "vt 0 0\r\nvt 0.5 0.125\r\nvt 0.25 1\r\n" + middle +
                  "f  1/1\t2/2 \\\r\n3/3 # kept\r\n",
              write(read(text), k_three));
}

TEST(ObjWriter, KeepsTheByteOrderMarkFirst) {
    EXPECT_EQ("\xEF\xBB\xBFvt 0 0\nvt 0.5 0.125\nvt 0.25 1\n" + k_triangle + "f 1/1 2/2 3/3",
              write(read("\xEF\xBB\xBFvt 1 1\n" + k_triangle + "f 1/1 2/1 3/1"), k_three));
    EXPECT_EQ("\xEF\xBB\xBFvt 0 0\nvt 0.5 0.125\nvt 0.25 1\nf 1/1 2/2 3/3\n" + k_triangle,
              write(read("\xEF\xBB\xBF"
                         "f 1 2 3\n" +
                         k_triangle),
                    k_three));
}

TEST(ObjWriter, DropsUnusedCoordinatesAndKeepsTheOrderOfTheOthers) {
    const ObjUvs uvs = {{9, 1, 9, 0.5f}, {9, 1, 9, 0.5f}, {3, 1, 3}};
    EXPECT_EQ(k_triangle + "vt 1 1\nvt 0.5 0.5\nf 1/2 2/1 3/2\n",
              write(read(k_triangle + "f 1 2 3\n"), uvs));
}

TEST(ObjWriter, DropsUnusedOldCoordinatesIfTheUsedOnesAreUnchanged) {
    const ObjDocument d = read(k_triangle + "vt 7 7\nvt 0 0\nvt 1 0\nvt 0 1\nf 1/2 2/3 3/4\n");
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n", write(d, own_uvs(d)));
}

TEST(ObjWriter, ReturnsTheSameBytesForUnchangedCoordinates) {
    const std::string text = k_triangle + "vt 0.10 1e-1 0\nvt 1.0\nf 1/1 2/2/ 3/-1\nv 2 2 2\n"
                                          "vt 5 5\nf 1 2/3 4//\nl 1/1 2/2\n";
    const ObjDocument d = read(text);
    EXPECT_EQ(text, write(d, own_uvs(d)));
}

TEST(ObjWriter, WritesTheShortestNumbersThatReadBackExactly) {
    std::mt19937 random(7);
    ObjUvs uvs;
    std::string text = "v 0 0 0\nf";
    for (int i = 0; i < 3000; ++i) {
        uvs.u.push_back(static_cast<float>(random()) / 4294967296.0f);
        uvs.v.push_back(
            std::ldexp(static_cast<float>(random()), -static_cast<int>(random() % 150)));
        uvs.corner_uv.push_back(i);
        text += " 1";
    }
    const ObjDocument back = read(write(read(text), uvs));
    ASSERT_EQ(3000u, back.texture_count());
    for (size_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(uvs.u[i], back.texture_coords[2 * i]);
        ASSERT_EQ(uvs.v[i], back.texture_coords[2 * i + 1]);
    }
    EXPECT_NE(std::string::npos,
              write(read(k_triangle + "f 1 2 3"), {{0.1f, 1, 0}, {1.0f / 3, 1, 0}, {0, 1, 2}})
                  .find("vt 0.1 0.33333334\n"));
}

TEST(ObjWriter, KeepsRepeatedVerticesOfAPolygon) {
    const ObjUvs uvs = {{0, 1, 2, 3}, {0, 0, 0, 0}, {0, 1, 2, 3}};
    EXPECT_EQ(k_triangle + "vt 0 0\nvt 1 0\nvt 2 0\nvt 3 0\nf 1/1 1/2 2/3 3/4\n",
              write(read(k_triangle + "f 1 1 2 3\n"), uvs));
}

TEST(ObjWriterRefuses, SizesThatDoNotFit) {
    const ObjDocument d = read(k_triangle + "f 1 2 3\n");
    EXPECT_EQ("the UV set does not fit the mesh", refusal(d, {{0}, {0}, {0, 0}}));
    EXPECT_EQ("the UV set does not fit the mesh", refusal(d, {{0}, {}, {0, 0, 0}}));
}

TEST(ObjWriterRefuses, IndicesOutOfRange) {
    const ObjDocument d = read(k_triangle + "f 1 2 3\n");
    EXPECT_EQ("a face corner has UV 1 of 1", refusal(d, {{0}, {0}, {0, 1, 0}}));
    EXPECT_EQ("a face corner has UV -2 of 1", refusal(d, {{0}, {0}, {0, -2, 0}}));
}

TEST(ObjWriterRefuses, CoordinatesThatAreNotFinite) {
    const ObjDocument d = read(k_triangle + "f 1 2 3\n");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ("UV 1 is not finite", refusal(d, {{0, nan}, {0, 0}, {0, 1, 0}}));
    EXPECT_EQ("UV 1 is not finite", refusal(d, {{0, 0}, {0, inf}, {0, 1, 0}}));
    write(d, {{0, nan}, {0, 0}, {0, 0, 0}}); // an unused coordinate is not checked
}

} // namespace
