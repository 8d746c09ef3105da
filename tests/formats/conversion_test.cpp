#include "formats/mesh_file.h"
#include "formats/model_readers.h"
#include "formats/model_writers.h"
#include "tests/app/scratch.h"

#include <cmath>

namespace {

using formats::Json;
using formats::Model;

struct Read {
    formats::MeshFile file;
    host::IoError error;
    bool good = false;
};

Read read(const std::string& name, const std::string& bytes) {
    Read r;
    r.good = formats::parse_mesh(name, bytes, formats::ReadOptions(), r.file, r.error);
    EXPECT_TRUE(r.good) << r.error.message;
    return r;
}

/// A coordinate for every corner, all different.
host::ObjUvs coordinates(const host::ObjDocument& document) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        uvs.u.push_back(float(c) / 64.0f);
        uvs.v.push_back(0.25f);
        uvs.corner_uv.push_back(int32_t(c));
    }
    return uvs;
}

std::string converted(const Read& r, const std::string& name) {
    std::string bytes, error;
    EXPECT_TRUE(formats::can_write(r.file, name, {}, error)) << error;
    EXPECT_TRUE(formats::format_mesh(r.file, coordinates(r.file.document), name, {}, bytes, error))
        << error;
    return bytes;
}

Model model_of(const Read& r) {
    Model model;
    std::string error;
    EXPECT_TRUE(formats::model_of(r.file, coordinates(r.file.document), model, error)) << error;
    return model;
}

/// A pentagon and a triangle with two objects, two materials and normals.
const std::string k_house = "mtllib house.mtl\n"
                            "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 1 2 0\nv 0 1 0\nv 1 2 3\n"
                            "vn 0 0 1\nvn 0 0.6 0.8\n"
                            "o front wall\nusemtl brick\nf 1//1 2//1 3//1 4//1 5//1\n"
                            "o roof\nusemtl tile\nf 3//2 6//2 4//-1\n";

/// A GLB file of two nodes that show one triangle: one moved and turned, one mirrored.
std::string instances() {
    formats::GltfFile file;
    const float place[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const float normal[] = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    const float uv[] = {0, 0, 1, 0, 0, 1};
    std::string buffer(reinterpret_cast<const char*>(place), 36);
    buffer.append(reinterpret_cast<const char*>(normal), 36);
    buffer.append(reinterpret_cast<const char*>(uv), 24);
    file.json = Json::parse(R"({"asset": {"version": "2.0"},
        "scenes": [{"nodes": [0]}],
        "nodes": [{"name": "root", "children": [1, 2], "translation": [10, 0, 0]},
                  {"name": "left", "mesh": 0, "rotation": [0, 0, 0.7071067811865476, 0.7071067811865476]},
                  {"name": "right", "mesh": 0, "scale": [-2, 2, 2]}],
        "materials": [{"name": "glass"}],
        "meshes": [{"name": "pane", "primitives": [{"material": 0, "attributes":
            {"POSITION": 0, "NORMAL": 1, "TEXCOORD_0": 2, "TEXCOORD_1": 2}}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]},
                      {"bufferView": 1, "componentType": 5126, "count": 3, "type": "VEC3"},
                      {"bufferView": 2, "componentType": 5126, "count": 3, "type": "VEC2"}],
        "bufferViews": [{"buffer": 0, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 36, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 72, "byteLength": 24}],
        "buffers": [{"byteLength": 96}]})");
    file.buffers = {buffer};
    file.is_binary = true;
    std::string bytes, error;
    EXPECT_TRUE(formats::write_glb(file, formats::k_max_glb, bytes, error)) << error;
    return bytes;
}

TEST(Conversion, NamesThatAreNoUtf8AreReplacedWhereTheFormatWantsUtf8) {
    const Read r = read("m.obj", "o wall\xff\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl \xc3(\nf 1 2 3\n");
    for (const char* name : {"m.glb", "m.gltf"}) {
        const Model model = model_of(read(name, converted(r, name)));
        EXPECT_EQ(std::vector<std::string>{"wall\xef\xbf\xbd"}, model.parts) << name;
        EXPECT_EQ(std::vector<std::string>{"\xef\xbf\xbd("}, model.materials) << name;
    }
}

TEST(Conversion, ObjToGlbKeepsNamesMaterialsNormalsAndMakesTriangles) {
    const Read glb = read("o.glb", converted(read("m.obj", k_house), "o.glb"));
    const Json& json = glb.file.gltf.file.json;
    ASSERT_EQ(2u, json["meshes"].size());
    EXPECT_EQ("front wall", json["meshes"][0]["name"]);
    EXPECT_EQ("roof", json["nodes"][1]["name"]);
    EXPECT_EQ("tile", json["materials"][1]["name"]);
    EXPECT_EQ(1, json["meshes"][1]["primitives"][0]["material"]);
    EXPECT_EQ(4u, glb.file.document.polygon_count()) << "the pentagon is three triangles";
    const Model model = model_of(glb);
    ASSERT_TRUE(model.normals.is_present());
    EXPECT_EQ(1.0f, model.normals.at(0)[2]);
    EXPECT_EQ(0.6f, model.normals.at(9)[1]);
    for (size_t c = 0; c < glb.file.document.corner_texture.size(); ++c)
        EXPECT_EQ(0.25f,
                  glb.file.document.texture_coords[2 * glb.file.document.corner_texture[c] + 1]);
}

