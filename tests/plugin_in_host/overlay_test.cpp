/// The overlay of the built plug-in in pictures of the panels. The expected lines are computed from
/// the mesh's UV sets, independently of the plug-in.
#include "faultpoint/faultpoint.h"
#include "host/graph/plugins.h"
#include "host/mesh/mesh.h"
#include "tests/fixtures/library_names.h"
#include "tests/host/view/panel_fixture.h"
#include "tests/plugin_in_host/mesh_seams.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace {

using host::Picture;
using panel_test::at;
using panel_test::count;
using panel_test::k_blue;
using panel_test::k_green;
using panel_test::Rgb;
using plugin_in_host::Edges;
using plugin_in_host::seams_of;

double distance_to_segment(double x, double y, const double a[3], const double b[3]) {
    const double dx = b[0] - a[0], dy = b[1] - a[1];
    const double length2 = std::max(dx * dx + dy * dy, 1e-12);
    const double t = std::clamp(((x - a[0]) * dx + (y - a[1]) * dy) / length2, 0.0, 1.0);
    return std::hypot(x - a[0] - t * dx, y - a[1] - t * dy);
}

class Overlay : public panel_test::PanelTest, protected host::script::Output {
protected:
    Overlay() {
        host::script::Session::current().set_output(this);
        fixtures::keep_names_of(TESSORA_PLUGIN_FOLDER "/tessora.so");
        host::graph::Plugins::current().search_path() = {TESSORA_PLUGIN_FOLDER};
        host::script::Session::current().interpreter().script_path() = {TESSORA_SCRIPTS};
        run("loadPlugin tessora; file -f -new");
    }
    ~Overlay() override {
        faultpoint::disarm_all();
        run("file -f -new");
        if (host::graph::Plugins::current().is_loaded("tessora"))
            run("unloadPlugin -f tessora");
        host::script::Session::current().set_output(nullptr);
    }

