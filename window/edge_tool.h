/// Picking edges of the shown mesh in a model panel: a click picks the edge under the pointer, a
/// double click its loop, Shift the shortest way from the edge picked last, a line dragged around
/// edges those inside; Ctrl adds to what is picked. Every pick is a statement that selects.
///
/// Places are in pixels from the lower left corner of the panels' picture.
#pragma once

#include "host/view/gl_panels.h"
#include "window/edge_pick.h"
#include "window/mesh_picker.h"
#include "window/state.h"

#include <optional>

struct ImDrawList;

namespace window {

/// The ray through a place of a panel, in the space of a shape.
Ray ray_at(host::GlPanels& panels, int panel, const ScreenPoint& place, const MMatrix& to_world);

class EdgeTool {
public:
    EdgeTool(State& state, host::GlPanels& panels) : state_(state), panels_(panels) {}

    /// What a click adds to.
    enum class Mode { replace, add, path };

    /// Finds the edge under the pointer; no panel: none.
    void hover(int panel, const ScreenPoint& place);
    void click(const ScreenPoint& place, int panel, Mode mode, bool is_double);
    /// A line around edges, from the pressed button to its release.
    void begin_line(const ScreenPoint& place) { lasso_ = {place}; }
    void drag(const ScreenPoint& place) { lasso_.push_back(place); }
    void drop(int panel, bool adds);

    /// Draws the edge under the pointer and the line. (left, bottom): the picture's lower left
    /// corner.
    void draw(ImDrawList* list, float left, float bottom) const;
    /// Tells where edges of the mesh stand, for programs that drive the window.
    void add_places(int panel, float left, float bottom) const;
    /// The matrix of the shown mesh; none if it is hidden.
    std::optional<MMatrix> to_world() const;

private:
    std::optional<Projection> projection(int panel) const;
    uint32_t triangle_near(int panel, const ScreenPoint& place, const MMatrix& to_world) const;
    void pick(const std::vector<uint32_t>& edges, bool adds) const;

    State& state_;
    host::GlPanels& panels_;
    uint32_t hovered_ = k_none;
    ScreenPoint ends_[2]; ///< of the hovered edge
    uint32_t last_ = k_none;
    std::vector<ScreenPoint> lasso_;
};

} // namespace window
