#include "formats/gltf_accessor.h"
#include "formats/gltf_mesh.h"
#include "formats/mesh_file.h"
#include "tests/app/scratch.h"

#include <cstring>
#include <set>

namespace {

using formats::Json;

template <class T>
void append(std::string& bytes, std::initializer_list<T> values) {
    for (const T value : values)
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Builds GLB files.
class Builder {
public:
    Builder() { json["asset"] = {{"version", "2.0"}}; }
    size_t view(const std::string& bytes, size_t stride = 0) {
        buffer.resize((buffer.size() + 3) / 4 * 4);
        Json view = {{"buffer", 0}, {"byteOffset", buffer.size()}, {"byteLength", bytes.size()}};
        if (stride)
            view["byteStride"] = stride;
        json["bufferViews"].push_back(view);
        buffer += bytes;
        return json["bufferViews"].size() - 1;
    }
    size_t accessor(Json accessor) {
        json["accessors"].push_back(std::move(accessor));
        return json["accessors"].size() - 1;
    }
    template <class T>
    size_t data(int type, const char* shape, size_t count, std::initializer_list<T> values) {
        std::string bytes;
        append(bytes, values);
        return accessor({{"bufferView", view(bytes)},
                         {"componentType", type},
                         {"count", count},
                         {"type", shape}});
    }
    std::string glb() {
        json["buffers"] = Json::array({{{"byteLength", buffer.size()}}});
        formats::GltfFile file;
        file.json = json;
        file.buffers = {buffer};
        file.is_binary = true;
        std::string bytes, error;
        EXPECT_TRUE(formats::write_glb(file, formats::k_max_glb, bytes, error)) << error;
        return bytes;
    }
    Json json;
    std::string buffer;
};

/// A square of two triangles with colours, weights and a morph target.
Builder square(bool indexed = true) {
    Builder b;
    const size_t position = b.data<float>(5126, "VEC3", 4, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    b.json["accessors"][position]["min"] = {0, 0, 0};
    b.json["accessors"][position]["max"] = {1, 1, 0};
    const size_t colour = b.data<uint8_t>(5121, "VEC3", 4, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    b.json["accessors"][colour]["normalized"] = true;
    b.json["accessors"][colour]["name"] = "colours";
    b.json["bufferViews"][1]["byteStride"] = 4;
    b.json["bufferViews"][1]["byteLength"] = 15;
    b.buffer.resize(48);
    append<uint8_t>(b.buffer, {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0});
    const size_t moved = b.data<float>(5126, "VEC3", 4, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2});
    Json primitive = {{"attributes", {{"POSITION", position}, {"COLOR_0", colour}}},
                      {"targets", Json::array({{{"POSITION", moved}}})},
                      {"extras", {{"keep", "me"}}}};
    if (indexed)
        primitive["indices"] = b.data<uint8_t>(5121, "SCALAR", 6, {0, 1, 2, 0, 2, 3});
    b.json["meshes"] = Json::array(
        {{{"name", "square"}, {"primitives", Json::array({primitive})}, {"weights", {0.5}}}});
    b.json["nodes"] = Json::array({{{"mesh", 0}}});
    return b;
}

struct Read {
    formats::MeshFile file;
    host::IoError error;
    bool good = false;
};

Read read(const std::string& bytes, const std::string& name = "m.glb", int texcoord = 0) {
    Read r;
    formats::ReadOptions options;
    options.texcoord = texcoord;
    r.good = formats::parse_mesh(name, bytes, options, r.file, r.error);
    return r;
}

std::string refusal(Builder b) {
    const Read r = read(b.glb());
    EXPECT_FALSE(r.good);
    return r.error.message;
}

/// Coordinates by vertex (`split` false) or different for every corner.
host::ObjUvs coordinates(const host::ObjDocument& document, bool split) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        const size_t key = split ? c : document.corner_vertex[c];
        uvs.u.push_back(float(key) / 8192.0f);
        uvs.v.push_back(0.25f);
        uvs.corner_uv.push_back(int32_t(c));
    }
    return uvs;
}

/// The file after new coordinates, parsed again.
formats::GltfFile written(const Read& r, bool split, const std::string& name = "out.glb") {
    std::string bytes, error;
    EXPECT_TRUE(
        formats::format_mesh(r.file, coordinates(r.file.document, split), name, {}, bytes, error))
        << error;
    formats::GltfFile file;
    EXPECT_TRUE(formats::read_gltf(name, bytes, 1u << 26, file, error)) << error;
    return file;
}

formats::GltfElements elements(const formats::GltfFile& file, const Json& index) {
    formats::GltfElements read;
    std::string error;
    EXPECT_TRUE(formats::read_accessor(file, index, read, error)) << error;
    return read;
}

TEST(Gltf, TrianglesBecomePolygonsAndEqualPositionsOneVertex) {
    Builder b = square(false);
    b.json["accessors"][0]["count"] = 3;
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(1u, r.file.document.polygon_count());
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2}), r.file.document.corner_vertex);
    const Read indexed = read(square().glb());
    EXPECT_EQ(2u, indexed.file.document.polygon_count());
    EXPECT_EQ(4u, indexed.file.document.vertex_count());
}

