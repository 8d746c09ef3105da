#include "host/mesh/mesh.h"
#include "host/view/gl_panels.h"
#include "tests/host/view/panel_fixture.h"

#include <maya/M3dView.h>

#include <GL/gl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

using host::Picture;
using panel_test::at;
using panel_test::count;
using panel_test::differing;
using panel_test::PanelTest;
using panel_test::Rgb;
enum : int { top, front, side, persp };

class GlPanelsTest : public PanelTest {
protected:
    /// Runs `question` with the panels' context current, outside of any draw.
    template <class Question>
    void ask(Question question) {
        ASSERT_TRUE(surface->make_current());
        question();
        surface->give_back();
    }
    uint64_t built() const { return panels->counts().buffers_built; }
    /// Number of pixels that change when a transform is hidden.
    size_t covered(const std::string& transform, int panel) {
        run("setAttr " + transform + ".visibility 0");
        const Picture empty = draw(panel);
        run("setAttr " + transform + ".visibility 1");
        return differing(draw(panel), empty);
    }
};

// === Pictures ================================================================================

TEST_F(GlPanelsTest, DrawACubeInTheCentreOfEveryPanel) {
    run("polyCube -n box");
    frame_all();
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        run("setAttr box.visibility 0");
        const Picture empty = draw(panel);
        run("setAttr box.visibility 1");
        const Picture shown = draw(panel);
        EXPECT_FALSE(at(shown, 120, 90) == at(empty, 120, 90)) << panel;
        EXPECT_TRUE(at(shown, 2, 90) == at(empty, 2, 90)) << panel;
        EXPECT_TRUE(at(shown, 237, 90) == at(empty, 237, 90)) << panel;
    }
}

TEST_F(GlPanelsTest, DrawASquareAtItsProjectedSize) {
    run("polyCube -n box -w 2 -h 2 -d 2; setAttr frontShape.orthographicWidth 8");
    // 240 pixels show 8 units, so a side of 2 units is 60 pixels.
    EXPECT_EQ(covered("box", front), 60u * 60u);
}

TEST_F(GlPanelsTest, NearerFacesHideFartherOnes) {
    run("polyCube -n near; move 0 0 5 near; polyCube -n far -w 1 -h 1 -d 1;"
        "setAttr frontShape.orthographicWidth 4");
    run("setAttr far.visibility 0");
    const Picture alone = draw(front);
    run("setAttr far.visibility 1");
    EXPECT_EQ(differing(draw(front), alone), 0u);
}

TEST_F(GlPanelsTest, DrawMeshesOfAnySize) {
    for (const char* size : {"0.00001", "1", "1000000"}) {
        run(std::string("file -f -new; polyCube -n box -w ") + size + " -h " + size + " -d " +
            size);
        for (int panel = 0; panel < host::k_panel_count; ++panel) {
            panels->style(panel).has_grid = true;
            ASSERT_TRUE(panels->draw(panel));
        }
        frame_all();
        for (int panel = 0; panel < host::k_panel_count; ++panel)
            EXPECT_GT(covered("box", panel), 8000u) << size << " in panel " << panel;
    }
}

TEST_F(GlPanelsTest, SkipShapesUnderAHiddenParent) {
    run("polyCube -n box; createNode transform -n above; parent box above");
    frame_all();
    run("setAttr above.visibility 0");
    const Picture hidden = draw(persp);
    run("setAttr above.visibility 1; setAttr boxShape.visibility 0");
    EXPECT_EQ(differing(draw(persp), hidden), 0u);
    run("setAttr boxShape.visibility 1; setAttr boxShape.intermediateObject 1");
    EXPECT_EQ(differing(draw(persp), hidden), 0u);
    run("setAttr boxShape.intermediateObject 0");
    EXPECT_NE(differing(draw(persp), hidden), 0u);
}

TEST_F(GlPanelsTest, LightMirroredMeshesFromTheOutside) {
    run("polySphere -n ball");
    frame_all();
    const Picture plain = draw(front);
    run("setAttr ball.scaleX -1");
    // A mirrored ball looks the same; if lit from the inside it would be dark.
    const Picture mirrored = draw(front);
    int worst = 0;
    for (int x = 60; x < 180; ++x)
        worst = std::max(worst, std::abs(at(mirrored, x, 90).r - at(plain, x, 90).r));
    EXPECT_LT(worst, 24);
}

