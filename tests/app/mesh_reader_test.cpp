#include "app/interrupt.h"
#include "app/mesh_reader.h"
#include "formats/model_stream.h"
#include "formats/model_writers.h"
#include "tests/app/meshes.h"
#include "tests/app/scratch.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using test::Scratch;

/// What a program in place of the importer makes of a file.
struct Imported {
    formats::MeshFile file;
    host::IoError error;
    bool good = false;
};

class MeshImport : public ::testing::Test {
protected:
    Imported import(const std::string& script, const app::ImportLimits& limits = {1u << 30, 60}) {
        const std::string program = dir.put("importer", "#!/bin/sh\n" + script);
        std::filesystem::permissions(program, std::filesystem::perms::all);
        Imported r;
        r.file.format = formats::Format::fbx;
        r.good =
            app::import_model(program, "scene.fbx.gz", "the file's bytes", limits, r.file, r.error);
        return r;
    }
    std::string refusal(const std::string& script,
                        const app::ImportLimits& limits = {1u << 30, 60}) {
        const Imported r = import(script, limits);
        EXPECT_FALSE(r.good);
        EXPECT_EQ(host::IoError::malformed, r.error.kind);
        return r.error.message;
    }
    /// A house of two objects as text FBX that the program wrote.
    std::string house() {
        formats::MeshFile obj;
        host::IoError error;
        EXPECT_TRUE(formats::parse_mesh("m.obj",
                                        "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 1 2 0\nv 0 1 0\nv 1 2 3\n"
                                        "vn 0 0 1\nvn 0 0.6 0.8\n"
                                        "o front wall\nusemtl brick\n"
                                        "f 1//1 2//1 3//1 4//1 5//1\n"
                                        "o roof\nusemtl tile\nf 3//2 6//2 4//2\n",
                                        {}, obj, error))
            << error.message;
        host::ObjUvs uvs;
        for (int c = 0; c < 8; ++c) {
            uvs.u.push_back(float(c) / 8.0f);
            uvs.v.push_back(0.25f);
            uvs.corner_uv.push_back(c);
        }
        std::string fbx, reason;
        EXPECT_TRUE(formats::format_mesh(obj, uvs, "o.fbx", {}, fbx, reason)) << reason;
        return fbx;
    }
    Scratch dir;
};

TEST_F(MeshImport, CrashIsAnErrorWithTheNameOfTheFile) {
    EXPECT_EQ("scene.fbx.gz: the library that reads this format ended by signal 11; the file is "
              "probably damaged",
              refusal("cat > /dev/null; kill -SEGV $$"));
    EXPECT_EQ("scene.fbx.gz: the library that reads this format ended with code 3; the file is "
              "probably damaged",
              refusal("exit 3"));
}

TEST_F(MeshImport, ItGetsTheFormatTheLimitsAndTheBytes) {
    EXPECT_EQ("scene.fbx.gz: fbx 1073741824 60 the file's bytes",
              refusal("printf '{\"failure\": \"%s\"}\\n' \"$1 $2 $3 $(cat)\""));
}

TEST_F(MeshImport, MissingLibraryIsNotTheFilesFault) {
    EXPECT_EQ("scene.fbx.gz: tessora_import, which reads this format, does not start; is Assimp "
              "(libassimp5) installed?",
              refusal("exit 127"));
}

TEST_F(MeshImport, InterruptEndsTheChildAndTheWait) {
    const app::InterruptNoted noted;
    app::note_interrupt();
    EXPECT_EQ("scene.fbx.gz: interrupted", refusal("exec sleep 600"));
    EXPECT_TRUE(app::take_interrupt());
}

TEST_F(MeshImport, TimeIsLimited) {
    EXPECT_EQ("scene.fbx.gz: it takes more than 60 s to read",
              refusal("cat > /dev/null; kill -XCPU $$"));
    EXPECT_EQ("scene.fbx.gz: it takes more than 0 s to read", refusal("exec sleep 600", {1, 0}));
}

