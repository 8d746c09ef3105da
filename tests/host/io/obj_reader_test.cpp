#include "host/io/obj_reader.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <locale>
#include <random>
#include <string>
#include <vector>

namespace {

using host::IoError;
using host::k_obj_none;
using host::ObjDocument;

const std::string k_vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                               "v 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n";
const std::string k_faces = "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";

ObjDocument read(const std::string& text) {
    ObjDocument document;
    IoError error;
    EXPECT_TRUE(host::parse_obj("m.obj", text, document, error)) << error.message;
    EXPECT_EQ(IoError::none, error.kind);
    return document;
}

/// The error message for a text that cannot be read.
std::string refusal(const std::string& text) {
    ObjDocument document;
    IoError error;
    EXPECT_FALSE(host::parse_obj("m.obj", text, document, error));
    EXPECT_EQ(IoError::malformed, error.kind);
    return error.message;
}

std::vector<uint32_t> corners(const ObjDocument& document, size_t polygon) {
    return {document.corner_vertex.begin() + document.corner_begin[polygon],
            document.corner_vertex.begin() + document.corner_begin[polygon + 1]};
}

void expect_cube(const ObjDocument& document) {
    const ObjDocument cube = read(k_vertices + k_faces);
    EXPECT_EQ(cube.positions, document.positions);
    EXPECT_EQ(cube.corner_begin, document.corner_begin);
    EXPECT_EQ(cube.corner_vertex, document.corner_vertex);
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

TEST(ObjReader, ReadsVerticesPolygonsAndTextureCoordinates) {
    const ObjDocument d = read(k_vertices + "vt 0.25 0.5\nvt 1\nf 1/1 2/2 3/1\nf 5 6 7 8\n");
    EXPECT_EQ(8u, d.vertex_count());
    EXPECT_EQ(2u, d.polygon_count());
    EXPECT_EQ((std::vector<float>{0.25f, 0.5f, 1.0f, 0.0f}), d.texture_coords);
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2}), corners(d, 0));
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 0, k_obj_none, k_obj_none, k_obj_none, k_obj_none}),
              d.corner_texture);
    EXPECT_TRUE(d.has_uvs());
    EXPECT_TRUE(d.warnings.empty());
}

TEST(ObjReader, MeshWithoutTextureIndicesHasNoUvs) {
    EXPECT_FALSE(read(k_vertices + "vt 0 0\n" + k_faces).has_uvs());
}

TEST(ObjReader, NegativeIndicesCountBackFromTheCurrentLine) {
    expect_cube(read(k_vertices + "f -8 -5 -6 -7\nf -4 -3 -2 -1\nf -8 -7 -3 -4\nf -7 -6 -2 -3\n"
                                  "f -6 -5 -1 -2\nf -5 -8 -4 -1\n"));
    const ObjDocument d = read("v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\nv 0 0 1\nf -3 -2 -1\n");
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2}), corners(d, 0));
    EXPECT_EQ((std::vector<uint32_t>{1, 2, 3}), corners(d, 1));
}

TEST(ObjReader, CornersOfDifferentFormsCanBeMixedInAFace) {
    const ObjDocument d =
        read(k_vertices + "vt 0 0\nvt 1 0\nvn 0 0 1\nf 1 4/1 3//1 2/2/1\nf 5/1/ 6/ 7// 8/-1/-1\n");
    EXPECT_EQ((std::vector<uint32_t>{0, 3, 2, 1}), corners(d, 0));
    EXPECT_EQ((std::vector<uint32_t>{k_obj_none, 0, k_obj_none, 1, 0, k_obj_none, k_obj_none, 1}),
              d.corner_texture);
}

TEST(ObjReader, WindowsLineEndsAreAccepted) {
    expect_cube(read(replaced(k_vertices + k_faces, "\n", "\r\n")));
}

TEST(ObjReader, CarriageReturnsEndLinesInATextWithoutLineFeeds) {
    expect_cube(read(replaced(k_vertices + k_faces, "\n", "\r")));
}

