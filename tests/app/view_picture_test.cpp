/// `tessora unwrap --view` and `panelPicture`: pictures of the model panels.
#include "tests/app/program_fixture.h"

#include <cstdlib>
#include <png.h>

namespace {

using namespace test;

struct Pixels {
    uint32_t width = 0, height = 0;
    std::vector<uint8_t> rgb;

    explicit Pixels(const std::string& file) {
        png_image header = {};
        header.version = PNG_IMAGE_VERSION;
        EXPECT_TRUE(png_image_begin_read_from_memory(&header, file.data(), file.size()));
        header.format = PNG_FORMAT_RGB;
        width = header.width;
        height = header.height;
        rgb.resize(PNG_IMAGE_SIZE(header));
        EXPECT_TRUE(png_image_finish_read(&header, nullptr, rgb.data(), 0, nullptr));
    }
    size_t count(int r, int g, int b) const {
        size_t found = 0;
        for (size_t i = 0; i < rgb.size(); i += 3)
            found += rgb[i] == r && rgb[i + 1] == g && rgb[i + 2] == b;
        return found;
    }
    size_t green() const { return count(0, 255, 0); }
    size_t blue() const { return count(0, 0, 255); }
};

/// `mapped` is a cube that was unwrapped before, so its UVs have seams.
class ViewPicture : public Program {
protected:
    ViewPicture() : mapped(result(k_cube, {})) {}
    std::string mapped;
};

TEST_F(ViewPicture, DrawsKeptSeamsGreenAndNewSeamsBlue) {
    const Ended kept =
        unwrap("m.obj", mapped, {"--keep_seams", "--use_ridges", "--view", dir.path("kept.png")});
    ASSERT_EQ(0, kept.code) << kept.err;
    EXPECT_EQ(dir.path("kept.png"), report("m.obj")["view"]);
    const Pixels picture(dir.get("kept.png"));
    EXPECT_EQ(picture.width, 1280u);
    EXPECT_EQ(picture.height, 960u);
    EXPECT_GT(report("m.obj")["existing_seam_edges"].get<int>(), 0);
    EXPECT_GT(picture.green(), 300u);

    const Ended anew = unwrap("n.obj", mapped, {"--view", dir.path("new.png")});
    ASSERT_EQ(0, anew.code) << anew.err;
    EXPECT_EQ(Pixels(dir.get("new.png")).green(), 0u);
    EXPECT_GT(Pixels(dir.get("new.png")).blue(), 300u);
}

TEST_F(ViewPicture, DrawsOnePanelInTheRequestedSize) {
    const Ended ended =
        unwrap("m.obj", mapped,
               {"--view", dir.path("v.png"), "--view_panel", "persp", "--view_width", "320"});
    ASSERT_EQ(0, ended.code) << ended.err;
    const Pixels picture(dir.get("v.png"));
    EXPECT_EQ(picture.width, 320u);
    EXPECT_EQ(picture.height, 240u);
    EXPECT_EQ(picture.count(0, 0, 0), 0u); // no gap between panels
}

TEST_F(ViewPicture, IsIdenticalForTheSameMesh) {
    for (const char* name : {"1.png", "2.png"})
        ASSERT_EQ(0, unwrap("m.obj", mapped, {"--view", dir.path(name)}).code);
    EXPECT_EQ(dir.get("1.png"), dir.get("2.png"));
}

TEST_F(ViewPicture, DoesNotChangeTheResult) {
    EXPECT_EQ(result(k_cube, {"--view", dir.path("v.png")}), result(k_cube, {}));
}

TEST_F(ViewPicture, GoesToStandardOutputWhenAsked) {
    const Ended ended = unwrap("m.obj", mapped, {"--quiet", "--view", "-", "--view_width", "64"});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(Pixels(ended.out).width, 64u);
}

TEST_F(ViewPicture, UnwritableViewLeavesNoOutput) {
    const Ended ended = unwrap("m.obj", mapped, {"--view", dir.path("none/v.png")});
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(ended.err.find("none/v.png: cannot be written: No such file or directory"),
              std::string::npos)
        << ended.err;
    for (const std::string& name : dir.names())
        EXPECT_EQ(name.find("m_uv"), std::string::npos) << name;
}

TEST_F(ViewPicture, MissingOpenGlIsFoundBeforeTheUnwrap) {
    ASSERT_EQ(0, ::setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/none", 1));
    const Ended ended = unwrap("m.obj", mapped, {"--view", dir.path("v.png")});
    ::unsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(ended.err.find("--view: the system gives no OpenGL without a screen"),
              std::string::npos)
        << ended.err;
    EXPECT_EQ(ended.err.find("generating"), std::string::npos) << ended.err;
}

TEST_F(ViewPicture, SeamsGoWithUndoAndComeBackWithRedo) {
    const auto picture = [&](const char* name) {
        return std::string("panelPicture -panel modelPanel4 -w 320 -h 240 \"") + dir.path(name) +
               "\"; ";
    };
    const Ended ended =
        run({"-c", "loadPlugin tessora; polySphere -n ball; viewFit -all; "
                   "tessora -stretch 0.05; dgeval ballShape.outMesh; " +
                       picture("done.png") + "undo; " + picture("undone.png") + "redo; " +
                       picture("redone.png") + "undo; redo; " + picture("again.png")});
    ASSERT_EQ(0, ended.code) << ended.err;
    const auto seam_pixels = [&](const char* name) {
        return Pixels(dir.get(name)).count(0, 0, 255);
    };
    EXPECT_GT(seam_pixels("done.png"), 50u);
    EXPECT_EQ(seam_pixels("undone.png"), 0u);
    EXPECT_EQ(dir.get("redone.png"), dir.get("done.png"));
    EXPECT_EQ(dir.get("again.png"), dir.get("done.png"));
}

TEST_F(ViewPicture, CanBeWrittenByAScript) {
    const Ended ended = run({"-c", "polySphere; viewFit -all; panelPicture -panel modelPanel4 "
                                   "-w 320 -h 240 \"" +
                                       dir.path("ball.png") + "\""});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(Pixels(dir.get("ball.png")).width, 320u);
}

} // namespace
