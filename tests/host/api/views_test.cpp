#include "faultpoint/faultpoint.h"
#include "host/mesh/mesh_object.h"
#include "host/ui/notices.h"
#include "host/ui/panels.h"
#include "host/ui/stages.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/M3dView.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

class Renderer : public host::PanelRenderer {
public:
    MStatus camera(int panel, MDagPath& path) override {
        path = host::make_mesh_node(MString("camera") + panel, mesh_builder::cube().mesh());
        return MS::kSuccess;
    }
    MStatus size(int, int& width, int& height) override {
        width = 640;
        height = 480;
        return MS::kSuccess;
    }
    MStatus refresh(int panel, bool now) override {
        calls.push_back("refresh " + std::to_string(panel) + (now ? " now" : ""));
        return MS::kSuccess;
    }
    MStatus begin_gl(int panel) override {
        calls.push_back("begin " + std::to_string(panel));
        return MS::kSuccess;
    }
    MStatus end_gl(int panel) override {
        calls.push_back("end " + std::to_string(panel));
        return MS::kSuccess;
    }
    std::vector<std::string> calls;
};

class Views : public testing::Test {
protected:
    Views() : window(host::main_window()), active(host::active_panel()) {
        host::set_panel_renderer(&renderer);
    }
    ~Views() override {
        host::set_panel_renderer(nullptr);
        host::set_main_window(window);
        host::set_active_panel(active);
    }
    Renderer renderer;
    void* window;
    int active;
    MStatus status = MS::kFailure;
};

TEST_F(Views, TheLastPanelIsActiveByDefault) {
    M3dView view = M3dView::active3dView(&status);
    EXPECT_TRUE(status);
    EXPECT_TRUE(view.refresh());
    EXPECT_EQ(renderer.calls, (std::vector<std::string>{"refresh 3"}));
}

TEST_F(Views, NoneIsActiveWithoutPanels) {
    host::set_active_panel(-1);
    M3dView view = M3dView::active3dView(&status);
    EXPECT_TRUE(status.error());
    EXPECT_TRUE(view.refresh().error());
}

TEST_F(Views, HaveAMainWindowEvenWithoutAScreen) {
    EXPECT_NE(M3dView::applicationShell(&status), nullptr);
    EXPECT_TRUE(status);
}

TEST_F(Views, FailWithoutAMainWindow) {
    host::set_main_window(nullptr);
    EXPECT_EQ(M3dView::applicationShell(&status), nullptr);
    EXPECT_TRUE(status.error());
}

TEST_F(Views, MainWindowFailsAtItsFaultPoint) {
    const faultpoint::Scope scope("M3dView::applicationShell", MStatus::kNotFound);
    EXPECT_EQ(M3dView::applicationShell(&status), nullptr);
    EXPECT_TRUE(status == MS::kNotFound);
}

TEST_F(Views, ActiveViewFailsAtItsFaultPoint) {
    const faultpoint::Scope scope("M3dView::active3dView", MStatus::kNotFound);
    M3dView::active3dView(&status);
    EXPECT_TRUE(status == MS::kNotFound);
}

TEST_F(Views, AreFoundByPanelName) {
    M3dView view;
    for (const char* name : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
        EXPECT_TRUE(M3dView::getM3dViewFromModelPanel(name, view)) << name;
    EXPECT_TRUE(M3dView::getM3dViewFromModelPanel("modelPanel5", view) == MS::kInvalidParameter);
    EXPECT_EQ(view.portWidth(), 640); // `view` is unchanged by the failure
}

TEST_F(Views, FailWithoutAPanel) {
    M3dView view;
    MDagPath camera;
    EXPECT_TRUE(view.getCamera(camera).error());
    EXPECT_TRUE(view.beginGL().error());
    EXPECT_TRUE(view.endGL().error());
    EXPECT_EQ(view.portWidth(&status), 0);
    EXPECT_TRUE(status.error());
}

TEST_F(Views, FailWithoutARenderer) {
    host::set_panel_renderer(nullptr);
    M3dView view = M3dView::active3dView();
    MDagPath camera;
    EXPECT_TRUE(view.getCamera(camera).error());
    EXPECT_TRUE(view.beginGL().error());
}

TEST_F(Views, CallTheRenderer) {
    M3dView view = M3dView::active3dView();
    MDagPath camera;
    EXPECT_TRUE(view.getCamera(camera));
    EXPECT_EQ(camera.fullPathName(), "|camera3|camera3Shape");
    EXPECT_EQ(view.portWidth(&status), 640);
    EXPECT_EQ(view.portHeight(&status), 480);
    EXPECT_TRUE(view.beginGL());
    EXPECT_TRUE(view.endGL());
    EXPECT_TRUE(view.refresh(true, true));
    EXPECT_EQ(renderer.calls, (std::vector<std::string>{"begin 3", "end 3", "refresh -1 now"}));
}

TEST_F(Views, CopiesReferToTheSamePanel) {
    M3dView view;
    M3dView::getM3dViewFromModelPanel("modelPanel2", view);
    M3dView copy = view;
    copy.refresh();
    EXPECT_EQ(renderer.calls.back(), "refresh 1");
}

// === Notices =====================================================================================

class Reader : public host::NoticeListener {
public:
    explicit Reader(bool sees) : sees_(sees) {}
    bool show(const char* caption, const char* text) override {
        seen = std::string(caption) + ": " + text;
        return sees_;
    }
    std::string seen;

private:
    bool sees_;
};

TEST(Notices, AreNotShownWithoutAListener) { EXPECT_EQ(host_show_notice("Caption", "Text"), 0); }

TEST(Notices, CallTheListener) {
    Reader reader(true);
    host::set_notice_listener(&reader);
    EXPECT_NE(host_show_notice("Caption", "Text"), 0);
    EXPECT_EQ(reader.seen, "Caption: Text");
    host_show_notice(NULL, NULL);
    EXPECT_EQ(reader.seen, ": ");
    host::set_notice_listener(nullptr);
}

TEST(Notices, CountAsNotShownIfTheListenerFails) {
    Reader reader(false);
    host::set_notice_listener(&reader);
    EXPECT_EQ(host_show_notice("Caption", "Text"), 0);
    host::set_notice_listener(nullptr);
}

TEST(Notices, TheHookIsFoundByNameAtRunTime) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "host_show_notice"), reinterpret_cast<void*>(&host_show_notice));
}

// === Stages of a computation =====================================================================

struct StageRecord : host::StageListener {
    bool reached(const char* stage, float fraction) override {
        seen = std::string(stage) + " " + std::to_string(int(100 * fraction));
        return goes_on;
    }
    std::string seen;
    bool goes_on = true;
};

TEST(Stages, AreNotCancelledWithoutAListener) { EXPECT_EQ(host_report_stage("Packing", 0.5f), 0); }

TEST(Stages, CallTheListenerWhichMayCancel) {
    StageRecord record;
    host::set_stage_listener(&record);
    EXPECT_EQ(host_report_stage("Packing", 0.5f), 0);
    EXPECT_EQ(record.seen, "Packing 50");
    record.goes_on = false;
    EXPECT_NE(host_report_stage("Packing", 0.75f), 0);
    host::set_stage_listener(nullptr);
    EXPECT_EQ(host_report_stage("Packing", 1.0f), 0);
    EXPECT_EQ(record.seen, "Packing 75");
}

TEST(Stages, TheHookIsFoundByNameAtRunTime) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "host_report_stage"),
              reinterpret_cast<void*>(&host_report_stage));
}

} // namespace