TEST(ObjReader, ByteOrderMarkTabsBlanksExponentsAndPlusSignsAreAccepted) {
    std::string text = "\xEF\xBB\xBFv\t 0  +0\t0E+0  \n";
    text += replaced(replaced(k_vertices.substr(8), " 1", "\t +1E-0"), " 0", "  -0.0e1");
    const ObjDocument d = read(text + replaced(k_faces, " ", "  \t"));
    EXPECT_EQ(8u, d.vertex_count());
    EXPECT_EQ(1.0f, d.positions[3]);
    EXPECT_EQ(6u, d.polygon_count());
}

TEST(ObjReader, BackslashJoinsLines) {
    expect_cube(read(k_vertices + replaced(k_faces, " ", " \\\n")));
    expect_cube(read(replaced(k_vertices + replaced(k_faces, " ", "\\\n "), "\n", "\r\n")));
}

TEST(ObjReader, BackslashAtTheEndOfACommentDoesNotJoinLines) {
    expect_cube(read("# made in C:\\models\\\n" + k_vertices + k_faces));
}

TEST(ObjReader, BackslashInsideALineIsAnError) {
    EXPECT_EQ("m.obj:1: vertex 1: '0\\' is not a number", refusal("v 0\\ 0 0\n" + k_faces));
}

TEST(ObjReader, CommentsCanFollowNumbers) {
    expect_cube(read(replaced(k_vertices, "\n", " # corner\n") + replaced(k_faces, "\n", "#\n")));
}

TEST(ObjReader, LongLinesAreRead) {
    expect_cube(read("#" + std::string(1 << 20, 'x') + "\n" + k_vertices + "o " +
                     std::string(200000, 'n') + "\n" + k_faces));
}

TEST(ObjReader, NulBytesBetweenLinesAndInCommentsAreSkipped) {
    std::string text = replaced(k_vertices, "\nv 1", std::string("\n\0v 1", 5)) + k_faces;
    text += std::string("# a\0b\n\0\0\0", 9);
    expect_cube(read(text));
}

TEST(ObjReader, NulBytesInsideANumberAreRefused) {
    EXPECT_EQ("m.obj:1: vertex 1: '1?2' is not a number",
              refusal(std::string("v 1\0002 0 0\n", 11)));
}

TEST(ObjReader, UnknownStatementsAreSkipped) {
    const ObjDocument d = read("mtllib none.mtl\no c\ng a b\nvp 0 0\n" + k_vertices +
                               "s off\nusemtl x\nl 1 2 3\np 1 2\nfoo bar\ncstype bezier\n"
                               "curv 0 1 1 2\nt crease 2/1/0 1 2 3.0\n" +
                               k_faces + "end\n");
    expect_cube(d);
    EXPECT_TRUE(d.warnings.empty());
}

TEST(ObjReader, FacesCanPrecedeTheirVertices) { expect_cube(read(k_faces + k_vertices)); }

TEST(ObjReader, LastLineCanLackItsLineEnd) {
    const std::string text = k_vertices + k_faces;
    expect_cube(read(text.substr(0, text.size() - 1)));
}

TEST(ObjReader, WeightsAndColoursAreAccepted) {
    const ObjDocument d = read("v 0 0 0 1\nv 1 0 0 0.5 0.5 0.5\nv 0 1 0 1 0 0 1\nf 1 2 3\n");
    EXPECT_EQ(9u, d.positions.size());
}

TEST(ObjReader, PolygonsWithManyCornersAreNotSplit) {
    std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf";
    for (int i = 0; i < 100000; ++i)
        text += " " + std::to_string(1 + i % 3);
    const ObjDocument d = read(text + "\n");
    ASSERT_EQ(1u, d.polygon_count());
    EXPECT_EQ(100000u, d.corner_begin[1]);
}

TEST(ObjReader, NumbersAreRoundedToTheNearestSinglePrecisionValue) {
    const ObjDocument d = read("v 1234567.125 0.1 16777217\nv 1e-42 -1e-60 0.000000e99999\n"
                               "v 3.4028235e38 .5 5.\nf 1 2 3\n");
    const std::vector<float> expected = {1234567.125f, 0.1f,          16777216.0f, 1e-42f, -0.0f,
                                         0.0f,         3.4028235e38f, 0.5f,        5.0f};
    EXPECT_EQ(expected, d.positions);
    EXPECT_TRUE(std::signbit(d.positions[4]));
}

