#include "formats/gzip.h"
#include "formats/mesh_file.h"
#include "tests/app/scratch.h"

#include <algorithm>
#include <cstring>

namespace {

using formats::PlyUvs;

struct Read {
    formats::MeshFile file;
    host::IoError error;
    bool good = false;
    const host::ObjDocument& document() const { return file.document; }
};

Read read(const std::string& bytes, const std::string& name = "m.ply") {
    Read r;
    r.good = formats::parse_mesh(name, bytes, formats::ReadOptions(), r.file, r.error);
    return r;
}

std::string refusal(const std::string& bytes) {
    const Read r = read(bytes);
    EXPECT_FALSE(r.good) << bytes;
    EXPECT_EQ(host::IoError::malformed, r.error.kind);
    return r.error.message;
}

/// Two quads side by side, with things the program does not know.
const std::string k_header = "ply\n"
                             "format ascii 1.0\n"
                             "comment keep me\n"
                             "element vertex 6\n"
                             "property float x\nproperty float y\nproperty double z\n"
                             "property uchar red\n"
                             "element face 2\n"
                             "property int patch\n"
                             "property list uchar int vertex_indices\n"
                             "property float quality\n"
                             "element edge 1\n"
                             "property int vertex1\nproperty int vertex2\n"
                             "end_header\n";
const std::string k_vertices = "0 0 0 255\n1 0 0 254\n2 0 0 253\n0 1 0.10 252\n1 1 0 251\n"
                               "2 1 0 250\n";
const std::string k_faces = "7 4 0 1 4 3 0.5\n8 4 1 2 5 4 nan\n";
const std::string k_quads = k_header + k_vertices + k_faces + "3 5\n";

/// A coordinate for each corner, all different, or one for each vertex.
host::ObjUvs coordinates(const host::ObjDocument& document, bool split) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        uvs.u.push_back(float(split ? c : document.corner_vertex[c]) / 8.0f);
        uvs.v.push_back(0.25f);
        uvs.corner_uv.push_back(int32_t(c));
    }
    return uvs;
}

std::string written(const Read& r, bool split, PlyUvs place = PlyUvs::as_read) {
    std::string bytes, error;
    formats::WriteOptions options;
    options.ply_uvs = place;
    EXPECT_TRUE(formats::format_mesh(r.file, coordinates(r.document(), split), "o.ply", options,
                                     bytes, error))
        << error;
    return bytes;
}

template <class T>
void append(std::string& bytes, T value, bool big) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    if (big)
        std::reverse(raw, raw + sizeof value);
    bytes.append(raw, sizeof value);
}

/// The two quads as a binary file.
std::string binary(bool big) {
    std::string bytes = k_header;
    bytes.replace(bytes.find("ascii"), 5, big ? "binary_big_endian" : "binary_little_endian");
    for (int v = 0; v < 6; ++v) {
        append(bytes, float(v % 3), big);
        append(bytes, float(v / 3), big);
        append(bytes, v == 3 ? 0.1 : 0.0, big);
        append(bytes, uint8_t(255 - v), big);
    }
    const int faces[2][4] = {{0, 1, 4, 3}, {1, 2, 5, 4}};
    for (int f = 0; f < 2; ++f) {
        append(bytes, int32_t(7 + f), big);
        append(bytes, uint8_t(4), big);
        for (const int vertex : faces[f])
            append(bytes, int32_t(vertex), big);
        append(bytes, 0.5f, big);
    }
    append(bytes, int32_t(3), big);
    append(bytes, int32_t(5), big);
    return bytes;
}

TEST(Ply, PolygonsAndPositionsOfAllThreeEncodingsAreTheSame) {
    const Read text = read(k_quads);
    ASSERT_TRUE(text.good) << text.error.message;
    EXPECT_EQ((std::vector<uint32_t>{0, 4, 8}), text.document().corner_begin);
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 4, 3, 1, 2, 5, 4}), text.document().corner_vertex);
    EXPECT_EQ(6u, text.document().vertex_count());
    EXPECT_EQ(0.1f, text.document().positions[11]);
    for (const bool big : {false, true}) {
        const Read r = read(binary(big));
        ASSERT_TRUE(r.good) << r.error.message;
        EXPECT_EQ(text.document().positions, r.document().positions);
        EXPECT_EQ(text.document().corner_vertex, r.document().corner_vertex);
        EXPECT_EQ(text.document().corner_begin, r.document().corner_begin);
    }
}

