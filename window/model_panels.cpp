#include "window/model_panels.h"

#include "host/graph/scene.h"
#include "host/script/value.h"
#include "host/ui/panels.h"
#include "host/view/scene_shapes.h"
#include "window/legend.h"
#include "window/welcome.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <cmath>
#include <imgui.h>
#include <utility>

namespace window {
namespace {

constexpr int k_gap = 2; // pixels between panels

double real(float value) { return static_cast<double>(value); }

} // namespace

ModelPanels::ModelPanels(State& state) : state_(state), panels_(*this) {
    // Registered before plug-ins are loaded, so that their overlays draw on top of the tint.
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        panels_.style(panel).has_name = false; // drawn with the window's font instead
        callbacks_.push_back(host::graph::Callbacks::current().add_post_render(
            host::panel_name(panel).asChar(), [this](const std::string&) { tint(); }));
    }
}

ModelPanels::~ModelPanels() {
    for (const host::graph::CallbackId id : callbacks_)
        host::graph::Callbacks::current().remove(id);
}

bool ModelPanels::make_current() {
    if (!is_painting_)
        target_.bind();
    return true;
}

void ModelPanels::give_back() {
    if (!is_painting_)
        target_.unbind();
}

void ModelPanels::redraw(int panel) {
    if (panel >= 0)
        wants_paint_[size_t(panel)] = true;
    else
        want_all();
    paint_if_needed();
    if (on_redraw)
        on_redraw();
}

void ModelPanels::tint() {
    if (!state_.subject.shape)
        return;
    for (const host::VisibleShape& shape : host::visible_shapes())
        if (shape.node == state_.subject.shape.get())
            paint_.paint_mesh(state_, shape.to_world);
}

int ModelPanels::active() const {
    const int panel = host::active_panel();
    return panel < 0 ? host::k_panel_count - 1 : panel;
}

void ModelPanels::choose(int panel) {
    host::set_active_panel(panel);
    if (is_alone_)
        lay_out(target_.width(), target_.height());
    want_all();
    ImGui::SetWindowFocus("Panels");
}

void ModelPanels::toggle_alone() {
    is_alone_ = !is_alone_;
    lay_out(target_.width(), target_.height());
}

void ModelPanels::frame_all() {
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        panels_.frame(panel, false);
    want_all();
}

void ModelPanels::frame_chosen() {
    const std::vector<float>& corners = state_.map.points();
    if (state_.chosen == k_none || !edges_.to_world())
        return;
    const MMatrix to_world = *edges_.to_world();
    const auto point = [&](size_t corner) {
        return MPoint(real(corners[3 * corner]), real(corners[3 * corner + 1]),
                      real(corners[3 * corner + 2])) *
               to_world;
    };
    std::vector<MPoint> points;
    MVector normal;
    const std::vector<uint32_t>& begin = state_.map.chart_begin();
    for (uint32_t i = begin[state_.chosen]; i < begin[state_.chosen + 1]; ++i) {
        const size_t t = state_.map.triangles_by_chart()[i];
        const MPoint a = point(3 * t), b = point(3 * t + 1), c = point(3 * t + 2);
        points.insert(points.end(), {a, b, c});
        normal += (b - a) ^ (c - a);
    }
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        const auto camera = host::panel_camera(panel);
        if (camera.empty())
            continue;
        // Row 2 of the camera's matrix points from what it sees to itself.
        const MMatrix world = panels_.camera_view(panel).view.inverse();
        if (MVector(world[2][0], world[2][1], world[2][2]) * normal < 0.3 * normal.length())
            host::face(camera, normal);
        host::frame_points(
            camera, panels_.viewport(panel),
            [&](const host::PointSink& put) { std::for_each(points.begin(), points.end(), put); },
            0.7);
    }
    want_all();
}

void ModelPanels::lay_out(int width, int height) {
    edges_.hover(-1, {}); // another edge is under the pointer now
    if (is_alone_)
        panels_.arrange_one(active(), width, height);
    else
        panels_.arrange_four(width, height, k_gap);
    paint_gaps();
    want_all();
}

void ModelPanels::want_all() { wants_paint_.fill(true); }

/// The panels that look through a camera are to be drawn again.
void ModelPanels::want_those_of(const host::graph::DagPath& camera) {
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        if (host::panel_camera(panel) == camera)
            wants_paint_[size_t(panel)] = true;
}

/// Keeps the target bound for several panels: unbinding resolves the samples of the whole picture.
class ModelPanels::Painting {
public:
    explicit Painting(ModelPanels& panels) : panels_(panels) {
        panels_.target_.bind();
        panels_.is_painting_ = true;
    }
    ~Painting() {
        panels_.is_painting_ = false;
        panels_.target_.unbind();
    }
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;

private:
    ModelPanels& panels_;
};

