#include "app/file_formats.h"

#include <gtest/gtest.h>

namespace {

TEST(FileFormats, RefusalNamesTheFileAndTheToolThatConvertsIt) {
    EXPECT_EQ("in/FILE.USDZ: USD files cannot be read, only OBJ, GLTF, GLB, PLY, STL, FBX, DAE, "
              "ZAE, X3D, 3DS, 3MF, AMF, ASE, AC, B3D, DXF, LWO, LXO, MS3D, OFF and X files; this "
              "converts it:\n"
              "  Blender: File > Import, then File > Export as Wavefront OBJ",
              app::input_refusal("in/FILE.USDZ"));
    EXPECT_NE(std::string::npos, app::input_refusal("a.blend").find("Blender"));
    for (const char* file : {"a.stp", "a.step", "a.igs", "a.IGES"})
        EXPECT_NE(std::string::npos,
                  app::input_refusal(file).find("a CAD program: export the shape as a mesh"))
            << file;
    EXPECT_NE(std::string::npos, app::input_refusal("a.mb").find("save it as .ma, or export OBJ"));
    EXPECT_NE(std::string::npos, app::input_refusal("a.ma").find("file -open \"a.ma\""));
}

TEST(FileFormats, ReadableAndUnknownExtensionsAreNotRefused) {
    for (const char* path : {"a.obj", "a.OBJ", "a", "-", "a.txt", ".ply", "in.ply/a", "a.gltf",
                             "a.GLB", "a.glb.gz", "a.ply", "a.stl", "a.fbx", "a.dae"})
        EXPECT_EQ("", app::input_refusal(path)) << path;
    EXPECT_EQ("", app::output_refusal("a.obj"));
    EXPECT_EQ("", app::output_refusal("a.glb"));
    EXPECT_EQ("", app::output_refusal("a.fbx"));
    EXPECT_EQ("a.3ds: files of this format are read, but not written; name an OBJ, GLB or FBX file "
              "instead",
              app::output_refusal("a.3ds"));
    EXPECT_EQ("a.usd: only OBJ, GLTF, GLB, PLY and FBX files can be written",
              app::output_refusal("a.usd"));
    EXPECT_EQ("a.stl: STL files cannot hold texture coordinates; name an OBJ file instead",
              app::output_refusal("a.stl"));
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