TEST(Conversion, ObjToPlyKeepsPolygonsAndCommonVertices) {
    const Read obj = read("m.obj", k_house);
    const Read ply = read("o.ply", converted(obj, "o.ply"));
    EXPECT_EQ(obj.file.document.positions, ply.file.document.positions);
    EXPECT_EQ(obj.file.document.corner_vertex, ply.file.document.corner_vertex);
    EXPECT_EQ(obj.file.document.corner_begin, ply.file.document.corner_begin);
    EXPECT_FALSE(model_of(ply).normals.is_present()) << "vertex 3 has two";
    std::string smooth = k_house;
    smooth.replace(smooth.find("0 0.6 0.8"), 9, "0 0 1");
    const Read again = read("o.ply", converted(read("m.obj", smooth), "o.ply"));
    EXPECT_TRUE(model_of(again).normals.is_present());
}

TEST(Conversion, PlyColoursBecomeThoseOfAGlb) {
    const Read ply = read("m.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                                   "property float y\nproperty float z\nproperty uchar red\n"
                                   "property uchar green\nproperty uchar blue\nelement face 1\n"
                                   "property list uchar int vertex_indices\nend_header\n"
                                   "0 0 0 255 0 51\n1 0 0 0 0 0\n0 1 0 9 9 9\n3 0 1 2\n");
    const Model model = model_of(read("o.glb", converted(ply, "o.glb")));
    ASSERT_TRUE(model.colors.is_present());
    EXPECT_EQ(std::vector<float>({1.0f, 0.0f, 0.2f, 1.0f}),
              std::vector<float>(model.colors.at(0), model.colors.at(0) + 4));
    const std::string back = converted(read("o.glb", converted(ply, "o.glb")), "o.ply");
    EXPECT_NE(back.npos, back.find("property uchar alpha"));
    EXPECT_NE(back.npos, back.find(std::string("\xff\x00\x33\xff", 4)));
}

TEST(Conversion, StlSolidsBecomeObjects) {
    const Read stl = read("m.stl", "solid lid\nfacet normal 0 0 0\nouter loop\nvertex 0 0 0\n"
                                   "vertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid\n");
    EXPECT_NE(std::string::npos, converted(stl, "o.obj").find("o lid\nf 1/1 2/2 3/3\n"));
}

TEST(Conversion, NameThatEndsInABackslashDoesNotJoinTheNextLineOfAnObj) {
    const Read stl = read("m.stl", "solid lid\\\nfacet normal 0 0 0\nouter loop\nvertex 0 0 0\n"
                                   "vertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid\n");
    const Read again = read("o.obj", converted(stl, "o.obj"));
    EXPECT_EQ(1u, again.file.document.polygon_count());
}

TEST(Conversion, NodesPlaceTheMeshInFormatsOfOneSpace) {
    const Read glb = read("m.glb", instances());
    const Read obj = read("o.obj", converted(glb, "o.obj"));
    ASSERT_EQ(2u, obj.file.document.polygon_count()) << "an instance is a copy";
    const std::vector<float>& p = obj.file.document.positions;
    const float expected[] = {10, 0, 0, 10, 1, 0, 9, 0, 0, 10, 2, 0, 8, 0, 0, 10, 0, 0};
    ASSERT_EQ(18u, p.size());
    for (size_t i = 0; i < 18; ++i)
        EXPECT_NEAR(expected[i], p[i], 1e-6) << i;
    const std::string& text = obj.file.document.text;
    EXPECT_NE(text.npos, text.find("o left\nusemtl glass\nf 1/1/1 2/2/2 3/3/3\n")) << text;
    EXPECT_NE(text.npos, text.find("o right\n")) << text;
    EXPECT_NE(text.npos, text.find("vt 0.015625 0.25"));
    const Model model = model_of(obj);
    for (size_t c = 0; c < 6; ++c)
        EXPECT_FLOAT_EQ(1.0f, model.normals.at(c)[2]) << "mirrored polygons are turned round";
}

TEST(Conversion, GlbBecomesGltfByPatching) {
    const Read glb = read("m.glb", instances());
    const Read text = read("o.gltf", converted(glb, "o.gltf"));
    EXPECT_EQ(glb.file.gltf.file.json["nodes"], text.file.gltf.file.json["nodes"]);
    EXPECT_EQ(glb.file.document.positions, text.file.document.positions);
    EXPECT_EQ("data:",
              text.file.gltf.file.json["buffers"][0]["uri"].get<std::string>().substr(0, 5));
}

TEST(Conversion, ObjBecomesGltfWithItsBufferInside) {
    const Read text = read("o.gltf", converted(read("m.obj", k_house), "o.gltf"));
    EXPECT_EQ(4u, text.file.document.polygon_count());
}

