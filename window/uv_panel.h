/// The UV panel: the texture with its charts, pan and zoom, highlighting under the pointer.
///
/// Mouse: drag pans, wheel and right drag zoom. Keys while focused: arrows pan, + and - zoom, F
/// frames the highlighted chart, A frames everything.
#pragma once

#include "window/chart_tool.h"
#include "window/gl_target.h"
#include "window/map_paint.h"

namespace window {

class UvPanel {
public:
    /// Draws the panel into the current ImGui window. Unless `takes_input`, shows the last picture
    /// and ignores input. Returns true if the user wants the panel to fill the window, or no more.
    bool draw(State& state, bool takes_input);
    /// Frames the whole texture.
    void frame_all(const State& state);
    /// Frames the lit chart; the whole texture if there is none.
    void frame_lit(const State& state);

private:
    void react(State& state, float left, float top);
    void take_click(State& state, double x, double y);
    bool take_chart_drag(State& state, double x, double y);
    bool keys(State& state);
    void draw_invitation(State& state, const ImVec2& low, const ImVec2& high) const;
    void header(State& state);
    void add_places(State& state, float left, float top);
    void fit(const State& state, int width, int height);
    void draw_picture(State& state, const ImVec2& low, const ImVec2& high);
    void footer(const State& state, float left, float top, float right, float height) const;
    void paint_if_needed(const State& state);

    ChartTool charts_;
    UvView view_;
    GlTarget target_;
    MapPaint paint_;
    bool has_grid_ = true; ///< lines between texels
    bool is_whole_ = true; ///< all is shown, and still is to be when the panel changes its size
    bool has_focus_ = false;
    bool was_over_ = false; ///< the pointer was over the panel in the last frame
    float dragged_ = 0.0f;  ///< pixels since the button went down
    bool wants_paint_ = true;
    std::vector<uint32_t> largest_; ///< triangles of charts, in the map of this revision
    size_t places_revision_ = 0;
    size_t scene_revision_ = 0;
    size_t revision_ = 0;
    uint32_t lit_ = k_none;
    Display display_ = Display::plain;
};

} // namespace window
