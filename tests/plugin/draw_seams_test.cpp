/// The overlay's three functions alone, with seam lists written by hand.
#include "faultpoint/faultpoint.h"
#include "plugin/viewport.h"
#include "tests/host/view/panel_fixture.h"

#include <maya/MFnMesh.h>
#include <maya/MPointArray.h>
#include <maya/MSelectionList.h>

#include <GL/gl.h>

#include <array>

namespace {

using host::Picture;
using panel_test::at;
using panel_test::count;
using panel_test::differing;
using panel_test::k_blue;
using panel_test::k_green;
enum : int { top, front, side, persp };

constexpr unsigned k_never =
    1000000; ///< armed for this pass, a fault point never fails and only counts

class DrawSeams : public panel_test::PanelTest {
protected:
    DrawSeams() {
        // Four squares in the ground plane, nine vertices in rows along x; 60 pixels a square.
        run("polyPlane -n sheet -w 2 -h 2 -sx 2 -sy 2; select -cl;"
            "setAttr topShape.orthographicWidth 4");
        MSelectionList list;
        list.add("sheetShape");
        EXPECT_TRUE(list.getDagPath(0, data.mesh_path));
    }
    ~DrawSeams() override {
        faultpoint::disarm_all();
        detach_viewport_callbacks(data);
    }

    static void set(MIntArray& list, std::initializer_list<int> ids) {
        list.clear();
        for (const int id : ids)
            list.append(id);
    }
    static size_t attached() {
        size_t sum = 0;
        for (int panel = 0; panel < host::k_panel_count; ++panel)
            sum +=
                host::graph::Callbacks::current().of_panel(host::panel_name(panel).asChar()).size();
        return sum;
    }
    template <class Action>
    static std::string errors_of(Action action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }
    /// Lines of one colour across a column or a row, counted from below or from the left.
    static std::vector<int> runs(const Picture& picture, panel_test::Rgb color, bool is_column,
                                 int fixed) {
        std::vector<int> lengths;
        const int end = is_column ? picture.height : picture.width;
        int length = 0;
        for (int i = 0; i <= end; ++i) {
            const bool is_on =
                i < end && (is_column ? at(picture, fixed, i) : at(picture, i, fixed)) == color;
            length += is_on;
            if (!is_on && length > 0) {
                lengths.push_back(length);
                length = 0;
            }
        }
        return lengths;
    }

    VisualizationData data;
};

// === Pixels ==================================================================================

TEST_F(DrawSeams, DrawsExistingSeamsGreenAndNewOnesBlue) {
    set(data.existing_seams, {3, 4, 4, 5});
    set(data.new_seams, {1, 4, 4, 7});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const Picture picture = draw(top);
    EXPECT_TRUE(at(picture, 90, 90) == k_green || at(picture, 90, 89) == k_green);
    EXPECT_TRUE(at(picture, 120, 60) == k_blue || at(picture, 119, 60) == k_blue);
    // 120 pixels each, three wide; the new seams are drawn last, over the crossing.
    EXPECT_EQ(count(picture, k_blue), 360u);
    EXPECT_EQ(count(picture, k_green), 351u);
}

TEST_F(DrawSeams, DrawsLinesThreePixelsWide) {
    set(data.existing_seams, {3, 5});
    set(data.new_seams, {1, 7});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const Picture picture = draw(top);
    for (const int column : {70, 90, 100, 140, 170})
        EXPECT_EQ(runs(picture, k_green, true, column), std::vector<int>{3}) << column;
    for (const int row : {40, 70, 89, 110, 140})
        EXPECT_EQ(runs(picture, k_blue, false, row), std::vector<int>{3}) << row;
}

TEST_F(DrawSeams, DrawsSlantedLinesThreePixelsWide) {
    set(data.new_seams, {0, 5}); // two to the right for one up
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const Picture picture = draw(top);
    for (int column = 70; column < 170; column += 10)
        EXPECT_EQ(runs(picture, k_blue, true, column), std::vector<int>{3}) << column;
}

TEST_F(DrawSeams, DrawsLinesBetweenTheProjectedVerticesInEveryPanel) {
    run("rotate 30 40 20 sheet");
    set(data.existing_seams, {0, 1});
    set(data.new_seams, {7, 8});
    frame_all();
    ASSERT_TRUE(attach_viewport_callbacks(data));
    MPointArray points;
    ASSERT_TRUE(MFnMesh(data.mesh_path).getPoints(points, MSpace::kWorld));
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        const Picture picture = draw(panel);
        for (const auto& [a, b, color] : {std::tuple(0u, 1u, k_green), std::tuple(7u, 8u, k_blue)})
            for (const double part : {0.2, 0.5, 0.8}) {
                double w[3];
                place(panel, points[a] + (points[b] - points[a]) * part, w);
                EXPECT_EQ(at(picture, int(w[0]), int(w[1])), color) << "panel " << panel;
            }
    }
}

