// Running statements, and what happens while they run: progress, and cancelling.
#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"
#include "host/script/value.h"
#include "window/application.h"
#include "window/own_density.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <cstdio>
#include <imgui.h>
#include <iostream>
#include <utility>

namespace window {

using host::script::Session;

/// Runs statements and shows their result. Returns whether they succeeded.
bool Application::run_and_print(const std::string& statements) {
    const Session::Outcome outcome = Session::current().run(statements, "window");
    if (outcome.ok && (statements.compare(0, 10, "file -open") == 0 ||
                       statements.compare(0, 9, "file -new") == 0))
        state_.walk_step = -1; // it was about another mesh
    // What was opened is what the next command works on. Not an entry of the undo queue, which is
    // empty after opening.
    if (outcome.ok && statements.compare(0, 10, "file -open") == 0)
        Session::current().run("if (size(`ls -sl`) == 0) select -all;", "window", false);
    std::string result;
    for (const std::string& text : outcome.value.flattened())
        result += (result.empty() ? "" : " ") + text;
    if (outcome.ok && !result.empty())
        state_.console.result(result);
    if (update_meshes())
        return outcome.ok;
    state_.console.error("A mesh could not be brought up to date; it is shown as it was.");
    return false;
}

void Application::run_statements(const std::string& statements) {
    std::cerr.rdbuf(error_lines_.get());
    const size_t map_revision = state_.map_revision;
    const size_t islands =
        statements == statement_along_seams(state_) ? state_.map.charts().size() : 0;
    const size_t undo_count = host::graph::UndoQueue::current().undo_count();
    const UnwrapResults results = UnwrapResults::now();
    state_.status_revision = state_.console.revision();
    is_computing_ = true;
    has_unwrapped_ = false;
    progress_.begin(Clock::now());
    last_progress_ = Clock::now();
    // Live sees to the densities of its own layouts.
    const std::vector<float> densities = !state_.is_live && lays_out_anew(state_, statements)
                                             ? own_densities(state_.subject)
                                             : std::vector<float>();
    has_failed_ = !run_and_print(statements) || !keep_densities(densities);
    const bool was_cancelled = is_cancelled_;
    if (was_cancelled)
        take_back(undo_count, results);
    else if (has_unwrapped_ && !has_failed_)
        restore_overlay();
    host::graph::UndoQueue::current().join_after(undo_count); // a line is one step
    is_computing_ = is_cancelled_ = is_unwrapping_ = false;
    leave_front();
    std::cerr.rdbuf(error_stream_);
    const bool had_mesh = static_cast<bool>(state_.subject.shape);
    const auto* before = state_.subject.shape.get();
    state_.refresh();
    for (const auto& line : state_.console.lines())
        state_.glyphs.note(line.text);
    if (state_.subject.shape && (!had_mesh || before != state_.subject.shape.get()))
        panels_->frame_all();
    if (has_unwrapped_ && !has_failed_ && !was_cancelled)
        uvs_->frame_all(state_); // the place that it showed means nothing in another layout
    state_.status = was_cancelled ? "Cancelled; the scene is as it was before"
                                  : summary(statements, map_revision, islands);
    set_title();
}

/// Gives the charts of a new layout the densities that the polygons had; none are given if
/// `densities` is empty.
bool Application::keep_densities(const std::vector<float>& densities) {
    if (densities.empty() || is_cancelled_)
        return true;
    state_.refresh();
    const std::string statement =
        statement_giving_densities({state_.shape_path(), state_.map}, state_.subject, densities);
    return statement.empty() || run_and_print(statement);
}

/// Shows the overlay that a cancelled unwrap has spoiled, now that another one has ended.
void Application::restore_overlay() {
    if (host::graph::Node* node = host::graph::Scene::current().find(stale_overlay_))
        show_overlay(*node, true);
    stale_overlay_.clear();
}

/// Undoes, or redoes, what a cancelled statement did. `results`: from before it.
void Application::take_back(size_t undo_count, const UnwrapResults& results) {
    const std::vector<host::Ref<host::graph::Node>> stale = results.with_stale_seams();
    host::graph::UndoQueue& queue = host::graph::UndoQueue::current();
    while (queue.undo_count() > undo_count)
        queue.undo();
    while (queue.undo_count() < undo_count && queue.redo_count() > 0)
        queue.redo();
    results.restore();
    update_meshes();
    // An overlay cannot be told its seams but by unwrapping: the window draws them instead.
    for (const auto& node : stale) {
        if (is_overlay_on(*node))
            stale_overlay_ = state_.hidden_overlay = node->name_text();
        show_overlay(*node, false);
    }
    state_.jobs.clear();
    state_.console.withholds_errors = false;
    state_.console.print("// Cancelled.\n");
}

/// From now on the running statement fails at the first occasion, without a word about it.
void Application::cancel() {
    is_cancelled_ = true;
    state_.console.withholds_errors = true;
}

/// Called often while a statement runs: takes events, and draws a frame now and then.
void Application::keep_up() {
    const auto now = Clock::now();
    if (!is_computing_ || is_in_frame_ || now - last_poll_ < std::chrono::milliseconds(30))
        return;
    last_poll_ = now;
    glfwPollEvents();
    if (glfwWindowShouldClose(window_))
        cancel();
    // Progress may change faster than a frame is drawn: spend at most a fifth of the time drawing.
    const auto pause = std::max<Clock::duration>(std::chrono::milliseconds(66), 4 * drawing_time_);
    if (!progress_.is_worth_showing(now) ||
        (front_input_.is_idle() && now - last_progress_ < pause))
        return;
    frame(false);
    last_progress_ = Clock::now();
    drawing_time_ = last_progress_ - now;
}

bool Application::reached(const char* stage, float fraction) {
    progress_.note_engine(stage, static_cast<double>(fraction));
    keep_up();
    return !is_cancelled_;
}

void Application::changed(const host::ProgressState& state) {
    if (state.is_shown && !is_unwrapping_)
        progress_.begin(Clock::now());
    is_unwrapping_ = state.is_shown;
    has_unwrapped_ = has_unwrapped_ || is_unwrapping_;
    const int range = state.maximum - state.minimum;
    progress_.note_plugin(state.status.asChar(),
                          range > 0 ? double(state.value - state.minimum) / range : 0.0);
    keep_up();
}

void Application::draw_progress() {
    const ImVec2 middle = ImGui::GetMainViewport()->GetCenter();
    ImGui::SetNextWindowPos(middle, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({420.0f * state_.scale, 0.0f});
    ImGui::SetNextWindowFocus();
    ImGui::Begin("###progress", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                     ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoNav);
    ImGui::TextUnformatted(is_unwrapping_ ? "Unwrapping" : "Working");
    std::string words = progress_.stage();
    if (!words.empty() && words[0] >= 'a' && words[0] <= 'z')
        words[0] = char(words[0] - 'a' + 'A');
    const std::string left = progress_.time_left(Clock::now());
    if (!left.empty())
        words += ", " + left;
    ImGui::TextColored(colour::faint, "%s", is_cancelled_ ? "Stopping" : words.c_str());
    state_.places.add_item("progress/stage/" + progress_.stage());
    ImGui::ProgressBar(static_cast<float>(progress_.fraction()), {-1.0f, 0.0f});
    ImGui::BeginDisabled(is_cancelled_);
    if (ImGui::Button("Cancel  (Esc)", {-1.0f, 0.0f}))
        cancel();
    ImGui::EndDisabled();
    state_.places.add_item("progress/Cancel");
    const ImVec2 at = ImGui::GetWindowPos(), size = ImGui::GetWindowSize();
    state_.places.add("progress", at.x, at.y, size.x, size.y);
    char percent[24];
    std::snprintf(percent, sizeof percent, "progress/at/%.4f", progress_.fraction());
    state_.places.add(percent, at.x, at.y, size.x, size.y);
    ImGui::End();
}

bool Application::show(const char* caption, const char* text) {
    if (is_cancelled_)
        return true;
    state_.console.warning(text);
    if (options_.screenshot.empty())
        ask(caption, text, {"OK"}, "OK", "OK");
    return true;
}

/// Lets a child process unwrap along changed seams, and takes its result. Returns whether something
/// changed on the screen.
bool Application::follow_live() {
    const bool was_waiting = std::exchange(state_.is_waiting, false);
    // Switched off, Live still brings what the last cut asked for, unless that was undone.
    if (!state_.subject.node || (!state_.is_live && !live_.awaits(state_.subject))) {
        live_.stop();
        return was_waiting;
    }
    // The overlay of the node shows the seams of its own last unwrap.
    if (state_.is_overlay_on && state_.is_live) {
        state_.hidden_overlay = state_.subject.node_name();
        show_overlay(*state_.subject.node, false);
        state_.refresh();
    }
    std::string error;
    const bool has_result = live_.follow(state_.subject, state_.scene_revision, error) &&
                            live_.take_result(state_.subject, error);
    if (has_result) {
        update_meshes();
        state_.refresh();
        ++state_.live_results;
        char words[96];
        std::snprintf(words, sizeof words, "// Live: %zu charts after %.2f s\n",
                      state_.map.charts().size(),
                      std::chrono::duration<double>(live_.last_time()).count());
        state_.console.print(words);
    }
    if (!error.empty())
        state_.console.error("Live: " + error);
    state_.is_waiting = live_.is_late();
    return has_result || !error.empty() || was_waiting != state_.is_waiting;
}

/// Whether a statement waits and may begin now. Not between the press and the release of a button:
/// while it runs, the button's place takes no input, and the click would be lost.
bool Application::may_run() const { return !state_.jobs.is_empty() && !input_.is_any_down(); }

/// Returns when something happened that is to be shown; a child process may be what it waits for.
void Application::wait_for_events() {
    constexpr double k_look = 0.01; // seconds between two looks at the child
    // A result would put other charts under a button that is held.
    if (input_.is_any_down())
        return glfwWaitEvents();
    while (!follow_live()) {
        if (may_run())
            return;
        if (!live_.is_busy())
            return glfwWaitEvents();
        const double begun = glfwGetTime();
        glfwWaitEventsTimeout(k_look);
        if (glfwGetTime() - begun < k_look)
            return;
    }
}

} // namespace window
