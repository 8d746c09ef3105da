#include "app/mesh_conversion.h"
#include "app/mesh_reader.h"
#include "tests/app/scratch.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using test::Scratch;

const char* k_square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                       "vt 0.25 0\nvt 0.5 0\nvt 0.5 0.125\nvt 0.25 0.125\n"
                       "usemtl hide\nf 1/1 2/2 3/3 4/4\n";

formats::MeshFile read(const std::string& path) {
    formats::MeshFile file;
    host::IoError error;
    EXPECT_TRUE(app::read_mesh(path, {}, file, error)) << error.message;
    return file;
}

TEST(MeshConversion, KeepsTheTextureCoordinatesInEveryWrittenFormat) {
    Scratch scratch;
    const std::string from = scratch.put("square.obj", k_square);
    for (const std::string& extension : app::written_extensions()) {
        if (extension == ".fbx")
            continue; // read by another process; round trips of formats cover it
        std::string error;
        const std::string to = scratch.path("copy" + extension);
        ASSERT_TRUE(app::convert_mesh(from, to, error)) << error;
        const formats::MeshFile file = read(to);
        ASSERT_EQ(0u, file.document.corner_texture.size() % 2) << extension;
        std::vector<float> us;
        for (const uint32_t id : file.document.corner_texture)
            us.push_back(file.document.texture_coords[2 * size_t(id)]);
        EXPECT_EQ(0.25f, *std::min_element(us.begin(), us.end())) << extension;
        EXPECT_EQ(0.5f, *std::max_element(us.begin(), us.end())) << extension;
    }
}

TEST(MeshConversion, WritesTheNamesOfMaterials) {
    Scratch scratch;
    std::string error;
    const std::string from = scratch.put("square.obj", k_square);
    for (const char* name : {"copy.gltf", "copy.fbx"}) {
        ASSERT_TRUE(app::convert_mesh(from, scratch.path(name), error)) << error;
        EXPECT_NE(std::string::npos, scratch.get(name).find("hide")) << name;
    }
}

TEST(MeshConversion, RefusesFormatsThatAreNotWrittenAndKeepsTheOldFile) {
    Scratch scratch;
    const std::string from = scratch.put("square.obj", k_square);
    const std::string old = scratch.put("old.stl", "precious");
    EXPECT_NE(std::string::npos, app::export_refusal(old).find("cannot hold texture coordinates"));
    std::string error;
    EXPECT_FALSE(app::convert_mesh(from, old, error));
    EXPECT_NE(std::string::npos, error.find("STL")) << error;
    EXPECT_EQ("precious", scratch.get("old.stl"));
    EXPECT_EQ("a.doc: only OBJ, GLTF, GLB, PLY and FBX files can be written",
              app::export_refusal("a.doc"));
    EXPECT_EQ("", app::export_refusal("a.glb"));
}

TEST(MeshConversion, SaysWhyAMeshCannotBeReadOrWritten) {
    Scratch scratch;
    std::string error;
    EXPECT_FALSE(app::convert_mesh(scratch.path("none.obj"), scratch.path("a.glb"), error));
    EXPECT_NE(std::string::npos, error.find("none.obj")) << error;
    const std::string from = scratch.put("square.obj", k_square);
    EXPECT_FALSE(app::convert_mesh(from, scratch.path("no/such/a.glb"), error));
    EXPECT_NE(std::string::npos, error.find("cannot be written")) << error;
}

} // namespace
