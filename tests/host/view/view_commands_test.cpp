#include "host/view/view_commands.h"
#include "tests/fixtures/temporary.h"
#include "tests/host/view/panel_fixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <png.h>

namespace {

class ViewCommands : public ::testing::Test, protected host::script::Output {
protected:
    ViewCommands() {
        host::add_view_commands(session.interpreter(), studio);
        session.set_output(this);
        std::string name = fixtures::temporary_template("view");
        folder = ::mkdtemp(name.data());
        run("file -f -new");
    }
    ~ViewCommands() override {
        run("file -f -new");
        for (const char* name : {"viewFit", "getPanel", "modelEditor", "panelPicture"})
            session.interpreter().remove_command(name);
        session.set_output(nullptr);
        std::filesystem::remove_all(folder);
    }
    host::script::Value run(const std::string& text) {
        const auto outcome = session.run(text, "test");
        EXPECT_TRUE(outcome.ok) << outcome.error;
        return outcome.value;
    }
    std::string error_of(const std::string& text) {
        const auto outcome = session.run(text, "test");
        EXPECT_FALSE(outcome.ok) << text;
        return outcome.error;
    }
    void expect_error(const std::string& text, const std::string& wanted) {
        EXPECT_NE(error_of(text).find(wanted), std::string::npos) << error_of(text);
    }
    std::string file(const std::string& name) const { return folder + "/" + name; }
    static host::Picture read(const std::string& path) {
        host::Picture picture;
        png_image header = {};
        header.version = PNG_IMAGE_VERSION;
        EXPECT_TRUE(png_image_begin_read_from_file(&header, path.c_str())) << path;
        header.format = PNG_FORMAT_RGB;
        picture.width = int(header.width);
        picture.height = int(header.height);
        picture.rgb.resize(PNG_IMAGE_SIZE(header));
        EXPECT_TRUE(png_image_finish_read(&header, nullptr, picture.rgb.data(), 0, nullptr));
        return picture;
    }
    void print(const std::string&) override {}
    void warning(const std::string&) override {}
    void error(const std::string&) override {}