TEST(Gltf, WithoutSplitsOnlyTheCoordinatesAreAdded) {
    const Builder built = square();
    Builder copy = built;
    const Read r = read(copy.glb());
    ASSERT_TRUE(r.good) << r.error.message;
    const formats::GltfFile out = written(r, false);
    Json expected = r.file.gltf.file.json;
    Json& attributes = expected["meshes"][0]["primitives"][0]["attributes"];
    attributes["TEXCOORD_0"] = expected["accessors"].size();
    Json json = out.json;
    EXPECT_EQ(expected["accessors"].size() + 1, json["accessors"].size());
    EXPECT_EQ(expected["bufferViews"].size() + 1, json["bufferViews"].size());
    json["accessors"].erase(json["accessors"].size() - 1);
    json["bufferViews"].erase(json["bufferViews"].size() - 1);
    json["buffers"] = expected["buffers"];
    EXPECT_EQ(expected.dump(), json.dump()) << "also in the order of keys";
    EXPECT_EQ(r.file.gltf.file.buffers[0],
              out.buffers[0].substr(0, r.file.gltf.file.buffers[0].size()));
}

TEST(Gltf, SplitVerticesCarryAllAttributesAndTargets) {
    Builder b = square();
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good);
    const formats::GltfFile out = written(r, true);
    const Json& primitive = out.json["meshes"][0]["primitives"][0];
    const formats::GltfElements position = elements(out, primitive["attributes"]["POSITION"]);
    const formats::GltfElements colour = elements(out, primitive["attributes"]["COLOR_0"]);
    const formats::GltfElements target = elements(out, primitive["targets"][0]["POSITION"]);
    const formats::GltfElements uv = elements(out, primitive["attributes"]["TEXCOORD_0"]);
    const formats::GltfElements index = elements(out, primitive["indices"]);
    const formats::GltfElements old = elements(r.file.gltf.file, 0u),
                                old_colour = elements(r.file.gltf.file, 1u),
                                old_target = elements(r.file.gltf.file, 2u);
    EXPECT_EQ(6u, position.count);
    EXPECT_EQ(6u, colour.count);
    EXPECT_EQ(6u, uv.count);
    EXPECT_EQ(3u, colour.size);
    const uint32_t corners[] = {0, 1, 2, 0, 2, 3};
    for (size_t c = 0; c < 6; ++c) {
        const uint32_t v = index.index(c);
        EXPECT_EQ(old.bytes.substr(12 * corners[c], 12), position.bytes.substr(12 * v, 12));
        EXPECT_EQ(old_colour.bytes.substr(3 * corners[c], 3), colour.bytes.substr(3 * v, 3));
        EXPECT_EQ(old_target.bytes.substr(12 * corners[c], 12), target.bytes.substr(12 * v, 12));
        EXPECT_EQ(float(c) / 8192.0f, float(uv.number(v, 0)));
        EXPECT_EQ(0.75f, float(uv.number(v, 1))) << "glTF counts v downwards";
    }
    EXPECT_EQ("me", primitive["extras"]["keep"]);
    const Json& accessor = out.json["accessors"][primitive["attributes"]["COLOR_0"].get<size_t>()];
    EXPECT_EQ("colours", accessor["name"]);
    EXPECT_TRUE(accessor["normalized"]);
    EXPECT_EQ(4, out.json["bufferViews"][accessor["bufferView"].get<size_t>()]["byteStride"]);
    EXPECT_EQ(0.5, out.json["meshes"][0]["weights"][0]);
}

TEST(Gltf, ResultReadsBackAsTheSameMesh) {
    for (const bool split : {false, true}) {
        Builder b = square();
        const Read first = read(b.glb());
        std::string bytes, error;
        ASSERT_TRUE(formats::format_mesh(first.file, coordinates(first.file.document, split),
                                         "out.glb", {}, bytes, error));
        const Read second = read(bytes);
        ASSERT_TRUE(second.good) << second.error.message;
        EXPECT_EQ(first.file.document.positions, second.file.document.positions);
        EXPECT_EQ(first.file.document.corner_vertex, second.file.document.corner_vertex);
        EXPECT_TRUE(second.file.document.has_uvs());
        const std::set<uint32_t> used(second.file.document.corner_texture.begin(),
                                      second.file.document.corner_texture.end());
        EXPECT_EQ(split ? 6u : 4u, used.size());
        EXPECT_EQ(0.25f, second.file.document.texture_coords[1]);
    }
}

TEST(Gltf, VerticesThatNoTriangleUsesKeepTheirNumbers) {
    Builder b = square();
    b.json["meshes"][0]["primitives"][0]["indices"] = b.data<uint8_t>(5121, "SCALAR", 3, {1, 2, 3});
    const Read r = read(b.glb());
    const formats::GltfFile out = written(r, true);
    const Json& primitive = out.json["meshes"][0]["primitives"][0];
    EXPECT_EQ(4u, elements(out, primitive["attributes"]["TEXCOORD_0"]).count);
    EXPECT_EQ(r.file.gltf.file.json["meshes"][0]["primitives"][0]["indices"], primitive["indices"]);
}

