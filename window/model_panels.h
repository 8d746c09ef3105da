/// The four model panels in the window: drawn by the host's renderer into one picture that is kept,
/// moved by mouse and keys, and aware of the chart under the pointer.
///
/// Mouse: a click selects (with Shift or Ctrl one more); left drag (or Alt and left) turns, middle
/// drag (or Shift and left) moves, right drag and the wheel zoom. Keys act on the panel that was
/// used last: arrows turn or move, Shift and arrows move, + and - zoom, F frames the selection, A
/// everything, Space shows one panel alone or all four.
#pragma once

#include "host/graph/callbacks.h"
#include "host/view/gl_panels.h"
#include "window/gl_target.h"
#include "window/map_paint.h"

namespace window {

class ModelPanels : private host::PanelSurface {
public:
    /// Registers with the host; `state` must outlive it.
    explicit ModelPanels(State& state);
    virtual ~ModelPanels();

    void draw(bool is_live);
    void frame_all();
    /// Shows one panel alone, or all four again.
    void toggle_alone();
    void choose(int panel);
    int active() const;
    /// Draws everything again at the next frame.
    void invalidate() { wants_paint_ = true; }
    bool has_focus() const { return has_focus_; }
    /// Called when somebody in the middle of a computation wants to see the panels drawn.
    std::function<void()> on_redraw;
    host::GlPanels& panels() { return panels_; }

private:
    bool make_current() override;
    void give_back() override;
    void redraw(int panel) override;

    void lay_out(int width, int height);
    void paint_if_needed();
    void react(float left, float top);
    void drag(int panel, float dx, float dy);
    void hover(int panel, double x, double y);
    /// Selects what is under the pointer; with `adds`, besides what is selected already.
    void select(int panel, double x, double y, bool adds);
    void keys();
    void light();
    void tint();
    void draw_name(int panel, float left, float top) const;
    void draw_over(float left, float top);
    void draw_welcome(float left, float top) const;
    int panel_at(double x, double y) const;

    State& state_;
    GlTarget target_;
    MapPaint paint_;
    host::GlPanels panels_;
    std::vector<host::graph::CallbackId> callbacks_;
    bool is_alone_ = false;
    bool has_focus_ = false;
    bool is_over_ = false; ///< the pointer
    bool wants_paint_ = true;
    bool wants_frame_ = true;
    int dragged_ = -1;
    float drag_length_ = 0.0f; ///< pixels since the button went down
    uint32_t lit_ = k_none;
    size_t lit_revision_ = 0, scene_revision_ = 0;
    Display display_ = Display::plain;
};

} // namespace window