TEST(Conversion, FbxHasPolygonsNodesSetsAndMaterials) {
    const std::string house = converted(read("m.obj", k_house), "o.fbx");
    EXPECT_NE(house.npos, house.find("PolygonVertexIndex: *5 {\n\t\t\ta:  0,1,2,3,-5\n"));
    EXPECT_NE(house.npos, house.find("\"Material::tile\""));
    EXPECT_NE(house.npos, house.find("\"Geometry::front wall\""));
    EXPECT_NE(house.npos, house.find("LayerElementNormal: 0"));
    const std::string glb = converted(read("m.glb", instances()), "o.fbx");
    EXPECT_NE(glb.npos, glb.find("\"Model::root\", \"Null\""));
    EXPECT_NE(glb.npos, glb.find("\"Lcl Translation\", \"Lcl Translation\", \"\", \"A\",10,0,0\n"));
    EXPECT_NE(glb.npos, glb.find("\"Lcl Rotation\", \"\", \"A\",0,-0,90"));
    EXPECT_NE(glb.npos, glb.find("\"Lcl Scaling\", \"\", \"A\",-2,2,2"));
    EXPECT_NE(glb.npos, glb.find("LayerElementUV: 1"));
    EXPECT_NE(glb.npos, glb.find("\"UnitScaleFactor\", \"double\", \"Number\", \"\",100\n"));
    EXPECT_NE(glb.npos, glb.find("C: \"OO\",2000000001,2000000000\n"));
}

TEST(Conversion, NodesThatShearAreWrittenAsOneSpace) {
    Read glb = read("m.glb", instances());
    glb.file.gltf.file.json["nodes"][1] =
        Json::parse(R"({"mesh": 0, "matrix": [1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]})");
    const std::string fbx = converted(glb, "o.fbx");
    EXPECT_EQ(fbx.npos, fbx.find("\"Model::root\""));
    EXPECT_NE(fbx.npos, fbx.find("Vertices: *9 {\n\t\t\ta:  10,0,0,11,0,0,11,1,0\n"));
}

TEST(Conversion, NodesThatAreListedTwiceShowOnce) {
    Read glb = read("m.glb", instances());
    Json& nodes = glb.file.gltf.file.json["nodes"];
    nodes = Json::array();
    for (int i = 1; i <= 10; ++i)
        nodes.push_back({{"children", {i, i}}});
    nodes.push_back({{"mesh", 0}});
    EXPECT_EQ(11u, model_of(glb).nodes.size());
}

TEST(Conversion, CoordinatesThatDoNotFitAreRefused) {
    const Read obj = read("m.obj", k_house);
    std::string bytes, error;
    host::ObjUvs uvs = coordinates(obj.file.document);
    uvs.corner_uv[3] = 1000;
    EXPECT_FALSE(formats::format_mesh(obj.file, uvs, "o.glb", {}, bytes, error));
    EXPECT_EQ("the UV set does not fit the mesh", error);
}

/// A triangle with normals, which a node shows through this matrix.
Model shown_through(const formats::Matrix& matrix) {
    Model model;
    model.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    model.corner_begin = {0, 3};
    model.corner_vertex = {0, 1, 2};
    model.polygon_material = {host::k_obj_none};
    model.polygon_part = {0};
    model.parts = {"part"};
    model.normals = {"", 3, {0, 0, 1}, {0, 0, 0}};
    model.nodes = {{"node", -1, 0, matrix}};
    return model;
}

TEST(Flattening, RefusesNodesThatMoveVerticesOutOfRange) {
    formats::Matrix matrix = formats::k_identity;
    matrix[12] = 1e39;
    Model flat;
    std::string error;
    EXPECT_FALSE(formats::flatten(shown_through(matrix), flat, error));
    EXPECT_EQ("its nodes move vertices beyond what single precision can hold", error);
    matrix[12] = 1e38;
    EXPECT_TRUE(formats::flatten(shown_through(matrix), flat, error));
}

TEST(Flattening, LeavesOutNormalsThatHaveNoDirectionAnyMore) {
    formats::Matrix matrix = formats::k_identity;
    matrix[0] = matrix[5] = 1e-200;
    matrix[10] = 1e200;
    matrix[1] = 1e200;
    Model model = shown_through(matrix), flat;
    model.positions = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    std::string error;
    ASSERT_TRUE(formats::flatten(model, flat, error)) << error;
    EXPECT_EQ(std::vector<uint32_t>(3, host::k_obj_none), flat.normals.corner);
}

TEST(Flattening, RefusesInstancesWithMoreCornersThanCanBeNumbered) {
    Model model = shown_through(formats::k_identity), flat;
    model.normals = {};
    model.corner_vertex.resize(66000, 0);
    model.corner_begin = {0, 66000};
    model.nodes.resize(33000, model.nodes[0]); // 2.18 thousand million corners
    std::string error;
    EXPECT_FALSE(formats::flatten(model, flat, error));
    EXPECT_EQ("its instances have more than 2147483647 corners together", error);
}

} // namespace