/// Where only one camera has moved, only its panel is drawn: with a software renderer the others
/// would take most of the time.
void ModelPanels::paint_if_needed() {
    if (display_ != state_.display || lit_ != state_.lit() ||
        scene_revision_ != state_.scene_revision)
        want_all();
    display_ = state_.display;
    lit_ = state_.lit();
    scene_revision_ = state_.scene_revision;
    std::vector<int> stale;
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        if (std::exchange(wants_paint_[size_t(panel)], false) || panels_.needs_redraw(panel))
            stale.push_back(panel);
    if (stale.empty())
        return;
    const Painting painting(*this);
    for (const int panel : stale)
        panels_.draw(panel);
}

/// Fills what lies between the panels.
void ModelPanels::paint_gaps() {
    target_.bind();
    glDisable(GL_SCISSOR_TEST);
    glClearColor(colour::line.x, colour::line.y, colour::line.z, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    target_.unbind();
}

int ModelPanels::panel_at(double x, double y) const {
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        const host::Viewport& v = panels_.viewport(panel);
        if (!v.is_empty() && x >= v.x && x < v.x + v.width && y >= v.y && y < v.y + v.height)
            return panel;
    }
    return -1;
}

void ModelPanels::drag(int panel, float dx, float dy) {
    const ImGuiIO& io = ImGui::GetIO();
    const auto camera = host::panel_camera(panel);
    if (camera.empty())
        return;
    const bool is_flat = panels_.camera_view(panel).is_orthographic;
    if (ImGui::IsMouseDown(ImGuiMouseButton_Right))
        host::zoom(camera, std::exp(0.01 * real(dx - dy)));
    else if (ImGui::IsMouseDown(ImGuiMouseButton_Middle) || io.KeyShift || is_flat)
        host::pan(camera, panels_.viewport(panel), real(dx), -real(dy));
    else
        host::orbit(camera, 0.4 * real(dx), -0.4 * real(dy));
    want_those_of(camera);
}

void ModelPanels::hover(int panel, double x, double y) {
    state_.hovered = k_none;
    if (panel < 0 || state_.map.charts().empty())
        return;
    for (const host::VisibleShape& shape : host::visible_shapes()) {
        if (shape.node != state_.subject.shape.get())
            continue;
        const uint32_t hit =
            state_.mesh_picker().first_hit(ray_at(panels_, panel, {x, y}, shape.to_world));
        if (hit != k_none)
            state_.hovered = state_.map.triangle_chart()[hit];
    }
}

void ModelPanels::select(int panel, double x, double y, bool adds) {
    std::string nearest;
    double distance = 0.0;
    for (const host::VisibleShape& shape : host::visible_shapes()) {
        if (!shape.node->mesh() || shape.path.size() < 2)
            continue;
        const Ray ray = ray_at(panels_, panel, {x, y}, shape.to_world);
        double here = 0.0;
        const bool is_subject = shape.node == state_.subject.shape.get();
        const UvMap other =
            is_subject ? UvMap() : UvMap(*shape.node->mesh(), -1, state_.subject.texture);
        const uint32_t hit = is_subject ? state_.mesh_picker().first_hit(ray, &here)
                                        : MeshPicker(other.points()).first_hit(ray, &here);
        if (hit == k_none || (!nearest.empty() && here >= distance))
            continue;
        distance = here;
        const host::graph::DagPath object(shape.path.begin(), shape.path.end() - 1);
        nearest = host::graph::full_name(object);
    }
    if (!nearest.empty())
        state_.run((adds ? "select -add " : "select ") + host::script::quoted(nearest) + ";");
    else if (!adds && !host::graph::Scene::current().selection().empty())
        state_.run("select -clear;");
}

/// Whether a drag that begins now is a line around edges; with Alt it turns the view.
bool ModelPanels::is_lasso() const {
    return state_.picks_edges && ImGui::IsMouseDown(ImGuiMouseButton_Left) &&
           !ImGui::GetIO().KeyAlt;
}

/// ImGui measures the time between two presses when it draws them. Where the first click takes long
/// to show, the second one has waited and comes in one of the next frames.
bool ModelPanels::is_double_click(const ScreenPoint& place) const {
    constexpr int k_frames = 3;
    const bool is_near =
        std::abs(place.x - click_place_.x) + std::abs(place.y - click_place_.y) < 6;
    return ImGui::IsMouseDoubleClicked(ImGuiMouseButton_Left) ||
           (is_near && ImGui::GetFrameCount() - click_frame_ <= k_frames);
}