TEST(Gltf, StripsAndFansKeepTheirOrientation) {
    for (const int mode : {5, 6}) {
        Builder b = square();
        Json& primitive = b.json["meshes"][0]["primitives"][0];
        primitive["mode"] = mode;
        primitive["indices"] =
            b.data<uint16_t>(5123, "SCALAR", 4,
                             mode == 5 ? std::initializer_list<uint16_t>{0, 1, 3, 2}
                                       : std::initializer_list<uint16_t>{0, 1, 2, 3});
        const Read r = read(b.glb());
        ASSERT_TRUE(r.good) << r.error.message;
        const host::ObjDocument& d = r.file.document;
        ASSERT_EQ(2u, d.polygon_count());
        for (size_t t = 0; t < 2; ++t) { // both face +z
            const auto x = [&](size_t k) { return d.positions[3 * d.corner_vertex[3 * t + k]]; };
            const auto y = [&](size_t k) {
                return d.positions[3 * d.corner_vertex[3 * t + k] + 1];
            };
            EXPECT_GT((x(1) - x(0)) * (y(2) - y(0)) - (y(1) - y(0)) * (x(2) - x(0)), 0.0f) << mode;
        }
        EXPECT_EQ(mode, written(r, false).json["meshes"][0]["primitives"][0]["mode"]);
        EXPECT_EQ(4, written(r, true).json["meshes"][0]["primitives"][0]["mode"]);
    }
}

TEST(Gltf, PrimitivesWithTheSameAttributesShareTheNewOnes) {
    Builder b = square();
    Json second = b.json["meshes"][0]["primitives"][0];
    second["indices"] = b.data<uint8_t>(5121, "SCALAR", 3, {0, 1, 3});
    b.json["meshes"][0]["primitives"].push_back(second);
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good);
    const formats::GltfFile out = written(r, true);
    const Json& primitives = out.json["meshes"][0]["primitives"];
    EXPECT_EQ(primitives[0]["attributes"], primitives[1]["attributes"]);
    EXPECT_NE(primitives[0]["indices"], primitives[1]["indices"]);
    EXPECT_EQ(9u, elements(out, primitives[0]["attributes"]["POSITION"]).count);
}

TEST(Gltf, IndicesGrowWhenSplitsExceed16Bits) {
    Builder b;
    std::string places, indices;
    const uint16_t side = 200; // 40,000 vertices, 79,202 triangles
    for (uint16_t i = 0; i < side; ++i)
        for (uint16_t j = 0; j < side; ++j)
            append<float>(places, {float(i), float(j), 0.0f});
    size_t corners = 0;
    for (uint16_t i = 0; i + 1 < side; ++i)
        for (uint16_t j = 0; j + 1 < side; ++j, corners += 6) {
            const auto v = uint16_t(i * side + j);
            append<uint16_t>(indices, {v, uint16_t(v + side), uint16_t(v + side + 1), v,
                                       uint16_t(v + side + 1), uint16_t(v + 1)});
        }
    const size_t position = b.accessor({{"bufferView", b.view(places)},
                                        {"componentType", 5126},
                                        {"count", side * side},
                                        {"type", "VEC3"}});
    const size_t index = b.accessor({{"bufferView", b.view(indices)},
                                     {"componentType", 5123},
                                     {"count", corners},
                                     {"type", "SCALAR"}});
    b.json["meshes"] = Json::array(
        {{{"primitives",
           Json::array({{{"attributes", {{"POSITION", position}}}, {"indices", index}}})}}});
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good) << r.error.message;
    const formats::GltfFile out = written(r, true);
    const formats::GltfElements grown =
        elements(out, out.json["meshes"][0]["primitives"][0]["indices"]);
    EXPECT_EQ(5125, grown.component_type);
    EXPECT_EQ(corners, grown.count);
}

TEST(Gltf, SparseAccessorsAreReadAndWrittenWhole) {
    Builder b = square();
    std::string places, values;
    append<uint16_t>(places, {2});
    append<float>(values, {5, 5, 5});
    b.json["accessors"][0]["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", b.view(places)}, {"componentType", 5123}}},
        {"values", {{"bufferView", b.view(values)}}}};
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(5.0f, r.file.document.positions[3 * 2]);
    const formats::GltfFile out = written(r, true);
    const Json& position = out.json["meshes"][0]["primitives"][0]["attributes"]["POSITION"];
    EXPECT_FALSE(out.json["accessors"][position.get<size_t>()].contains("sparse"));
    const formats::GltfElements whole = elements(out, position);
    float highest = 0;
    for (size_t v = 0; v < whole.count; ++v)
        highest = std::max(highest, float(whole.number(v, 0)));
    EXPECT_EQ(5.0f, highest);
}

