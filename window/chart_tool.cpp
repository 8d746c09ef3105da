#include "window/chart_tool.h"

#include "host/script/value.h"
#include "window/findings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <imgui.h>

namespace window {
namespace {

std::string flag(const char* name, double value) {
    char text[48];
    std::snprintf(text, sizeof text, " %s %.9g", name, value);
    return text;
}

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
    for (const uint32_t triangle : state.marked)
        if (state.map.triangle_chart()[triangle] != k_none)
            charts.push_back(state.map.triangle_chart()[triangle]);
    if (charts.empty() && state.chosen != k_none)
        charts.push_back(state.chosen);
    std::sort(charts.begin(), charts.end());
    charts.erase(std::unique(charts.begin(), charts.end()), charts.end());
    return charts;
}

std::string statement_changing(const State& state, const std::vector<uint32_t>& charts,
                               const ChartChange& change) {
    // One polygon of every chart; the conversion extends it to the whole chart.
    std::string polygons;
    std::vector<bool> is_named(state.map.charts().size(), true);
    for (const uint32_t chart : charts)
        is_named[chart] = false;
    for (uint32_t t = 0; t < state.map.triangle_count(); ++t) {
        const uint32_t chart = state.map.triangle_chart()[t];
        if (chart == k_none || is_named[chart])
            continue;
        is_named[chart] = true;
        polygons +=
            " " + host::script::quoted(state.shape_path() + ".f[" +
                                       std::to_string(state.map.triangle_polygon()[t]) + "]");
    }
    std::string flags;
    if (change.move[0] != 0.0 || change.move[1] != 0.0)
        flags += flag("-u", change.move[0]) + flag("-v", change.move[1]);
    if (change.angle != 0.0)
        flags += flag("-a", change.angle);
    if (change.scale != 1.0)
        flags += flag("-su", change.scale) + flag("-sv", change.scale);
    if (change.angle != 0.0 || change.scale != 1.0)
        flags += flag("-pu", change.pivot[0]) + flag("-pv", change.pivot[1]);
    return "polyEditUV" + flags + " `polyListComponentConversion -toUV -uvShell" + polygons + "`;";
}

void ChartTool::draw(State& state) {
    ImGui::Checkbox("Drag", &is_on_);
    state.places.add_item("charts/Drag");
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("Drag charts (M), by whole texels; Shift keeps to one axis.\n"
                          "A click picks a chart, Ctrl+click several.");
    draw_fields(state);
}

void ChartTool::draw_fields(State& state) {
    const std::vector<uint32_t> charts = held_charts(state);
    if (charts.empty())
        return;
    ImGui::SameLine();
    ImGui::AlignTextToFramePadding();
    if (charts.size() == 1)
        ImGui::TextColored(colour::warm, "Chart %u", charts[0] + 1);
    else
        ImGui::TextColored(colour::warm, "%zu charts", charts.size());
    state.places.add_item("charts/" + std::to_string(charts.size()));
    ChartChange change;
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
    if (is_asked)
        state.run(statement_changing(state, charts, change));
}

bool ChartTool::begin(const State& state, double u, double v) {
    const uint32_t under = state.map.chart_at(u, v);
    dragged_.clear();
    if (!is_on_ || under == k_none)
        return false;
    dragged_ = held_charts(state);
    if (!std::binary_search(dragged_.begin(), dragged_.end(), under))
        dragged_ = {under};
    from_[0] = u;
    from_[1] = v;
    by_[0] = by_[1] = 0.0;
    return true;
}

void ChartTool::drag(const State& state, double u, double v, bool is_straight) {
    const double texels[2] = {state.subject.texture.width, state.subject.texture.height};
    by_[0] = std::round((u - from_[0]) * texels[0]) / texels[0];
    by_[1] = std::round((v - from_[1]) * texels[1]) / texels[1];
    if (is_straight)
        by_[std::abs(by_[0] * texels[0]) < std::abs(by_[1] * texels[1]) ? 0 : 1] = 0.0;
}

void ChartTool::drop(State& state) {
    const std::vector<uint32_t> charts = std::move(dragged_);
    dragged_.clear();
    ChartChange change;
    change.move[0] = by_[0];
    change.move[1] = by_[1];
    if (!charts.empty() && (by_[0] != 0.0 || by_[1] != 0.0))
        state.run(statement_changing(state, charts, change));
}

void ChartTool::draw_dragged(const State& state, const UvView& view, ImDrawList* list, float left,
                             float top) const {
    if (dragged_.empty())
        return;
    const std::vector<float>& outline = state.map.outline();
    for (size_t i = 0; i < state.map.outline_chart().size(); ++i) {
        if (!std::binary_search(dragged_.begin(), dragged_.end(), state.map.outline_chart()[i]))
            continue;
        ImVec2 ends[2];
        for (size_t end = 0; end < 2; ++end) {
            double x, y;
            view.to_pixel(double(outline[4 * i + 2 * end]) + by_[0],
                          double(outline[4 * i + 2 * end + 1]) + by_[1], x, y);
            ends[end] = {left + static_cast<float>(x), top + static_cast<float>(y)};
        }
        list->AddLine(ends[0], ends[1], ImGui::GetColorU32(colour::warm), 1.5f * state.scale);
    }
}

} // namespace window
