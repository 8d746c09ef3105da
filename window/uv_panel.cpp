#include "window/uv_panel.h"

#include "window/findings.h"
#include "window/legend.h"

#include <GLFW/glfw3.h>
#include <cmath>
#include <cstdio>
#include <imgui.h>

namespace window {
namespace {

/// The largest triangle in the texture of each of the first charts.
std::vector<uint32_t> largest_triangles(const UvMap& map, size_t max_charts) {
    std::vector<uint32_t> largest;
    const size_t count = std::min(max_charts, map.charts().size());
    for (size_t chart = 0; chart < count; ++chart) {
        float most = -1.0f;
        largest.push_back(k_none);
        for (uint32_t i = map.chart_begin()[chart]; i < map.chart_begin()[chart + 1]; ++i) {
            const uint32_t t = map.triangles_by_chart()[i];
            const float* c = map.uvs().data() + 6 * size_t(t);
            const float area =
                std::abs((c[2] - c[0]) * (c[5] - c[1]) - (c[4] - c[0]) * (c[3] - c[1]));
            if (area > most)
                largest.back() = t;
            most = std::max(most, area);
        }
    }
    return largest;
}

} // namespace

void UvPanel::frame_all(const State& state) {
    UvBox box; // the unit square, and any charts outside of it
    for (int axis = 0; axis < 2; ++axis) {
        box.low[axis] = std::min(0.0, state.map.box().low[axis]);
        box.high[axis] = std::max(1.0, state.map.box().high[axis]);
    }
    view_.frame(box);
    is_whole_ = true;
    wants_paint_ = true;
}

void UvPanel::frame_lit(const State& state) {
    if (state.lit() == k_none)
        return frame_all(state);
    view_.frame(state.map.charts()[state.lit()].box);
    is_whole_ = false;
    wants_paint_ = true;
}

void UvPanel::header(State& state) {
    for (int i = 0; i < k_display_count; ++i) {
        const bool is_on = static_cast<int>(state.display) == i;
        if (i > 0)
            ImGui::SameLine(0.0f, 2.0f);
        ImGui::PushStyleColor(ImGuiCol_Button,
                              is_on ? ImGui::GetStyle().Colors[ImGuiCol_Header] : colour::window);
        if (ImGui::Button(k_display_names[i]))
            state.show(static_cast<Display>(i));
        ImGui::PopStyleColor();
        const std::string place = std::string("display/") + k_display_names[i];
        state.places.add_item(place);
        if (is_on)
            state.places.add_item(place + "/on");
    }
    ImGui::SameLine();
    if (ImGui::Checkbox("Texels", &has_grid_))
        wants_paint_ = true;
    state.places.add_item("display/Texels");
    if (!state.map.charts().empty())
        charts_.draw(state);
}

/// Returns whether Space was pressed.
bool UvPanel::keys(State& state) {
    const double step = 24.0;
    const std::pair<int, std::pair<double, double>> moves[] = {{GLFW_KEY_LEFT, {step, 0.0}},
                                                               {GLFW_KEY_RIGHT, {-step, 0.0}},
                                                               {GLFW_KEY_UP, {0.0, step}},
                                                               {GLFW_KEY_DOWN, {0.0, -step}}};
    for (const auto& [key, by] : moves)
        if (ImGui::IsKeyPressed(key)) {
            view_.pan(by.first, by.second);
            is_whole_ = false;
            wants_paint_ = true;
        }
    for (const auto& [key, factor] :
         {std::pair(GLFW_KEY_EQUAL, 1.25), std::pair(GLFW_KEY_KP_ADD, 1.25),
          std::pair(GLFW_KEY_MINUS, 0.8), std::pair(GLFW_KEY_KP_SUBTRACT, 0.8)})
        if (ImGui::IsKeyPressed(key)) {
            view_.zoom(factor, 0.5 * view_.width(), 0.5 * view_.height());
            is_whole_ = false;
            wants_paint_ = true;
        }
    if (ImGui::IsKeyPressed(GLFW_KEY_A))
        frame_all(state);
    if (ImGui::IsKeyPressed(GLFW_KEY_F))
        frame_lit(state);
    for (const auto& [key, hand] : {std::pair(GLFW_KEY_M, ChartTool::Hand::move),
                                    std::pair(GLFW_KEY_T, ChartTool::Hand::turn),
                                    std::pair(GLFW_KEY_R, ChartTool::Hand::scale)})
        if (ImGui::IsKeyPressed(key, false))
            charts_.take(hand);
    if (ImGui::IsKeyPressed(GLFW_KEY_L, false))
        charts_.lock(state);
    return ImGui::IsKeyPressed(GLFW_KEY_SPACE, false);
}

/// A click, as opposed to a drag, keeps the chart at (x, y) lit.
void UvPanel::take_click(State& state, double x, double y) {
    const ImVec2 moved = ImGui::GetIO().MouseDelta;
    if (ImGui::IsItemActivated())
        dragged_ = 0.0f;
    if (ImGui::IsItemActive())
        dragged_ += std::abs(moved.x) + std::abs(moved.y);
    if (!ImGui::IsItemDeactivated() || !ImGui::IsMouseReleased(0) || dragged_ >= 4.0f)
        return;
    double u, v;
    view_.to_uv(x, y, u, v);
    const uint32_t chart = state.map.chart_at(u, v);
    if (ImGui::GetIO().KeyCtrl && chart != k_none)
        return state.run(statement_selecting(state.shape_path(), state.map.polygons_of(chart), 'f',
                                             !state.marked.empty()));
    state.chosen = chart;
}

/// While charts may be moved, a drag that begins on one moves it instead of the view.
bool UvPanel::take_chart_drag(State& state, double x, double y) {
    const ImGuiIO& io = ImGui::GetIO();
    double u, v;
    view_.to_uv(x, y, u, v);
    if (ImGui::IsItemActivated() && ImGui::IsMouseDown(ImGuiMouseButton_Left))
        charts_.begin(state, u, v);
    if (!charts_.is_dragging())
        return false;
    charts_.drag(state, u, v, io.KeyShift);
    if (ImGui::IsItemActive())
        return true;
    charts_.drop(state);
    return false;
}

void UvPanel::react(State& state, float left, float top) {
    const ImGuiIO& io = ImGui::GetIO();
    const bool is_over = ImGui::IsItemHovered();
    const double x = static_cast<double>(io.MousePos.x - left);
    const double y = static_cast<double>(io.MousePos.y - top);
    const bool moves_charts = take_chart_drag(state, x, y);
    if (!moves_charts && ImGui::IsItemActive() &&
        (io.MouseDelta.x != 0.0f || io.MouseDelta.y != 0.0f)) {
        if (ImGui::IsMouseDown(ImGuiMouseButton_Right))
            view_.zoom(std::exp(0.01 * static_cast<double>(io.MouseDelta.x - io.MouseDelta.y)),
                       0.5 * view_.width(), 0.5 * view_.height());
        else
            view_.pan(static_cast<double>(io.MouseDelta.x), static_cast<double>(io.MouseDelta.y));
        is_whole_ = false;
        wants_paint_ = true;
    }
    if (is_over && io.MouseWheel != 0.0f) {
        view_.zoom(std::pow(1.18, static_cast<double>(io.MouseWheel)), x, y);
        is_whole_ = false;
        wants_paint_ = true;
    }
    take_click(state, x, y);
    if (was_over_ && !is_over)
        state.hovered = k_none;
    was_over_ = is_over;
    if (!is_over || ImGui::IsItemActive())
        return;
    double u, v;
    view_.to_uv(x, y, u, v);
    state.hovered = state.map.chart_at(u, v);
    const uint32_t lit = state.lit();
    if (state.hovered == k_none || lit == k_none)
        return;
    const UvChart& chart = state.map.charts()[lit];
    ImGui::SetTooltip("Chart %u\n%u triangles\nstretch %.3f\n%.2f %% of the texture", lit + 1,
                      chart.triangles, chart.stretch, 100.0 * chart.area);
}

void UvPanel::paint_if_needed(const State& state) {
    if (!wants_paint_ && revision_ == state.map_revision && lit_ == state.lit() &&
        display_ == state.display && scene_revision_ == state.scene_revision)
        return;
    scene_revision_ = state.scene_revision;
    target_.bind();
    paint_.paint_texture(state, view_, has_grid_);
    target_.unbind();
    wants_paint_ = false;
    revision_ = state.map_revision;
    lit_ = state.lit();
    display_ = state.display;
}

/// Registers the middle of the largest triangle of each of the first charts, and the lit chart.
void UvPanel::add_places(State& state, float left, float top) {
    constexpr size_t k_max_places = 32;
    if (!state.places.is_kept())
        return;
    if (places_revision_ != state.map_revision)
        largest_ = largest_triangles(state.map, k_max_places);
    places_revision_ = state.map_revision;
    for (size_t chart = 0; chart < largest_.size(); ++chart) {
        const float* c = state.map.uvs().data() + 6 * size_t(largest_[chart]);
        double x, y;
        view_.to_pixel(static_cast<double>(c[0] + c[2] + c[4]) / 3.0,
                       static_cast<double>(c[1] + c[3] + c[5]) / 3.0, x, y);
        state.places.add("chart/" + std::to_string(chart + 1), left + static_cast<float>(x),
                         top + static_cast<float>(y), 0.0f, 0.0f);
    }
    if (state.lit() != k_none)
        state.places.add("lit/" + std::to_string(state.lit() + 1), left, top, 0.0f, 0.0f);
}

/// Draws the line below the texture: its size, the gutter, and the colour scale.
void UvPanel::footer(const State& state, float left, float top, float right, float height) const {
    const float middle = top + 0.5f * height;
    ImFont* font = state.fonts.small;
    char words[96];
    std::snprintf(words, sizeof words, "%.0f × %.0f texels, padding %.0f",
                  state.subject.texture.width, state.subject.texture.height, state.subject.gutter);
    ImGui::GetWindowDrawList()->AddText(font, font->FontSize,
                                        {left + 2.0f, middle - 0.5f * font->FontSize},
                                        ImGui::GetColorU32(colour::faint), words);
    draw_legend(state, right, middle, static_cast<float>(view_.width()), false);
}

void UvPanel::fit(const State& state, int width, int height) {
    const bool has_other_shape = view_.set_texture(state.subject.texture);
    const bool has_other_size = target_.resize(width, height);
    if (has_other_size)
        view_.resize(width, height);
    if (has_other_shape || (has_other_size && is_whole_))
        frame_all(state);
    wants_paint_ = wants_paint_ || has_other_size;
}

void UvPanel::draw_picture(State& state, const ImVec2& low, const ImVec2& high) {
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddImage(reinterpret_cast<ImTextureID>(static_cast<intptr_t>(target_.texture())), low,
                   high, {0.0f, 1.0f}, {1.0f, 0.0f});
    charts_.draw_outlines(state, view_, list, low.x, low.y);
    if (state.subject.shape && state.map.charts().empty())
        draw_invitation(state, low, high);
}

/// Stands in place of charts while the mesh has none.
void UvPanel::draw_invitation(State& state, const ImVec2& low, const ImVec2& high) const {
    const char* words = "No texture coordinates yet";
    const float step = ImGui::GetFrameHeightWithSpacing();
    const float middle = 0.5f * (low.x + high.x), top = 0.5f * (low.y + high.y) - step;
    const ImVec2 after = ImGui::GetCursorScreenPos();
    ImGui::SetCursorScreenPos({middle - 0.5f * ImGui::CalcTextSize(words).x, top});
    ImGui::TextUnformatted(words);
    const float width = 110.0f * state.scale;
    ImGui::SetCursorScreenPos({middle - 0.5f * width, top + step});
    if (ImGui::Button("Unwrap", {width, 0.0f}))
        state.run_on_shown("tessora;");
    state.places.add_item("uv/Unwrap");
    ImGui::SetCursorScreenPos(after);
}

bool UvPanel::draw(State& state, bool takes_input) {
    bool wants_other_size = false;
    header(state);
    const ImVec2 corner = ImGui::GetCursorScreenPos();
    const ImVec2 room = ImGui::GetContentRegionAvail();
    const float line = state.fonts.small->FontSize + 6.0f;
    const int width = std::max(16, static_cast<int>(room.x));
    const int height = std::max(16, static_cast<int>(room.y - line));
    fit(state, width, height);
    const ImVec2 size(static_cast<float>(width), static_cast<float>(height));
    ImGui::InvisibleButton("##texture", size,
                           ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonMiddle |
                               ImGuiButtonFlags_MouseButtonRight);
    ImGui::SetItemAllowOverlap(); // for the button that invites to unwrap
    state.places.add_item("uv/texture");
    has_focus_ = ImGui::IsWindowFocused(ImGuiFocusedFlags_ChildWindows);
    if (takes_input) {
        react(state, corner.x, corner.y);
        if (has_focus_ && !ImGui::GetIO().WantTextInput && !ImGui::GetIO().KeyCtrl)
            wants_other_size = keys(state);
        paint_if_needed(state);
    }
    add_places(state, corner.x, corner.y);
    const ImVec2 end(corner.x + size.x, corner.y + size.y);
    draw_picture(state, corner, end);
    footer(state, corner.x, end.y + 2.0f, end.x, line);
    return wants_other_size;
}

} // namespace window
