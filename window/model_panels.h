/// The four model panels: drawn by the host's renderer into one render target, with camera control,
/// selection, and highlighting of the chart under the pointer.
///
/// Mouse: click selects (Shift or Ctrl adds to the selection); left drag orbits, middle drag or
/// Shift+left drag pans, right drag and wheel zoom. While edges are picked, click and left drag are
/// those of window/edge_tool.h, and Alt+left drag orbits. Keys act on the active panel: arrows
/// orbit (pan in orthographic views), Shift+arrows pan, + and - zoom, F frames the selection, A
/// frames everything, Space toggles between one panel and four.
#pragma once

#include "host/graph/callbacks.h"
#include "host/view/gl_panels.h"
#include "window/edge_tool.h"
#include "window/gl_target.h"
#include "window/map_paint.h"

#include <array>

namespace window {

class ModelPanels : private host::PanelSurface {
public:
    /// Registers with the host; `state` must outlive it.
    explicit ModelPanels(State& state);
    virtual ~ModelPanels();

    void draw(bool takes_input);
    void frame_all();
    /// Frames the chosen chart in all panels; persp turns if the chart faces away from it.
    void frame_chosen();
    /// Toggles between the active panel alone and all four.
    void toggle_alone();
    /// Makes a panel the active one and focuses it.
    void choose(int panel);
    int active() const;
    /// Called after the host asked for an immediate redraw, to bring it to the screen.
    std::function<void()> on_redraw;

private:
    class Painting;
    bool make_current() override;
    void give_back() override;
    void redraw(int panel) override;

    void lay_out(int width, int height);
    void want_all();
    void want_those_of(const host::graph::DagPath& camera);
    void paint_gaps();
    void paint_if_needed();
    void react(float left, float top);
    void take_click(const ScreenPoint& place);
    ScreenPoint in_panels(double x, double y, float left, float top) const;
    void take_drag(float left, float top);
    void take_motion(const ScreenPoint& place, int under);
    bool is_lasso() const;
    bool is_double_click(const ScreenPoint& place) const;
    void drag(int panel, float dx, float dy);
    void hover(int panel, double x, double y);
    /// Selects the nearest mesh under the pointer; `adds` keeps the present selection.
    void select(int panel, double x, double y, bool adds);
    void keys();
    void tint();
    void draw_name(int panel, float left, float top) const;
    void draw_over(float left, float top);
    int panel_at(double x, double y) const;

    State& state_;
    GlTarget target_;
    MapPaint paint_;
    host::GlPanels panels_;
    std::vector<host::graph::CallbackId> callbacks_;
    EdgeTool edges_{state_, panels_};
    bool is_alone_ = false;
    bool has_focus_ = false;
    bool is_over_ = false;                                ///< the pointer is over the panels
    std::array<bool, host::k_panel_count> wants_paint_{}; ///< per panel
    bool is_painting_ = false;                            ///< the target stays bound
    bool wants_frame_ = true;
    int dragged_ = -1;         ///< panel being dragged in; -1 if none
    double drag_length_ = 0.0; ///< pixels since the button went down
    bool is_double_ = false;   ///< the button went down for the second time
    int click_frame_ = -100;   ///< the frame of the last click
    ScreenPoint click_place_;  ///< and its place
    bool draws_lasso_ = false; ///< the drag is a line around edges
    uint32_t lit_ = k_none;
    size_t scene_revision_ = 0;
    Display display_ = Display::plain;
};

} // namespace window
