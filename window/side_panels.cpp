#include "window/side_panels.h"

#include "app/presets.h"
#include "host/commands/session.h"
#include "host/script/value.h"

#include <algorithm>
#include <cstdio>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace window {
namespace {

constexpr ImGuiTableFlags k_table = ImGuiTableFlags_SizingStretchProp;

/// `text` truncated with an ellipsis to at most `width` pixels.
std::string fitted(const std::string& text, float width) {
    if (ImGui::CalcTextSize(text.c_str()).x <= width)
        return text;
    size_t length = text.size();
    std::string cut;
    do {
        while (length > 0 && (text[--length] & 0xC0) == 0x80) // keep UTF-8 sequences whole
            ;
        cut = text.substr(0, length) + "…";
    } while (length > 0 && ImGui::CalcTextSize(cut.c_str()).x > width);
    return cut;
}

void result(State& state, const char* name, const std::string& value,
            const ImVec4& tone = colour::text) {
    ImGui::TableNextColumn();
    ImGui::TextColored(colour::faint, "%s", name);
    ImGui::TableNextColumn();
    ImGui::TextColored(tone, "%s", value.c_str());
    state.places.add_item(std::string("result/") + name);
}

template <class... Values>
std::string words(const char* format, Values... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// Formats with thousands separators: 69666 -> "69,666".
std::string counted(uint32_t number) {
    std::string digits = std::to_string(number);
    for (size_t i = digits.size(); i > 3; i -= 3)
        digits.insert(i - 3, ",");
    return digits;
}

/// Attribute name as a label: "Texture_Width" -> "Texture width"; "subdivisionsWidth" ->
/// "Subdivisions width".
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
            text += c; // part of an abbreviation such as UV
        else if (is_capital(i) && !text.empty()) {
            if (text.back() != ' ')
                text += ' ';
            text += char(c + 32);
        } else
            text += text.empty() && c >= 'a' && c <= 'z' ? char(c - 32) : c;
    }
    return text;
}

/// Draws the mesh's name, triangle count and UV set.
void draw_subject(State& state) {
    const float room = ImGui::GetContentRegionAvail().x;
    const std::string name = state.subject.shape_name(), shown = fitted(name, room);
    ImGui::TextUnformatted(shown.c_str());
    state.places.add_item("result/Mesh");
    if (shown != name && ImGui::IsItemHovered())
        ImGui::SetTooltip("%s", name.c_str());
    const int set = state.subject.uv_set;
    const std::string uvs =
        set < 0 ? std::string("no UV set")
                : std::string("UV set ") + state.subject.mesh.uv_set(uint32_t(set)).name.asChar();
    ImGui::TextColored(
        colour::faint, "%s",
        fitted(counted(state.map.triangle_count()) + " triangles, " + uvs, room).c_str());
}

/// Makes the item drawn last, underlined, lead to the chart with the most stretch.
void lead_to_worst(State& state) {
    const ImVec2 low = ImGui::GetItemRectMin(), high = ImGui::GetItemRectMax();
    ImGui::GetWindowDrawList()->AddLine({low.x, high.y}, high, ImGui::GetColorU32(colour::accent));
    if (ImGui::IsItemHovered()) {
        ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);
        ImGui::SetTooltip("Click: show the chart with the most stretch");
    }
    if (ImGui::IsItemClicked()) {
        state.chosen = state.map.worst_chart();
        state.frames_chosen = true;
    }
}

/// Draws warnings about the layout, and figures of the highlighted chart.
void draw_remarks(State& state) {
    const UvMap& map = state.map;
    if (map.unmapped() > 0)
        ImGui::TextColored(colour::warning, "%s triangles have no UVs",
                           counted(map.unmapped()).c_str());
    const uint32_t lit = state.lit();
    if (lit == k_none)
        return;
    const UvChart& chart = map.charts()[lit];
    ImGui::TextColored(colour::warm, "Chart %u: %s triangles, stretch %.4f, covers %.1f %%",
                       lit + 1, counted(chart.triangles).c_str(), chart.stretch,
                       100.0 * chart.area);
    state.places.add_item("result/Chart");
}

/// Whether what the UVs break is not known yet; draws what there is to say instead. Where checking
/// takes longer than people take for "at once", a frame says so before it begins.
bool waits_for_check(State& state) {
    constexpr uint32_t k_quick = 20000; // triangles
    if (state.has_checked() || state.map.triangle_count() <= k_quick)
        return false;
    const int now = ImGui::GetFrameCount();
    if (state.check_frame < 0 && state.checks_by_itself())
        state.check_frame = now;
    if (state.check_frame < 0) {
        if (ImGui::Button("Check the UVs"))
            state.check_frame = now + 1;
        state.places.add_item("result/Check");
        return true;
    }
    if (now > state.check_frame)
        return false;
    ImGui::TextColored(colour::faint, "Checking the UVs…");
    return true;
}