TEST(ObjReader, UnitPositionsDoNotDependOnTheUnitOfTheMesh) {
    const std::string rest = "\nv 0 1 0\nf 1 2 3\n";
    const ObjDocument metres = read("v 1.2345678 0.1 0\nv 0.7 0 0" + rest);
    const ObjDocument millimetres = read("v 1234.5678 100 0\nv 700 0 0\nv 0 1000 0\nf 1 2 3\n");
    const ObjDocument miles = read("v 1.2345678e-3 1e-4 0\nv 0.0007 0 0\nv 0 .001 0\nf 1 2 3\n");
    EXPECT_EQ(metres.positions, metres.unit_positions);
    EXPECT_EQ(metres.unit_positions, millimetres.unit_positions);
    EXPECT_EQ(metres.unit_positions, miles.unit_positions);
    EXPECT_EQ(1.0, metres.unit);
    EXPECT_EQ(1000.0, millimetres.unit);
    EXPECT_EQ(0.001, miles.unit);
}

TEST(ObjReader, MeshFarFromTheOriginIsCentredBeforeItIsNarrowed) {
    const ObjDocument d = read("v 1000000.001 0 5\nv 1000000.003 0 5\nv 1000000.001 .002 5\n"
                               "v 0 0 0\nf 1 2 3\n"); // the last vertex is unused
    EXPECT_NEAR(0.002, d.unit * (d.unit_positions[3] - d.unit_positions[0]), 1e-9);
    EXPECT_NEAR(0.002, d.unit * (d.unit_positions[7] - d.unit_positions[1]), 1e-9);
    EXPECT_EQ(1000000.0f, d.positions[0]); // the file's own positions are not moved
}

TEST(ObjReader, MeshNearTheOriginIsNotMoved) {
    const ObjDocument d = read("v 7 0 0\nv 8 0 0\nv 8 1 0\nf 1 2 3\n");
    EXPECT_EQ(d.positions, d.unit_positions);
}

TEST(ObjReader, FacesTooSmallForSinglePrecisionAreWarnedOf) {
    const std::string large = "v 0 0 0\nv 1e6 0 0\nv 0 1e6 0\nf 1 2 3\n";
    const ObjDocument d = read(large + "v 9e5 0 0\nv 900000.001 0 0\nv 9e5 .001 0\nf 4 5 6\n"
                                       "f 6 5 4\nf 4 5 2\n");
    ASSERT_EQ(1u, d.warnings.size());
    EXPECT_EQ(0u, d.warnings[0].find("m.obj:8: face is so small that single precision distorts it"))
        << d.warnings[0];
    EXPECT_NE(std::string::npos, d.warnings[0].find("(2 in all)")) << d.warnings[0];
    EXPECT_TRUE(read(large).warnings.empty());
}

TEST(ObjReader, UnitPositionsOfATinyMeshDoNotUnderflow) {
    const ObjDocument d = read("v 1.25e-43 0 0\nv 0 2.5e-43 0\nv 0 0 0\nf 1 2 3\n");
    EXPECT_FLOAT_EQ(0.5f * d.unit_positions[4], d.unit_positions[0]);
}

TEST(ObjReader, TinyNumbersWithoutExponentBecomeZero) {
    const std::string tiny = "0." + std::string(60, '0') + "1";
    EXPECT_EQ(
        0.0f,
        read("v " + tiny + " 0 1e-99999999999999999999\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").positions[0]);
}

TEST(ObjReader, NumbersDoNotDependOnTheLocale) {
    struct CommaPoint : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const ObjDocument d = read("v 0.5 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    std::locale::global(before);
    EXPECT_EQ(0.5f, d.positions[0]);
}

TEST(ObjReader, FacesWithFewerThanThreeCornersAreSkippedWithOneWarning) {
    const ObjDocument d = read(k_vertices + k_faces + "f 1 2\nf 1\nf\n");
    expect_cube(d);
    ASSERT_EQ(1u, d.warnings.size());
    EXPECT_EQ("m.obj:15: face with fewer than three corners stays in the file and gets no texture "
              "coordinates (3 in all)",
              d.warnings[0]);
}

TEST(ObjReader, PolygonsCanUseAVertexTwice) {
    const ObjDocument d = read(k_vertices + "f 1 1 2 3\nf 1 2 3 2\nf 1 2 3 1 4\n");
    EXPECT_EQ((std::vector<uint32_t>{0, 0, 1, 2}), corners(d, 0));
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2, 0, 3}), corners(d, 2));
}

