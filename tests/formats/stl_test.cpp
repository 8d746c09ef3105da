#include "formats/mesh_file.h"
#include "tests/app/scratch.h"

#include <cstring>

namespace {

/// A square of two triangles.
const float k_square[2][9] = {{0, 0, 0, 1, 0, 0, 1, 1, 0}, {-0.0f, 0, 0, 1, 1, 0, 0, 1, 0}};

std::string binary(const char* header = "binary", uint32_t count = 2) {
    std::string bytes = header;
    bytes.resize(80, ' ');
    bytes.append(reinterpret_cast<const char*>(&count), 4);
    for (const float(&triangle)[9] : k_square) {
        bytes.append(12, '\0');
        bytes.append(reinterpret_cast<const char*>(triangle), sizeof triangle);
        bytes.append(2, '\7');
    }
    return bytes;
}

std::string text() {
    std::string text = "solid  left part \n";
    for (const float(&triangle)[9] : k_square) {
        text += "facet normal 0 nan 1\n outer loop\n";
        for (int corner = 0; corner < 3; ++corner) {
            text += "  vertex";
            for (int k = 0; k < 3; ++k)
                text += " " + std::to_string(triangle[3 * corner + k]);
            text += "\n";
        }
        text += " endloop\nendfacet\n";
        text += &triangle == &k_square[0] ? "endsolid left\nsolid\n" : "endsolid\n";
    }
    return text;
}

struct Read {
    formats::MeshFile file;
    host::IoError error;
    bool good = false;
};

Read read(const std::string& bytes, const std::string& name = "m.stl") {
    Read r;
    r.good = formats::parse_mesh(name, bytes, formats::ReadOptions(), r.file, r.error);
    return r;
}

std::string refusal(const std::string& bytes) {
    const Read r = read(bytes);
    EXPECT_FALSE(r.good);
    EXPECT_EQ(host::IoError::malformed, r.error.kind);
    return r.error.message;
}

std::string with(std::string text, const std::string& old, const std::string& replacement) {
    return text.replace(text.find(old), old.size(), replacement);
}

TEST(Stl, CornersAtEqualPositionsBecomeOneVertexAndAWarningSaysSo) {
    for (const std::string& bytes : {binary(), binary("solid but binary"), text()}) {
        const Read r = read(bytes);
        ASSERT_TRUE(r.good) << r.error.message;
        EXPECT_EQ((std::vector<uint32_t>{0, 1, 2, 0, 2, 3}), r.file.document.corner_vertex);
        EXPECT_EQ((std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}),
                  r.file.document.positions);
        EXPECT_FALSE(r.file.document.has_uvs());
        EXPECT_EQ(std::vector<std::string>{"m.stl: STL files have no common vertices; 6 corners "
                                           "became 4 vertices where their positions are equal"},
                  r.file.document.warnings);
        EXPECT_EQ(bytes, r.file.original());
    }
}

TEST(Stl, SolidsOfATextHaveNames) {
    const Read r = read(text());
    ASSERT_EQ(2u, r.file.solids.size());
    EXPECT_EQ("left part", r.file.solids[0].name);
    EXPECT_EQ("", r.file.solids[1].name);
    EXPECT_EQ(1u, r.file.solids[1].first_polygon);
}

TEST(Stl, FormatIsThatOfTheContentOnStandardInput) {
    EXPECT_EQ(formats::Format::stl, read(text(), "-").file.format);
}

TEST(Stl, ResultIsAnObjFileAndNeverAnStlFile) {
    const Read r = read(text());
    std::string error, bytes;
    EXPECT_FALSE(formats::can_write(r.file, "o.stl", {}, error));
    EXPECT_EQ("o.stl: STL files cannot hold texture coordinates; name an OBJ file instead", error);
    EXPECT_TRUE(formats::can_write(r.file, "-", {}, error));
    const host::ObjUvs uvs = {{0.5f}, {0.5f}, std::vector<int32_t>(6, 0)};
    ASSERT_TRUE(formats::format_mesh(r.file, uvs, "-", {}, bytes, error));
    EXPECT_NE(bytes.npos, bytes.find("f 1/1 2/1 3/1\n"));
}

TEST(Stl, BinaryFilesThatAreCutOffOrTooLongAreRefused) {
    const std::string whole = binary();
    EXPECT_EQ("m.stl: no mesh in the file: it is empty", refusal(""));
    EXPECT_EQ("m.stl: byte 83: the file ends before the number of triangles",
              refusal(whole.substr(0, 83)));
    EXPECT_EQ("m.stl: byte 183: the file ends after 1 of 2 triangles",
              refusal(whole.substr(0, 183)));
    EXPECT_EQ("m.stl: byte 184: the file ends after 2 of 4294967295 triangles",
              refusal(binary("x", 0xFFFFFFFF)));
    EXPECT_EQ("m.stl: byte 184: 3 bytes follow the last triangle", refusal(whole + "abc"));
    EXPECT_EQ("m.stl: no mesh in the file: it has no triangles",
              refusal(binary("x", 0).substr(0, 84)));
    std::string nan = whole;
    const float value = NAN;
    std::memcpy(&nan[84 + 50 + 12], &value, 4);
    EXPECT_EQ("m.stl: triangle 1: it has a position that is not finite", refusal(nan));
}

TEST(Stl, FaultsOfATextAreNamedWithTheirLine) {
    EXPECT_EQ("m.stl: no mesh in the file: it has no triangles", refusal("solid a\nendsolid a\n"));
    EXPECT_EQ("m.stl: line 5: '1.x' is not a finite number",
              refusal(with(text(), "vertex 1.000000", "vertex 1.x")));
    EXPECT_EQ("m.stl: line 5: 'nan' is not a finite number",
              refusal(with(text(), "vertex 1.000000", "vertex nan")));
    EXPECT_EQ("m.stl: line 2: 'up' is not a number", refusal(with(text(), "0 nan 1", "0 up 1")));
    EXPECT_EQ("m.stl: line 7: 'endloop' is expected, not 'vertex'",
              refusal(with(text(), " endloop", "  vertex 0 0 0")));
    EXPECT_EQ("m.stl: line 9: 'facet' is expected, not 'endsolids'",
              refusal(with(text(), "endsolid", "endsolids")));
    const std::string whole = text();
    EXPECT_EQ("m.stl: line 18: 'endsolid' is expected, not the end of the file",
              refusal(whole.substr(0, whole.rfind("endsolid"))));
    for (size_t cut = whole.rfind("facet normal") + 5; cut < whole.size() - 9; ++cut)
        EXPECT_NE(std::string::npos, refusal(whole.substr(0, cut)).find("m.stl: ")) << cut;
}

TEST(Stl, MoreTrianglesThanAMeshMayHaveAreRefused) {
    formats::ReadOptions options;
    for (const std::string& bytes : {binary(), text()}) {
        formats::MeshFile file;
        host::IoError error;
        options.max_corners = 6;
        EXPECT_TRUE(formats::parse_mesh("m.stl", bytes, options, file, error)) << error.message;
        options.max_corners = 5;
        EXPECT_FALSE(formats::parse_mesh("m.stl", bytes, options, file, error));
        EXPECT_EQ("m.stl: more than 1 triangles", error.message);
        EXPECT_EQ(host::IoError::too_large, error.kind);
    }
}

} // namespace