TEST_F(GlPanelsTest, WireframeDrawsOnlyEdges) {
    run("polyPlane -n sheet -w 2 -h 2 -sx 2 -sy 2; setAttr topShape.orthographicWidth 4");
    panels->style(top).appearance = host::Appearance::wireframe;
    // Five lines of 120 pixels plus their ends, instead of 120 x 120 pixels.
    const size_t pixels = covered("sheet", top);
    EXPECT_GT(pixels, 6u * 115u);
    EXPECT_LT(pixels, 6u * 125u);
}

TEST_F(GlPanelsTest, MarkSelectedShapesAndComponents) {
    run("polyCube -n box -w 2 -h 2 -d 2; setAttr frontShape.orthographicWidth 4; select -cl");
    panels->style(front).has_selection = true;
    const Picture plain = draw(front);
    run("select box");
    EXPECT_NE(differing(draw(front), plain), 0u);
    std::vector<size_t> changed;
    for (const char* part : {"box.vtx[*]", "box.e[*]", "box.f[*]", "box.map[*]"}) {
        run(std::string("select ") + part);
        changed.push_back(differing(draw(front), plain));
    }
    EXPECT_GT(changed[0], 4u * 6u); // four points of about 5 x 5 pixels
    EXPECT_LT(changed[0], 4u * 30u);
    EXPECT_GT(changed[1], 4u * 120u);
    EXPECT_LT(changed[1], 4u * 130u * 3u);
    EXPECT_EQ(changed[2], 120u * 120u);
    EXPECT_EQ(changed[3], 0u);
    panels->style(front).has_selection = false;
    run("select box.f[*]");
    EXPECT_EQ(differing(draw(front), plain), 0u);
}

TEST_F(GlPanelsTest, DrawGridAndNameIfEnabled) {
    const Picture plain = draw(top);
    panels->style(top).has_grid = true;
    const Picture grid = draw(top);
    EXPECT_GT(differing(grid, plain), 1000u);
    panels->style(top).has_name = true;
    const size_t name = differing(draw(top), grid);
    EXPECT_GT(name, 60u);
    EXPECT_LT(name, 1000u);
}

TEST_F(GlPanelsTest, RedrawIsIdentical) {
    run("polySphere -n ball");
    frame_all();
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        panels->style(panel) = host::PanelStyle();
        const Picture once = draw(panel);
        EXPECT_EQ(differing(draw(panel), once), 0u);
    }
}

TEST_F(GlPanelsTest, DrawOnlyInsideTheirViewport) {
    run("polySphere -n ball");
    frame_all();
    ASSERT_TRUE(panels->draw_all());
    const Picture before = surface->read();
    run("move 0.2 0 0 ball");
    ASSERT_TRUE(panels->draw(side) && panels->draw(front));
    const Picture after = surface->read();
    for (const int other : {top, persp})
        EXPECT_EQ(
            differing(cut(after, panels->viewport(other)), cut(before, panels->viewport(other))),
            0u);
    EXPECT_NE(differing(cut(after, panels->viewport(front)), cut(before, panels->viewport(front))),
              0u);
}

TEST_F(GlPanelsTest, MultisamplingSmoothsEdges) {
    run("polySphere -n ball");
    frame_all();
    std::string error;
    const auto shades = [&] {
        std::vector<int> found;
        const Picture picture = draw(front);
        for (int x = 0; x < picture.width; ++x)
            found.push_back(at(picture, x, 100).r);
        return found;
    };
    const std::vector<int> hard = shades();
    ASSERT_TRUE(surface->resize(2 * panel_test::k_width, 2 * panel_test::k_height, 4, error));
    EXPECT_NE(shades(), hard);
}

// === Buffers =================================================================================

TEST_F(GlPanelsTest, BuildBuffersOnceForManyDraws) {
    run("polySphere -n ball");
    frame_all();
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(built(), 1u);
    const uint64_t uploaded = panels->counts().bytes_uploaded;
    for (int i = 0; i < 5; ++i) {
        host::orbit(host::panel_camera(persp), 10, 5);
        run("move -r 0.1 0 0 ball; select ball");
        ASSERT_TRUE(panels->draw_all());
    }
    EXPECT_EQ(built(), 1u);
    EXPECT_EQ(panels->counts().bytes_uploaded, uploaded);
    EXPECT_EQ(panels->counts().panels, 24u);
}