TEST_F(DrawSeams, FollowsAMovedMesh) {
    set(data.new_seams, {3, 5});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    run("move 0 0 -0.5 sheet");
    // Half a unit up, which is 30 pixels.
    const Picture moved = draw(top);
    EXPECT_TRUE(at(moved, 100, 120) == k_blue);
    EXPECT_EQ(count(moved, k_blue), 360u);
    run("setAttr sheetShape.pnts[3].pntz -1; setAttr sheetShape.pnts[5].pntz -1");
    EXPECT_GT(count(draw(top), k_blue), 200u);
    EXPECT_FALSE(at(draw(top), 100, 120) == k_blue);
}

TEST_F(DrawSeams, IgnoresAnOddLastVertex) {
    set(data.new_seams, {3, 5, 0});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    EXPECT_EQ(count(draw(top), k_blue), 360u);
}

TEST_F(DrawSeams, SkipsSeamsOfVerticesThatTheMeshDoesNotHave) {
    set(data.new_seams, {100000, 3, 3, 5, -1, 0, 4, 100000});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    EXPECT_EQ(count(draw(top), k_blue), 360u);
}

TEST_F(DrawSeams, HidesSeamsBehindTheSurface) {
    set(data.new_seams, {3, 5});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    run("polyCube -n lid -w 3 -h 0.1 -d 3; move 0 1 0 lid");
    EXPECT_EQ(count(draw(top), k_blue), 0u);
}

// === OpenGL's state ==========================================================================

struct State {
    std::array<double, 16> model_view{}, projection{};
    GLint depth = 0, mode = 0;
    GLfloat width = 0;

    static State now() {
        State state;
        glGetDoublev(GL_MODELVIEW_MATRIX, state.model_view.data());
        glGetDoublev(GL_PROJECTION_MATRIX, state.projection.data());
        glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &state.depth);
        glGetIntegerv(GL_MATRIX_MODE, &state.mode);
        glGetFloatv(GL_LINE_WIDTH, &state.width);
        return state;
    }
};

TEST_F(DrawSeams, RestoresMatricesAndSetsTheLineWidthBackToOne) {
    set(data.existing_seams, {3, 5});
    set(data.new_seams, {1, 7});
    State before, after;
    // Around the drawing: one callback ahead of it, one after it.
    const auto ahead = callbacks.add_post_render("modelPanel4", [&](const std::string&) {
        glMatrixMode(GL_MODELVIEW);
        glTranslated(1.0, 2.0, 3.0);
        glLineWidth(5.0f);
        before = State::now();
    });
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const auto behind =
        callbacks.add_post_render("modelPanel4", [&](const std::string&) { after = State::now(); });
    draw(persp);
    callbacks.remove(ahead);
    callbacks.remove(behind);
    EXPECT_EQ(before.width, 5.0f);
    EXPECT_EQ(after.width, 1.0f);
    EXPECT_EQ(after.model_view, before.model_view);
    EXPECT_EQ(after.projection, before.projection);
    EXPECT_EQ(after.depth, before.depth);
    EXPECT_EQ(after.mode, GL_MODELVIEW);
}

