#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "host/ui/panels.h"
#include "host/view/cameras.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using host::CameraView;
using host::Viewport;

constexpr Viewport k_port{10, 20, 400, 300};
enum : int { top, front, side, persp };

class Cameras : public testing::Test {
protected:
    Cameras() { host::graph::Scene::current().clear(); }
    ~Cameras() override { host::graph::Scene::current().clear(); }

    static void run(const std::string& text) {
        EXPECT_TRUE(host::script::Session::current().run(text, "test").ok) << text;
    }
    static CameraView read(int panel, const Viewport& viewport = k_port) {
        return host::read_camera(host::panel_camera(panel), viewport, host::Bounds());
    }
    static host::PointSource source(const std::vector<MPoint>& points) {
        return [points](const host::PointSink& sink) {
            for (const MPoint& point : points)
                sink(point);
        };
    }
    /// Bounds of projected points, in normalised device coordinates.
    static host::Bounds seen(int panel, const std::vector<MPoint>& points) {
        host::Bounds all, box;
        for (const MPoint& point : points)
            all.add(point);
        const CameraView camera = host::read_camera(host::panel_camera(panel), k_port, all);
        for (const MPoint& point : points) {
            double w[3];
            EXPECT_TRUE(host::project(camera, k_port, point, w));
            EXPECT_GE(w[2], 0.0);
            EXPECT_LE(w[2], 1.0);
            box.add(MPoint(2.0 * (w[0] - k_port.x) / k_port.width - 1.0,
                           2.0 * (w[1] - k_port.y) / k_port.height - 1.0, 0.0));
        }
        return box;
    }
    static std::vector<MPoint> cloud(unsigned seed, double size, const MPoint& center) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> spread(-1.0, 1.0);
        std::vector<MPoint> points;
        for (int i = 0; i < 40; ++i) {
            const double x = spread(random), y = spread(random), z = spread(random);
            points.emplace_back(center.x + size * x, center.y + 0.5 * size * y,
                                center.z + 2.0 * size * z);
        }
        return points;
    }
};

TEST_F(Cameras, PanelsLookThroughTopFrontSideAndPersp) {
    const char* const names[] = {"top", "front", "side", "persp"};
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        EXPECT_EQ(host::camera_name(host::panel_camera(panel)), names[panel]);
    EXPECT_TRUE(host::panel_camera(-1).empty());
    EXPECT_TRUE(host::panel_camera(4).empty());
}

TEST_F(Cameras, AreFoundDespiteAnotherNodeOfTheSameName) {
    run("createNode transform -n \"group\"; createNode transform -n \"persp\" -p \"group\";");
    const auto path = host::panel_camera(persp);
    ASSERT_EQ(path.size(), 2u);
    EXPECT_TRUE(path[0]->is_default);
}

TEST_F(Cameras, ProjectTheOriginToTheCentre) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        double window[3];
        ASSERT_TRUE(host::project(read(panel), k_port, MPoint(), window));
        EXPECT_NEAR(window[0], 210.0, 0.01) << panel;
        EXPECT_NEAR(window[1], 170.0, 0.01) << panel;
    }
}

TEST_F(Cameras, LookAlongTheAxesTheirNamesImply) {
    const struct {
        int panel;
        MPoint right, up;
    } cases[] = {
        {top, {1, 0, 0}, {0, 0, -1}}, {front, {1, 0, 0}, {0, 1, 0}}, {side, {0, 0, -1}, {0, 1, 0}}};
    for (const auto& c : cases) {
        double right[3], up[3];
        ASSERT_TRUE(host::project(read(c.panel), k_port, c.right, right));
        ASSERT_TRUE(host::project(read(c.panel), k_port, c.up, up));
        EXPECT_GT(right[0], 210.5);
        EXPECT_NEAR(right[1], 170.0, 1e-6);
        EXPECT_NEAR(up[0], 210.0, 1e-6);
        EXPECT_GT(up[1], 170.5);
    }
}

TEST_F(Cameras, OrthographicWidthSpansThePanel) {
    run("setAttr frontShape.orthographicWidth 8");
    double window[3];
    ASSERT_TRUE(host::project(read(front), k_port, MPoint(4, 3, 0), window));
    EXPECT_NEAR(window[0], 410.0, 1e-6);
    EXPECT_NEAR(window[1], 320.0, 1e-6);
}

TEST_F(Cameras, FilmFitCoversThePanel) {
    // Film of 36 x 24 mm at 35 mm focal length: its width fills wide panels, its height tall ones.
    const double wide = 1.41732 * 25.4 / 70.0, high = 0.94488 * 25.4 / 70.0;
    EXPECT_NEAR(read(persp, {0, 0, 400, 100}).half_width, wide, 1e-12);
    EXPECT_NEAR(read(persp, {0, 0, 400, 100}).half_height, wide / 4, 1e-12);
    EXPECT_NEAR(read(persp, {0, 0, 100, 400}).half_height, high, 1e-12);
    EXPECT_NEAR(read(persp, {0, 0, 100, 400}).half_width, high / 4, 1e-12);
}