TEST(Gltf, QuantizedPositionsAreRead) {
    Builder b;
    const size_t position =
        b.data<int16_t>(5122, "VEC3", 3, {0, 0, 0, 0, 32767, 0, 0, 0, 0, -32768, 0, 0});
    b.json["bufferViews"][0]["byteStride"] = 8;
    b.json["accessors"][position]["normalized"] = true;
    b.json["extensionsUsed"] = b.json["extensionsRequired"] = {"KHR_mesh_quantization"};
    b.json["meshes"] =
        Json::array({{{"primitives", Json::array({{{"attributes", {{"POSITION", position}}}}})}}});
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ((std::vector<float>{0, 0, 0, 1, 0, 0, 0, -1, 0}), r.file.document.positions);
    const formats::GltfFile out = written(r, true);
    EXPECT_EQ(Json(position), out.json["meshes"][0]["primitives"][0]["attributes"]["POSITION"]);
}

TEST(Gltf, PointsAndLinesAreLeftAsTheyAre) {
    Builder b = square();
    Json points = b.json["meshes"][0]["primitives"][0];
    points["mode"] = 0;
    b.json["meshes"][0]["primitives"].push_back(points);
    const Read r = read(b.glb());
    ASSERT_TRUE(r.good);
    EXPECT_EQ(points, written(r, true).json["meshes"][0]["primitives"][1]);
}

TEST(Gltf, AnotherSetCanReceiveTheResult) {
    Builder b = square();
    const size_t uv = b.data<float>(5126, "VEC2", 4, {0, 0, 1, 0, 1, 1, 0, 1});
    b.json["meshes"][0]["primitives"][0]["attributes"]["TEXCOORD_0"] = uv;
    const Read r = read(b.glb(), "m.glb", 1);
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_FALSE(r.file.document.has_uvs());
    const formats::GltfFile out = written(r, true);
    const Json& attributes = out.json["meshes"][0]["primitives"][0]["attributes"];
    EXPECT_TRUE(attributes.contains("TEXCOORD_1"));
    EXPECT_EQ(6u, elements(out, attributes["TEXCOORD_0"]).count);
    EXPECT_EQ("m.glb: mesh 0 primitive 0: it has no TEXCOORD_1, so it cannot get TEXCOORD_2",
              read(b.glb(), "m.glb", 2).error.message);
}

/// A .gltf file in a folder.
class GltfText : public testing::Test {
protected:
    GltfText() : built(square()) { built.glb(); }
    Read read_with(const std::string& uri) {
        built.json["buffers"][0]["uri"] = uri;
        return read(built.json.dump(), dir.path("m.gltf"));
    }
    test::Scratch dir;
    Builder built;
};

TEST_F(GltfText, BuffersComeFromFilesBesideIt) {
    dir.put("a b.bin", built.buffer);
    const Read r = read_with("a%20b.bin");
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(std::vector<std::string>{dir.path("a b.bin")}, r.file.other_files);
    const formats::GltfFile out = written(r, true, dir.path("out.gltf"));
    EXPECT_EQ("a%20b.bin", out.json["buffers"][0]["uri"]);
    EXPECT_EQ(built.buffer, out.buffers[0]);
    EXPECT_EQ(2u, out.buffers.size());
    std::string error;
    EXPECT_TRUE(formats::can_write(r.file, dir.path("out.gltf"), {}, error));
    EXPECT_FALSE(formats::can_write(r.file, "/elsewhere/out.gltf", {}, error));
    EXPECT_EQ("/elsewhere/out.gltf: " + dir.path("m.gltf") +
                  " names files beside it, which would be missing there; write the result into the "
                  "same folder",
              error);
}

TEST_F(GltfText, BuffersInTheTextAreRead) {
    const Read r =
        read_with("data:application/octet-stream;base64," + formats::to_base64(built.buffer));
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(built.buffer, r.file.gltf.file.buffers[0]);
    std::string error;
    EXPECT_TRUE(formats::can_write(r.file, "/elsewhere/out.gltf", {}, error));
}

TEST_F(GltfText, BecomesABinaryFileWithOneBuffer) {
    dir.put("a.bin", built.buffer);
    const Read r = read_with("a.bin");
    const formats::GltfFile out = written(r, true, dir.path("out.glb"));
    EXPECT_EQ(1u, out.buffers.size());
    EXPECT_FALSE(out.json["buffers"][0].contains("uri"));
    const Json& primitive = out.json["meshes"][0]["primitives"][0];
    EXPECT_EQ(6u, elements(out, primitive["attributes"]["COLOR_0"]).count);
}