TEST_F(MeshImport, NonsenseIsRefused) {
    for (const char* script : {"true", "echo x", "echo '{}'", "echo '{\"failure\": 3}'"})
        EXPECT_EQ("scene.fbx.gz: the importer's answer is damaged", refusal(script)) << script;
    EXPECT_EQ("scene.fbx.gz: a_b", refusal(R"(printf '%s\n' '{"failure": "a\nb"}')"));
}

TEST_F(MeshImport, WithoutTheImporterTheFormatIsRefused) {
    Imported r;
    EXPECT_FALSE(app::import_model(dir.path("none"), "m.dae", "x", {}, r.file, r.error));
    EXPECT_EQ("m.dae: this program was built without Assimp, which reads this format; convert the "
              "file to OBJ or GLB",
              r.error.message);
}

TEST_F(MeshImport, WhatAResultLacksIsAWarning) {
    formats::Model model;
    model.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    model.corner_begin = {0, 3};
    model.corner_vertex = {0, 1, 2};
    model.polygon_material = {host::k_obj_none};
    model.polygon_part = {0};
    model.parts = {"part"};
    model.left_out = {"skins", "lights"};
    const std::string answer = dir.put("answer", formats::write_model_stream(model));
    const Imported r = import("exec cat " + answer);
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ((std::vector<std::string>{"scene.fbx.gz: results lack its skins, lights"}),
              r.file.document.warnings);
}

#ifdef TESSORA_IMPORTER // the importer is built only where Assimp is installed

class MeshImportByAssimp : public MeshImport {
protected:
    /// What the importer itself makes of a file of the format.
    Imported import_file(formats::Format format, const std::string& bytes,
                         unsigned long long memory = 4ull << 30) {
        Imported r;
        r.file.format = format;
        r.good = app::import_model(TESSORA_IMPORTER, "m", bytes, {memory, 60}, r.file, r.error);
        return r;
    }
};

std::string replaced(std::string text, const std::string& old, const std::string& by) {
    const size_t at = text.find(old);
    EXPECT_NE(text.npos, at) << old;
    return at == text.npos ? text : text.replace(at, old.size(), by);
}

TEST_F(MeshImportByAssimp, TextFbxThatWasWrittenReadsBackAsTheSameModel) {
    const Imported r = import_file(formats::Format::fbx, house());
    ASSERT_TRUE(r.good) << r.error.message;
    const formats::Model& model = r.file.model;
    EXPECT_EQ((std::vector<uint32_t>{0, 5, 8}), model.corner_begin) << "polygons stay polygons";
    EXPECT_EQ((std::vector<std::string>{"front wall", "roof"}), model.parts);
    EXPECT_EQ("tile", model.materials.at(model.polygon_material[1]));
    EXPECT_EQ(8u, model.vertex_count()) << "5 of the wall, 3 of the roof";
    ASSERT_EQ(2u, model.nodes.size());
    EXPECT_EQ("roof", model.nodes[1].name);
    EXPECT_EQ("map1", model.uvs.name);
    ASSERT_TRUE(model.normals.is_present());
    for (size_t c = 0; c < 8; ++c) {
        EXPECT_EQ(float(c) / 8.0f, model.uvs.at(c)[0]);
        EXPECT_EQ(c < 5 ? 1.0f : 0.8f, model.normals.at(c)[2]);
    }
    EXPECT_EQ(6u, model.normals.values.size()) << "equal normals are one";
    EXPECT_TRUE(r.file.document.warnings.empty());
}

