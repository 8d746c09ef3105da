#include "app/file_formats.h"

#include <gtest/gtest.h>

namespace {

TEST(FileFormats, RefusalNamesTheFileAndTheToolThatConvertsIt) {
    EXPECT_EQ("in/bunny.FBX: FBX files cannot be read, only OBJ files; this converts it:\n"
              "  assimp export in/bunny.fbx in/bunny.obj",
              app::input_refusal("in/bunny.FBX"));
    EXPECT_NE(std::string::npos, app::input_refusal("a.blend").find("Blender"));
    EXPECT_NE(std::string::npos, app::input_refusal("a.ma").find("file -open \"a.ma\""));
    EXPECT_NE(std::string::npos, app::input_refusal("FILE.ply").find("export FILE.ply FILE.obj"));
}

TEST(FileFormats, ObjAndUnknownExtensionsAreNotRefused) {
    for (const char* path : {"a.obj", "a.OBJ", "a", "-", "a.txt", ".ply", "in.ply/a"})
        EXPECT_EQ("", app::input_refusal(path)) << path;
    EXPECT_EQ("", app::output_refusal("a.obj"));
    EXPECT_EQ("a.fbx: only OBJ files can be written", app::output_refusal("a.fbx"));
}

TEST(FileFormats, PicturesOfOtherFormatsAreRefused) {
    EXPECT_EQ("out/a.jpg: pictures are written as PNG files; name it out/a.png",
              app::picture_refusal("out/a.jpg"));
    EXPECT_NE("", app::picture_refusal("a.JPEG"));
    EXPECT_EQ("", app::picture_refusal("a.png"));
    EXPECT_EQ("", app::picture_refusal("-"));
    EXPECT_EQ("", app::picture_refusal(""));
}

} // namespace
