/// Moving, turning and scaling charts in the texture: by numbers in a row of fields, and by
/// dragging them. Every change is a polyEditUV statement.
///
/// It works on the charts of the selected polygons, else on the one that a click keeps lit.
#pragma once

#include "window/state.h"
#include "window/uv_view.h"

struct ImDrawList;

namespace window {

/// The charts that the tool works on, ascending.
std::vector<uint32_t> held_charts(const State& state);

/// A change of charts in the texture: turned and scaled about `pivot`, then moved.
struct ChartChange {
    double move[2] = {0.0, 0.0}; ///< in UVs
    double angle = 0.0;          ///< degrees, counter-clockwise
    double scale = 1.0;
    double pivot[2] = {0.0, 0.0};
};
/// The statement that makes the change, one step of undo; there must be charts.
std::string statement_changing(const State& state, const std::vector<uint32_t>& charts,
                               const ChartChange& change);

class ChartTool {
public:
    /// Draws the switch for dragging, and the fields if there are charts to work on.
    void draw(State& state);
    bool is_on() const { return is_on_; }
    void toggle() { is_on_ = !is_on_; }

    /// A drag that begins at a place of the texture takes the held charts, or the one there.
    /// Returns false if there is none.
    bool begin(const State& state, double u, double v);
    /// The pointer is at (u, v). Whole texels; `is_straight`: along one axis only.
    void drag(const State& state, double u, double v, bool is_straight);
    /// Runs the statement.
    void drop(State& state);
    bool is_dragging() const { return !dragged_.empty(); }
    /// Draws the outlines of dragged charts where they will be. (left, top): of the view.
    void draw_dragged(const State& state, const UvView& view, ImDrawList* list, float left,
                      float top) const;

private:
    void draw_fields(State& state);

    bool is_on_ = false;
    std::vector<uint32_t> dragged_;
    double from_[2] = {0.0, 0.0}, by_[2] = {0.0, 0.0};
    float texels_[2] = {0.0f, 0.0f}, angle_ = 90.0f, factor_ = 2.0f; ///< in the fields
};

} // namespace window
