#include "window/tool_bar.h"

#include "host/script/value.h"
#include "window/live_unwrap.h"
#include "window/node_settings.h"

#include <cstdio>
#include <imgui.h>

namespace window {
namespace {

/// The flags of the last unwrap that later ones keep; empty if there was none.
std::string texture_flags(const State& state) {
    if (!state.subject.node)
        return std::string();
    char flags[96];
    std::snprintf(flags, sizeof flags, " -width %.0f -height %.0f -padding %.0f",
                  state.subject.texture.width, state.subject.texture.height, state.subject.gutter);
    return flags;
}

/// Edits the UVs along the picked edges. Live goes on with a node behind edits by hand. Once UVs
/// are edited after an unwrap, its overlay would show seams that are gone: the window draws those
/// that are there instead. One step of undo.
std::string editing(const State& state, const std::string& command) {
    if (state.is_live && state.subject.node && !state.subject.has_later_edits)
        return command + " -before " + host::script::quoted(state.subject.node_name()) + ";";
    if (!state.subject.node)
        return command + ";";
    return "{ " + command + "; setAttr " +
           host::script::quoted(state.subject.node_name() + "." + k_overlay_attribute) + " 0; " +
           (state.is_live ? statement_along_seams(state) + " " : "") + "}";
}

/// The statement that asks the node of the shown UVs to unwrap along its seams with that stretch;
/// empty if that takes a new node. A node that has added seams of its own for less stretch would
/// take them back.
std::string unwrapping_again(const State& state, double stretch) {
    host::graph::Node* node = state.subject.has_later_edits ? nullptr : state.subject.node.get();
    if (!node)
        return std::string();
    const app::UnwrapSettingsRequest now = settings_of(*node);
    const bool is_suitable = now.keep_seams && stretch <= now.stretch + 1e-6;
    if (!is_suitable)
        return std::string();
    app::UnwrapSettingsRequest wanted = now;
    wanted.stretch = stretch;
    const std::string change = statement_changing(state.subject.node_name(), now, wanted);
    return change + (change.empty() ? "" : " ") + state.unwrap_again();
}

/// A button that is lit while `is_on`. Returns whether it was pressed.
bool toggle(State& state, const char* label, const char* help, bool is_on) {
    if (is_on)
        ImGui::PushStyleColor(ImGuiCol_Button, ImGui::GetStyle().Colors[ImGuiCol_Header]);
    const bool is_pressed = ImGui::Button(label);
    if (is_on)
        ImGui::PopStyleColor();
    state.places.add_item(std::string("tool/") + label);
    if (is_on)
        state.places.add_item(std::string("tool/") + label + "/on");
    if (ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled))
        ImGui::SetTooltip("%s", help);
    ImGui::SameLine(0.0f, 2.0f * state.scale);
    return is_pressed;
}

void gap(const State& state) {
    ImGui::Dummy({10.0f * state.scale, 0.0f});
    ImGui::SameLine(0.0f, 2.0f * state.scale);
}

/// A button that runs statements.
void command(State& state, const char* label, const char* help, bool is_enabled,
             const std::string& statements) {
    ImGui::BeginDisabled(!is_enabled);
    if (toggle(state, label, help, false))
        state.run_on_shown(statements);
    ImGui::EndDisabled();
}

/// Switches Live, and says when its result is late.
void draw_live(State& state) {
    gap(state);
    ImGui::BeginDisabled(!state.subject.shape);
    if (toggle(state, "Live", "Cut and Sew unwrap along the seams at once, in a process of its own",
               state.is_live)) {
        state.is_live = !state.is_live;
        if (state.is_live)
            state.run_on_shown(
                statement_beginning_live(state.subject, !state.map.charts().empty()));
    }
    ImGui::EndDisabled();
    if (state.is_waiting) {
        ImGui::TextColored(colour::warm, "Unwrapping…");
        state.places.add_item("live/waiting");
        ImGui::SameLine();
    }
    state.places.add("live/results/" + std::to_string(state.live_results), 0.0f, 0.0f, 0.0f, 0.0f);
    ImGui::NewLine();
}

} // namespace

std::string statement_cutting(const State& state) { return editing(state, "polyMapCut"); }
std::string statement_sewing(const State& state) { return editing(state, "polyMapSew"); }

std::string statement_along_seams(const State& state) {
    const std::string again = unwrapping_again(state, 1.0);
    return again.empty() ? "tessora -keep_seams on -stretch 1" + texture_flags(state) + ";" : again;
}
std::string statement_suggesting_rest(const State& state) {
    const std::string again = unwrapping_again(state, app::UnwrapSettingsRequest().stretch);
    return again.empty() ? "tessora -keep_seams on" + texture_flags(state) + ";" : again;
}

bool lays_out_anew(const State& state, const std::string& statement) {
    return statement == statement_along_seams(state) ||
           statement == statement_suggesting_rest(state);
}

void draw_tool_bar(State& state) {
    const bool has_mesh = static_cast<bool>(state.subject.shape);
    const bool has_uvs = !state.map.charts().empty();
    if (toggle(state, "Objects", "Click a mesh to select it", !state.picks_edges))
        state.picks_edges = false;
    if (toggle(state, "Edges",
               "Pick edges (E): click one, double click for its loop or its whole seam,\n"
               "Shift+click for the way from the last one, drag around several; Ctrl adds.\n"
               "Alt+drag turns the view.",
               state.picks_edges))
        state.picks_edges = true;
    gap(state);
    command(state, "Cut", "Make the picked edges seams (C)", !state.picked.empty(),
            statement_cutting(state));
    command(state, "Sew", "Take the picked edges out of the seams (S)", !state.picked.empty(),
            statement_sewing(state));
    gap(state);
    command(state, "Unwrap", "Unwrap with the default settings; Ctrl+U shows them all", has_mesh,
            "tessora;");
    command(state, "Along my seams",
            "Unwrap along the seams that are there, with others only where it cannot do without",
            has_uvs, statement_along_seams(state));
    command(state, "Suggest the rest",
            "Unwrap along the seams that are there and add those that keep the stretch low",
            has_uvs, statement_suggesting_rest(state));
    draw_live(state);
}

} // namespace window