void ModelPanels::take_click(const ScreenPoint& place) {
    const ImGuiIO& io = ImGui::GetIO();
    click_frame_ = ImGui::GetFrameCount();
    click_place_ = place;
    if (state_.picks_edges) {
        const auto mode = io.KeyShift  ? EdgeTool::Mode::path
                          : io.KeyCtrl ? EdgeTool::Mode::add
                                       : EdgeTool::Mode::replace;
        return edges_.click(place, dragged_, mode, is_double_);
    }
    hover(dragged_, place.x, place.y);
    state_.chosen = state_.hovered; // stays lit when the pointer leaves
    select(dragged_, place.x, place.y, io.KeyShift || io.KeyCtrl);
}

void ModelPanels::take_drag(float left, float top) {
    const ImVec2 moved = ImGui::GetIO().MouseDelta;
    const ImVec2 now = ImGui::GetIO().MousePos;
    ScreenPoint from = {real(now.x - moved.x), real(now.y - moved.y)};
    for (const ScreenPoint& at : state_.pointer_path) {
        drag_length_ += std::fabs(at.x - from.x) + std::fabs(at.y - from.y);
        from = at;
    }
    if (dragged_ < 0)
        return;
    if (!draws_lasso_ && (moved.x != 0.0f || moved.y != 0.0f))
        drag(dragged_, moved.x, moved.y);
    for (const ScreenPoint& at : state_.pointer_path)
        if (draws_lasso_)
            edges_.drag(in_panels(at.x, at.y, left, top));
}

void ModelPanels::take_motion(const ScreenPoint& place, int under) {
    const ImGuiIO& io = ImGui::GetIO();
    const bool was_over = is_over_;
    is_over_ = ImGui::IsItemHovered();
    if (was_over && !is_over_) {
        state_.hovered = k_none;
        edges_.hover(-1, place);
    }
    if (!is_over_)
        return;
    if (under >= 0 && io.MouseWheel != 0.0f) {
        host::zoom(host::panel_camera(under), std::pow(1.15, real(io.MouseWheel)));
        want_those_of(host::panel_camera(under));
    }
    if (io.MouseDelta.x == 0.0f && io.MouseDelta.y == 0.0f && io.MouseWheel == 0.0f)
        return;
    hover(under, place.x, place.y);
    edges_.hover(state_.picks_edges ? under : -1, place);
}

/// A place in the window as one in the picture of the panels, from its lower left corner.
ScreenPoint ModelPanels::in_panels(double x, double y, float left, float top) const {
    return {x - real(left), target_.height() - 1.0 - (y - real(top))};
}

void ModelPanels::react(float left, float top) {
    const ImGuiIO& io = ImGui::GetIO();
    const ScreenPoint place = in_panels(real(io.MousePos.x), real(io.MousePos.y), left, top);
    const int under = panel_at(place.x, place.y);
    if (ImGui::IsItemActivated() && under >= 0) {
        dragged_ = under;
        drag_length_ = 0.0;
        is_double_ = is_double_click(place);
        draws_lasso_ = is_lasso();
        if (draws_lasso_)
            edges_.begin_line(place);
        host::set_active_panel(under);
    }
    if (ImGui::IsItemDeactivated() && dragged_ >= 0) {
        const bool is_click = drag_length_ < 4.0;
        if (is_click && ImGui::IsMouseReleased(ImGuiMouseButton_Left))
            take_click(place);
        if (draws_lasso_ && !is_click)
            edges_.drop(dragged_, io.KeyCtrl || io.KeyShift);
        draws_lasso_ = false;
    }
    if (ImGui::IsItemActive())
        return take_drag(left, top);
    dragged_ = -1;
    take_motion(place, under);
}

void ModelPanels::keys() {
    const ImGuiIO& io = ImGui::GetIO();
    const int panel = active();
    const auto camera = host::panel_camera(panel);
    if (camera.empty() || io.KeyCtrl)
        return;
    const bool moves = io.KeyShift || panels_.camera_view(panel).is_orthographic;
    const std::pair<int, std::pair<double, double>> arrows[] = {{GLFW_KEY_LEFT, {-1.0, 0.0}},
                                                                {GLFW_KEY_RIGHT, {1.0, 0.0}},
                                                                {GLFW_KEY_UP, {0.0, 1.0}},
                                                                {GLFW_KEY_DOWN, {0.0, -1.0}}};
    for (const auto& [key, by] : arrows) {
        if (!ImGui::IsKeyPressed(key))
            continue;
        if (moves)
            host::pan(camera, panels_.viewport(panel), -24.0 * by.first, -24.0 * by.second);
        else
            host::orbit(camera, 6.0 * by.first, 6.0 * by.second);
        want_those_of(camera);
    }
    for (const auto& [key, factor] :
         {std::pair(GLFW_KEY_EQUAL, 1.2), std::pair(GLFW_KEY_KP_ADD, 1.2),
          std::pair(GLFW_KEY_MINUS, 1.0 / 1.2), std::pair(GLFW_KEY_KP_SUBTRACT, 1.0 / 1.2)})
        if (ImGui::IsKeyPressed(key)) {
            host::zoom(camera, factor);
            want_those_of(camera);
        }
    for (const auto& [key, only_selected] :
         {std::pair(GLFW_KEY_F, true), std::pair(GLFW_KEY_A, false)})
        if (ImGui::IsKeyPressed(key)) {
            if (only_selected && state_.chosen != k_none)
                frame_chosen();
            else
                panels_.frame(panel, only_selected);
            want_all();
        }
    if (ImGui::IsKeyPressed(GLFW_KEY_SPACE))
        toggle_alone();
}