TEST(Ply, CoordinatesOfCornersAreAListOfTheFaceAndAllElseStays) {
    std::string expected = k_quads;
    const std::string property = "property float quality\n";
    expected.insert(expected.find(property) + property.size(),
                    "property list uchar float texcoord\n");
    expected.replace(expected.find(k_faces), k_faces.size(),
                     "7 4 0 1 4 3 0.5 8 0 0.25 0.125 0.25 0.25 0.25 0.375 0.25\n"
                     "8 4 1 2 5 4 nan 8 0.5 0.25 0.625 0.25 0.75 0.25 0.875 0.25\n");
    EXPECT_EQ(expected, written(read(k_quads), true));
}

TEST(Ply, BinaryFilesKeepTheirByteOrderAndAllOtherBytes) {
    for (const bool big : {false, true}) {
        const std::string input = binary(big), output = written(read(input), true);
        const size_t body = input.find("end_header\n") + 11,
                     body_out = output.find("end_header\n") + 11;
        EXPECT_EQ(input.substr(body, 6 * 17), output.substr(body_out, 6 * 17)) << "the vertices";
        EXPECT_EQ(input.substr(input.size() - 8), output.substr(output.size() - 8)) << "the edge";
        EXPECT_EQ(output.size() - body_out, input.size() - body + 2 * (1 + 8 * 4));
        const Read again = read(output);
        ASSERT_TRUE(again.good) << again.error.message;
        EXPECT_EQ(8u, again.document().texture_count());
        EXPECT_EQ(0.875f, again.document().texture_coords[14]);
        EXPECT_EQ(0.25f, again.document().texture_coords[15]);
        EXPECT_EQ(output, written(again, true)) << "the list is replaced where it is";
    }
}

TEST(Ply, CoordinatesOfVerticesSplitThemBehindTheLast) {
    const std::string out = written(read(k_quads), true, PlyUvs::vertex);
    EXPECT_NE(out.npos, out.find("element vertex 8\n"));
    EXPECT_NE(out.npos, out.find("property uchar red\nproperty float s\nproperty float t\n"));
    EXPECT_NE(out.npos, out.find("\n0 1 0.10 252 0.375 0.25\n"));
    EXPECT_NE(out.npos, out.find("2 1 0 250 0.75 0.25\n1 0 0 254 0.5 0.25\n1 1 0 251 0.875 0.25\n"
                                 "7 4 0 1 4 3 0.5\n8 4 6 2 5 7 nan\n3 5\n"));
    const Read again = read(out);
    ASSERT_TRUE(again.good) << again.error.message;
    EXPECT_EQ(6u, again.document().vertex_count()) << "copies are one vertex";
    EXPECT_EQ(8u, again.document().texture_count());
}

TEST(Ply, CoordinatesOfVerticesAreReplacedInTheirColumns) {
    for (const char* names : {"st", "uv"}) {
        std::string text = k_quads;
        const std::string before =
            std::string("property float ") + names[0] + "\nproperty double " + names[1] + "\n";
        text.insert(text.find("property uchar red"), before);
        size_t at = text.find("end_header\n") + 11;
        for (int v = 0; v < 6; ++v) {
            at = text.find(" 25", at);
            text.insert(at, " 0.5 0.125");
            at = text.find('\n', at);
        }
        const Read r = read(text);
        ASSERT_TRUE(r.good) << r.error.message;
        ASSERT_EQ(1u, r.document().texture_count());
        EXPECT_EQ(0.125f, r.document().texture_coords[1]);
        const std::string whole = written(r, false), lists = written(r, false, PlyUvs::face);
        EXPECT_NE(whole.npos, whole.find("element vertex 6\n"));
        EXPECT_NE(whole.npos, whole.find(before + "property uchar red\n"));
        EXPECT_NE(whole.npos, whole.find("\n0 1 0.10 0.375 0.25 252\n"));
        EXPECT_EQ(whole.npos, whole.find("texcoord"));
        EXPECT_EQ(lists.npos, lists.find(before)) << "old coordinates must not stay";
        EXPECT_NE(lists.npos, lists.find("\n0 1 0.10 252\n"));
        EXPECT_NE(lists.npos, lists.find("texcoord"));
    }
}