    host::script::Session& session = host::script::Session::current();
    host::PictureStudio studio;
    std::string folder;
};

TEST_F(ViewCommands, PanelPictureWritesAllFourPanels) {
    run("polySphere -n ball; viewFit -all top; viewFit -all persp");
    const std::string path = file("four.png");
    EXPECT_EQ(run("panelPicture -w 320 -h 240 \"" + path + "\"").to_string(), path);
    const host::Picture picture = read(path);
    EXPECT_EQ(picture.width, 320);
    EXPECT_EQ(picture.height, 240);
    // The gap between the panels is black.
    EXPECT_TRUE(panel_test::at(picture, 160, 40) == (panel_test::Rgb{0, 0, 0}));
    EXPECT_FALSE(panel_test::at(picture, 80, 40) == (panel_test::Rgb{0, 0, 0}));
}

TEST_F(ViewCommands, PanelPictureWritesOnePanel) {
    run("polySphere -n ball; viewFit -all front");
    run("panelPicture -panel modelPanel2 -w 64 -h 64 -samples 1 \"" + file("one.png") + "\"");
    EXPECT_EQ(read(file("one.png")).width, 64);
    run("panelPicture -panel modelPanel3 -w 64 -h 64 -samples 1 \"" + file("other.png") + "\"");
    EXPECT_NE(panel_test::differing(read(file("one.png")), read(file("other.png"))), 0u);
}

TEST_F(ViewCommands, PanelPictureLeavesNoFileOnFailure) {
    expect_error("panelPicture", "panelPicture");
    expect_error("panelPicture -panel modelPanel9 \"" + file("a.png") + "\"",
                 "panelPicture: There is no panel \"modelPanel9\".");
    expect_error("panelPicture -w 8 \"" + file("a.png") + "\"",
                 "panelPicture: A picture has 16 x 16 pixels at least.");
    expect_error("panelPicture -w 1000000 \"" + file("a.png") + "\"",
                 "panelPicture: no picture of 1000000 x 960 pixels can be drawn");
    expect_error("panelPicture \"" + file("missing/a.png") + "\"",
                 "missing/a.png\" cannot be written: No such file or directory.");
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(ViewCommands, PanelPictureKeepsAnInstalledRenderer) {
    std::string error;
    auto surface = host::Offscreen::make(error);
    ASSERT_TRUE(surface) << error;
    host::GlPanels panels(*surface);
    run("panelPicture -w 64 -h 64 \"" + file("a.png") + "\"");
    EXPECT_EQ(host::panel_renderer(), &panels);
}

TEST_F(ViewCommands, ViewFitFramesAllOrTheSelection) {
    run("polyCube -n box; polyCube -n small -w 0.1 -h 0.1 -d 0.1; move 3 0 0 small");
    run("viewFit -all -f 1 front");
    EXPECT_NEAR(run("getAttr frontShape.orthographicWidth").to_real(), 3.55, 1e-5);
    run("select small; viewFit -f 0.5 front");
    EXPECT_NEAR(run("getAttr frontShape.orthographicWidth").to_real(), 0.1 * 4 / 3 / 0.5, 1e-5);
    EXPECT_NEAR(run("getAttr front.tx").to_real(), 3.0, 1e-5);
    run("select box.vtx[0]; viewFit front");
    EXPECT_NEAR(run("getAttr front.tx").to_real(), -0.5, 1e-5);
    run("select box.f[0:5]; viewFit -f 1 frontShape");
    EXPECT_NEAR(run("getAttr frontShape.orthographicWidth").to_real(), 4.0 / 3, 1e-5);
    run("select box.e[*]; viewFit -f 1 top");
    EXPECT_NEAR(run("getAttr topShape.orthographicWidth").to_real(), 4.0 / 3, 1e-5);
    run("select -cl; viewFit -f 1 front");
    EXPECT_NEAR(run("getAttr frontShape.orthographicWidth").to_real(), 3.55, 1e-5);
}

TEST_F(ViewCommands, ViewFitUsesTheActivePanelByDefault) {
    run("polyCube -n box");
    const double before = run("getAttr persp.tx").to_real();
    run("viewFit");
    EXPECT_NE(run("getAttr persp.tx").to_real(), before);
    const int active = host::active_panel();
    host::set_active_panel(-1);
    expect_error("viewFit", "viewFit: There is no active panel.");
    host::set_active_panel(active);
}

TEST_F(ViewCommands, ViewFitRefusesUnknownCamerasAndBadFactors) {
    expect_error("viewFit nobody", "no panel that looks through \"nobody\"");
    expect_error("viewFit -f 0", "viewFit: -fitFactor is above 0 and at most 1.");
    expect_error("viewFit -f 1.5", "viewFit: -fitFactor is above 0 and at most 1.");
}

TEST_F(ViewCommands, RefreshRequestsARedrawOrDrawsAtOnce) {
    run("refresh; refresh -cv -f"); // no renderer: nothing to redraw
    std::string error;
    auto surface = host::Offscreen::make(error);
    ASSERT_TRUE(surface && surface->resize(64, 64, 1, error)) << error;
    host::GlPanels panels(*surface);
    surface->set_panels(&panels);
    panels.arrange_four(64, 64, 0);
    run("refresh -cv");
    EXPECT_TRUE(panels.needs_redraw(3));
    EXPECT_FALSE(panels.needs_redraw(0));
    EXPECT_EQ(panels.counts().panels, 0u);
    run("refresh -f");
    EXPECT_EQ(panels.counts().panels, 4u);
    EXPECT_FALSE(panels.needs_redraw(3));
}

TEST_F(ViewCommands, GetPanelListsThePanels) {
    EXPECT_EQ(run("getPanel -type modelPanel").size(), 4u);
    EXPECT_EQ(run("getPanel -type outlinerPanel").size(), 0u);
    EXPECT_EQ(run("getPanel -withFocus").to_string(), "modelPanel4");
}

TEST_F(ViewCommands, ModelEditorQueriesWhatWasSet) {
    EXPECT_EQ(run("modelEditor -q -displayAppearance modelPanel1").to_string(), "smoothShaded");
    run("modelEditor -e -displayAppearance wireframe -grid 0 modelPanel1");
    EXPECT_EQ(run("modelEditor -q -da modelPanel1").to_string(), "wireframe");
    EXPECT_FALSE(run("modelEditor -q -grid modelPanel1").truth());
    EXPECT_TRUE(run("modelEditor -q -grid modelPanel2").truth());
    EXPECT_TRUE(run("modelEditor -q -wos modelPanel1").truth());
    EXPECT_TRUE(run("modelEditor -q -sel modelPanel1").truth());
    run("modelEditor -e -wos 0 -sel 0 modelPanel1");
    EXPECT_FALSE(run("modelEditor -q -wos modelPanel1").truth());
    EXPECT_FALSE(run("modelEditor -q -sel modelPanel1").truth());
}

TEST_F(ViewCommands, ModelEditorChangesThePicture) {
    run("polySphere -n ball; viewFit -all persp; select -cl");
    const std::string command = "panelPicture -panel modelPanel4 -w 64 -h 64 ";
    run(command + "\"" + file("a.png") + "\"");
    run("modelEditor -e -da wireframe modelPanel4");
    run(command + "\"" + file("b.png") + "\"");
    EXPECT_NE(panel_test::differing(read(file("a.png")), read(file("b.png"))), 0u);
}

TEST_F(ViewCommands, ModelEditorRefusesUnknownPanelsAndFlags) {
    expect_error("modelEditor -e -grid 0 modelPanel7", "There is no panel \"modelPanel7\".");
    expect_error("modelEditor -e -da flatShaded modelPanel1",
                 "-displayAppearance is wireframe or smoothShaded.");
    expect_error("modelEditor modelPanel1", "modelEditor: The panels are there already");
    expect_error("modelEditor -q -grid -wos modelPanel1", "A query asks for one thing.");
}

} // namespace