TEST_F(Cameras, ProjectFailsBehindTheCamera) {
    double window[3];
    EXPECT_FALSE(host::project(read(persp), k_port, MPoint(60, 45, 60), window));
}

TEST_F(Cameras, RaysPassThroughTheProjectedPoint) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        for (const MPoint& point : cloud(7, 3.0, MPoint(1, 2, 3))) {
            double window[3];
            ASSERT_TRUE(host::project(read(panel), k_port, point, window));
            MPoint origin;
            MVector direction;
            host::ray_through(read(panel), k_port, window[0], window[1], origin, direction);
            EXPECT_NEAR(direction.length(), 1.0, 1e-12);
            const MVector away = point - origin;
            EXPECT_LT((away ^ direction).length(), 1e-9 * away.length());
            EXPECT_GT(away * direction, 0.0);
        }
    }
}

TEST_F(Cameras, FrameFitsRandomPointsExactlyInTheTighterDirection) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const double size = std::pow(10.0, double(seed % 9) - 4.0);
        const auto points = cloud(seed, size, MPoint(3 * size, -size, 20 * size));
        for (int panel = 0; panel < host::k_panel_count; ++panel) {
            host::frame_points(host::panel_camera(panel), k_port, source(points), 0.8);
            const host::Bounds box = seen(panel, points);
            const MPoint middle = box.center();
            const bool is_wide = box.high.x > box.high.y;
            EXPECT_NEAR(is_wide ? middle.x : middle.y, 0.0, 1e-6)
                << "panel " << panel << " seed " << seed;
            EXPECT_NEAR(is_wide ? middle.y : middle.x, 0.0, panel == persp ? 0.1 : 1e-6)
                << "panel " << panel << " seed " << seed;
            EXPECT_NEAR(std::max(box.high.x, box.high.y), 0.8, 1e-6)
                << "panel " << panel << " seed " << seed;
        }
    }
}

TEST_F(Cameras, FrameOfASinglePointIsFinite) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        host::frame_points(host::panel_camera(panel), k_port, source({MPoint(5, 6, 7)}));
        const host::Bounds box = seen(panel, {MPoint(5, 6, 7)});
        EXPECT_NEAR(box.center().x, 0.0, 1e-3);
        EXPECT_NEAR(box.center().y, 0.0, 1e-3);
    }
}

TEST_F(Cameras, FrameWithoutPointsMovesNothing) {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        const MMatrix before = read(panel).view;
        host::frame_points(host::panel_camera(panel), k_port, source({}));
        EXPECT_TRUE(read(panel).view == before);
    }
}

TEST_F(Cameras, OrbitAboutTheCentreOfInterest) {
    host::frame_points(host::panel_camera(persp), k_port, source(cloud(3, 2.0, MPoint(4, 5, 6))));
    double before[3], after[3];
    MPoint origin;
    MVector direction;
    host::ray_through(read(persp), k_port, 210, 170, origin, direction);
    double distance = 0.0;
    distance = host::graph::Scene::current()
                   .find("perspShape")
                   ->find_plug("centerOfInterest")
                   ->value.number();
    const MPoint center = origin + direction * distance;
    ASSERT_TRUE(host::project(read(persp), k_port, center, before));
    host::orbit(host::panel_camera(persp), 50.0, 20.0);
    ASSERT_TRUE(host::project(read(persp), k_port, center, after));
    EXPECT_NEAR(after[0], 210.0, 1e-6);
    EXPECT_NEAR(after[1], 170.0, 1e-6);
}

TEST_F(Cameras, OrbitIsClampedToStraightUpAndDown) {
    host::orbit(host::panel_camera(persp), 0.0, 500.0);
    const CameraView down = read(persp);
    EXPECT_NEAR(down.view[1][2], 1.0, 1e-9); // the world's y axis points at the camera
    host::orbit(host::panel_camera(persp), 0.0, -500.0);
    EXPECT_NEAR(read(persp).view[1][2], -1.0, 1e-9);
}