TEST_F(GlPanelsTest, RebuildBuffersWhenTheMeshChanges) {
    run("polySphere -n ball -r 1");
    frame_all();
    ASSERT_TRUE(panels->draw_all());
    const Picture before = draw(front);
    run("setAttr polySphere1.radius 0.5");
    EXPECT_NE(differing(draw(front), before), 0u);
    EXPECT_EQ(built(), 2u);
    run("setAttr ballShape.pnts[3].pnty 0.25");
    draw(front);
    EXPECT_EQ(built(), 3u);
    EXPECT_EQ(panels->counts().buffers_held, 1u);
}

TEST_F(GlPanelsTest, KeepBuffersWhenOnlyUvsChange) {
    run("polySphere -n ball");
    frame_all();
    ASSERT_TRUE(panels->draw_all());
    host::UvSet& set = shape("ballShape").edit()->edit_uv_set(0);
    set.u[0] += 0.5f;
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(built(), 1u);
}

TEST_F(GlPanelsTest, ShareBuffersBetweenInstances) {
    run("polySphere -n ball; createNode transform -n other; move 2 0 0 other");
    ASSERT_TRUE(scene.add_instance(shape("ballShape"), *scene.find("other")->as_dag_node()));
    EXPECT_EQ(host::visible_shapes().size(), 2u);
    frame_all();
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(built(), 1u);
}

TEST_F(GlPanelsTest, DropBuffersOfDeletedMeshes) {
    run("polySphere -n ball; polyCube -n box");
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(panels->counts().buffers_held, 2u);
    run("delete ball");
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(panels->counts().buffers_held, 1u);
    panels->release_buffers();
    EXPECT_EQ(panels->counts().buffers_held, 0u);
}

TEST_F(GlPanelsTest, KeepComponentBuffersWhileTheSelectionStays) {
    run("polySphere -n ball; select ball.f[0:20]");
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(built(), 2u);
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(built(), 2u);
    run("select -cl");
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(panels->counts().buffers_held, 1u);
}

// === Callbacks and plug-ins ==================================================================

TEST_F(GlPanelsTest, FirePostRenderCallbacksWithThePanelName) {
    std::vector<std::string> calls;
    std::vector<host::graph::CallbackId> ids;
    for (const char* name : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
        ids.push_back(callbacks.add_post_render(
            name, [&](const std::string& panel) { calls.push_back(panel); }));
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(calls, (std::vector<std::string>{"modelPanel1", "modelPanel2", "modelPanel3",
                                               "modelPanel4"}));
    for (const auto id : ids)
        callbacks.remove(id);
}

TEST_F(GlPanelsTest, LoadTheCamerasMatricesForCallbacks) {
    run("polyCube -n box");
    frame_all();
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        ASSERT_TRUE(panels->draw(panel));
        const host::CameraView camera = panels->camera_view(panel);
        double view[4][4], projection[4][4];
        GLint viewport[4] = {};
        GLboolean has_depth = GL_FALSE, has_light = GL_TRUE;
        const auto id =
            callbacks.add_post_render(host::panel_name(panel).asChar(), [&](const std::string&) {
                glGetDoublev(GL_MODELVIEW_MATRIX, &view[0][0]);
                glGetDoublev(GL_PROJECTION_MATRIX, &projection[0][0]);
                glGetIntegerv(GL_VIEWPORT, viewport);
                has_depth = glIsEnabled(GL_DEPTH_TEST);
                has_light = glIsEnabled(GL_LIGHTING);
            });
        ASSERT_TRUE(panels->draw(panel));
        callbacks.remove(id);
        EXPECT_TRUE(MMatrix(view).isEquivalent(camera.view, 1e-4)) << panel;
        EXPECT_TRUE(MMatrix(projection).isEquivalent(camera.projection, 1e-4)) << panel;
        EXPECT_EQ(viewport[0], panels->viewport(panel).x);
        EXPECT_EQ(viewport[3], panels->viewport(panel).height);
        EXPECT_TRUE(has_depth);
        EXPECT_FALSE(has_light);
    }
}

