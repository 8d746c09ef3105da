/// Moving, turning and scaling charts in the texture: by numbers in a row of fields, and by
/// dragging them, each a polyEditUV statement; and packing them around those that are locked, a
/// polyLayoutUV statement.
///
/// It works on the charts of the selected polygons, else on the one that a click keeps lit. Locked
/// charts stay where they are.
#pragma once

#include "window/chart_statements.h"
#include "window/state.h"
#include "window/uv_view.h"

struct ImDrawList;

namespace window {

/// The charts that the tool works on, ascending.
std::vector<uint32_t> held_charts(const State& state);

/// Charts that stay where they are. They are kept by polygon, because charts get other numbers when
/// seams change; a mesh with other polygons has none.
class ChartLocks {
public:
    /// Ascending; found anew only when the map changes.
    const std::vector<uint32_t>& charts(const State& state);
    /// Locks charts, or unlocks them if all of them are locked.
    void toggle(const State& state, const std::vector<uint32_t>& charts);

private:
    std::vector<uint32_t> polygons_; ///< one of every locked chart
    host::Mesh mesh_;                ///< shares the connectivity that the polygons are from
    std::vector<uint32_t> charts_;   ///< that the polygons lie in, in the map of this revision
    size_t revision_ = 0;
};

class ChartTool {
public:
    /// What a drag does to charts.
    enum class Hand { none, move, turn, scale };

    /// Draws the switches for dragging, the buttons for locking and packing, and the fields if
    /// there are charts to work on.
    void draw(State& state);
    /// Switches a hand on, or off if it is on.
    void take(Hand hand) { hand_ = hand_ == hand ? Hand::none : hand; }
    /// Locks the charts that the tool works on, or unlocks them.
    void lock(State& state);

    /// A drag that begins at a place of the texture takes the held charts, or the one there,
    /// without the locked ones. Returns false if there is none.
    bool begin(State& state, double u, double v);
    /// The pointer is at (u, v). `is_rough`: along one axis only, turned by steps of 15 degrees,
    /// scaled by tenths. Moves by whole texels.
    void drag(const State& state, double u, double v, bool is_rough);
    /// Runs the statement.
    void drop(State& state);
    bool is_dragging() const { return !dragged_.empty(); }
    /// Draws the outlines of locked charts, and of dragged ones where they will be. (left, top): of
    /// the view.
    void draw_outlines(const State& state, const UvView& view, ImDrawList* list, float left,
                       float top);

private:
    void draw_outline(const State& state, uint32_t chart, const UvView& view, ImDrawList* list,
                      float left, float top) const;
    void draw_hands(State& state);
    void draw_packing(State& state, const std::vector<uint32_t>& held);
    static void name_charts(State& state, const std::vector<uint32_t>& held);
    void draw_fields(State& state, const std::vector<uint32_t>& held);
    std::vector<uint32_t> without_locked(const State& state, std::vector<uint32_t> charts);

    Hand hand_ = Hand::none;
    ChartLocks locks_;
    std::vector<uint32_t> dragged_;
    double from_[2] = {0.0, 0.0};
    ChartChange change_;                                             ///< by the drag
    float texels_[2] = {0.0f, 0.0f}, angle_ = 90.0f, factor_ = 2.0f; ///< in the fields
};

} // namespace window