TEST_F(DrawSeams, DrawsThroughThePanelsCameraWhateverMatrixIsLoaded) {
    set(data.new_seams, {1, 7});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const Picture expected = draw(top);
    detach_viewport_callbacks(data);
    const auto ahead = callbacks.add_post_render("modelPanel1", [&](const std::string&) {
        glMatrixMode(GL_MODELVIEW);
        glTranslated(0.5, 0.5, 0.5);
    });
    ASSERT_TRUE(attach_viewport_callbacks(data));
    EXPECT_EQ(differing(expected, draw(top)), 0u);
    callbacks.remove(ahead);
}

TEST_F(DrawSeams, WithoutSeamsDrawsNothingAndRestoresTheState) {
    const Picture plain = draw(persp);
    State before, after;
    const auto ahead = callbacks.add_post_render("modelPanel4", [&](const std::string&) {
        glLineWidth(5.0f);
        before = State::now();
    });
    ASSERT_TRUE(attach_viewport_callbacks(data));
    const auto behind =
        callbacks.add_post_render("modelPanel4", [&](const std::string&) { after = State::now(); });
    faultpoint::arm("M3dView::beginGL", MS::kFailure, k_never);
    faultpoint::arm("M3dView::endGL", MS::kFailure, k_never);
    const Picture picture = draw(persp);
    EXPECT_EQ(faultpoint::passes("M3dView::beginGL"), 1u);
    EXPECT_EQ(faultpoint::passes("M3dView::endGL"), 1u);
    callbacks.remove(ahead);
    callbacks.remove(behind);
    EXPECT_EQ(differing(picture, plain), 0u);
    EXPECT_EQ(after.width, 1.0f);
    EXPECT_EQ(after.model_view, before.model_view);
    EXPECT_EQ(after.projection, before.projection);
    EXPECT_EQ(after.depth, before.depth);
}

TEST_F(DrawSeams, ReadsThePointsOncePerPanel) {
    set(data.new_seams, {3, 5, 1, 7});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    faultpoint::arm("MFnMesh::getPoints", MS::kFailure, k_never);
    draw(top);
    EXPECT_EQ(faultpoint::passes("MFnMesh::getPoints"), 1u);
    ASSERT_TRUE(panels->draw_all());
    EXPECT_EQ(faultpoint::passes("MFnMesh::getPoints"), 5u);
}

// === Attaching and detaching =================================================================

TEST_F(DrawSeams, AttachedTwiceHoldsFourIds) {
    ASSERT_TRUE(attach_viewport_callbacks(data));
    ASSERT_TRUE(attach_viewport_callbacks(data));
    EXPECT_EQ(data.callback_ids.length(), 4u);
    EXPECT_EQ(attached(), 4u);
}

TEST_F(DrawSeams, AfterDetachingHoldsNoIdAndDrawsNothing) {
    const Picture plain = draw(top);
    set(data.new_seams, {3, 5});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    EXPECT_NE(differing(draw(top), plain), 0u);
    EXPECT_TRUE(detach_viewport_callbacks(data));
    EXPECT_EQ(data.callback_ids.length(), 0u);
    EXPECT_EQ(attached(), 0u);
    EXPECT_EQ(differing(draw(top), plain), 0u);
    EXPECT_TRUE(detach_viewport_callbacks(data)); // nothing to do is a success
}

TEST_F(DrawSeams, DetachesTheOthersWhenOneFails) {
    ASSERT_TRUE(attach_viewport_callbacks(data));
    MStatus status;
    const std::string text = errors_of([&] {
        faultpoint::Scope refused("MMessage::removeCallback", MS::kFailure, 2, 2);
        status = detach_viewport_callbacks(data);
    });
    EXPECT_TRUE(status.error());
    EXPECT_EQ(text, "Failed to clear viewport callback 1\nFailed to clear viewport callback 2\n\n");
    EXPECT_EQ(data.callback_ids.length(), 0u);
    EXPECT_EQ(attached(), 2u);
    callbacks.clear();
}