TEST_F(GltfText, RefusesUrisThatLeadElsewhere) {
    const std::string start = dir.path("m.gltf") + ": buffer 0: ";
    std::filesystem::create_directories(dir.path("sub"));
    std::filesystem::create_symlink("/etc", dir.path("sub/link"));
    for (const char* uri : {"../a.bin", "/etc/passwd", "sub/../../a.bin", "%2e%2e/a.bin",
                            "sub/link/passwd", "a\\b.bin"})
        EXPECT_EQ(start + "its URI leads out of the file's folder", read_with(uri).error.message)
            << uri;
    for (const char* uri : {"http://host/a.bin", "file:///a.bin", "C:/a.bin"})
        EXPECT_EQ(start + "its URI has a scheme; only data: and relative file names are read",
                  read_with(uri).error.message)
            << uri;
    for (const char* uri : {"a%2", "a%zz", "a%00b", ""})
        EXPECT_EQ(start + "its URI cannot be decoded", read_with(uri).error.message) << uri;
    for (const char* uri : {"data:text,xyz", "data:;base64,####"})
        EXPECT_EQ(start + "its data: URI is not base64", read_with(uri).error.message) << uri;
    EXPECT_EQ(start + dir.path("gone.bin") + ": cannot be read: No such file or directory",
              read_with("gone.bin").error.message);
    EXPECT_EQ(start + "its URI names no regular file", read_with("sub").error.message);
    dir.put("short.bin", "abc");
    EXPECT_EQ(start + "it should have " + std::to_string(built.buffer.size()) + " bytes and has 3",
              read_with("short.bin").error.message);
    built.json["buffers"][0]["uri"] = 7;
    EXPECT_EQ(start + "its URI is not a text",
              read(built.json.dump(), dir.path("m.gltf")).error.message);
    built.json["buffers"][0].erase("uri");
    EXPECT_EQ(start + "it has neither a URI nor a binary chunk",
              read(built.json.dump(), dir.path("m.gltf")).error.message);
}

TEST(GltfRefuses, DamagedContainers) {
    Builder b = square();
    const std::string good = b.glb();
    EXPECT_EQ("m.glb: the file is cut off in its header", read(good.substr(0, 15)).error.message);
    EXPECT_EQ("m.glb: the header says " + std::to_string(good.size()) +
                  " bytes, and the file has " + std::to_string(good.size() - 1),
              read(good.substr(0, good.size() - 1)).error.message);
    std::string bad = good;
    bad[4] = 1;
    EXPECT_EQ("m.glb: version 1 of glTF; only 2 is read", read(bad).error.message);
    bad = good;
    bad[15] = 0x7f;
    EXPECT_EQ("m.glb: chunk 0 at byte 12 is longer than the file", read(bad).error.message);
    bad = good;
    bad[16] = 'X';
    EXPECT_EQ("m.glb: the first chunk and no other must be JSON", read(bad).error.message);
    bad = good;
    bad[21] = '{';
    EXPECT_EQ(0u, read(bad).error.message.find("m.glb: JSON: not valid at byte "));
}

TEST(GltfRefuses, FilesThatAreNoGltfAtAll) {
    EXPECT_EQ("m.glb: no mesh in the file: it is empty", read("").error.message);
    for (const char* text : {"v 0 0 0\n", "   ", "[1]", "gltF"})
        EXPECT_EQ("m.glb: this is not a glTF file: it begins neither as GLB nor as JSON",
                  read(text).error.message);
    EXPECT_EQ("m.glb: JSON: this is not a glTF file: it has no asset", read(" \n{}").error.message);
}

TEST(GltfRefuses, CompressedMeshesByName) {
    for (const char* extension :
         {"KHR_draco_mesh_compression", "EXT_meshopt_compression", "KHR_meshopt_compression"}) {
        Builder b = square();
        b.json["extensionsUsed"] = {extension};
        EXPECT_EQ(std::string("m.glb: ") + extension +
                      ": compressed meshes are not read; 'gltf-transform copy IN OUT' (npm "
                      "@gltf-transform/cli) decompresses them",
                  refusal(b));
    }
}

/// The refusal after a change to a part of the JSON.
std::string refusal_with(const char* pointer, const Json& value) {
    Builder b = square();
    b.glb();
    b.json[Json::json_pointer(pointer)] = value;
    formats::GltfFile file;
    file.json = b.json;
    file.buffers = {b.buffer};
    b.json.erase("buffers");
    std::string text = file.json.dump(), error;
    // Without write_glb, which relies on a valid file.
    text.resize((text.size() + 3) / 4 * 4, ' ');
    std::string bytes = "glTF", binary = b.buffer;
    binary.resize((binary.size() + 3) / 4 * 4);
    append<uint32_t>(
        bytes, {2, uint32_t(28 + text.size() + binary.size()), uint32_t(text.size()), 0x4E4F534A});
    bytes += text;
    append<uint32_t>(bytes, {uint32_t(binary.size()), 0x004E4942});
    const Read r = read(bytes + binary);
    EXPECT_FALSE(r.good) << pointer << " " << value;
    return r.error.message;
}