TEST_F(Cameras, FaceLooksAgainstTheDirectionUpright) {
    MPoint origin;
    MVector along;
    double after[3];
    host::ray_through(read(persp), k_port, 210, 170, origin, along);
    const double distance = host::graph::Scene::current()
                                .find("perspShape")
                                ->find_plug("centerOfInterest")
                                ->value.number();
    const MPoint center = origin + along * distance;
    const MVector direction = MVector(1, -2, -0.5).normal();
    host::face(host::panel_camera(persp), direction * 7.0);
    const MMatrix world = read(persp).view.inverse();
    EXPECT_NEAR(MVector(world[2][0], world[2][1], world[2][2]) * direction, 1.0, 1e-9);
    EXPECT_NEAR(world[0][1], 0.0, 1e-9); // sideways is level
    EXPECT_GT(world[1][1], 0.0);
    ASSERT_TRUE(host::project(read(persp), k_port, center, after));
    EXPECT_NEAR(after[0], 210.0, 1e-6); // still in the middle
    EXPECT_NEAR(after[1], 170.0, 1e-6);
    host::face(host::panel_camera(persp), MVector());
    EXPECT_TRUE(read(persp).view.inverse() == world);
}

TEST_F(Cameras, OrthographicCamerasDoNotOrbit) {
    const MMatrix before = read(front).view;
    host::orbit(host::panel_camera(front), 30.0, 30.0);
    EXPECT_TRUE(read(front).view == before);
}

TEST_F(Cameras, PanByPixels) {
    host::frame_points(host::panel_camera(persp), k_port, source({MPoint(), MPoint(1, 1, 1)}));
    for (const int panel : {front, persp}) {
        host::frame_points(host::panel_camera(panel), k_port,
                           source({MPoint(-1, -1, 0), MPoint(1, 1, 0)}));
        MPoint origin;
        MVector direction;
        host::ray_through(read(panel), k_port, 210, 170, origin, direction);
        const double away = host::panel_camera(panel).back()->find_plug("coi")->value.number();
        const MPoint center =
            MPoint(read(panel).view.inverse()[3][0], read(panel).view.inverse()[3][1],
                   read(panel).view.inverse()[3][2]) +
            direction * away;
        host::pan(host::panel_camera(panel), k_port, 30.0, -12.0);
        double window[3];
        ASSERT_TRUE(host::project(read(panel), k_port, center, window));
        EXPECT_NEAR(window[0], 240.0, 1e-6) << panel;
        EXPECT_NEAR(window[1], 158.0, 1e-6) << panel;
    }
}

TEST_F(Cameras, ZoomByAFactorAtTheCentreOfInterest) {
    for (const int panel : {side, persp}) {
        host::frame_points(host::panel_camera(panel), k_port,
                           source({MPoint(0, -1, 0), MPoint(0, 1, 0)}), 0.4);
        const MMatrix view = read(panel).view;
        const MVector up(view[0][1], view[1][1], view[2][1]);
        const auto height = [&] {
            double low[3], high[3];
            EXPECT_TRUE(host::project(read(panel), k_port, MPoint() - up * 0.001, low));
            EXPECT_TRUE(host::project(read(panel), k_port, MPoint() + up * 0.001, high));
            return high[1] - low[1];
        };
        const double before = height();
        host::zoom(host::panel_camera(panel), 2.0);
        EXPECT_NEAR(height() / before, 2.0, 0.01) << panel;
        host::zoom(host::panel_camera(panel), 0.0);
        EXPECT_NEAR(height() / before, 2.0, 0.01) << panel;
    }
}

TEST_F(Cameras, MovesAreNotUndoableAndDoNotModifyTheScene) {
    run("createNode transform -n \"made\"");
    host::graph::Scene::current().is_modified = false;
    host::orbit(host::panel_camera(persp), 10, 10);
    host::pan(host::panel_camera(top), k_port, 10, 10);
    host::zoom(host::panel_camera(front), 2.0);
    EXPECT_FALSE(host::graph::Scene::current().is_modified);
    run("undo");
    EXPECT_EQ(host::graph::Scene::current().find("made"), nullptr);
}

TEST(BoundsTest, EmptyBoundsStayEmptyAfterATransform) {
    const host::Bounds nothing;
    EXPECT_TRUE(nothing.is_empty);
    EXPECT_TRUE(nothing.moved(MMatrix()).is_empty);
    EXPECT_EQ(nothing.radius(), 0.0);
}

TEST(BoundsTest, TransformedBoundsContainEveryCorner) {
    host::Bounds box;
    box.add(MPoint(-1, -2, -3));
    box.add(MPoint(1, 2, 3));
    MMatrix turn; // 90 degrees about z, then a translation
    turn[0][0] = 0, turn[0][1] = 1, turn[1][0] = -1, turn[1][1] = 0, turn[3][0] = 10;
    const host::Bounds moved = box.moved(turn);
    EXPECT_TRUE(moved.low.isEquivalent(MPoint(8, -1, -3)));
    EXPECT_TRUE(moved.high.isEquivalent(MPoint(12, 1, 3)));
}

} // namespace