    /// A sphere with UVs, unwrapped once with its seams kept, framed in all panels.
    void unwrap_ball() {
        run("polySphere -n ball -sx 16 -sy 12");
        shape("ballShape").refresh();
        existing = seams_of(*shape("ballShape").mesh());
        run("select ball; tessora -keep_seams 1 -stretch 0.01; select -cl");
        frame_all();
        find_new_seams();
    }
    void find_new_seams() {
        shape("ballShape").refresh();
        added = seams_of(*shape("ballShape").mesh());
        for (const uint32_t seam : existing)
            added.erase(seam);
    }
    size_t colored(int panel) {
        const Picture picture = draw(panel);
        return count(picture, k_green) + count(picture, k_blue);
    }
    size_t colored() {
        size_t sum = 0;
        for (int panel = 0; panel < host::k_panel_count; ++panel)
            sum += colored(panel);
        return sum;
    }
    size_t attached() const {
        size_t sum = 0;
        for (int panel = 0; panel < host::k_panel_count; ++panel)
            sum += callbacks.of_panel(host::panel_name(panel).asChar()).size();
        return sum;
    }
    MPoint point(uint32_t vertex) {
        const host::Float3& p = shape("ballShape").mesh()->points()[vertex];
        return MPoint(double(p.x), double(p.y), double(p.z));
    }
    void ends(int panel, uint32_t edge, double a[3], double b[3]) {
        const auto& pair = shape("ballShape").mesh()->connectivity().edge(edge);
        place(panel, point(pair.first), a);
        place(panel, point(pair.second), b);
    }
    /// On a sphere an edge is visible if both its faces face the camera.
    bool is_seen(int panel, uint32_t edge) {
        const host::Mesh& mesh = *shape("ballShape").mesh();
        const MMatrix eye = panels->camera_view(panel).view.inverse();
        const MPoint middle = point(mesh.connectivity().edge(edge).first);
        const MVector away = panels->camera_view(panel).is_orthographic
                                 ? MVector(eye[2][0], eye[2][1], eye[2][2])
                                 : MPoint(eye[3][0], eye[3][1], eye[3][2]) - middle;
        for (const uint32_t polygon : mesh.connectivity().edge_polygons(edge))
            if (mesh.normal(polygon) * away.normal() < 0.25)
                return false;
        return true;
    }
    /// Expects every visible seam to be drawn in its colour; returns the number of visible seams.
    size_t expect_seams(int panel, const Picture& picture, const Edges& seams, Rgb color) {
        size_t seen = 0;
        for (const uint32_t edge : seams) {
            double a[3], b[3];
            ends(panel, edge, a, b);
            if (!is_seen(panel, edge) || std::hypot(b[0] - a[0], b[1] - a[1]) < 8.0)
                continue;
            ++seen;
            EXPECT_EQ(at(picture, int(0.5 * (a[0] + b[0])), int(0.5 * (a[1] + b[1]))), color)
                << "edge " << edge << " in panel " << panel;
        }
        return seen;
    }
    /// Expects every pixel of a colour to be near a seam of that colour.
    void expect_nothing_else(int panel, const Picture& picture, const Edges& seams, Rgb color) {
        std::vector<std::array<double, 6>> lines;
        for (const uint32_t edge : seams) {
            double a[3], b[3];
            ends(panel, edge, a, b);
            lines.push_back({a[0], a[1], a[2], b[0], b[1], b[2]});
        }
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                if (!(at(picture, x, y) == color))
                    continue;
                double nearest = 1e9;
                for (const auto& line : lines)
                    nearest = std::min(nearest,
                                       distance_to_segment(x + 0.5, y + 0.5, &line[0], &line[3]));
                EXPECT_LE(nearest, 2.2) << x << ' ' << y << " in panel " << panel;
            }
    }
    void expect_overlay() {
        size_t seen = 0;
        for (int panel = 0; panel < host::k_panel_count; ++panel) {
            const Picture picture = draw(panel);
            seen += expect_seams(panel, picture, existing, k_green);
            seen += expect_seams(panel, picture, added, k_blue);
            expect_nothing_else(panel, picture, existing, k_green);
            expect_nothing_else(panel, picture, added, k_blue);
        }
        EXPECT_GT(seen, 8u);
    }

    void print(const std::string&) override {}
    void warning(const std::string&) override {}
    void error(const std::string& text) override { ADD_FAILURE() << text; }

    Edges existing, added;
};

TEST_F(Overlay, ShowsExistingSeamsGreenAndNewOnesBlueInEveryPanel) {
    unwrap_ball();
    ASSERT_GT(existing.size(), 4u);
    ASSERT_GT(added.size(), 4u);
    expect_overlay();
}

TEST_F(Overlay, ShowsOnlyNewSeamsWhenNoneAreKept) {
    run("polySphere -n ball -sx 16 -sy 12; select ball; tessora -stretch 0.01; select -cl");
    frame_all();
    find_new_seams();
    size_t green = 0;
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        green += count(draw(panel), k_green);
    EXPECT_EQ(green, 0u);
    expect_overlay();
}

TEST_F(Overlay, ShowsTheSeamsOfTheLastUnwrap) {
    unwrap_ball();
    const Edges before = added;
    run("setAttr tessora_node1.Stretch 0.5; setAttr tessora_node1.Skip_compute 0");
    find_new_seams();
    EXPECT_NE(added, before);
    expect_overlay();
}

TEST_F(Overlay, FollowsTheMeshThroughItsTransform) {
    unwrap_ball();
    const size_t before = colored();
    run("move 50 0 0 ball");
    EXPECT_EQ(colored(0), 0u);
    EXPECT_EQ(colored(1), 0u);
    frame_all();
    EXPECT_NEAR(double(colored()), double(before), 0.1 * double(before));
}