TEST(GltfRefuses, ValuesThatDoNotFit) {
    const std::string mesh = "m.glb: mesh 0 primitive 0: ";
    EXPECT_EQ("m.glb: JSON: accessors is not an array", refusal_with("/accessors", 1));
    EXPECT_EQ("m.glb: JSON: this is not a glTF file: it has no asset", refusal_with("/asset", 1));
    EXPECT_EQ("m.glb: buffer 0: it has no byteLength", refusal_with("/buffers/0/byteLength", -1));
    EXPECT_EQ("m.glb: bufferView 0: it is not an object", refusal_with("/bufferViews/0", 1));
    EXPECT_EQ("m.glb: bufferView 0: it has no buffer that exists",
              refusal_with("/bufferViews/0/buffer", 1));
    EXPECT_EQ("m.glb: bufferView 0: it reaches beyond buffer 0",
              refusal_with("/bufferViews/0/byteLength", 18446744073709551615u));
    EXPECT_EQ("m.glb: bufferView 0: it reaches beyond buffer 0",
              refusal_with("/bufferViews/0/byteOffset", 18446744073709551000u));
    EXPECT_EQ("m.glb: bufferView 0: its byteStride is not 4 to 252",
              refusal_with("/bufferViews/0/byteStride", 256));
    EXPECT_EQ(mesh + "accessor 0: it is not an object", refusal_with("/accessors/0", 1));
    EXPECT_EQ(mesh + "accessor 0: its count is not 1 to 4294967294",
              refusal_with("/accessors/0/count", 0));
    EXPECT_EQ(mesh + "accessor 0: its componentType is not known",
              refusal_with("/accessors/0/componentType", 5124));
    EXPECT_EQ(mesh + "accessor 0: its type is not known",
              refusal_with("/accessors/0/type", "VEC9"));
    EXPECT_EQ(mesh + "accessor 0: it reaches beyond bufferView 0",
              refusal_with("/accessors/0/count", 4294967294u));
    EXPECT_EQ(mesh + "accessor 0: it reaches beyond bufferView 0",
              refusal_with("/accessors/0/byteOffset", 18446744073709551615u));
    EXPECT_EQ(mesh + "accessor 0: it has no bufferView that exists",
              refusal_with("/accessors/0/bufferView", 99));
    EXPECT_EQ(mesh + "accessor 0: its sparse part is incomplete",
              refusal_with("/accessors/0/sparse", {{"count", 1}}));
    EXPECT_EQ(mesh + "accessor 0: its sparse indices have an unknown componentType",
              refusal_with("/accessors/0/sparse",
                           {{"count", 1},
                            {"indices", {{"bufferView", 0}, {"componentType", 5126}}},
                            {"values", {{"bufferView", 0}}}}));
    EXPECT_EQ(
        mesh + "accessor 0: its sparse index 16256 is not below its count",
        refusal_with("/accessors/0/sparse",
                     {{"count", 1},
                      {"indices", {{"bufferView", 0}, {"byteOffset", 14}, {"componentType", 5123}}},
                      {"values", {{"bufferView", 0}}}}));
    const std::string primitive = "m.glb: JSON: meshes[0].primitives[0]";
    EXPECT_EQ(primitive + ".attributes[\"POSITION\"] is not the number of one of the 4 accessors",
              refusal_with("/meshes/0/primitives/0/attributes/POSITION", 99));
    EXPECT_EQ(primitive + ".targets[0][\"NORMAL\"] is not the number of one of the 4 accessors",
              refusal_with("/meshes/0/primitives/0/targets/0/NORMAL", "x"));
    EXPECT_EQ(primitive + ".targets[0] is not an object",
              refusal_with("/meshes/0/primitives/0/targets/0", 1));
    EXPECT_EQ(primitive + ".targets is not an array",
              refusal_with("/meshes/0/primitives/0/targets", "x"));
    EXPECT_EQ(mesh + "its positions have 1 components",
              refusal_with("/meshes/0/primitives/0/attributes/POSITION", 3));
    EXPECT_EQ(mesh + "TEXCOORD_0 does not fit its positions",
              refusal_with("/meshes/0/primitives/0/attributes/TEXCOORD_0", 0));
    EXPECT_EQ(primitive + ".attributes is not an object",
              refusal_with("/meshes/0/primitives/0/attributes", 1));
    EXPECT_EQ(primitive + " is not an object", refusal_with("/meshes/0/primitives/0", 1));
    EXPECT_EQ(mesh + "its mode is not known", refusal_with("/meshes/0/primitives/0/mode", 7));
    EXPECT_EQ(mesh + "its indices are not unsigned whole numbers",
              refusal_with("/meshes/0/primitives/0/indices", 0));
    EXPECT_EQ(mesh + "its 5 corners are not whole triangles",
              refusal_with("/accessors/3/count", 5));
    EXPECT_EQ("m.glb: JSON: meshes[0].primitives is not an array",
              refusal_with("/meshes/0/primitives", "x"));
    EXPECT_EQ("m.glb: JSON: meshes[0] is not an object", refusal_with("/meshes/0", 1));
    EXPECT_EQ("m.glb: JSON: extensionsUsed is not an array", refusal_with("/extensionsUsed", 7));
    EXPECT_EQ("m.glb: JSON: nodes is not an array", refusal_with("/nodes", "x"));
    EXPECT_EQ("m.glb: JSON: nodes[0] is not an object", refusal_with("/nodes/0", "x"));
    EXPECT_EQ("m.glb: JSON: nodes[0].mesh is not the number of one of the 1 meshes",
              refusal_with("/nodes/0/mesh", 1));
    EXPECT_EQ("m.glb: JSON: nodes[0].children is not an array",
              refusal_with("/nodes/0/children", 1));
    EXPECT_EQ("m.glb: JSON: nodes[0].children[0] is not the number of one of the 1 nodes",
              refusal_with("/nodes/0/children", {"x"}));
    EXPECT_EQ("m.glb: JSON: nodes[0].matrix is not 16 numbers",
              refusal_with("/nodes/0/matrix", {1, 2}));
    EXPECT_EQ("m.glb: JSON: nodes[0].scale is not 3 numbers",
              refusal_with("/nodes/0/scale", {1, 2, "x"}));
    EXPECT_EQ("m.glb: no mesh in the file: it has no triangles",
              refusal_with("/meshes/0/primitives", Json::array()));
}