TEST_F(MeshImportByAssimp, TextFbxKeepsEveryBitOfPositions) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> exponent(-6.0, 17.9), digits(1.0, 10.0);
    // The shortest texts of the first two lie almost halfway between two values.
    std::vector<float> positions = {1.113823f, -1.113823f, 1e17f, 0.0f, 1e-6f, 16777216.0f};
    while (positions.size() < 9000)
        positions.push_back(float(digits(random) * std::pow(10.0, std::floor(exponent(random)))));
    formats::Model model;
    model.positions = positions;
    model.parts = {"part"};
    model.uvs.name = "map1";
    model.uvs.components = 2;
    model.uvs.values = {0.5f, 0.5f};
    model.uvs.corner.assign(positions.size() / 3, 0);
    model.corner_begin = {0};
    for (uint32_t vertex = 0; vertex < 3000; ++vertex) {
        model.corner_vertex.push_back(vertex);
        if (vertex % 3 == 2) {
            model.corner_begin.push_back(vertex + 1);
            model.polygon_material.push_back(host::k_obj_none);
            model.polygon_part.push_back(0);
        }
    }
    std::string bytes, error;
    ASSERT_TRUE(formats::model_to_fbx(model, bytes, error)) << error;
    const Imported r = import_file(formats::Format::fbx, bytes);
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ(positions, r.file.model.positions);
}

