#include "window/side_panels.h"

#include "host/script/session.h"
#include "host/script/value.h"

#include <algorithm>
#include <cstdio>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace window {
namespace {

constexpr const char* k_skip_attribute = "Skip_compute";
constexpr ImGuiTableFlags k_table = ImGuiTableFlags_SizingStretchProp;

void result_row(State& state, const char* name, const std::string& value,
                const ImVec4& tone = colour::text) {
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::PushStyleColor(ImGuiCol_Text, colour::faint);
    ImGui::TextUnformatted(name);
    ImGui::PopStyleColor();
    ImGui::TableNextColumn();
    ImGui::PushStyleColor(ImGuiCol_Text, tone);
    ImGui::TextUnformatted(value.c_str());
    ImGui::PopStyleColor();
    state.places.add_item(std::string("result/") + name);
}

template <class... Values>
std::string words(const char* format, Values... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// "Texture_Width" -> "Texture width"; "subdivisionsWidth" -> "Subdivisions width".
std::string nice(const std::string& name) {
    std::string text;
    const auto is_capital = [&](size_t i) {
        return i < name.size() && name[i] >= 'A' && name[i] <= 'Z';
    };
    for (size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        if (c == '_')
            text += ' ';
        else if (is_capital(i) && (is_capital(i + 1) || (i > 0 && is_capital(i - 1))))
            text += c; // an abbreviation
        else if (is_capital(i) && !text.empty()) {
            if (text.back() != ' ')
                text += ' ';
            text += char(c + 32);
        } else
            text += text.empty() && c >= 'a' && c <= 'z' ? char(c - 32) : c;
    }
    return text;
}

} // namespace

void draw_results(State& state) {
    if (!state.subject.shape) {
        ImGui::TextDisabled("No mesh. Open one with Ctrl+O, or drop a file here.");
        return;
    }
    const UvMap& map = state.map;
    if (!ImGui::BeginTable("results", 2, k_table))
        return;
    ImGui::TableSetupColumn("name", 0, 0.9f);
    ImGui::TableSetupColumn("value", 0, 1.1f);
    result_row(state, "Mesh", state.subject.shape_name());
    result_row(state, "Triangles", words("%u", map.triangle_count()));
    const std::string set =
        state.subject.uv_set < 0
            ? std::string("none")
            : state.subject.mesh.uv_set(uint32_t(state.subject.uv_set)).name.asChar();
    result_row(state, "UV set", set);
    result_row(state, "Charts", words("%zu", map.charts().size()));
    result_row(state, "Stretch, worst chart", words("%.4f", map.worst_stretch()));
    result_row(state, "Stretch, L2", words("%.4f", map.l2_stretch()));
    result_row(state, "Coverage", words("%.1f %%", 100.0 * map.coverage()));
    if (map.unmapped() > 0)
        result_row(state, "Without UVs", words("%u triangles", map.unmapped()), colour::warning);
    const uint32_t lit = state.lit();
    if (lit != k_none) {
        const UvChart& chart = map.charts()[lit];
        result_row(state, "Chart",
                   words("%u: %u triangles, stretch %.3f, %.1f %%", lit + 1, chart.triangles,
                         chart.stretch, 100.0 * chart.area),
                   colour::warm);
    }
    ImGui::EndTable();
}

void AttributePanel::draw_value(State& state, const AttributeRow& row) {
    ImGui::SetNextItemWidth(-1.0f);
    bool is_done = false, is_active = false;
    std::string statement;
    switch (row.kind) {
    case AttributeRow::Kind::boolean: {
        bool is_on = row.number != 0.0;
        if (ImGui::Checkbox("##value", &is_on))
            state.run("setAttr " + host::script::quoted(row.plug) + (is_on ? " 1;" : " 0;"));
        state.places.add_item("attribute/" + row.name);
        return;
    }
    case AttributeRow::Kind::integer: {
        int& value = integers_.emplace(row.plug, static_cast<int>(row.number)).first->second;
        ImGui::InputInt("##value", &value, 0, 0);
        is_done = ImGui::IsItemDeactivatedAfterEdit();
        is_active = ImGui::IsItemActive();
        statement = " " + std::to_string(value);
        break;
    }
    case AttributeRow::Kind::real: {
        float& value = reals_.emplace(row.plug, static_cast<float>(row.number)).first->second;
        ImGui::InputFloat("##value", &value, 0.0f, 0.0f, "%.4g");
        is_done = ImGui::IsItemDeactivatedAfterEdit();
        is_active = ImGui::IsItemActive();
        statement = words(" %.9g", static_cast<double>(value));
        break;
    }
    case AttributeRow::Kind::text: {
        std::string& value = texts_.emplace(row.plug, row.text).first->second;
        ImGui::InputText("##value", &value);
        is_done = ImGui::IsItemDeactivatedAfterEdit();
        is_active = ImGui::IsItemActive();
        statement = " -type \"string\" " + host::script::quoted(value);
        break;
    }
    }
    state.places.add_item("attribute/" + row.name);
    if (is_done)
        state.run("setAttr " + host::script::quoted(row.plug) + statement + ";");
    if (is_done || !is_active) {
        reals_.erase(row.plug);
        integers_.erase(row.plug);
        texts_.erase(row.plug);
    }
}

void AttributePanel::draw_row(State& state, const AttributeRow& row) {
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::AlignTextToFramePadding();
    ImGui::PushStyleColor(ImGuiCol_Text, row.is_input ? colour::text : colour::faint);
    ImGui::TextUnformatted(nice(row.name).c_str());
    ImGui::PopStyleColor();
    ImGui::TableNextColumn();
    ImGui::PushID(row.plug.c_str());
    ImGui::BeginDisabled(!row.is_input);
    draw_value(state, row);
    ImGui::EndDisabled();
    ImGui::PopID();
}

void AttributePanel::draw(State& state) {
    if (state.rows.empty()) {
        ImGui::TextDisabled("No mesh.");
        return;
    }
    const bool is_unwrap = static_cast<bool>(state.subject.node);
    if (is_unwrap) {
        if (ImGui::Button("Unwrap again"))
            state.run("setAttr \"" + state.rows_node + "." + k_skip_attribute + "\" 0;");
        state.places.add_item("attribute/Unwrap again");
        ImGui::SameLine();
    }
    ImGui::AlignTextToFramePadding();
    ImGui::TextDisabled("%s", state.rows_node.c_str());
    ImGui::BeginChild("attributes");
    if (ImGui::BeginTable("attributes", 2, k_table)) {
        ImGui::TableSetupColumn("name", 0, 0.9f);
        ImGui::TableSetupColumn("value", 0, 1.1f);
        for (const AttributeRow& row : state.rows)
            draw_row(state, row);
        ImGui::EndTable();
    }
    ImGui::EndChild();
}

void ConsolePanel::draw_lines(const Console& console) {
    ImGuiListClipper clipper;
    clipper.Begin(static_cast<int>(console.lines().size()));
    while (clipper.Step())
        for (int i = clipper.DisplayStart; i < clipper.DisplayEnd; ++i) {
            const Console::Line& line = console.lines()[static_cast<size_t>(i)];
            ImVec4 tone = colour::text;
            if (line.kind == Console::Kind::error)
                tone = colour::error;
            else if (line.kind == Console::Kind::warning)
                tone = colour::warning;
            else if (line.kind == Console::Kind::result)
                tone = colour::good;
            else if (line.kind == Console::Kind::input)
                tone = colour::faint;
            ImGui::PushStyleColor(ImGuiCol_Text, tone);
            ImGui::TextUnformatted(line.text.c_str());
            ImGui::PopStyleColor();
        }
}

/// What the field asks for while it is edited.
struct FieldCallback {
    ConsolePanel* panel;
    State* state;

