/// The texture with its charts: pan, zoom, and the chart under the pointer.
///
/// Mouse: drag to move, wheel to zoom. Keys while the panel has the focus: arrows move, + and -
/// zoom, F shows the lit chart, A everything, [ and ] step from chart to chart.
#pragma once

#include "window/gl_target.h"
#include "window/map_paint.h"

namespace window {

class UvPanel {
public:
    /// Draws the panel into the ImGui window that is open. `is_live` false: as it was, without
    /// reaction.
    void draw(State& state, bool is_live);
    /// Shows all of the texture again.
    void frame_all(const State& state);
    bool has_focus() const { return has_focus_; }
    bool has_grid = true;

private:
    void react(State& state, float left, float top);
    void keys(State& state);
    void header(State& state);
    void add_places(State& state, float left, float top) const;
    void fit(const State& state, int width, int height);
    void draw_picture(State& state, const ImVec2& low, const ImVec2& high) const;
    void footer(const State& state, float left, float top, float right, float height) const;
    void draw_legend(const State& state, float right, float middle) const;
    void paint_if_needed(const State& state);

    UvView view_;
    GlTarget target_;
    MapPaint paint_;
    bool is_framed_ = false;
    bool has_focus_ = false;
    bool was_over_ = false; ///< the pointer, in the frame before
    bool wants_paint_ = true;
    size_t revision_ = 0;
    uint32_t lit_ = k_none;
    Display display_ = Display::plain;
};

} // namespace window