/// The two quads with more numbers of the vertices, which are .5, .125, .5 and so on.
std::string with_properties(const std::vector<std::string>& properties) {
    std::string text = k_quads, lines, values;
    for (size_t i = 0; i < properties.size(); ++i) {
        lines += "property " + properties[i] + "\n";
        const bool is_list = properties[i].compare(0, 4, "list") == 0;
        values += std::string(is_list ? " 1" : "") + (i % 2 ? " 0.125" : " 0.5");
    }
    text.insert(text.find("property uchar red"), lines);
    size_t at = text.find("end_header\n") + 11;
    for (int v = 0; v < 6; ++v) {
        at = text.find(" 25", at);
        text.insert(at, values);
        at = text.find('\n', at);
    }
    return text;
}

TEST(Ply, CoordinatesOfVerticesAreFoundUnderEachPairOfTheirNames) {
    for (const auto& [u, v] : {std::pair{"float s", "float t"},
                               {"double u", "float v"},
                               {"float texture_u", "float texture_v"},
                               {"float x0", "float u"}}) {
        const Read r = read(with_properties({u, v}));
        ASSERT_TRUE(r.good) << r.error.message;
        const bool is_pair = std::string(u) != "float x0";
        ASSERT_EQ(is_pair ? 1u : 0u, r.document().texture_count()) << u;
        if (is_pair) {
            EXPECT_EQ(0.5f, r.document().texture_coords[0]) << u;
            EXPECT_EQ(0.125f, r.document().texture_coords[1]) << u;
        }
    }
}

TEST(Ply, HalvesOfDifferentPairsAndListsAreNoCoordinates) {
    for (const auto& [u, v] : {std::pair{"float s", "float v"},
                               {"float u", "float t"},
                               {"float u", "float texture_v"},
                               {"float s", "float S"},
                               {"float u", "list uchar float v"},
                               {"list uchar float texture_u", "float texture_v"}}) {
        const Read r = read(with_properties({u, v}));
        ASSERT_TRUE(r.good) << r.error.message;
        EXPECT_EQ(0u, r.document().texture_count()) << u << ", " << v;
    }
}

TEST(Ply, OfTwoPairsTheFirstIsReplacedAndTheOtherStays) {
    const Read r = read(with_properties({"float u", "float v", "float s", "float t"}));
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_NE(std::string::npos, written(r, false).find("\n0 1 0.10 0.5 0.125 0.375 0.25 252\n"));
}

TEST(Ply, NewCoordinatesTakeThePairThatIsWhollyFree) {
    const auto names = [](const std::vector<std::string>& taken) {
        return written(read(with_properties(taken)), true, PlyUvs::vertex);
    };
    EXPECT_NE(std::string::npos, names({"float u", "float w"}).find("float s\nproperty float t\n"));
    EXPECT_NE(std::string::npos, names({"float w", "float s"}).find("float u\nproperty float v\n"));
    EXPECT_NE(std::string::npos,
              names({"float t", "float u"}).find("float texture_u\nproperty float texture_v\n"));
    EXPECT_NE(std::string::npos,
              names({"float v", "float s"}).find("float texture_u\nproperty float texture_v\n"));
    const Read r = read(with_properties({"float s", "float u", "float texture_v"}));
    std::string bytes, error;
    formats::WriteOptions options;
    options.ply_uvs = PlyUvs::vertex;
    EXPECT_FALSE(formats::format_mesh(r.file, coordinates(r.document(), true), "o.ply", options,
                                      bytes, error));
    EXPECT_EQ("the names of texture coordinates are taken by properties that are none", error);
}

TEST(Ply, NamesOfCoordinatesThatAreTakenAreNotUsedTwice) {
    std::string text = k_quads;
    text.replace(text.find("uchar red"), 9, "uchar t");
    EXPECT_NE(std::string::npos,
              written(read(text), true, PlyUvs::vertex).find("float u\nproperty float v\n"));
    text = k_quads;
    text.replace(text.find("float quality"), 13, "float texcoord");
    const Read r = read(text);
    std::string bytes, error;
    EXPECT_FALSE(
        formats::format_mesh(r.file, coordinates(r.document(), true), "o.ply", {}, bytes, error));
    EXPECT_EQ("the names of texture coordinates are taken by properties that are none", error);
}

TEST(Ply, ListOfTheFaceGoesWhenVerticesGetTheCoordinates) {
    const std::string out = written(read(written(read(k_quads), true)), false, PlyUvs::vertex);
    EXPECT_EQ(out.npos, out.find("texcoord"));
    EXPECT_NE(out.npos, out.find("\n7 4 0 1 4 3 0.5\n"));
}