TEST_F(MeshImportByAssimp, HierarchyWithInstancesAndSeveralUvSetsReadsBack) {
    formats::MeshFile file;
    host::IoError error;
    const std::string json =
        R"({"asset": {"version": "2.0"}, "scenes": [{"nodes": [0]}], "nodes": [
            {"name": "car", "translation": [1, 2, 3], "children": [1, 2]},
            {"name": "left", "mesh": 0, "scale": [2, 2, 2]},
            {"name": "right", "mesh": 0, "rotation": [0, 0, 0.6, 0.8]}],
            "meshes": [{"name": "wheel", "primitives": [{"attributes": {
                "POSITION": 0, "TEXCOORD_0": 1, "TEXCOORD_1": 1}}]}],
            "accessors": [
                {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
                {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC2"}],
            "bufferViews": [{"buffer": 0, "byteLength": 36}], "buffers": [{"byteLength": 36,
            "uri": "data:;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]})";
    ASSERT_TRUE(formats::parse_mesh("m.gltf", json, {}, file, error)) << error.message;
    const host::ObjUvs uvs = {{0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}, {0, 1, 2}};
    std::string fbx, reason;
    ASSERT_TRUE(formats::format_mesh(file, uvs, "m.fbx", {}, fbx, reason)) << reason;
    const Imported r = import_file(formats::Format::fbx, fbx);
    ASSERT_TRUE(r.good) << r.error.message;
    const formats::Model& model = r.file.model;
    EXPECT_EQ(1u, model.polygon_count()) << "instances are one mesh";
    ASSERT_EQ(3u, model.nodes.size());
    EXPECT_EQ("car", model.nodes[0].name);
    EXPECT_EQ(2.0, model.nodes[0].matrix[13]);
    for (const size_t wheel : {1u, 2u}) {
        EXPECT_EQ(0, model.nodes[wheel].parent);
        EXPECT_EQ(0, model.nodes[wheel].part);
    }
    EXPECT_NEAR(2.0, model.nodes[1].matrix[0], 1e-6);
    EXPECT_NEAR(0.96, model.nodes[2].matrix[1], 1e-6);
    EXPECT_EQ(1.0, model.metres) << "as in glTF";
    ASSERT_EQ(1u, model.other_uvs.size());
    EXPECT_EQ("TEXCOORD_1", model.other_uvs[0].name);
    EXPECT_EQ(1.0f, model.other_uvs[0].at(0)[1]) << "upwards";
}

TEST_F(MeshImportByAssimp, SetsOfCoordinatesThatOnlyOneMeshHasStay) {
    std::string fbx = house();
    // The wall has the sets 0 and 1, the roof only 0.
    const size_t begin = fbx.find("\t\tLayerElementUV: 0 {"), end = fbx.find("\t\tLayerElementMat");
    const std::string second =
        replaced(replaced(fbx.substr(begin, end - begin), "UV: 0", "UV: 1"), "map1", "light");
    fbx.insert(end, second);
    const size_t layer = fbx.find("\t\tLayer: 0 {"), next = fbx.find("\t}\n\tGeometry", layer);
    ASSERT_NE(fbx.npos, next);
    fbx.insert(next, "\t\tLayer: 1 {\n\t\t\tVersion: 100\n\t\t\tLayerElement:  {\n\t\t\t\tType: "
                     "\"LayerElementUV\"\n\t\t\t\tTypedIndex: 1\n\t\t\t}\n\t\t}\n");
    const Imported r = import_file(formats::Format::fbx, fbx);
    ASSERT_TRUE(r.good) << r.error.message;
    ASSERT_EQ(1u, r.file.model.other_uvs.size());
    EXPECT_EQ("light", r.file.model.other_uvs[0].name);
    EXPECT_EQ(0.5f, r.file.model.other_uvs[0].at(4)[0]);
    EXPECT_EQ(host::k_obj_none, r.file.model.other_uvs[0].corner[5]);
}

TEST_F(MeshImportByAssimp, FilesWithZUpAreTurned) {
    std::string fbx = replaced(house(), "UpAxis\", \"int\", \"Integer\", \"\",1",
                               "UpAxis\", \"int\", \"Integer\", \"\",2");
    fbx = replaced(fbx, "FrontAxis\", \"int\", \"Integer\", \"\",2",
                   "FrontAxis\", \"int\", \"Integer\", \"\",1");
    fbx = replaced(fbx, "FrontAxisSign\", \"int\", \"Integer\", \"\",1",
                   "FrontAxisSign\", \"int\", \"Integer\", \"\",-1");
    const Imported r = import_file(formats::Format::fbx, fbx);
    ASSERT_TRUE(r.good) << r.error.message;
    const formats::Matrix turned = {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(turned, r.file.model.nodes.at(0).matrix);
}

TEST_F(MeshImportByAssimp, PolygonsWithoutAMaterialGetNone) {
    const Imported r = import_file(formats::Format::off, "OFF\n4 1 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n"
                                                         "4 0 1 2 3\n");
    ASSERT_TRUE(r.good) << r.error.message;
    EXPECT_EQ((std::vector<uint32_t>{host::k_obj_none}), r.file.model.polygon_material);
    EXPECT_TRUE(r.file.model.materials.empty());
    EXPECT_EQ((std::vector<uint32_t>{0, 4}), r.file.model.corner_begin);
}

TEST_F(MeshImportByAssimp, DamagedFilesAreRefusedWithAReason) {
    EXPECT_EQ("m: the file is empty", import_file(formats::Format::dae, "").error.message);
    const Imported r = import_file(formats::Format::dae, "<COLLADA");
    EXPECT_FALSE(r.good);
    EXPECT_EQ(0u, r.error.message.find("m: ")) << r.error.message;
    EXPECT_LT(8u, r.error.message.size());
}

TEST_F(MeshImportByAssimp, NodesThatAreNowhereAreRefused) {
    const std::string dae = R"(<?xml version="1.0"?>
        <COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
        <library_geometries><geometry id="g"><mesh><source id="p">
        <float_array id="a" count="9">0 0 0 1 0 0 0 1 0</float_array>
        <technique_common><accessor source="#a" count="3" stride="3"><param name="X" type="float"/>
        <param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common>
        </source><vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
        <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p>
        </triangles></mesh></geometry></library_geometries>
        <library_visual_scenes><visual_scene id="s"><node id="n" name="n">
        <translate>inf 0 0</translate><instance_geometry url="#g"/></node></visual_scene>
        </library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    EXPECT_EQ("m: node \"n\": its transformation is not finite",
              import_file(formats::Format::dae, dae).error.message);
    EXPECT_TRUE(import_file(formats::Format::dae, replaced(dae, "inf", "1")).good);
}

#ifndef __SANITIZE_ADDRESS__ // with which the importer sets no limit of memory
TEST_F(MeshImportByAssimp, MemoryIsLimited) {
    EXPECT_EQ("m: it takes more than 512 MiB of memory to read",
              import_file(formats::Format::off, "OFF\n1000000000 1 0\n" + std::string(1000, ' '),
                          512ull << 20)
                  .error.message);
}
#endif

#endif // TESSORA_IMPORTER

#ifndef __SANITIZE_ADDRESS__ // whose allocator ends the process instead
TEST(MeshMemory, MeshThatItDoesNotSufficeForIsRefused) {
    constexpr uint32_t triangles = 200000;
    std::string stl(80, ' ');
    stl.append(reinterpret_cast<const char*>(&triangles), 4);
    stl.resize(84 + 50 * triangles);
    for (uint32_t corner = 0; corner < 3 * triangles; ++corner) { // all at places of their own
        const float x = float(corner);
        std::memcpy(&stl[84 + 50 * (corner / 3) + 12 + 12 * (corner % 3)], &x, 4);
    }
    std::ifstream sizes("/proc/self/statm");
    uint64_t pages = 0;
    sizes >> pages;
    rlimit before = {};
    ::getrlimit(RLIMIT_AS, &before);
    // The text, which is moved, is there already; the mesh takes more than four times as much.
    const rlimit tight = {pages * uint64_t(::sysconf(_SC_PAGESIZE)) + stl.size(), before.rlim_max};
    ::setrlimit(RLIMIT_AS, &tight);
    formats::MeshFile file;
    host::IoError error;
    const bool good = formats::parse_mesh("m.stl", std::move(stl), {}, file, error);
    ::setrlimit(RLIMIT_AS, &before);
    EXPECT_FALSE(good);
    EXPECT_EQ("m.stl: not enough memory for the mesh", error.message);
    EXPECT_EQ(host::IoError::too_large, error.kind);
}
#endif

TEST(ModelStream, ReadsBackWhatWasWrittenAndRefusesEveryDamage) {
    formats::Model model, again;
    model.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    model.corner_begin = {0, 3};
    model.corner_vertex = {0, 1, 2};
    model.polygon_material = {0};
    model.polygon_part = {0};
    model.parts = {"part"};
    model.materials = {"material"};
    model.nodes = {{"node", -1, 0, formats::k_identity}};
    model.normals = {"", 3, {0, 0, 1}, {0, 0, 0}};
    std::string bytes = formats::write_model_stream(model), error;
    ASSERT_TRUE(formats::read_model_stream(bytes, again, error)) << error;
    EXPECT_EQ(model.positions, again.positions);
    EXPECT_EQ(model.normals.corner, again.normals.corner);
    EXPECT_EQ("node", again.nodes.at(0).name);
    for (size_t cut = 0; cut < bytes.size(); ++cut)
        EXPECT_FALSE(formats::read_model_stream(bytes.substr(0, cut), again, error)) << cut;
    EXPECT_FALSE(formats::read_model_stream(bytes + "x", again, error));
    const auto refused = [&](auto change) {
        formats::Model changed = model;
        change(changed);
        return !formats::read_model_stream(formats::write_model_stream(changed), again, error);
    };
    EXPECT_TRUE(refused([](formats::Model& m) { m.corner_vertex[2] = 3; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.corner_begin = {0, 2}; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.polygon_part[0] = 1; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.polygon_material[0] = 1; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.normals.corner[1] = 1; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.normals.components = 2; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.uvs.values = {0, 0}; })) << "of no corner";
    EXPECT_TRUE(refused([](formats::Model& m) { m.other_uvs.resize(1); })) << "an absent set";
    EXPECT_TRUE(refused([](formats::Model& m) { m.nodes[0].parent = 0; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.nodes[0].part = 1; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.metres = 1e200; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.nodes[0].matrix[12] = -1e200; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.normals.values[0] = NAN; }));
    EXPECT_TRUE(refused([](formats::Model& m) { m.positions[4] = INFINITY; }));
    EXPECT_EQ("a vertex has a position that is not finite", error);
}

} // namespace
