#include "host/view/gl_panels.h"

#include "host/graph/callbacks.h"
#include "host/graph/dag.h"
#include "host/graph/scene.h"
#include "host/view/panel_paint.h"
#include "host/view/scene_shapes.h"

#include <GL/gl.h>

#include <algorithm>

namespace host {

namespace {

constexpr bool is_panel(int panel) { return panel >= 0 && panel < k_panel_count; }

/// Saves all OpenGL state and restores it at the end of the scope.
class StateSaved {
public:
    StateSaved() {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        for (const GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
            glMatrixMode(mode);
            glPushMatrix();
        }
    }
    ~StateSaved() {
        for (const GLenum mode : {GL_MODELVIEW, GL_PROJECTION}) {
            glMatrixMode(mode);
            glPopMatrix();
        }
        glPopClientAttrib();
        glPopAttrib();
    }
    StateSaved(const StateSaved&) = delete;
    StateSaved& operator=(const StateSaved&) = delete;
};

} // namespace

struct GlPanels::Parts {
    explicit Parts(PanelSurface& s) : surface(s), buffers(counts) {}

    /// A plug-in's beginGL without its endGL so far.
    struct Bracket {
        int panel;
        std::unique_ptr<StateSaved> saved; ///< null if the panel was being drawn
    };

    PanelSurface& surface;
    PanelRenderer* replaced = nullptr;
    DrawCounts counts;
    MeshBuffers buffers;
    std::array<Viewport, k_panel_count> viewports;
    std::array<PanelStyle, k_panel_count> styles;
    std::array<bool, k_panel_count> wants_redraw{};
    std::vector<DrawnShape> shapes; ///< of the last draw
    Bounds bounds;                  ///< of the last draw, in world space
    std::vector<Bracket> brackets;
    int entered = 0;     ///< nesting depth of enter()
    int set_up_for = -1; ///< panel whose viewport and matrices are set in OpenGL; -1 if none
    int drawing = -1;    ///< panel being drawn; -1 if none