TEST(Ply, PolygonsOfManyCornersWidenTheListOfCoordinates) {
    for (const int n : {3, 127, 128, 300}) {
        std::string text = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(n) +
                           "\nproperty float x\nproperty float y\nproperty float z\n"
                           "element face 1\nproperty list uint uint vertex_index\nend_header\n";
        for (int i = 0; i < n; ++i)
            text += std::to_string(i) + " " + std::to_string(i * i) + " 0\n";
        text += std::to_string(n);
        for (int i = 0; i < n; ++i)
            text += " " + std::to_string(i);
        const std::string out = written(read(text), true);
        EXPECT_NE(out.npos, out.find(n <= 127 ? "list uchar float texcoord" : "list uint float"));
        const Read again = read(out);
        ASSERT_TRUE(again.good) << again.error.message;
        EXPECT_EQ(uint32_t(n), again.document().corner_begin[1]);
        EXPECT_TRUE(again.document().has_uvs());
    }
}

TEST(Ply, IndicesThatSplittingOverflowsGetAWiderType) {
    std::string text =
        "ply\nformat binary_little_endian 1.0\nelement vertex 128\nproperty float x\n"
        "property float y\nproperty float z\nelement face 126\n"
        "property list uchar char vertex_indices\nend_header\n";
    for (int v = 0; v < 128; ++v)
        for (const float value : {float(v), float(v % 2), 0.0f})
            append(text, value, false);
    for (int f = 0; f < 126; ++f)
        for (const int value : {3, f, f + 1, f + 2})
            text += char(value);
    const Read r = read(text);
    ASSERT_TRUE(r.good) << r.error.message;
    const std::string out = written(r, true, PlyUvs::vertex);
    EXPECT_NE(out.npos, out.find("property list uchar uint vertex_indices"));
    const Read again = read(out);
    ASSERT_TRUE(again.good) << again.error.message;
    EXPECT_EQ(r.document().corner_vertex, again.document().corner_vertex);
    EXPECT_NE(std::string::npos, written(r, false, PlyUvs::vertex).find("list uchar char"));
}

TEST(Ply, LineEndsOfTheHeaderAreKept) {
    for (const std::string end : {"\r\n", "\r"}) {
        std::string text;
        for (const char c : k_quads)
            text += c == '\n' ? end : std::string(1, c);
        const Read r = read(text);
        ASSERT_TRUE(r.good) << r.error.message;
        const std::string out = written(r, true);
        EXPECT_EQ(end == "\r", out.find('\n') == out.npos);
        EXPECT_TRUE(read(out).good);
    }
}

TEST(Ply, FacesWithFewerThanThreeCornersStayWithoutCoordinates) {
    std::string text = k_quads;
    text.replace(text.find("8 4 1 2 5 4 nan"), 15, "8 2 1 2 nan");
    const Read r = read(text);
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(1u, r.document().polygon_count());
    ASSERT_EQ(1u, r.document().warnings.size());
    EXPECT_EQ("m.ply: faces with fewer than three corners stay in the file and get no texture "
              "coordinates (1)",
              r.document().warnings[0]);
    EXPECT_NE(std::string::npos, written(r, true).find("\n8 2 1 2 nan 0\n"));
    EXPECT_NE(std::string::npos, written(r, true, PlyUvs::vertex).find("\n8 2 1 2 nan\n"));
}

TEST(Ply, ListsOfTheWrongLengthCountAsNone) {
    std::string text = written(read(k_quads), true);
    text.replace(text.find("8 0 0.25"), 8, "1 0.5");
    text.erase(text.find("1 0.5") + 5, text.find("\n8 4 1") - text.find("1 0.5") - 5);
    const Read r = read(text);
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(host::k_obj_none, r.document().corner_texture[0]);
    EXPECT_NE(host::k_obj_none, r.document().corner_texture[4]);
    ASSERT_EQ(1u, r.document().warnings.size());
    EXPECT_EQ("m.ply: lists texcoord that do not have two numbers per corner count as none (1)",
              r.document().warnings[0]);
}