TEST(ObjReader, TextureCoordinateThatIsNotFiniteIsTreatedAsAbsent) {
    const ObjDocument d = read(k_vertices + "vt 0 0\nvt nan 1\nvt 0 inf\nf 1/1 2/2 3/3\nf 1 2 3\n");
    EXPECT_EQ(
        (std::vector<uint32_t>{0, k_obj_none, k_obj_none, k_obj_none, k_obj_none, k_obj_none}),
        d.corner_texture);
    ASSERT_EQ(1u, d.warnings.size());
    EXPECT_EQ("m.obj:10: texture coordinate is not a finite number; the corners that use it count "
              "as having none (2 in all)",
              d.warnings[0]);
}

TEST(ObjReader, InvalidNormalIndexIsOnlyAWarning) {
    const std::string warning = "m.obj:10: face uses a normal that the file does not have";
    for (const char* normal : {"7", "0", "-2", "99999999999999999999"}) {
        const ObjDocument d = read(k_vertices + "vn 0 0 1\nf 1//" + normal + " 2//1 3//-1\n");
        ASSERT_EQ(1u, d.warnings.size()) << normal;
        EXPECT_EQ(warning, d.warnings[0]);
    }
}

TEST(ObjReaderRefuses, AnEmptyFile) {
    EXPECT_EQ("m.obj: no mesh in the file: it is empty", refusal(""));
}

TEST(ObjReaderRefuses, CommentsOnly) {
    EXPECT_EQ("m.obj: no mesh in the file: it has neither vertices nor faces",
              refusal("# nothing here\n\n   \n# end\n"));
}

TEST(ObjReaderRefuses, VerticesWithoutFaces) {
    EXPECT_EQ("m.obj: no faces in the file, only 8 vertices", refusal(k_vertices));
}

TEST(ObjReaderRefuses, AFileWithOnlyTwoCornerFaces) {
    EXPECT_EQ("m.obj:9: no faces in the file: none has three corners or more",
              refusal(k_vertices + "f 1 2\n"));
}

TEST(ObjReaderRefuses, FilesThatAreNotObj) {
    std::string bytes;
    uint32_t state = 1;
    for (int i = 0; i < 4096; ++i) {
        state = state * 1664525u + 1013904223u;
        bytes += static_cast<char>(state >> 24);
    }
    EXPECT_EQ("m.obj: this is not an OBJ file: it has neither vertices nor faces", refusal(bytes));
}

TEST(ObjReaderRefuses, SixteenBitText) {
    EXPECT_EQ("m.obj:1: the file is 16-bit text; save it as UTF-8",
              refusal(std::string("\xFF\xFEv\0 \0", 6)));
}

TEST(ObjReaderRefuses, ATruncatedVertex) {
    EXPECT_EQ("m.obj:2: vertex 2 needs three coordinates and has 2", refusal("v 0 0 0\nv 1 0"));
    EXPECT_EQ("m.obj:1: vertex 1 needs three coordinates and has 0", refusal("v\n"));
}

TEST(ObjReaderRefuses, CoordinatesThatAreNotFinite) {
    for (const char* word : {"nan", "-nan", "inf", "-inf", "Infinity", "NaN"})
        EXPECT_EQ("m.obj:9: vertex 9: '" + std::string(word) + "' is not a finite number",
                  refusal(k_vertices + "v 0 " + word + " 1\n" + k_faces));
    for (const char* word : {"1e999", "-3.5e38", "1e99999999999999999999", "+1E39"})
        EXPECT_EQ("m.obj:9: vertex 9: '" + std::string(word) + "' is too large",
                  refusal(k_vertices + "v 0 " + word + " 1\n" + k_faces));
}

TEST(ObjReaderRefuses, TextInNumbers) {
    for (const char* word : {"1,5", "0x", "0x10", "1.0f", "--1", "+-1", "+", "1e", "e5", "1.2.3"})
        EXPECT_EQ("m.obj:9: vertex 9: '" + std::string(word) + "' is not a number",
                  refusal(k_vertices + "v " + word + " 1 1\n" + k_faces));
    EXPECT_EQ("m.obj:1: vertex 1: 'x' is not a number", refusal("v 1 2 3 x\n"));
    EXPECT_EQ("m.obj:1: texture coordinate 1: '0,5' is not a number", refusal("vt 0,5 1\n"));
    EXPECT_EQ("m.obj:1: texture coordinate 1 has no number", refusal("vt\n"));
}