TEST(GltfRefuses, IndicesAndPositionsOutOfRange) {
    Builder b = square();
    b.buffer[b.buffer.size() - 1] = 9;
    EXPECT_EQ("m.glb: mesh 0 primitive 0: index 5 is 9, and it has 4 vertices", refusal(b));
    b = square();
    b.buffer[2] = '\xc0';
    b.buffer[3] = '\x7f';
    EXPECT_EQ("m.glb: mesh 0 primitive 0: vertex 0 has a position that is not finite", refusal(b));
    b = square();
    b.json["accessors"][0].erase("bufferView");
    b.json["accessors"][0]["count"] = 4000000000u;
    EXPECT_EQ("m.glb: mesh 0 primitive 0: accessor 0: it has no data for its 4000000000 elements",
              refusal(b));
}

TEST(GltfRefuses, AttributesThatAreTooShortToSplit) {
    Builder b = square();
    b.json["accessors"][1]["count"] = 3;
    EXPECT_EQ("m.glb: mesh 0 primitive 0: accessor 1: it has 3 elements for 4 vertices",
              refusal(b));
}

TEST(GltfRefuses, MorphTargetsThatCannotBeRead) {
    Builder b = square();
    b.json["accessors"][2]["count"] = 5;
    EXPECT_EQ("m.glb: mesh 0 primitive 0: accessor 2: it reaches beyond bufferView 2", refusal(b));
}

TEST(GltfRefuses, BuffersThatAreTooLargeTogether) {
    const test::Scratch dir;
    dir.put("b.bin", std::string(2000, '\0'));
    const Json buffer = {{"byteLength", 2000}, {"uri", "b.bin"}};
    const Json json = {{"asset", {{"version", "2.0"}}}, {"buffers", Json::array({buffer, buffer})}};
    formats::ReadOptions options;
    options.max_input = 3999;
    formats::MeshFile file;
    host::IoError error;
    const std::string name = dir.path("m.gltf");
    EXPECT_FALSE(formats::parse_mesh(name, json.dump(), options, file, error));
    EXPECT_EQ(host::IoError::too_large, error.kind);
    EXPECT_EQ(name + ": buffer 1: more than 3999 bytes in all; --max_input allows more",
              error.message);
    options.max_input = 4000;
    EXPECT_FALSE(formats::parse_mesh(name, json.dump(), options, file, error));
    EXPECT_EQ(name + ": no mesh in the file: it has no triangles", error.message);
}

/// A file with what scenes have: a tree of nodes, materials, pictures, a sparse accessor.
Json scene() {
    Builder b = square();
    b.glb();
    Json json = b.json;
    json["buffers"][0]["uri"] =
        "data:application/octet-stream;base64," + formats::to_base64(b.buffer);
    json["accessors"][2]["sparse"] = {{"count", 1},
                                      {"indices", {{"bufferView", 3}, {"componentType", 5121}}},
                                      {"values", {{"bufferView", 0}, {"byteOffset", 12}}}};
    json["accessors"][0]["byteOffset"] = 0;
    json["meshes"][0]["primitives"][0]["material"] = 0;
    json["meshes"][0]["primitives"][0]["mode"] = 4;
    json["materials"] = Json::array({{{"name", "red"}}});
    json["images"] = Json::array({{{"uri", "data:image/png;base64,AAAA"}, {"name", "picture"}}});
    json["nodes"] = Json::array({{{"name", "top"},
                                  {"children", {1, 2}},
                                  {"matrix", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}},
                                 {{"mesh", 0},
                                  {"translation", {1, 2, 3}},
                                  {"rotation", {0, 0, 0, 1}},
                                  {"scale", {1, 1, 2}}},
                                 {{"name", "empty"}}});
    json["scene"] = 0;
    json["scenes"] = Json::array({{{"nodes", {0}}}});
    json["extensionsUsed"] = {"KHR_mesh_quantization"};
    json["extensionsRequired"] = {"KHR_mesh_quantization"};
    return json;
}

/// The places of all values in it, as JSON pointers.
void list_places(const Json& json, const std::string& at, std::vector<std::string>& places) {
    if (!at.empty())
        places.push_back(at);
    if (json.is_structured())
        for (const auto& [key, value] : json.items())
            list_places(value, at + "/" + key, places);
}