TEST(Ply, CornersWithoutCoordinatesStaySoPerFaceAndAreRefusedPerVertex) {
    const Read r = read(k_quads);
    host::ObjUvs uvs = coordinates(r.document(), true);
    for (size_t c = 0; c < 4; ++c)
        uvs.corner_uv[c] = -1;
    std::string bytes, error;
    ASSERT_TRUE(formats::format_mesh(r.file, uvs, "o.ply", {}, bytes, error));
    EXPECT_NE(bytes.npos, bytes.find("\n7 4 0 1 4 3 0.5 0\n"));
    formats::WriteOptions options;
    options.ply_uvs = PlyUvs::vertex;
    EXPECT_FALSE(formats::format_mesh(r.file, uvs, "o.ply", options, bytes, error));
    EXPECT_EQ("some polygons have no texture coordinates, which is not possible with those of "
              "vertices; --ply_uvs face writes those of corners",
              error);
    uvs.corner_uv.pop_back();
    EXPECT_FALSE(formats::format_mesh(r.file, uvs, "o.ply", {}, bytes, error));
    EXPECT_EQ("the UV set does not fit the mesh", error);
}

TEST(Ply, CompressedFilesAreReadAndTheOriginalKept) {
    const std::string bytes = formats::deflate_gzip(k_quads);
    const Read r = read(bytes, "m.ply.gz");
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(bytes, r.file.original());
    EXPECT_EQ(k_quads, read(k_quads).file.original());
    EXPECT_EQ(formats::Format::ply, read(k_quads, "-").file.format);
}

TEST(Ply, FaultsOfTheHeaderAreNamedWithTheirLine) {
    const auto with = [](const std::string& old, const std::string& text) {
        std::string changed = k_quads;
        changed.replace(changed.find(old), old.size(), text);
        return refusal(changed);
    };
    EXPECT_EQ("m.ply: this is not a PLY file: its first line is not 'ply'", refusal("plyx\n"));
    EXPECT_EQ("m.ply: this is not a PLY file: its first line is not 'ply'", refusal(""));
    EXPECT_EQ("m.ply: this is not a PLY file: its first line is not 'ply'", refusal("ply"));
    EXPECT_EQ("m.ply: line 2: the header has no end_header", refusal("ply\n"));
    EXPECT_EQ("m.ply: line 2: the header has no format", refusal("ply\nend_header\n"));
    EXPECT_EQ("m.ply: line 2: the format is not ascii, binary_little_endian or "
              "binary_big_endian 1.0",
              with("ascii 1.0", "ascii 2.0"));
    EXPECT_EQ("m.ply: line 3: 'komment' is no statement of a PLY header",
              with("comment", "komment"));
    EXPECT_EQ("m.ply: line 4: an element needs a name and how many there are",
              with("vertex 6", "vertex -6"));
    EXPECT_EQ("m.ply: line 9: there is a second element 'vertex'", with("face 2", "vertex 2"));
    EXPECT_EQ("m.ply: line 4: a property stands before every element",
              with("element vertex 6", "property float x"));
    EXPECT_EQ("m.ply: line 5: a property is 'property TYPE NAME' or 'property list TYPE TYPE NAME'",
              with("float x", "float"));
    EXPECT_EQ("m.ply: line 5: 'flat' is no type of a PLY file", with("float x", "flat x"));
    EXPECT_EQ("m.ply: line 6: there is a second property 'x'", with("float y", "float x"));
    std::string many;
    for (int i = 0; i <= 1000; ++i)
        many += "element e" + std::to_string(i) + " 0\n";
    EXPECT_EQ("m.ply: line 1004: the header has more than 1000 elements",
              with("element vertex 6\n", many));
    many = "element vertex 6\n";
    for (int i = 0; i <= 10000; ++i)
        many += "property float p" + std::to_string(i) + "\n";
    EXPECT_EQ("m.ply: line 10005: an element has more than 10000 properties",
              with("element vertex 6\n", many));
    EXPECT_EQ("m.ply: line 11: the length of a list is a whole number",
              with("list uchar", "list float"));
}

TEST(Ply, FilesWithoutAMeshAreRefused) {
    const auto with = [](const std::string& old, const std::string& text) {
        std::string changed = k_quads;
        changed.replace(changed.find(old), old.size(), text);
        return refusal(changed);
    };
    EXPECT_EQ("m.ply: the vertices have no z", with("double z", "double w"));
    EXPECT_EQ("m.ply: no mesh in the file: it has no vertices", with("vertex 6", "point 6"));
    EXPECT_EQ("m.ply: no faces in the file, only 6 vertices", with("face 2", "polygon 2"));
    EXPECT_EQ("m.ply: its triangles are strips (element tristrips), which are not read; save it "
              "with faces",
              with("face 2", "tristrips 2"));
    EXPECT_EQ("m.ply: the faces have no list of whole numbers named vertex_indices",
              with("int vertex_indices", "float vertex_indices"));
    EXPECT_EQ("m.ply: no faces in the file, only 6 vertices",
              refusal(k_header.substr(0, k_header.find("face 2")) + "face 0\n" +
                      k_header.substr(k_header.find("property int patch")) + k_vertices + "3 5\n"));
}