    CameraView camera_view(int panel) const;
    void collect_shapes();
    void add_parts(const VisibleShape& shape, DrawnShape& drawn);
    void paint(int panel, const graph::DagPath& camera);
};

// === Collecting shapes =======================================================================

void GlPanels::Parts::add_parts(const VisibleShape& shape, DrawnShape& drawn) {
    for (const graph::SelectionItem& item : graph::Scene::current().selection())
        if (item.component && item.node.get() == shape.node && item.path() == shape.path)
            drawn.selected_parts.emplace_back(buffers.get(*drawn.buffer, item.component),
                                              item.component->kind());
}

void GlPanels::Parts::collect_shapes() {
    const std::vector<VisibleShape> visible = visible_shapes();
    shapes.clear();
    bounds = Bounds();
    buffers.begin_frame();
    for (const VisibleShape& shape : visible) {
        // If evaluating the history fails, the previous mesh is drawn.
        shape.node->refresh();
        const Mesh* const mesh = shape.node->mesh();
        if (mesh == nullptr || mesh->points().empty())
            continue;
        DrawnShape drawn;
        drawn.buffer = buffers.get(*mesh);
        if (drawn.buffer == nullptr)
            continue;
        drawn.to_world = shape.to_world;
        drawn.is_selected = shape.is_selected;
        add_parts(shape, drawn);
        bounds.add(drawn.buffer->bounds.moved(shape.to_world));
        shapes.push_back(std::move(drawn));
    }
    buffers.end_frame();
}

CameraView GlPanels::Parts::camera_view(int panel) const {
    const graph::DagPath camera = panel_camera(panel);
    const Viewport& viewport = viewports[size_t(panel)];
    Bounds seen = bounds;
    if (styles[size_t(panel)].has_grid)
        seen.add(grid_bounds(grid_for(bounds), read_camera(camera, viewport, bounds)));
    return read_camera(camera, viewport, seen);
}

// === Drawing =================================================================================

void GlPanels::Parts::paint(int panel, const graph::DagPath& camera) {
    const Viewport& viewport = viewports[size_t(panel)];
    const PanelStyle& style = styles[size_t(panel)];
    const CameraView view = camera_view(panel);
    set_common_state();
    paint_background(viewport);
    load_camera(view);
    const bool is_shaded = style.appearance == Appearance::shaded;
    for (const DrawnShape& shape : shapes)
        if (is_shaded)
            paint_surface(shape, view);
    if (style.has_grid)
        paint_grid(grid_for(bounds), view);
    for (DrawnShape shape : shapes) {
        shape.is_selected = shape.is_selected && style.has_selection;
        if (!style.has_selection)
            shape.selected_parts.clear();
        if (style.has_wire || !is_shaded || shape.is_selected)
            paint_wire(shape, view, viewport, !is_shaded);
        paint_parts(shape, view);
    }
    set_overlay_state(view);
    set_up_for = panel;
    graph::Callbacks::current().fire_post_render(panel_name(panel).asChar());
    set_up_for = -1;
    if (style.has_name)
        paint_name(camera_name(camera), viewport);
}

namespace {

/// Runs an action at the end of the scope, also on exceptions (std::bad_alloc).
template <class Action>
class AtEnd {
public:
    explicit AtEnd(Action action) : action_(action) {}
    ~AtEnd() { action_(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

private:
    Action action_;
};

} // namespace

bool GlPanels::draw_entered(int panel) {
    Parts& p = *parts_;
    const graph::DagPath camera = panel_camera(panel);
    if (camera.empty())
        return false;
    p.drawing = panel;
    const AtEnd finish([&p] { p.drawing = p.set_up_for = -1; });
    p.collect_shapes();
    {
        const StateSaved saved;
        p.paint(panel, camera);
    }
    p.counts.panels += 1;
    p.wants_redraw[size_t(panel)] = false;
    return true;
}

bool GlPanels::draw(int panel) {
    if (!is_panel(panel) || parts_->drawing >= 0 || viewport(panel).is_empty() || !enter())
        return false;
    const AtEnd finish([this] { leave(); });
    return draw_entered(panel);
}

bool GlPanels::draw_all() {
    bool done = true;
    for (int panel = 0; panel < k_panel_count; ++panel)
        if (!viewport(panel).is_empty())
            done = draw(panel) && done;
    return done;
}

bool GlPanels::enter() {
    if (parts_->entered == 0 && !parts_->surface.make_current())
        return false;
    parts_->entered += 1;
    return true;
}

void GlPanels::leave() {
    parts_->entered -= 1;
    if (parts_->entered == 0)
        parts_->surface.give_back();
}

// === Construction, layout, style
// =====================================================================

GlPanels::GlPanels(PanelSurface& surface) : parts_(std::make_unique<Parts>(surface)) {
    parts_->replaced = panel_renderer();
    set_panel_renderer(this);
}

GlPanels::~GlPanels() {
    if (panel_renderer() == this)
        set_panel_renderer(parts_->replaced);
    release_buffers();
}

PanelRenderer* GlPanels::replaced() const { return parts_->replaced; }

void GlPanels::release_buffers() {
    if (!enter())
        return;
    parts_->shapes.clear();
    parts_->buffers.release();
    leave();
}

void GlPanels::set_viewport(int panel, const Viewport& viewport) {
    if (is_panel(panel))
        parts_->viewports[size_t(panel)] = viewport;
}

const Viewport& GlPanels::viewport(int panel) const { return parts_->viewports[size_t(panel)]; }

void GlPanels::arrange_four(int width, int height, int gap) {
    const int left = (width - gap) / 2, below = (height - gap) / 2;
    const int right = width - gap - left, above = height - gap - below;
    set_viewport(0, {0, below + gap, left, above});
    set_viewport(1, {0, 0, left, below});
    set_viewport(2, {left + gap, 0, right, below});
    set_viewport(3, {left + gap, below + gap, right, above});
}

void GlPanels::arrange_one(int panel, int width, int height) {
    for (int other = 0; other < k_panel_count; ++other)
        set_viewport(other, other == panel ? Viewport{0, 0, width, height} : Viewport());
}

PanelStyle& GlPanels::style(int panel) { return parts_->styles[size_t(panel)]; }
const DrawCounts& GlPanels::counts() const { return parts_->counts; }

bool GlPanels::needs_redraw(int panel) const {
    return is_panel(panel) && parts_->wants_redraw[size_t(panel)];
}

void GlPanels::frame(int panel, bool only_selected, double factor) {
    if (is_panel(panel))
        frame_points(panel_camera(panel), viewport(panel), scene_points(only_selected), factor);
}

CameraView GlPanels::camera_view(int panel) {
    return is_panel(panel) ? parts_->camera_view(panel) : CameraView();
}

// === PanelRenderer ===========================================================================

MStatus GlPanels::camera(int panel, MDagPath& path) {
    const graph::DagPath found = panel_camera(panel);
    if (found.empty())
        return MS::kFailure;
    path = graph::to_interface(found);
    return MS::kSuccess;
}

MStatus GlPanels::size(int panel, int& width, int& height) {
    if (!is_panel(panel))
        return MS::kFailure;
    width = viewport(panel).width;
    height = viewport(panel).height;
    return MS::kSuccess;
}

MStatus GlPanels::refresh(int panel, bool now) {
    if (panel >= k_panel_count)
        return MS::kFailure;
    for (int i = 0; i < k_panel_count; ++i)
        if (panel < 0 || panel == i)
            parts_->wants_redraw[size_t(i)] = true;
    if (now && parts_->drawing < 0 && parts_->entered == 0)
        parts_->surface.redraw(panel);
    return MS::kSuccess;
}

MStatus GlPanels::begin_gl(int panel) {
    Parts& p = *parts_;
    if (!is_panel(panel) || viewport(panel).is_empty() || !enter())
        return MS::kFailure;
    Parts::Bracket bracket{p.set_up_for, nullptr};
    if (p.set_up_for != panel) {
        bracket.saved = std::make_unique<StateSaved>();
        set_common_state();
        const Viewport& v = viewport(panel);
        glViewport(v.x, v.y, v.width, v.height);
        glScissor(v.x, v.y, v.width, v.height);
        glEnable(GL_SCISSOR_TEST);
        set_overlay_state(p.camera_view(panel));
        p.set_up_for = panel;
    }
    p.brackets.push_back(std::move(bracket));
    return MS::kSuccess;
}

MStatus GlPanels::end_gl(int panel) {
    Parts& p = *parts_;
    if (p.brackets.empty() || p.set_up_for != panel)
        return MS::kFailure;
    p.set_up_for = p.brackets.back().panel;
    p.brackets.pop_back();
    leave();
    return MS::kSuccess;
}

} // namespace host
