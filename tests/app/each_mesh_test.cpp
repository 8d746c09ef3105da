/// A texture for each mesh of a file.
#include "tests/app/program_fixture.h"

namespace {

using namespace test;

/// Two objects in one file: `front` has the cube's faces, `back` a quad.
const std::string k_two =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
    "o box\nf 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 3 4 8 7\nf 2 3 7 6\nf 4 1 5 8\n"
    "v 3 0 0\nv 5 0 0\nv 5 1 0\nv 3 1 0\no wall\nf 9 10 11 12\n";
const std::string k_wall = "v 3 0 0\nv 5 0 0\nv 5 1 0\nv 3 1 0\nf 1 2 3 4\n";

class EachMesh : public Program {
protected:
    /// The coordinates of a polygon's corners.
    std::vector<float> uvs_of(const std::string& name, size_t polygon) const {
        const host::ObjDocument document = read(name);
        std::vector<float> uvs;
        for (uint32_t c = document.corner_begin[polygon]; c < document.corner_begin[polygon + 1];
             ++c)
            for (size_t k = 0; k < 2; ++k)
                uvs.push_back(document.texture_coords[2 * document.corner_texture[c] + k]);
        return uvs;
    }
};

TEST_F(EachMesh, EveryMeshIsLaidOutAsIfItWereAlone) {
    ASSERT_EQ(0, unwrap("wall.obj", k_wall, {"-o", dir.path("alone.obj")}).code);
    const Ended ended = unwrap("two.obj", k_two, {"--each_mesh", "-o", dir.path("out.obj")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("in 2 textures")) << ended.err;
    EXPECT_EQ(uvs_of("alone.obj", 0), uvs_of("out.obj", 6));
    EXPECT_EQ(without_texture(k_two), without_texture(dir.get("out.obj")));
    const Json done = report("two.obj"), meshes = done["meshes"];
    ASSERT_EQ(2u, meshes.size());
    EXPECT_EQ("box", meshes[0]["name"]);
    EXPECT_EQ("wall", meshes[1]["name"]);
    EXPECT_EQ(6, meshes[0]["polygons"]);
    EXPECT_EQ(4, meshes[1]["vertices"]) << "those that it uses";
    EXPECT_EQ(1, meshes[1]["charts"]);
    EXPECT_EQ(512, meshes[1]["width"]);
    EXPECT_TRUE(meshes[0]["measures"].is_object());
    EXPECT_EQ(meshes[0]["charts"].get<int>() + 1, done["charts"]);
    EXPECT_EQ(7, done["polygons"]);
    EXPECT_EQ(true, done["settings"]["each_mesh"]);
}

TEST_F(EachMesh, MeshesOfAGlbAndOfABatchToo) {
    ASSERT_EQ(0, unwrap("two.obj", k_two, {"-o", dir.path("two.glb")}).code);
    const Words words = {"unwrap", dir.path("two.glb"), "--each_mesh", "--out_dir",
                         dir.path("out")};
    ASSERT_EQ(0, run(words).code);
    const Json meshes = Json::parse(dir.get("out/two.json"))["meshes"];
    ASSERT_EQ(2u, meshes.size());
    EXPECT_EQ("wall", meshes[1]["name"]);
    EXPECT_EQ(2, meshes[1]["triangles"]);
    Words again = words;
    again.insert(again.end(), {"--skip_existing", "--json_lines"});
    const std::string skipped = "\"status\":\"skipped\"";
    EXPECT_NE(std::string::npos, run(again).out.find(skipped));
    again.erase(again.begin() + 2); // --each_mesh
    EXPECT_EQ(std::string::npos, run(again).out.find(skipped)) << "another setting";
}

TEST_F(EachMesh, AFailureNamesTheMeshAndLeavesNoResult) {
    const std::string apart = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 5 0 0\nv 6 0 0\nv 5 1 0\n"
                              "o whole\nf 1 2 3\no halves\nf 1 2 3\nf 4 5 6\n";
    const Ended ended =
        unwrap("two.obj", apart, {"--each_mesh", "--max_charts", "1", "-o", dir.path("out.obj")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("two.obj: halves: 1 charts cannot be had"))
        << ended.err;
    EXPECT_FALSE(dir.has("out.obj"));
    EXPECT_EQ("failed", report("two.obj")["status"]);
}

TEST_F(EachMesh, PicturesOfOneTextureAreRefused) {
    for (const Words& words : std::vector<Words>{{"--beside"},
                                                 {"--layout", "p.png"},
                                                 {"--view", "p.png"},
                                                 {"--html", "page"},
                                                 {"--one_atlas", "--out_dir", "out"}}) {
        Words all = {"unwrap", dir.put("two.obj", k_two), "--each_mesh"};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = run(all);
        EXPECT_EQ(2, ended.code);
        EXPECT_NE(
            std::string::npos,
            ended.err.find("--each_mesh gives each mesh of a file a texture of its own, so one "
                           "picture cannot show them: it excludes --layout, --view, --beside, "
                           "--html and --one_atlas"))
            << words[0] << ended.err;
    }
}

TEST_F(EachMesh, MeshesWithoutANameOrWithOneInCommonGetTheirOwn) {
    const std::string primitive = R"("primitives": [{"attributes": {"POSITION": 0}}]})";
    const std::string json =
        R"({"asset": {"version": "2.0"}, "meshes": [{)" + primitive + R"(, {"name": "a", )" +
        primitive + R"(, {"name": "a", )" + primitive +
        R"(, {"name": "lines", "primitives": [{"mode": 1, "attributes": {"POSITION": 0}}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}], "buffers": [{"byteLength": 36,
        "uri": "data:;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]})";
    ASSERT_EQ(0, unwrap("m.gltf", json, {"--each_mesh", "-o", dir.path("o.gltf")}).code);
    std::vector<std::string> names;
    const Json done = report("m.gltf");
    for (const Json& mesh : done["meshes"])
        names.push_back(mesh["name"]);
    EXPECT_EQ((std::vector<std::string>{"mesh 1", "a", "a (2)"}), names);
}

} // namespace
