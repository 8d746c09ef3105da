#include "window/chart_tool.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <imgui.h>
#include <iterator>
#include <tuple>

namespace window {
namespace {

/// The charts that polygons lie in, ascending.
std::vector<uint32_t> charts_of(const State& state, const std::vector<uint32_t>& polygons) {
    std::vector<uint32_t> charts;
    for (uint32_t t = 0; !polygons.empty() && t < state.map.triangle_count(); ++t) {
        const uint32_t chart = state.map.triangle_chart()[t];
        if (chart != k_none &&
            std::binary_search(polygons.begin(), polygons.end(), state.map.triangle_polygon()[t]))
            charts.push_back(chart);
    }
    std::sort(charts.begin(), charts.end());
    charts.erase(std::unique(charts.begin(), charts.end()), charts.end());
    return charts;
}

ChartsOf shown_charts(const State& state) { return {state.shape_path(), state.map}; }

constexpr double k_degrees = 180.0 / 3.14159265358979323846;

/// The middle of the charts' bounds.
void set_pivot(const State& state, const std::vector<uint32_t>& charts, ChartChange& change) {
    for (int axis = 0; axis < 2; ++axis) {
        double low = 1e300, high = -1e300;
        for (const uint32_t chart : charts) {
            low = std::min(low, state.map.charts()[chart].box.low[axis]);
            high = std::max(high, state.map.charts()[chart].box.high[axis]);
        }
        change.pivot[axis] = 0.5 * (low + high);
    }
}

} // namespace

std::vector<uint32_t> held_charts(const State& state) {
    std::vector<uint32_t> charts;
    std::vector<bool> is_held(state.map.charts().size());
    for (const uint32_t triangle : state.marked)
        if (state.map.triangle_chart()[triangle] != k_none)
            is_held[state.map.triangle_chart()[triangle]] = true;
    for (uint32_t chart = 0; chart < is_held.size(); ++chart)
        if (is_held[chart])
            charts.push_back(chart);
    if (charts.empty() && state.chosen != k_none)
        charts.push_back(state.chosen);
    return charts;
}

const std::vector<uint32_t>& ChartLocks::charts(const State& state) {
    if (!polygons_.empty() &&
        (!state.subject.shape || &mesh_.connectivity() != &state.subject.mesh.connectivity()))
        polygons_.clear();
    if (polygons_.empty() || revision_ != state.map_revision)
        charts_ = charts_of(state, polygons_);
    revision_ = state.map_revision;
    return charts_;
}

void ChartLocks::toggle(const State& state, const std::vector<uint32_t>& charts) {
    const std::vector<uint32_t> before = this->charts(state);
    std::vector<uint32_t> after;
    if (std::includes(before.begin(), before.end(), charts.begin(), charts.end()))
        std::set_difference(before.begin(), before.end(), charts.begin(), charts.end(),
                            std::back_inserter(after));
    else
        std::set_union(before.begin(), before.end(), charts.begin(), charts.end(),
                       std::back_inserter(after));
    polygons_ = state.map.one_polygon_each(after);
    mesh_ = state.subject.mesh;
    charts_ = std::move(after);
}

std::vector<uint32_t> ChartTool::without_locked(const State& state, std::vector<uint32_t> charts) {
    const std::vector<uint32_t> locked = locks_.charts(state);
    charts.erase(std::remove_if(charts.begin(), charts.end(),
                                [&](uint32_t chart) {
                                    return std::binary_search(locked.begin(), locked.end(), chart);
                                }),
                 charts.end());
    return charts;
}

void ChartTool::lock(State& state) {
    const std::vector<uint32_t> held = held_charts(state);
    if (held.empty())
        return state.say("Pick the charts to lock first: click, Ctrl+click");
    locks_.toggle(state, held);
}

void ChartTool::draw(State& state) {
    const std::vector<uint32_t> held = held_charts(state);
    draw_hands(state);
    draw_packing(state, held);
    // The row is always there: the texture below must not move when a chart is picked.
    ImGui::BeginDisabled(held.empty());
    draw_fields(state, held);
    ImGui::EndDisabled();
}

void ChartTool::draw_hands(State& state) {
    constexpr std::tuple<Hand, const char*, const char*> hands[] = {
        {Hand::move, "Move",
         "Drag charts (M), by whole texels; Shift keeps to one axis.\n"
         "A click picks a chart, Ctrl+click several."},
        {Hand::turn, "Turn", "Drag around the middle of charts (T); Shift: steps of 15 degrees."},
        {Hand::scale, "Scale",
         "Drag to or from the middle of charts (R); Shift: steps of a tenth."}};
    ImGui::AlignTextToFramePadding();
    ImGui::TextColored(colour::faint, "Drag");
    for (const auto& [hand, name, help] : hands) {
        ImGui::SameLine(0.0f, hand == Hand::move ? -1.0f : 2.0f);
        const bool is_on = hand_ == hand;
        ImGui::PushStyleColor(ImGuiCol_Button,
                              is_on ? ImGui::GetStyle().Colors[ImGuiCol_Header] : colour::window);
        if (ImGui::Button((std::string(name) + "##drag").c_str()))
            take(hand);
        ImGui::PopStyleColor();
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s", help);
        state.places.add_item(std::string("charts/") + name + (is_on ? "/on" : ""));
    }
}

void ChartTool::draw_packing(State& state, const std::vector<uint32_t>& held) {
    const std::vector<uint32_t> locked = locks_.charts(state);
    ImGui::SameLine();
    const bool unlocks =
        !held.empty() && std::includes(locked.begin(), locked.end(), held.begin(), held.end());
    if (ImGui::Button(unlocks ? "Unlock###lock" : "Lock###lock"))
        lock(state);
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("The picked charts stay where they are (L)");
    state.places.add_item("charts/Lock");
    state.places.add_item("charts/locked/" + std::to_string(locked.size()));
    ImGui::SameLine(0.0f, 2.0f);
    if (ImGui::Button(locked.empty() ? "Pack###pack" : "Pack the rest###pack"))
        state.run(statement_packing(shown_charts(state), state.subject, locked));
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("Arranges all charts anew in the texture,\naround those that are locked");
    state.places.add_item("charts/Pack");
}

/// Says which charts the fields are for.
void ChartTool::name_charts(State& state, const std::vector<uint32_t>& held) {
    ImGui::AlignTextToFramePadding();
    if (held.empty())
        ImGui::TextUnformatted("No chart");
    else if (held.size() == 1)
        ImGui::TextColored(colour::warm, "Chart %u", held[0] + 1);
    else
        ImGui::TextColored(colour::warm, "%zu charts", held.size());
    state.places.add_item("charts/" + std::to_string(held.size()));
}

void ChartTool::draw_fields(State& state, const std::vector<uint32_t>& held) {
    name_charts(state, held);
    const std::vector<uint32_t> charts = without_locked(state, held);
    ChartChange change;
    if (!charts.empty())
        set_pivot(state, charts, change);
    bool is_asked = false;
    const auto field = [&](const char* name, float* values, int count, float width,
                           const char* help) {
        ImGui::SameLine();
        ImGui::SetNextItemWidth(width * state.scale);
        ImGui::InputScalarN((std::string("##") + name).c_str(), ImGuiDataType_Float, values, count,
                            nullptr, nullptr, "%.4g");
        ImGui::SameLine(0.0f, 2.0f);
        const bool is_pressed = ImGui::Button(name);
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s", help);
        state.places.add_item(std::string("chart_tool/") + name);
        is_asked = is_asked || is_pressed;
        return is_pressed;
    };
    if (field("Move", texels_, 2, 84.0f, "by so many texels along U and V")) {
        change.move[0] = double(texels_[0]) / state.subject.texture.width;
        change.move[1] = double(texels_[1]) / state.subject.texture.height;
    }
    if (field("Turn", &angle_, 1, 40.0f, "by so many degrees, counter-clockwise"))
        change.angle = double(angle_);
    if (field("Scale", &factor_, 1, 40.0f, "by this factor: 2 gives twice the texel density"))
        change.scale = double(factor_);
    if (is_asked && charts.empty())
        state.say("The charts are locked");
    else if (is_asked)
        state.run(statement_changing(shown_charts(state), charts, change));
}

bool ChartTool::begin(State& state, double u, double v) {
    const uint32_t under = state.map.chart_at(u, v);
    dragged_.clear();
    if (hand_ == Hand::none || under == k_none)
        return false;
    std::vector<uint32_t> charts = held_charts(state);
    if (!std::binary_search(charts.begin(), charts.end(), under))
        charts = {under};
    dragged_ = without_locked(state, charts);
    if (dragged_.empty()) {
        state.say("The chart is locked");
        return false;
    }
    from_[0] = u;
    from_[1] = v;
    change_ = ChartChange();
    set_pivot(state, dragged_, change_);
    return true;
}

void ChartTool::drag(const State& state, double u, double v, bool is_rough) {
    const double texels[2] = {state.subject.texture.width, state.subject.texture.height};
    const double begin[2] = {from_[0] - change_.pivot[0], from_[1] - change_.pivot[1]};
    const double now[2] = {u - change_.pivot[0], v - change_.pivot[1]};
    if (hand_ == Hand::move) {
        change_.move[0] = std::round((u - from_[0]) * texels[0]) / texels[0];
        change_.move[1] = std::round((v - from_[1]) * texels[1]) / texels[1];
        const bool is_wide =
            std::abs(change_.move[0] * texels[0]) >= std::abs(change_.move[1] * texels[1]);
        if (is_rough)
            change_.move[is_wide ? 1 : 0] = 0.0;
    } else if (hand_ == Hand::turn) {
        const double angle =
            k_degrees * (std::atan2(now[1], now[0]) - std::atan2(begin[1], begin[0]));
        change_.angle =
            is_rough ? 15.0 * std::round(angle / 15.0) : std::round(10.0 * angle) / 10.0;
    } else {
        // Close to the middle a texel more or less would be much.
        const double least = 4.0 / std::max(texels[0], texels[1]);
        const double factor =
            std::hypot(now[0], now[1]) / std::max(least, std::hypot(begin[0], begin[1]));
        const double step = is_rough ? 0.1 : 0.01;
        change_.scale = std::max(step, step * std::round(factor / step));
    }
}

void ChartTool::drop(State& state) {
    const std::vector<uint32_t> charts = std::move(dragged_);
    dragged_.clear();
    const bool has_changed = change_.move[0] != 0.0 || change_.move[1] != 0.0 ||
                             change_.angle != 0.0 || change_.scale != 1.0;
    if (!charts.empty() && has_changed)
        state.run(statement_changing(shown_charts(state), charts, change_));
}

void ChartTool::draw_outlines(const State& state, const UvView& view, ImDrawList* list, float left,
                              float top) {
    const std::vector<uint32_t> locked = locks_.charts(state);
    std::vector<uint32_t> shown;
    std::set_union(locked.begin(), locked.end(), dragged_.begin(), dragged_.end(),
                   std::back_inserter(shown));
    for (const uint32_t chart : shown)
        draw_outline(state, chart, view, list, left, top);
}

/// Draws the outline of a chart that is locked, or where it is dragged to.
void ChartTool::draw_outline(const State& state, uint32_t chart, const UvView& view,
                             ImDrawList* list, float left, float top) const {
    const double cosine = std::cos(change_.angle / k_degrees) * change_.scale;
    const double sine = std::sin(change_.angle / k_degrees) * change_.scale;
    const std::vector<float>& outline = state.map.outline();
    const bool is_dragged = std::binary_search(dragged_.begin(), dragged_.end(), chart);
    for (size_t i = state.map.outline_begin()[chart]; i < state.map.outline_begin()[chart + 1];
         ++i) {
        ImVec2 ends[2];
        for (size_t end = 0; end < 2; ++end) {
            double u = double(outline[4 * i + 2 * end]), v = double(outline[4 * i + 2 * end + 1]);
            if (is_dragged) {
                const double x = u - change_.pivot[0], y = v - change_.pivot[1];
                u = change_.pivot[0] + cosine * x - sine * y + change_.move[0];
                v = change_.pivot[1] + sine * x + cosine * y + change_.move[1];
            }
            double x, y;
            view.to_pixel(u, v, x, y);
            ends[end] = {left + static_cast<float>(x), top + static_cast<float>(y)};
        }
        list->AddLine(ends[0], ends[1],
                      ImGui::GetColorU32(is_dragged ? colour::warm : colour::good),
                      1.5f * state.scale);
    }
}

} // namespace window