TEST_F(GlPanelsTest, RestoreAllOpenGlState) {
    run("polySphere -n ball; select ball.f[*]");
    const auto leave_a_mess = [](const std::string&) {
        glLineWidth(7.0f);
        glEnable(GL_BLEND);
        glDisable(GL_DEPTH_TEST);
        glColor3f(1.0f, 0.0f, 0.0f);
        glMatrixMode(GL_PROJECTION);
        glScalef(2.0f, 2.0f, 2.0f);
    };
    const auto id = callbacks.add_post_render("modelPanel4", leave_a_mess);
    const auto state = [&] {
        std::vector<float> values(64);
        ask([&] {
            glGetFloatv(GL_LINE_WIDTH, &values[0]);
            glGetFloatv(GL_CURRENT_COLOR, &values[1]);
            glGetFloatv(GL_VIEWPORT, &values[5]);
            glGetFloatv(GL_MATRIX_MODE, &values[9]);
            glGetFloatv(GL_PROJECTION_MATRIX, &values[10]);
            glGetFloatv(GL_MODELVIEW_MATRIX, &values[26]);
            glGetFloatv(GL_SCISSOR_BOX, &values[42]);
            values[46] = glIsEnabled(GL_DEPTH_TEST);
            values[47] = glIsEnabled(GL_BLEND);
            values[48] = glIsEnabled(GL_LIGHTING);
            values[49] = glIsEnabled(GL_VERTEX_ARRAY);
            glGetFloatv(GL_MODELVIEW_STACK_DEPTH, &values[50]);
            glGetFloatv(GL_PROJECTION_STACK_DEPTH, &values[51]);
            glGetFloatv(GL_ATTRIB_STACK_DEPTH, &values[52]);
            glGetFloatv(GL_COLOR_CLEAR_VALUE, &values[53]);
            glGetFloatv(GL_POINT_SIZE, &values[57]);
        });
        return values;
    };
    ask([] {
        glColor4f(0.25f, 0.5f, 0.75f, 1.0f);
        glLineWidth(2.0f);
        glMatrixMode(GL_TEXTURE);
    });
    const std::vector<float> before = state();
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(state(), before);
    callbacks.remove(id);
}

TEST_F(GlPanelsTest, RefuseNestedDraws) {
    bool inner = true;
    const auto id = callbacks.add_post_render("modelPanel4", [&](const std::string&) {
        inner = panels->draw(front);
        M3dView::active3dView().refresh(true, true);
    });
    EXPECT_TRUE(panels->draw(persp));
    EXPECT_FALSE(inner);
    callbacks.remove(id);
}

TEST_F(GlPanelsTest, BeginGlSetsUpThePanelUntilEndGl) {
    run("polyCube -n box -w 2 -h 2 -d 2");
    frame_all();
    draw(front);
    M3dView view;
    ASSERT_TRUE(M3dView::getM3dViewFromModelPanel("modelPanel2", view));
    EXPECT_TRUE(view.endGL().error());
    ASSERT_TRUE(view.beginGL());
    glColor3f(1.0f, 0.0f, 1.0f);
    glBegin(GL_TRIANGLES); // in front of the cube
    glVertex3d(-1, -1, 1);
    glVertex3d(1, -1, 1);
    glVertex3d(1, 1, 1);
    glEnd();
    ASSERT_TRUE(view.endGL());
    EXPECT_TRUE(view.endGL().error());
    const Picture picture = cut(surface->read(), panels->viewport(front));
    double low[3], high[3];
    place(front, MPoint(-1, -1, 1), low);
    place(front, MPoint(1, 1, 1), high);
    const double half = 0.5 * (high[0] - low[0]) * (high[1] - low[1]);
    EXPECT_NEAR(double(count(picture, Rgb{255, 0, 255})), half, 200.0);
}

TEST_F(GlPanelsTest, BeginAndEndGlNestAcrossPanels) {
    draw(front);
    M3dView one, other;
    ASSERT_TRUE(M3dView::getM3dViewFromModelPanel("modelPanel2", one));
    ASSERT_TRUE(M3dView::getM3dViewFromModelPanel("modelPanel4", other));
    const auto viewport_x = [] {
        GLint box[4] = {-1, -1, -1, -1};
        glGetIntegerv(GL_VIEWPORT, box);
        return box[0];
    };
    ASSERT_TRUE(one.beginGL());
    EXPECT_EQ(viewport_x(), panels->viewport(front).x);
    ASSERT_TRUE(other.beginGL());
    EXPECT_EQ(viewport_x(), panels->viewport(persp).x);
    EXPECT_TRUE(one.endGL().error()); // brackets must end in reverse order
    ASSERT_TRUE(other.endGL());
    EXPECT_EQ(viewport_x(), panels->viewport(front).x);
    ASSERT_TRUE(one.endGL());
}