TEST(ObjReaderRefuses, LongWordsWithATruncatedQuote) {
    EXPECT_EQ("m.obj:1: vertex 1: '" + std::string(40, 'x') + "...' is not a number",
              refusal("v " + std::string(5000, 'x') + " 0 0\n"));
}

TEST(ObjReaderRefuses, VertexIndicesOutOfRange) {
    const std::string faces = k_faces.substr(0, k_faces.size() - 2);
    EXPECT_EQ("m.obj:14: face uses vertex 9, but the file has 8",
              refusal(k_vertices + faces + "9\n"));
    EXPECT_EQ("m.obj:14: face uses vertex 0, but numbers start at 1",
              refusal(k_vertices + faces + "0\n"));
    EXPECT_EQ("m.obj:14: face uses vertex '-9', which the file does not have (8 up to this line)",
              refusal(k_vertices + faces + "-9\n"));
}

TEST(ObjReaderRefuses, IndicesThatOverflow32Bits) {
    for (const char* index : {"4294967297", "2147483648", "99999999999999999999",
                              "-9223372036854775808", "-99999999999999999999"})
        EXPECT_EQ("m.obj:9: face uses vertex '" + std::string(index) +
                      "', which the file does not have (8 up to this line)",
                  refusal(k_vertices + "f 1 2 " + index + "\n"));
}

TEST(ObjReaderRefuses, TextureIndicesOutOfRange) {
    EXPECT_EQ("m.obj:11: face uses texture coordinate 99, but the file has 1",
              refusal(k_vertices + "vt 0 0\nf 1/1 2/1 \\\n3/99\n"));
    EXPECT_EQ("m.obj:10: face uses texture coordinate '-2', which the file does not have (1 up to "
              "this line)",
              refusal(k_vertices + "vt 0 0\nf 1/1 2/1 3/-2\n"));
}

TEST(ObjReaderRefuses, AWordInJoinedLinesWithTheLineOfTheWord) {
    EXPECT_EQ("m.obj:10: face uses vertex 9, but the file has 8",
              refusal(k_vertices + "f 1 2 \\\n 9\n"));
}

TEST(ObjReaderRefuses, MalformedCorners) {
    for (const char* corner : {"1/1/1/1", "x", "1.5", "1/x", "1//x", "/1", "1-"})
        EXPECT_EQ("m.obj:11: face corner '" + std::string(corner) +
                      "' is not of the form v, v/vt, v//vn or v/vt/vn with whole numbers",
                  refusal(k_vertices + "vt 0 0\nvn 0 0 1\nf 1 2 " + corner + "\n"));
}

TEST(ReadText, ReturnsTheBytesOfAFile) {
    const std::string path =
        testing::TempDir() + "/read_text_test." + std::to_string(std::random_device()());
    std::string bytes("a\0b\r\n", 5);
    bytes += std::string(300000, 'x');
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, file);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    std::string text;
    IoError error;
    EXPECT_TRUE(host::read_text(path, text, error)) << error.message;
    EXPECT_EQ(bytes, text);
    for (const size_t most : {size_t(1), size_t(100000), bytes.size(), bytes.size() + 1}) {
        EXPECT_TRUE(host::read_start(path, most, text, error)) << error.message;
        EXPECT_EQ(bytes.substr(0, most), text);
    }
    std::remove(path.c_str());
}

TEST(ReadText, NamesTheMissingFileInTheError) {
    std::string text;
    IoError error;
    EXPECT_FALSE(host::read_text("/nonexistent/m.obj", text, error));
    EXPECT_EQ(IoError::unreadable, error.kind);
    EXPECT_EQ("/nonexistent/m.obj: cannot be read: No such file or directory", error.message);
}

TEST(ReadText, RefusesADirectory) {
    std::string text;
    IoError error;
    EXPECT_FALSE(host::read_text("/", text, error));
    EXPECT_EQ("/: cannot be read: Is a directory", error.message);
}

} // namespace