TEST_F(Overlay, DetachesAtTheFirstRedrawAfterTheMeshIsDeleted) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        run("file -f -new");
        unwrap_ball();
        EXPECT_GT(colored(panel), 0u);
        EXPECT_EQ(attached(), 4u);
        // Deletes the shape but not its history.
        scene.remove(*scene.find("ball"));
        EXPECT_EQ(colored(panel), 0u);
        EXPECT_EQ(attached(), 0u);
    }
}

TEST_F(Overlay, FollowsTheVisualizationAttribute) {
    unwrap_ball();
    const size_t before = colored();
    run("setAttr tessora_node1.Visualization 0");
    shape("ballShape").refresh();
    EXPECT_EQ(colored(), 0u);
    EXPECT_EQ(attached(), 0u);
    run("setAttr tessora_node1.Visualization 1");
    shape("ballShape").refresh();
    EXPECT_EQ(colored(), before);
    EXPECT_EQ(attached(), 4u);
}

TEST_F(Overlay, IsHiddenWhileTheNodeHasNoEffect) {
    unwrap_ball();
    run("setAttr tessora_node1.nodeState 1; setAttr tessora_node1.Skip_compute 0");
    EXPECT_EQ(colored(), 0u);
}

TEST_F(Overlay, DisappearsWithUndoAndReturnsWithRedo) {
    unwrap_ball();
    const size_t before = colored();
    run("undo"); // of the selection
    run("undo"); // of the unwrap
    EXPECT_EQ(colored(), 0u);
    run("redo");
    // The node still has its output, and so does not unwrap again.
    EXPECT_EQ(colored(), before);
    run("redo; setAttr tessora_node1.Skip_compute 0");
    EXPECT_EQ(colored(), before);
}

TEST_F(Overlay, DisappearsWithTheScene) {
    unwrap_ball();
    EXPECT_GT(colored(), 0u);
    run("file -f -new; polySphere");
    EXPECT_EQ(colored(), 0u);
    EXPECT_EQ(attached(), 0u);
}

TEST_F(Overlay, DisappearsWhenThePluginIsUnloaded) {
    unwrap_ball();
    EXPECT_GT(colored(), 0u);
    run("unloadPlugin -f tessora");
    EXPECT_EQ(colored(), 0u);
    EXPECT_EQ(attached(), 0u);
}

TEST_F(Overlay, IsDrawnInTheExistingPanels) {
    run("polySphere -n ball -sx 16 -sy 12");
    frame_all();
    testing::internal::CaptureStderr();
    {
        faultpoint::Scope refused("MUiMessage::add3dViewPostRenderMsgCallback",
                                  MS::kInvalidParameter, 3);
        faultpoint::Scope missing("M3dView::getM3dViewFromModelPanel", MS::kInvalidParameter);
        run("select ball; tessora; select -cl");
        EXPECT_TRUE(shape("ballShape").refresh().error());
    }
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("Could not attach postrender callback to panel modelPanel3: "
                        "(kInvalidParameter)"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("Could not attach viewport callback\n"), std::string::npos) << text;
    EXPECT_EQ(attached(), 3u);
    // Frozen, because a redraw would evaluate the dirty output and attach the overlay again.
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        EXPECT_EQ(callbacks.of_panel(host::panel_name(panel).asChar()).size(),
                  panel == 2 ? 0u : 1u);
}

TEST_F(Overlay, ARedrawDoesNotUnwrapAgain) {
    unwrap_ball();
    ASSERT_TRUE(panels->draw_all());
    const host::DrawCounts before = panels->counts();
    for (int i = 0; i < 10; ++i) {
        host::orbit(host::panel_camera(3), 5.0, 1.0);
        ASSERT_TRUE(panels->draw_all());
        EXPECT_GT(colored(3), 0u);
    }
    EXPECT_EQ(panels->counts().buffers_built, before.buffers_built);
    EXPECT_EQ(panels->counts().bytes_uploaded, before.bytes_uploaded);
}

} // namespace
