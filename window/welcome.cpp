#include "window/welcome.h"

#include <imgui.h>
#include <iterator>

namespace window {
namespace {

struct Sample {
    const char* label;
    const char* kind; ///< as the script that makes it calls it
};
constexpr Sample k_samples[] = {
    {"A cog wheel", "hard"}, {"A body", "organic"}, {"A sheet of cloth", "cloth"}};

/// One step of the walk; a step without `is_done` is the last.
struct Step {
    const char* title;
    const char* words;
    bool (*is_done)(const State& state);
};
constexpr Step k_steps[] = {
    {"Unwrap",
     "Press Unwrap above the view. The charts appear in the texture at the right, each in "
     "its colour on the mesh, too.",
     [](const State& state) { return static_cast<bool>(state.subject.node); }},
    {"Look",
     "Press 6, or Checker above the texture. Where the squares differ in size or shape, a "
     "texture looks uneven.",
     [](const State& state) { return state.display == Display::checker; }},
    {"Measure",
     "Press 7. Green is even, red is stretched, blue is squeezed. The results below the "
     "texture say what is wrong, if anything.",
     [](const State& state) { return state.display == Display::stretch; }},
    {"Pick",
     "Press E and double click an edge on the mesh that ought to be a seam: its whole loop "
     "is picked. Alt and dragging turns the view.",
     [](const State& state) { return state.picked.size() > 1; }},
    {"Cut", "Press C. The picked edges are a seam now, drawn in green.",
     [](const State& state) { return state.subject.has_later_edits; }},
    {"Unwrap along it",
     "Press Along my seams. Your seams stay; others come only where the surface "
     "cannot be laid out without.",
     [](const State& state) { return state.subject.node && !state.subject.has_later_edits; }},
    {"Take it back", "Press Ctrl+Z. Every step can be taken back, and redone with Ctrl+Shift+Z.",
     [](const State& state) { return !state.redo_name.empty(); }},
    {"Take it home",
     "Ctrl+E writes the mesh with its texture coordinates, Ctrl+S the scene with all "
     "that was done. F1 shows all keys.",
     nullptr}};

} // namespace

void draw_welcome(State& state, float left, float top, float width, float height) {
    const char* opens =
        "Ctrl+O opens a mesh (OBJ, GLB, FBX, …) or a scene (.ma); files can be dropped in.";
    const float margin = 20.0f * state.scale;
    const float wide = ImGui::CalcTextSize(opens).x + 2.0f * margin;
    const float high = 4.0f * ImGui::GetTextLineHeightWithSpacing() +
                       ImGui::GetFrameHeightWithSpacing() + 9.0f * state.scale + 2.0f * margin;
    const ImVec2 low(left + 0.5f * (width - wide), top + 0.5f * (height - high));
    ImGui::GetWindowDrawList()->AddRectFilled(low, {low.x + wide, low.y + high},
                                              ImGui::GetColorU32(colour::panel), 6.0f);
    const ImVec2 before = ImGui::GetCursorScreenPos();
    ImGui::SetCursorScreenPos({low.x + margin, low.y + margin});
    ImGui::BeginGroup();
    ImGui::TextUnformatted("Nothing to unwrap yet");
    ImGui::Spacing();
    ImGui::TextUnformatted(opens);
    ImGui::TextUnformatted("Or try one of these; a walk of two minutes goes with it:");
    ImGui::Spacing();
    for (const Sample& sample : k_samples) {
        if (ImGui::Button(sample.label)) {
            state.run(std::string("tessoraMakeSample \"") + sample.kind + "\";");
            state.walk_step = 0;
        }
        state.places.add_item(std::string("sample/") + sample.kind);
        ImGui::SameLine();
    }
    ImGui::NewLine();
    ImGui::Spacing();
    ImGui::TextColored(colour::faint, "F1 shows all keys");
    ImGui::EndGroup();
    ImGui::SetCursorScreenPos(before);
}

void draw_walk(State& state, float left, float bottom) {
    if (state.walk_step < 0 || !state.subject.shape)
        return;
    const auto count = static_cast<int>(std::size(k_steps));
    const Step& step = k_steps[state.walk_step];
    if (step.is_done && step.is_done(state) && state.jobs.is_empty())
        ++state.walk_step;
    const float margin = 12.0f * state.scale;
    ImGui::SetNextWindowPos({left + margin, bottom - margin}, ImGuiCond_Appearing, {0.0f, 1.0f});
    ImGui::SetNextWindowSize({360.0f * state.scale, 0.0f});
    bool is_open = true;
    const std::string title = "Two minutes: " + std::to_string(state.walk_step + 1) + " of " +
                              std::to_string(count) + "###walk";
    if (ImGui::Begin(title.c_str(), &is_open,
                     ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_AlwaysAutoResize |
                         ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoFocusOnAppearing |
                         ImGuiWindowFlags_NoNav)) {
        const Step& now = k_steps[state.walk_step];
        ImGui::TextColored(colour::warm, "%s", now.title);
        ImGui::PushTextWrapPos(0.0f);
        ImGui::TextUnformatted(now.words);
        ImGui::PopTextWrapPos();
        if (ImGui::Button(now.is_done ? "Next" : "Done"))
            state.walk_step = now.is_done ? state.walk_step + 1 : -1;
        state.places.add_item("walk/" + std::to_string(state.walk_step + 1));
    }
    ImGui::End();
    if (!is_open)
        state.walk_step = -1;
}

} // namespace window
