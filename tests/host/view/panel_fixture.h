/// Fixture that draws panels offscreen, with helpers to inspect the picture.
#pragma once

#include "host/commands/session.h"
#include "host/graph/callbacks.h"
#include "host/graph/evaluate.h"
#include "host/graph/mesh_node.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"
#include "host/view/offscreen.h"
#include "host/view/scene_shapes.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace panel_test {

constexpr int k_width = 240;
constexpr int k_height = 180;

/// An RGB colour.
struct Rgb {
    int r, g, b;
    bool operator==(const Rgb& o) const { return r == o.r && g == o.g && b == o.b; }
};
inline std::ostream& operator<<(std::ostream& out, const Rgb& c) {
    return out << '(' << c.r << ' ' << c.g << ' ' << c.b << ')';
}
constexpr Rgb k_green{0, 255, 0};
constexpr Rgb k_blue{0, 0, 255};

/// The pixel at window coordinates (y up).
inline Rgb at(const host::Picture& picture, int x, int y) {
    const uint8_t* const p = picture.pixel(x, picture.height - 1 - y);
    return {p[0], p[1], p[2]};
}

inline size_t count(const host::Picture& picture, const Rgb& wanted) {
    size_t found = 0;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            found += at(picture, x, y) == wanted;
    return found;
}

inline size_t differing(const host::Picture& a, const host::Picture& b) {
    size_t found = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            found += !(at(a, x, y) == at(b, x, y));
    return found;
}

class PanelTest : public ::testing::Test {
protected:
    PanelTest() {
        std::string error;
        surface = host::Offscreen::make(error);
        EXPECT_TRUE(surface) << error;
        panels = std::make_unique<host::GlPanels>(*surface);
        surface->set_panels(panels.get());
        EXPECT_TRUE(surface->resize(2 * k_width, 2 * k_height, 1, error)) << error;
        panels->arrange_four(2 * k_width, 2 * k_height, 0);
        for (int panel = 0; panel < host::k_panel_count; ++panel) {
            panels->style(panel).has_name = false;
            panels->style(panel).has_grid = false;
            panels->style(panel).has_wire = false;
            panels->style(panel).has_selection = false;
        }
        run("file -f -new; constructionHistory -tgl on;");
    }
    ~PanelTest() override {
        run("file -f -new");
        panels.reset();
        surface.reset();
    }

    void run(const std::string& text) {
        const auto outcome = host::script::Session::current().run(text, "test");
        EXPECT_TRUE(outcome.ok) << outcome.error;
    }
    /// Redraws one panel and returns its part of the picture.
    host::Picture draw(int panel) {
        EXPECT_TRUE(panels->draw(panel));
        return cut(surface->read(), panels->viewport(panel));
    }
    static host::Picture cut(const host::Picture& whole, const host::Viewport& part) {
        host::Picture cut;
        cut.width = part.width;
        cut.height = part.height;
        for (int y = 0; y < part.height; ++y) {
            const uint8_t* const row = whole.pixel(part.x, whole.height - part.y - part.height + y);
            cut.rgb.insert(cut.rgb.end(), row, row + 3 * part.width);
        }
        return cut;
    }
    /// Projects a point to pixels of a panel.
    void place(int panel, const MPoint& point, double window[3]) {
        host::Viewport viewport = panels->viewport(panel);
        const host::CameraView camera = panels->camera_view(panel);
        viewport.x = viewport.y = 0;
        EXPECT_TRUE(host::project(camera, viewport, point, window));
    }
    void frame_all() {
        for (int panel = 0; panel < host::k_panel_count; ++panel)
            panels->frame(panel, false);
    }
    host::graph::MeshNode& shape(const std::string& name) {
        return static_cast<host::graph::MeshNode&>(*scene.find(name));
    }

    host::graph::Scene& scene = host::graph::Scene::current();
    host::graph::Callbacks& callbacks = host::graph::Callbacks::current();
    std::unique_ptr<host::Offscreen> surface;
    std::unique_ptr<host::GlPanels> panels;
};

} // namespace panel_test