TEST_F(DrawSeams, DrawsInTheOtherPanelsWhenTheThirdIsMissing) {
    set(data.new_seams, {3, 5});
    frame_all();
    MStatus status;
    unsigned direct_calls = 0;
    const std::string text = errors_of([&] {
        faultpoint::Scope refused("MUiMessage::add3dViewPostRenderMsgCallback",
                                  MS::kInvalidParameter, 3);
        faultpoint::Scope missing("M3dView::getM3dViewFromModelPanel", MS::kInvalidParameter, 1, 0);
        faultpoint::Scope begun("M3dView::beginGL", MS::kFailure, k_never);
        status = attach_viewport_callbacks(data);
        direct_calls = faultpoint::passes("M3dView::getM3dViewFromModelPanel");
        EXPECT_EQ(faultpoint::passes("M3dView::beginGL"), 0u);
    });
    EXPECT_TRUE(status.error());
    EXPECT_EQ(direct_calls, 1u);
    EXPECT_EQ(text, std::string("Could not attach postrender callback to panel modelPanel3: ") +
                        MStatus(MS::kInvalidParameter).errorString().asChar() + "\n\n");
    EXPECT_EQ(data.callback_ids.length(), 4u);
    EXPECT_EQ(attached(), 3u);
    run("rotate 30 0 20 sheet");
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        EXPECT_EQ(count(draw(panel), k_blue) > 0u, panel != side) << panel;
    EXPECT_EQ(errors_of([&] { EXPECT_TRUE(detach_viewport_callbacks(data).error()); }),
              "Failed to clear viewport callback 2\n\n");
}

// === The mesh goes ===========================================================================

TEST_F(DrawSeams, AfterTheMeshIsDeletedTheNextRedrawDetaches) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        run("file -f -new; polyPlane -n sheet -w 2 -h 2 -sx 2 -sy 2; select -cl;");
        MSelectionList list;
        list.add("sheetShape");
        ASSERT_TRUE(list.getDagPath(0, data.mesh_path));
        set(data.new_seams, {3, 5});
        frame_all();
        ASSERT_TRUE(attach_viewport_callbacks(data));
        run("delete sheet");
        EXPECT_EQ(attached(), 4u);
        const Picture picture = draw(panel);
        EXPECT_EQ(count(picture, k_blue), 0u);
        EXPECT_EQ(data.callback_ids.length(), 0u);
        EXPECT_EQ(attached(), 0u);
    }
}

TEST_F(DrawSeams, DetachesWhenTheMeshCannotBeRead) {
    for (const char* point : {"MDagPath::node", "MFnMesh::setObject", "MFnMesh::getPoints"}) {
        set(data.new_seams, {3, 5});
        ASSERT_TRUE(attach_viewport_callbacks(data));
        faultpoint::arm(point, MS::kFailure);
        const Picture picture = draw(top);
        const unsigned passes = faultpoint::passes(point);
        faultpoint::disarm_all();
        EXPECT_EQ(passes, 1u) << point;
        EXPECT_EQ(count(picture, k_blue), 0u) << point;
        EXPECT_EQ(data.callback_ids.length(), 0u) << point;
        EXPECT_EQ(attached(), 0u) << point;
    }
}

TEST_F(DrawSeams, StaysAttachedWhenThePanelIsMissing) {
    set(data.new_seams, {3, 5});
    ASSERT_TRUE(attach_viewport_callbacks(data));
    {
        faultpoint::Scope missing("M3dView::getM3dViewFromModelPanel", MS::kInvalidParameter);
        EXPECT_EQ(count(draw(top), k_blue), 0u);
    }
    EXPECT_EQ(data.callback_ids.length(), 4u);
    EXPECT_GT(count(draw(top), k_blue), 0u);
}

} // namespace