TEST(Ply, FaultsOfTheBodyAreNamedWithTheirPlace) {
    const auto with = [](const std::string& old, const std::string& text) {
        std::string changed = k_quads;
        changed.replace(changed.find(old), old.size(), text);
        return refusal(changed);
    };
    EXPECT_EQ("m.ply: line 17: vertex 0 has a position that is not finite",
              with("0 0 0 255", "0 inf 0 255"));
    EXPECT_EQ("m.ply: line 18: vertex 1 of 6, y: 'O' is not a number",
              with("1 0 0 254", "1 O 0 254"));
    EXPECT_EQ("m.ply: line 24: face 1 names a vertex that the file does not have (there are 6, "
              "from 0)",
              with("8 4 1 2 5 4", "8 4 1 2 6 4"));
    EXPECT_EQ("m.ply: line 24: face 1 names a vertex that the file does not have (there are 6, "
              "from 0)",
              with("8 4 1 2 5 4", "8 4 1 2 -1 4"));
    EXPECT_EQ("m.ply: line 23: face 0 of 2, vertex_indices: a list of 4000 items, with "
              "33 bytes left in the file",
              with("7 4 0", "7 4000 0"));
    EXPECT_EQ("m.ply: line 26: edge 0 of 1, vertex2: the file ends here", with("3 5\n", "3\n"));
    EXPECT_EQ("m.ply: line 25: 4 bytes follow the last element; the counts in the header are wrong",
              with("edge 1", "edge 0"));
}

TEST(Ply, CountsOfBinaryFilesAreBelievedOnlyAsFarAsTheFileGoes) {
    const std::string whole = binary(false);
    std::string text = whole;
    text.replace(text.find("vertex 6"), 8, "vertex 600000000000000");
    EXPECT_NE(std::string::npos,
              refusal(text).find("the header says 600000000000000 of 'vertex', 17 bytes each"));
    EXPECT_NE(std::string::npos, refusal(whole + "x").find("1 bytes follow the last element"));
    for (size_t cut = whole.find("end_header"); cut < whole.size(); ++cut)
        EXPECT_NE(std::string::npos, refusal(whole.substr(0, cut)).find(": ")) << cut;
    std::string list = whole;
    list[list.find("end_header\n") + 11 + 6 * 17 + 4] = char(200);
    EXPECT_NE(std::string::npos, refusal(list).find("face 0 of 2, vertex_indices: a list of"));
}

TEST(Ply, ElementsWithoutPropertiesHaveNoRows) {
    std::string text = k_quads;
    text.insert(text.find("element face"), "element nothing 99999999999\n");
    EXPECT_TRUE(read(text).good);
}

TEST(Ply, MoreVerticesOrCornersThanAMeshMayHaveAreRefused) {
    const auto refused = [](uint64_t most) {
        formats::ReadOptions options;
        options.max_corners = most;
        formats::MeshFile file;
        host::IoError error;
        const bool good = formats::parse_mesh("m.ply", k_quads, options, file, error);
        EXPECT_EQ(good ? host::IoError::Kind() : host::IoError::too_large, error.kind);
        return error.message;
    };
    EXPECT_EQ("", refused(8));
    EXPECT_EQ("m.ply: more than 7 face corners", refused(7));
    EXPECT_EQ("m.ply: more than 5 vertices", refused(5));
}

TEST(Ply, MoreVerticesThanAMeshMayHaveAfterSplittingAreRefused) {
    const Read r = read(k_quads);
    formats::WriteOptions options;
    options.ply_uvs = PlyUvs::vertex;
    options.max_vertices = 8; // one for every corner
    std::string bytes, error;
    const host::ObjUvs uvs = coordinates(r.document(), true);
    EXPECT_TRUE(formats::format_mesh(r.file, uvs, "o.ply", options, bytes, error)) << error;
    options.max_vertices = 7;
    EXPECT_FALSE(formats::format_mesh(r.file, uvs, "o.ply", options, bytes, error));
    EXPECT_EQ("splitting makes more than 7 vertices", error);
}

} // namespace