/// Selects the polygons, and shows the chart of the first: a few polygons are hardly seen from
/// afar.
void show_breach(State& state, const measure::Breach& breach) {
    state.run(statement_selecting(state.shape_path(), breach.polygons, 'f'));
    const std::vector<uint32_t>& polygons = state.map.triangle_polygon();
    const auto at = std::find(polygons.begin(), polygons.end(), breach.polygons[0]);
    if (at == polygons.end())
        return;
    state.chosen = state.map.triangle_chart()[size_t(at - polygons.begin())];
    state.frames_chosen = state.chosen != k_none;
}

/// Draws what `tessora verify` would say, a line for each broken guarantee; a click selects its
/// polygons.
void draw_breaches(State& state) {
    if (state.map.charts().empty() || waits_for_check(state))
        return;
    const std::vector<measure::Breach>& breaches = state.breaches();
    if (breaches.empty()) {
        ImGui::TextColored(colour::good, "All guarantees hold");
        state.places.add_item("verdict/ok");
        return;
    }
    ImGui::TextColored(colour::faint,
                       breaches.size() == 1 ? "%zu guarantee is broken; click it"
                                            : "%zu guarantees are broken; click one",
                       breaches.size());
    state.places.add_item("verdict/count/" + std::to_string(breaches.size()));
    ImGui::BeginChild("breaches", {0.0f, 0.0f}); // with a bar if there is no room for all
    for (const measure::Breach& breach : breaches) {
        ImGui::PushStyleColor(ImGuiCol_Text, colour::warning);
        const std::string line = breach.sentence + "###" + breach.name;
        if (ImGui::Selectable(line.c_str()) && !breach.polygons.empty())
            show_breach(state, breach);
        ImGui::PopStyleColor();
        state.places.add_item(std::string("verdict/") + breach.name);
        if (ImGui::IsItemHovered() && !breach.polygons.empty())
            ImGui::SetTooltip("%s\nClick: select %zu %s and show the chart",
                              breach.sentence.c_str(), breach.polygons.size(),
                              breach.polygons.size() == 1 ? "polygon" : "polygons");
    }
    ImGui::EndChild();
}

/// Shows the tooltip of a row.
void explain(const ShownAttribute& row) {
    if (row.help.empty() && !row.has_changed)
        return;
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(24.0f * ImGui::GetFontSize());
    if (!row.help.empty())
        ImGui::TextUnformatted(row.help.c_str());
    if (row.has_changed)
        ImGui::TextUnformatted("The UVs were made with another value.");
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
}

} // namespace

void draw_results(State& state) {
    if (!state.subject.shape) {
        ImGui::TextDisabled("No mesh");
        return;
    }
    draw_subject(state);
    const UvMap& map = state.map;
    if (ImGui::BeginTable("results", 4, k_table)) {
        ImGui::TableSetupColumn("name", 0, 1.25f);
        ImGui::TableSetupColumn("value", 0, 0.75f);
        ImGui::TableSetupColumn("second name", 0, 1.05f);
        ImGui::TableSetupColumn("second value", 0, 0.75f);
        const bool has_charts = !map.charts().empty();
        const auto shown = [&](const char* format, double value) {
            return has_charts ? words(format, value) : std::string("–");
        };
        result(state, "Charts", counted(static_cast<uint32_t>(map.charts().size())));
        result(state, "Coverage", shown("%.1f %%", 100.0 * map.coverage()),
               map.coverage() > 1.0 ? colour::warning : colour::text);
        result(state, "Worst stretch", shown("%.4f", map.worst_stretch()),
               has_charts ? colour::accent : colour::text);
        if (has_charts)
            lead_to_worst(state);
        result(state, "L2 stretch", shown("%.4f", map.l2_stretch()));
        ImGui::EndTable();
    }
    draw_remarks(state);
    draw_breaches(state);
}

/// Draws the value as a field and returns it as setAttr takes it.
std::string AttributePanel::draw_field(const ShownAttribute& row) {
    if (row.kind == ShownAttribute::Kind::integer) {
        int& value = integers_.emplace(row.plug, static_cast<int>(row.number)).first->second;
        ImGui::InputInt("##value", &value, 0, 0);
        return " " + std::to_string(value);
    }
    if (row.kind == ShownAttribute::Kind::real) {
        float& value = reals_.emplace(row.plug, static_cast<float>(row.number)).first->second;
        ImGui::InputFloat("##value", &value, 0.0f, 0.0f, "%.4g");
        return words(" %.9g", static_cast<double>(value));
    }
    std::string& value = texts_.emplace(row.plug, row.text).first->second;
    ImGui::InputText("##value", &value);
    return " -type \"string\" " + host::script::quoted(value);
}

