#include "window/edge_tool.h"

#include "host/view/scene_shapes.h"
#include "window/findings.h"

#include <algorithm>
#include <cmath>
#include <imgui.h>

namespace window {
namespace {

MPoint point_of(const host::Float3& point) {
    return {static_cast<double>(point.x), static_cast<double>(point.y),
            static_cast<double>(point.z)};
}

} // namespace

Ray ray_at(host::GlPanels& panels, int panel, const ScreenPoint& place, const MMatrix& to_world) {
    MPoint origin;
    MVector direction;
    host::ray_through(panels.camera_view(panel), panels.viewport(panel), place.x, place.y, origin,
                      direction);
    const MMatrix inverse = to_world.inverse();
    const MPoint from = origin * inverse;
    const MVector along = direction * inverse;
    return {{from.x, from.y, from.z}, {along.x, along.y, along.z}};
}

std::optional<MMatrix> EdgeTool::to_world() const {
    for (const host::VisibleShape& shape : host::visible_shapes())
        if (shape.node == state_.subject.shape.get())
            return shape.to_world;
    return std::nullopt;
}

std::optional<Projection> EdgeTool::projection(int panel) const {
    const std::optional<MMatrix> matrix = to_world();
    if (!matrix || panel < 0)
        return std::nullopt;
    return [camera = panels_.camera_view(panel), viewport = panels_.viewport(panel),
            matrix = *matrix](const host::Float3& point, ScreenPoint& place) {
        double window[3];
        if (!host::project(camera, viewport, point_of(point) * matrix, window))
            return false;
        place = {window[0], window[1]};
        return true;
    };
}

/// The triangle at a place, else one close to it, so that edges of the outline can be met.
uint32_t EdgeTool::triangle_near(int panel, const ScreenPoint& place,
                                 const MMatrix& to_world) const {
    for (const double far : {0.0, 3.0, 7.0})
        for (int i = 0; i < (far > 0.0 ? 8 : 1); ++i) {
            const double angle = 0.25 * 3.14159265 * i, reach = far * double(state_.scale);
            const ScreenPoint near{place.x + reach * std::cos(angle),
                                   place.y + reach * std::sin(angle)};
            const uint32_t hit =
                state_.mesh_picker().first_hit(ray_at(panels_, panel, near, to_world));
            if (hit != k_none)
                return hit;
        }
    return k_none;
}

void EdgeTool::hover(int panel, const ScreenPoint& place) {
    hovered_ = k_none;
    const std::optional<MMatrix> matrix = to_world();
    const std::optional<Projection> project = projection(panel);
    if (!matrix || !project)
        return;
    const uint32_t hit = triangle_near(panel, place, *matrix);
    if (hit == k_none)
        return;
    const host::Mesh& mesh = state_.subject.mesh;
    hovered_ = nearest_edge(mesh, state_.map.triangle_polygon()[hit], *project, place);
    if (hovered_ == k_none)
        return;
    const auto& [a, b] = mesh.connectivity().edge(hovered_);
    (*project)(mesh.points()[a], ends_[0]);
    (*project)(mesh.points()[b], ends_[1]);
}

void EdgeTool::pick(const std::vector<uint32_t>& edges, bool adds) const {
    if (!edges.empty())
        state_.run(statement_selecting(state_.shape_path(), edges, 'e', adds));
    else if (!adds && !state_.picked.empty())
        state_.run("select -clear;");
}

void EdgeTool::click(const ScreenPoint& place, int panel, Mode mode, bool is_double) {
    hover(panel, place);
    lasso_.clear();
    if (hovered_ == k_none)
        return pick({}, mode != Mode::replace);
    const bool has_last =
        std::binary_search(state_.picked.begin(), state_.picked.end(), last_) && last_ != hovered_;
    const std::vector<uint32_t> seam =
        is_double ? seam_through(state_.subject.mesh, state_.subject.uv_set, hovered_)
                  : std::vector<uint32_t>();
    if (!seam.empty())
        pick(seam, mode != Mode::replace);
    else if (is_double)
        state_.run("polySelect " + std::string(mode == Mode::replace ? "" : "-add ") +
                   "-edgeLoop " + std::to_string(hovered_) + " " +
                   host::script::quoted(state_.shape_path()) + ";");
    else if (mode == Mode::path && has_last)
        pick(path_between(state_.subject.mesh, last_, hovered_), true);
    else
        pick({hovered_}, mode != Mode::replace);
    last_ = hovered_;
}

void EdgeTool::drop(int panel, bool adds) {
    const std::vector<ScreenPoint> lasso = std::move(lasso_);
    lasso_.clear();
    const std::optional<MMatrix> matrix = to_world();
    const std::optional<Projection> project = projection(panel);
    if (!matrix || !project)
        return;
    const MeshPicker& picker = state_.mesh_picker();
    const auto is_visible = [&](const host::Float3& point) {
        ScreenPoint place;
        (*project)(point, place);
        const Ray ray = ray_at(panels_, panel, place, *matrix);
        double nearest = 0.0, along = 0.0, length2 = 0.0;
        if (picker.first_hit(ray, &nearest) == k_none)
            return true; // the ray passes the outline
        const double at[3] = {double(point.x), double(point.y), double(point.z)};
        for (int i = 0; i < 3; ++i) {
            along += (at[i] - ray.origin[i]) * ray.direction[i];
            length2 += ray.direction[i] * ray.direction[i];
        }
        return nearest >= along / length2 * (1.0 - 1e-3);
    };
    pick(edges_inside(state_.subject.mesh, *project, lasso, is_visible), adds);
}

void EdgeTool::draw(ImDrawList* list, float left, float bottom) const {
    const auto shown = [&](const ScreenPoint& place) {
        return ImVec2(left + static_cast<float>(place.x), bottom - static_cast<float>(place.y));
    };
    const ImU32 warm = ImGui::GetColorU32(colour::warm);
    if (hovered_ != k_none)
        list->AddLine(shown(ends_[0]), shown(ends_[1]), warm, 3.0f * state_.scale);
    for (size_t i = 0; i + 1 < lasso_.size(); ++i)
        list->AddLine(shown(lasso_[i]), shown(lasso_[i + 1]), warm, 1.5f * state_.scale);
    if (lasso_.size() > 2)
        list->AddLine(shown(lasso_.back()), shown(lasso_.front()),
                      ImGui::GetColorU32(colour::faint));
}

void EdgeTool::add_places(int panel, float left, float bottom) const {
    constexpr uint32_t k_max_places = 64;
    const std::optional<Projection> project = projection(panel);
    if (!state_.places.is_kept() || !project)
        return;
    const host::Mesh& mesh = state_.subject.mesh;
    for (uint32_t edge = 0; edge < std::min(k_max_places, mesh.connectivity().edge_count());
         ++edge) {
        const auto& [a, b] = mesh.connectivity().edge(edge);
        ScreenPoint from, to;
        if ((*project)(mesh.points()[a], from) && (*project)(mesh.points()[b], to))
            state_.places.add("edge/" + std::to_string(edge),
                              left + static_cast<float>(0.5 * (from.x + to.x)),
                              bottom - static_cast<float>(0.5 * (from.y + to.y)), 0.0f, 0.0f);
    }
    state_.places.add("picked/" + std::to_string(state_.picked.size()), left, bottom, 0.0f, 0.0f);
}

} // namespace window