void ModelPanels::draw_name(int panel, float left, float top) const {
    const host::Viewport& v = panels_.viewport(panel);
    const auto camera = host::panel_camera(panel);
    if (v.is_empty() || camera.empty())
        return;
    const std::string name = host::camera_name(camera);
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImVec2 size = ImGui::CalcTextSize(name.c_str());
    const ImVec2 at(std::floor(left + 0.5f * (static_cast<float>(v.width) - size.x)),
                    std::floor(top + static_cast<float>(v.height) - size.y - 8.0f));
    list->AddRectFilled({at.x - 7.0f, at.y - 2.0f}, {at.x + size.x + 7.0f, at.y + size.y + 3.0f},
                        IM_COL32(225, 228, 232, 190), 4.0f);
    list->AddText(at, IM_COL32(30, 33, 38, 255), name.c_str());
}

/// Draws panel names, the border of the active panel, and a hint while the scene has no mesh.
void ModelPanels::draw_over(float left, float top) {
    ImDrawList* list = ImGui::GetWindowDrawList();
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        const host::Viewport& v = panels_.viewport(panel);
        if (v.is_empty())
            continue;
        const ImVec2 low(left + static_cast<float>(v.x),
                         top + static_cast<float>(target_.height() - v.y - v.height));
        const ImVec2 size(static_cast<float>(v.width), static_cast<float>(v.height));
        state_.places.add(std::string("panel/") + host::panel_name(panel).asChar(), low.x, low.y,
                          size.x, size.y);
        draw_name(panel, low.x, low.y);
        if (panel == active())
            list->AddRect(low, {low.x + size.x, low.y + size.y},
                          ImGui::GetColorU32(colour::accent));
    }
    const host::Viewport& v = panels_.viewport(active());
    draw_legend(state_, left + static_cast<float>(v.x + v.width),
                top + static_cast<float>(target_.height() - v.y - v.height) + 14.0f * state_.scale,
                static_cast<float>(v.width), true);
    if (!state_.subject.shape)
        draw_welcome(state_, left, top, static_cast<float>(target_.width()),
                     static_cast<float>(target_.height()));
}

void ModelPanels::draw(bool takes_input) {
    const ImVec2 corner = ImGui::GetCursorScreenPos();
    const ImVec2 room = ImGui::GetContentRegionAvail();
    const int width = std::max(32, static_cast<int>(room.x));
    const int height = std::max(32, static_cast<int>(room.y));
    if (target_.resize(width, height)) {
        lay_out(width, height);
        if (wants_frame_)
            frame_all();
        wants_frame_ = false;
    }
    const ImVec2 size(static_cast<float>(width), static_cast<float>(height));
    ImGui::InvisibleButton("##panels", size,
                           ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonMiddle |
                               ImGuiButtonFlags_MouseButtonRight);
    ImGui::SetItemAllowOverlap(); // for the buttons of an empty scene
    has_focus_ = ImGui::IsWindowFocused();
    if (takes_input) {
        react(corner.x, corner.y);
        if (has_focus_ && !ImGui::GetIO().WantTextInput)
            keys();
        paint_if_needed();
    }
    state_.places.add("panels/drawn/" + std::to_string(panels_.counts().panels), 0.0f, 0.0f, 0.0f,
                      0.0f);
    if (lit_ != k_none)
        state_.places.add("lit_on_mesh/" + std::to_string(lit_ + 1), corner.x, corner.y, 0.0f,
                          0.0f);
    ImGui::GetWindowDrawList()->AddImage(
        reinterpret_cast<ImTextureID>(static_cast<intptr_t>(target_.texture())), corner,
        {corner.x + size.x, corner.y + size.y}, {0.0f, 1.0f}, {1.0f, 0.0f});
    draw_over(corner.x, corner.y);
    if (!state_.picks_edges)
        return;
    edges_.draw(ImGui::GetWindowDrawList(), corner.x, corner.y + size.y - 1.0f);
    edges_.add_places(active(), corner.x, corner.y + size.y - 1.0f);
}

} // namespace window