void AttributePanel::draw_value(State& state, const ShownAttribute& row) {
    ImGui::SetNextItemWidth(-1.0f);
    if (row.kind == ShownAttribute::Kind::boolean) {
        bool is_on = row.number != 0.0;
        if (ImGui::Checkbox("##value", &is_on))
            state.run("setAttr " + host::script::quoted(row.plug) + (is_on ? " 1;" : " 0;"));
        state.places.add_item("attribute/" + row.name);
        return;
    }
    const std::string value = draw_field(row);
    const bool is_done = ImGui::IsItemDeactivatedAfterEdit(), is_active = ImGui::IsItemActive();
    state.places.add_item("attribute/" + row.name);
    if (is_done)
        state.run("setAttr " + host::script::quoted(row.plug) + value + ";");
    if (is_done || !is_active) {
        reals_.erase(row.plug);
        integers_.erase(row.plug);
        texts_.erase(row.plug);
    }
}

void AttributePanel::draw_row(State& state, const ShownAttribute& row) {
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::AlignTextToFramePadding();
    const ImVec4 tone = row.has_changed ? colour::warm
                        : row.is_input  ? colour::text
                                        : colour::faint;
    const std::string label = row.label.empty() ? nice(row.name) : row.label;
    ImGui::TextColored(row.has_effect ? tone : colour::faint, "%s%s", label.c_str(),
                       row.has_effect ? "" : " (no effect)");
    state.places.add_item("label/" + row.name);
    if (!row.is_input)
        state.places.add_item("label/" + row.name + "/fixed");
    if (ImGui::IsItemHovered())
        explain(row);
    ImGui::TableNextColumn();
    ImGui::PushID(row.plug.c_str());
    ImGui::BeginDisabled(!row.is_input);
    draw_value(state, row);
    ImGui::EndDisabled();
    if (ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled))
        explain(row);
    ImGui::PopID();
}

namespace {

/// The button that lists the presets of the settings.
void draw_presets(State& state) {
    if (ImGui::Button("Preset"))
        ImGui::OpenPopup("presets");
    state.places.add_item("attribute/Preset");
    if (!ImGui::BeginPopup("presets"))
        return;
    const auto item = [&](const char* label, const char* name, const char* help) {
        if (ImGui::MenuItem(label))
            state.wanted_preset = name;
        state.places.add_item(std::string("preset/") + label);
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s", help);
    };
    item("Defaults", k_no_preset, "the settings of a new unwrap");
    for (const app::Preset& preset : app::presets())
        item(nice(preset.name).c_str(), preset.name, preset.summary);
    ImGui::Separator();
    item("From a file…", k_preset_from_file, "settings in JSON, or a report, whose settings count");
    ImGui::EndPopup();
}

} // namespace

void AttributePanel::draw_head(State& state) const {
    if (state.subject.node) {
        if (state.has_changed_rows)
            ImGui::PushStyleColor(ImGuiCol_Button, ImGui::GetColorU32(ImGuiCol_ButtonActive));
        const bool is_pressed = ImGui::Button("Unwrap again");
        if (state.has_changed_rows)
            ImGui::PopStyleColor();
        if (is_pressed)
            state.run(state.unwrap_again());
        state.places.add_item("attribute/Unwrap again");
        ImGui::SameLine();
        draw_presets(state);
        ImGui::SameLine();
    }
    ImGui::AlignTextToFramePadding();
    if (state.has_changed_rows) {
        ImGui::TextColored(
            colour::warm, "%s",
            fitted("These UVs were made with other settings", ImGui::GetContentRegionAvail().x)
                .c_str());
        state.places.add_item("attribute/changed");
    } else {
        const std::string name = fitted(state.rows_node, ImGui::GetContentRegionAvail().x);
        ImGui::TextDisabled("%s", name.c_str());
    }
}

void AttributePanel::draw(State& state) {
    if (state.rows.empty()) {
        ImGui::TextDisabled("No attributes");
        return;
    }
    draw_head(state);
    if (wants_focus_)
        ImGui::SetNextWindowFocus();
    wants_focus_ = false;
    ImGui::BeginChild("attributes", {0.0f, 0.0f}, false, ImGuiWindowFlags_NavFlattened);
    if (ImGui::BeginTable("attributes", 2, k_table)) {
        ImGui::TableSetupColumn("name", 0, 0.9f);
        ImGui::TableSetupColumn("value", 0, 1.1f);
        for (const ShownAttribute& row : state.rows)
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

/// ImGui's callback for completion (Tab) and history (up, down) in the input field.
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
    wants_focus_ = true; // ImGui drops the focus on Enter
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