TEST_F(GlPanelsTest, BeginGlFailsInAHiddenPanel) {
    panels->arrange_one(persp, 100, 100);
    M3dView view;
    ASSERT_TRUE(M3dView::getM3dViewFromModelPanel("modelPanel1", view));
    EXPECT_TRUE(view.beginGL().error());
    EXPECT_FALSE(panels->draw(top));
    EXPECT_TRUE(panels->draw_all());
}

TEST_F(GlPanelsTest, ReportCameraAndSizeToPlugins) {
    MStatus status;
    M3dView view = M3dView::active3dView(&status);
    ASSERT_TRUE(status);
    EXPECT_EQ(view.portWidth(), panel_test::k_width);
    EXPECT_EQ(view.portHeight(), panel_test::k_height);
    MDagPath camera;
    ASSERT_TRUE(view.getCamera(camera));
    EXPECT_STREQ(camera.fullPathName().asChar(), "|persp|perspShape");
    EXPECT_TRUE(camera.inclusiveMatrix().inverse().isEquivalent(panels->camera_view(persp).view));
}

TEST_F(GlPanelsTest, RefreshRequestsARedraw) {
    ASSERT_TRUE(panels->draw_all());
    const uint64_t drawn = panels->counts().panels;
    M3dView view = M3dView::active3dView();
    ASSERT_TRUE(view.refresh());
    EXPECT_TRUE(panels->needs_redraw(persp));
    EXPECT_FALSE(panels->needs_redraw(top));
    EXPECT_EQ(panels->counts().panels, drawn);
    ASSERT_TRUE(view.refresh(false, true));
    EXPECT_EQ(panels->counts().panels, drawn + 1);
    EXPECT_FALSE(panels->needs_redraw(persp));
    ASSERT_TRUE(view.refresh(true, true));
    EXPECT_EQ(panels->counts().panels, drawn + 5);
    ASSERT_TRUE(view.refresh(true));
    EXPECT_TRUE(panels->needs_redraw(top));
}

TEST_F(GlPanelsTest, DestructorReinstatesTheReplacedRenderer) {
    {
        std::string error;
        auto other = host::Offscreen::make(error);
        ASSERT_TRUE(other) << error;
        host::GlPanels more(*other);
        EXPECT_EQ(host::panel_renderer(), &more);
        EXPECT_EQ(more.replaced(), panels.get());
    }
    EXPECT_EQ(host::panel_renderer(), panels.get());
}

TEST_F(GlPanelsTest, DrawWhileAnotherContextIsInUse) {
    std::string error;
    auto other = host::Offscreen::make(error);
    ASSERT_TRUE(other && other->resize(64, 64, 1, error)) << error;
    run("polySphere -n ball");
    frame_all();
    const Picture before = draw(front);
    ASSERT_TRUE(other->make_current());
    ASSERT_TRUE(panels->draw(front)); // the other context is restored afterwards
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    other->give_back();
    EXPECT_EQ(count(other->read(), Rgb{255, 0, 0}), 64u * 64u);
    EXPECT_EQ(differing(cut(surface->read(), panels->viewport(front)), before), 0u);
}

// === Surfaces and files ======================================================================

TEST_F(GlPanelsTest, RefusePicturesThatAreEmptyOrTooLarge) {
    std::string error;
    EXPECT_FALSE(surface->resize(0, 100, 1, error));
    EXPECT_NE(error.find("no picture of 0 x 100 pixels"), std::string::npos) << error;
    EXPECT_FALSE(surface->resize(1 << 20, 16, 4, error));
    EXPECT_TRUE(surface->read().rgb.empty());
    EXPECT_TRUE(surface->resize(16, 16, 1000, error)) << error;
}

TEST(PngOf, EncodesAPngFile) {
    host::Picture picture;
    EXPECT_EQ(host::png_of(picture), "");
    picture.width = 3;
    picture.height = 2;
    picture.rgb.assign(18, 127);
    const std::string file = host::png_of(picture);
    ASSERT_GT(file.size(), 24u);
    EXPECT_EQ(std::memcmp(file.data(), "\x89PNG\r\n\x1a\n", 8), 0);
    EXPECT_EQ(file[19], 3);
    EXPECT_EQ(file[23], 2);
}

} // namespace