/// Reads a file, and writes it in all formats if it is good; says what is wrong.
std::string trouble_with(const Json& json) {
    const Read r = read(json.dump(), "m.gltf");
    if (!r.good)
        return r.error.kind == host::IoError::malformed &&
                       r.error.message.compare(0, 8, "m.gltf: ") == 0 &&
                       r.error.message.find("a value has") == std::string::npos
                   ? ""
                   : r.error.message;
    for (const char* output : {"o.glb", "o.gltf", "o.obj", "o.ply", "o.fbx"}) {
        std::string bytes, error;
        if (!formats::format_mesh(r.file, coordinates(r.file.document, true), output, {}, bytes,
                                  error))
            return std::string(output) + ": " + error;
    }
    return "";
}

TEST(GltfRefuses, AnyValueOfAnotherTypeOrIsReadAllTheSame) {
    const Json whole = scene();
    ASSERT_TRUE(read(whole.dump(), "m.gltf").good) << read(whole.dump(), "m.gltf").error.message;
    EXPECT_EQ("", trouble_with(whole));
    std::vector<std::string> places;
    list_places(whole, "", places);
    EXPECT_LT(100u, places.size());
    const Json others[] = {nullptr,
                           true,
                           -1,
                           0,
                           1.5,
                           1e9,
                           99,
                           4000000000u,
                           "x",
                           Json::array(),
                           Json::object(),
                           Json::array({"x"}),
                           {{"x", Json::array()}}};
    for (const std::string& place : places)
        for (const Json& other : others) {
            Json changed = whole;
            changed[Json::json_pointer(place)] = other;
            EXPECT_EQ("", trouble_with(changed)) << place << " is " << other;
        }
}

TEST(GltfRefuses, AnyMemberThatIsMissingOrIsReadAllTheSame) {
    const Json whole = scene();
    std::vector<std::string> places;
    list_places(whole, "", places);
    for (const std::string& place : places) {
        const Json::json_pointer pointer(place);
        Json changed = whole;
        Json& parent = changed[pointer.parent_pointer()];
        if (parent.is_object())
            parent.erase(pointer.back());
        else
            parent.erase(std::stoul(pointer.back()));
        EXPECT_EQ("", trouble_with(changed)) << place;
    }
}

TEST(Gltf, CoordinatesThatDoNotFitAreNotWritten) {
    Builder b = square();
    const Read r = read(b.glb());
    std::string bytes, error;
    host::ObjUvs wrong = coordinates(r.file.document, true);
    wrong.corner_uv.pop_back();
    EXPECT_FALSE(formats::format_mesh(r.file, wrong, "o.glb", {}, bytes, error));
    EXPECT_EQ("the UV set does not fit the mesh", error);
}

TEST(Gltf, DescriptionThatWasSpoiledAfterReadingIsNotWritten) {
    Builder b = square();
    for (const char* output : {"o.glb", "o.fbx"}) {
        Read r = read(b.glb());
        r.file.gltf.file.json["meshes"] = 7;
        std::string bytes, error;
        EXPECT_FALSE(formats::format_mesh(r.file, coordinates(r.file.document, true), output, {},
                                          bytes, error));
        EXPECT_EQ("JSON: a value has the wrong type", error) << output;
    }
}

TEST(Gltf, BecomesAnObjFile) {
    Builder b = square();
    const Read r = read(b.glb());
    std::string bytes, error;
    ASSERT_TRUE(formats::format_mesh(r.file, coordinates(r.file.document, false), "o.obj", {},
                                     bytes, error));
    host::ObjDocument document;
    host::IoError failure;
    ASSERT_TRUE(host::parse_obj("o.obj", bytes, document, failure)) << failure.message;
    EXPECT_EQ(r.file.document.positions, document.positions);
    EXPECT_EQ(r.file.document.corner_vertex, document.corner_vertex);
    EXPECT_TRUE(document.has_uvs());
}

TEST(GltfRefuses, MoreCornersThanAMeshMayHave) {
    formats::ReadOptions options;
    formats::MeshFile file;
    host::IoError error;
    options.max_corners = 6;
    EXPECT_TRUE(formats::parse_mesh("m.glb", square().glb(), options, file, error));
    options.max_corners = 5;
    EXPECT_FALSE(formats::parse_mesh("m.glb", square().glb(), options, file, error));
    EXPECT_EQ("m.glb: mesh 0 primitive 0: the file has more than 5 corners", error.message);
}

TEST(GltfRefuses, ResultsThatABinaryFileCannotHold) {
    formats::MeshFile file;
    host::IoError failure;
    ASSERT_TRUE(formats::parse_mesh("m.glb", square().glb(), {}, file, failure));
    const host::ObjUvs uvs = {{0.5f}, {0.5f}, std::vector<int32_t>(6, 0)};
    formats::WriteOptions options;
    std::string bytes, error;
    ASSERT_TRUE(formats::format_mesh(file, uvs, "o.glb", options, bytes, error)) << error;
    const uint64_t size = bytes.size();
    options.max_glb = size;
    EXPECT_TRUE(formats::format_mesh(file, uvs, "o.glb", options, bytes, error)) << error;
    options.max_glb = size - 1;
    EXPECT_FALSE(formats::format_mesh(file, uvs, "o.glb", options, bytes, error));
    EXPECT_EQ("the result would have " + std::to_string(size) + " bytes; a GLB file has at most " +
                  std::to_string(size - 1),
              error);
}

} // namespace