    static int call(ImGuiInputTextCallbackData* data) {
        const auto& self = *static_cast<FieldCallback*>(data->UserData);
        const std::string text(data->Buf, data->Buf + data->BufTextLen);
        if (data->EventFlag == ImGuiInputTextFlags_CallbackCompletion) {
            std::string common;
            const auto names = completions(host::script::Session::current().interpreter(),
                                           text.substr(0, size_t(data->CursorPos)), common);
            data->InsertChars(data->CursorPos, common.c_str());
            self.panel->hint_.clear();
            if (names.size() > 1)
                for (size_t i = 0; i < std::min<size_t>(names.size(), 12); ++i)
                    self.panel->hint_ += (i ? "  " : "") + names[i];
        } else if (data->EventFlag == ImGuiInputTextFlags_CallbackHistory) {
            const std::string other =
                self.state->console.recall(data->EventKey == ImGuiKey_DownArrow, text);
            data->DeleteChars(0, data->BufTextLen);
            data->InsertChars(0, other.c_str());
        }
        return 0;
    }
};

void ConsolePanel::draw_field(State& state) {
    ImGui::AlignTextToFramePadding();
    ImGui::TextColored(colour::accent, "MEL");
    ImGui::SameLine();
    if (wants_focus_)
        ImGui::SetKeyboardFocusHere();
    wants_focus_ = false;
    FieldCallback callback{this, &state};
    ImGui::SetNextItemWidth(-1.0f);
    const bool is_entered = ImGui::InputText("##statements", &text_,
                                             ImGuiInputTextFlags_EnterReturnsTrue |
                                                 ImGuiInputTextFlags_CallbackCompletion |
                                                 ImGuiInputTextFlags_CallbackHistory,
                                             FieldCallback::call, &callback);
    state.places.add_item("console/field");
    if (!is_entered)
        return;
    wants_focus_ = true; // stays where the next statement goes
    if (text_.empty())
        return;
    state.console.remember(text_);
    state.console.echo(text_);
    state.run(text_);
    text_.clear();
    hint_.clear();
}

void ConsolePanel::draw(State& state) {
    const float field = ImGui::GetFrameHeightWithSpacing();
    ImGui::PushFont(state.fonts.mono);
    ImGui::BeginChild("lines", {0.0f, -field}, false, ImGuiWindowFlags_HorizontalScrollbar);
    draw_lines(state.console);
    if (!hint_.empty())
        ImGui::TextDisabled("%s", hint_.c_str());
    if (revision_ != state.console.revision() || !hint_.empty())
        ImGui::SetScrollHereY(1.0f);
    revision_ = state.console.revision();
    ImGui::EndChild();
    draw_field(state);
    ImGui::PopFont();
}

} // namespace window
