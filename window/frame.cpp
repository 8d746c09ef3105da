// Drawing one frame of the window, and the keyboard, actions and questions handled around it.
#include "host/commands/session.h"
#include "host/ui/panels.h"
#include "window/application.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl2.h>
#include <cstdio>
#include <imgui.h>

namespace window {
namespace {

constexpr float k_gap = 2.0f; // pixels between areas

constexpr ImGuiWindowFlags k_area = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove |
                                    ImGuiWindowFlags_NoSavedSettings |
                                    ImGuiWindowFlags_NoBringToFrontOnFocus;

/// Begins an ImGui window that fills a fixed, undecorated rectangle; end it with ImGui::End.
void begin_area(const char* name, float left, float top, float width, float height,
                bool has_padding, ImGuiWindowFlags more = 0) {
    ImGui::SetNextWindowPos({left, top});
    ImGui::SetNextWindowSize({width, height});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 0.0f);
    if (!has_padding)
        ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0.0f, 0.0f});
    ImGui::Begin(name, nullptr, k_area | more);
    ImGui::PopStyleVar(has_padding ? 2 : 3);
}

} // namespace

/// Alt pressed and released without another key opens the first menu.
void Application::note_alt(int key, int action) {
    const bool is_alt = key == GLFW_KEY_LEFT_ALT || key == GLFW_KEY_RIGHT_ALT;
    if (action == GLFW_PRESS)
        is_alt_alone_ = is_alt;
    else if (is_alt && action == GLFW_RELEASE && is_alt_alone_)
        opens_menu_ = true;
}

void Application::put_press() {
    ImGuiIO& io = ImGui::GetIO();
    for (const KeyPress& press : presses_)
        io.KeysDown[press.key] = false;
    if (presses_.empty() || had_press_) {
        had_press_ = false;
        return;
    }
    const KeyPress press = presses_.front();
    presses_.erase(presses_.begin());
    had_press_ = true;
    io.KeysDown[press.key] = true;
    // ImGui activates the focused item on Space only; make Enter do the same.
    if ((press.key == GLFW_KEY_ENTER || press.key == GLFW_KEY_KP_ENTER) && !io.WantTextInput)
        io.NavInputs[ImGuiNavInput_Activate] = 1.0f;
    io.KeyCtrl = (press.modifiers & GLFW_MOD_CONTROL) != 0;
    io.KeyShift = (press.modifiers & GLFW_MOD_SHIFT) != 0;
    io.KeyAlt = (press.modifiers & GLFW_MOD_ALT) != 0;
}

void Application::take_keys_as_they_are() {
    ImGuiIO& io = ImGui::GetIO();
    const auto is_down = [&](int key) { return glfwGetKey(window_, key) == GLFW_PRESS; };
    for (int key = GLFW_KEY_SPACE; key <= GLFW_KEY_LAST; ++key)
        if (io.KeysDown[key])
            io.KeysDown[key] = is_down(key);
    io.KeyCtrl = is_down(GLFW_KEY_LEFT_CONTROL) || is_down(GLFW_KEY_RIGHT_CONTROL);
    io.KeyShift = is_down(GLFW_KEY_LEFT_SHIFT) || is_down(GLFW_KEY_RIGHT_SHIFT);
    io.KeyAlt = is_down(GLFW_KEY_LEFT_ALT) || is_down(GLFW_KEY_RIGHT_ALT);
}

void Application::frame(bool is_live) {
    if (is_in_frame_)
        return;
    is_in_frame_ = true;
    glfwPollEvents();
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    put_press();
    ImGui::NewFrame();
    state_.places.begin_frame();
    draw_everything(is_live);
    ImGui::Render();
    int width = 0, height = 0;
    glfwGetFramebufferSize(window_, &width, &height);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_DEPTH_TEST);
    glViewport(0, 0, width, height);
    glClearColor(colour::line.x, colour::line.y, colour::line.z, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
    if (options_.screenshot.empty())
        glfwSwapBuffers(window_);
    state_.places.end_frame();
    take_keys_as_they_are();
    is_in_frame_ = false;
    if (!is_live)
        return;
    take_common_keys();
    perform(action_);
    const auto now = std::move(later_);
    later_.clear();
    for (const auto& act : now)
        act();
}

void Application::draw_everything(bool is_live) {
    is_alt_alone_ = is_alt_alone_ && !ImGui::IsAnyMouseDown();
    const bool opens_menu = opens_menu_ && is_live && !question_ && !chooser_.is_open();
    opens_menu_ = false;
    action_ = draw_menu_bar(state_, is_live, opens_menu);
    if (is_live && action_ == Action::none && !chooser_.is_open())
        action_ = pressed_action(state_);
    draw_areas(is_live);
    dialogs_.draw(state_, host::script::Session::current().ui().model, is_live);
    chooser_.draw(state_);
    draw_help();
    if (question_)
        draw_question();
    else if (!is_live && progress_.is_shown)
        draw_progress();
}

void Application::draw_areas(bool is_live) {
    const ImGuiViewport* whole = ImGui::GetMainViewport();
    const float top = whole->WorkPos.y + k_gap, width = whole->WorkSize.x;
    const float status = ImGui::GetFrameHeight();
    const float height = whole->WorkSize.y - k_gap - status;
    const float right = std::clamp(0.34f * width, 340.0f, 720.0f);
    const float left = width - right - k_gap;
    const float console = std::clamp(0.2f * height, 110.0f, 260.0f);
    if (focuses_panels_)
        ImGui::SetNextWindowFocus();
    focuses_panels_ = false;
    begin_area("Panels", 0.0f, top, left, height - console - k_gap, false,
               ImGuiWindowFlags_NoNavInputs | ImGuiWindowFlags_NoNavFocus);
    panels_->draw(is_live);
    ImGui::End();
    begin_area("Console", 0.0f, top + height - console, left, console, true);
    ImGui::BeginDisabled(!is_live);
    console_.draw(state_);
    ImGui::EndDisabled();
    ImGui::End();
    draw_right(left + k_gap, top, right, height, is_live);
    draw_status(top + height, width);
}

void Application::draw_right(float left, float top, float width, float height, bool is_live) {
    const float uvs = std::min(0.50f * height, width + 46.0f);
    const float results = 6.0f * ImGui::GetTextLineHeightWithSpacing() + 20.0f;
    if (focuses_uvs_)
        ImGui::SetNextWindowFocus();
    focuses_uvs_ = false;
    begin_area("UVs", left, top, width, uvs, true, ImGuiWindowFlags_NoNavInputs);
    uvs_->draw(state_, is_live);
    ImGui::End();
    begin_area("Results", left, top + uvs + k_gap, width, results, true);
    draw_results(state_);
    ImGui::End();
    begin_area("Attributes", left, top + uvs + results + 2.0f * k_gap, width,
               height - uvs - results - 2.0f * k_gap, true);
    ImGui::BeginDisabled(!is_live);
    attributes_.draw(state_);
    ImGui::EndDisabled();
    ImGui::End();
}

void Application::draw_status(float top, float width) {
    begin_area("Status", 0.0f, top, width, ImGui::GetFrameHeight(), true,
               ImGuiWindowFlags_NoNavFocus | ImGuiWindowFlags_NoNavInputs);
    ImGui::SetCursorPosY(4.0f);
    ImGui::PushFont(state_.fonts.small);
    const Console::Line* last = state_.console.last(state_.status_revision);
    ImVec4 tone = colour::faint;
    if (last && last->kind == Console::Kind::error)
        tone = colour::error;
    else if (last && last->kind == Console::Kind::warning)
        tone = colour::warning;
    const std::string words = last                    ? plain_words(*last)
                              : state_.status.empty() ? std::string("F1 shows the keys")
                                                      : state_.status;
    ImGui::TextColored(tone, "%s", words.c_str());
    state_.places.add_item("status");
    ImGui::PopFont();
    ImGui::End();
}

void Application::draw_help() {
    if (!shows_help_)
        return;
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Appearing,
                            {0.5f, 0.5f});
    if (ImGui::Begin("Keyboard and mouse", &shows_help_,
                     ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_AlwaysAutoResize |
                         ImGuiWindowFlags_NoSavedSettings)) {
        const ImVec2 at = ImGui::GetWindowPos(), size = ImGui::GetWindowSize();
        state_.places.add("help", at.x, at.y, size.x, size.y);
        if (ImGui::BeginTable("keys", 2, ImGuiTableFlags_SizingFixedFit)) {
            for (const Shortcut& row : shortcuts()) {
                ImGui::TableNextRow();
                ImGui::TableNextColumn();
                ImGui::TextColored(*row.meaning ? colour::accent : colour::text, "%s   ", row.keys);
                ImGui::TableNextColumn();
                ImGui::TextUnformatted(row.meaning);
            }
            ImGui::EndTable();
        }
        if (ImGui::IsWindowFocused() &&
            ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape), false))
            shows_help_ = false;
    }
    ImGui::End();
}

void Application::draw_progress() {
    const ImVec2 middle = ImGui::GetMainViewport()->GetCenter();
    ImGui::SetNextWindowPos(middle, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({420.0f, 0.0f});
    ImGui::SetNextWindowFocus();
    ImGui::Begin("###progress", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                     ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoNav);
    const char* title = progress_.title.asChar();
    ImGui::TextUnformatted(*title ? title : "Working");
    if (!(progress_.status == progress_.title)) {
        ImGui::PushStyleColor(ImGuiCol_Text, colour::faint);
        ImGui::TextUnformatted(progress_.status.asChar());
        ImGui::PopStyleColor();
    }
    const int range = progress_.maximum - progress_.minimum;
    const float share = range > 0 ? static_cast<float>(progress_.value - progress_.minimum) /
                                        static_cast<float>(range)
                                  : 0.0f;
    ImGui::ProgressBar(share, {-1.0f, 0.0f});
    const ImVec2 at = ImGui::GetWindowPos(), size = ImGui::GetWindowSize();
    state_.places.add("progress", at.x, at.y, size.x, size.y);
    ImGui::End();
}

void Application::draw_question() {
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSizeConstraints({320.0f, 0.0f}, {640.0f, 900.0f});
    const std::string title = question_->title + "###question";
    if (!ImGui::IsPopupOpen("###question"))
        ImGui::OpenPopup("###question");
    if (!ImGui::BeginPopupModal(title.c_str(), nullptr,
                                ImGuiWindowFlags_AlwaysAutoResize |
                                    ImGuiWindowFlags_NoSavedSettings))
        return;
    ImGui::PushTextWrapPos(600.0f);
    ImGui::TextUnformatted(question_->message.c_str());
    ImGui::PopTextWrapPos();
    ImGui::Dummy({0.0f, 6.0f});
    for (const std::string& button : question_->buttons) {
        if (&button != question_->buttons.data())
            ImGui::SameLine();
        if (ImGui::Button(button.c_str(),
                          {std::max(96.0f, ImGui::CalcTextSize(button.c_str()).x + 24.0f), 0.0f}))
            answer_ = button;
        state_.places.add_item("question/" + button);
        if (button == question_->preferred)
            ImGui::SetItemDefaultFocus();
    }
    // ImGui hides the keyboard focus after mouse use; Enter then means the preferred button.
    const bool is_entered =
        ImGui::IsKeyPressed(GLFW_KEY_ENTER, false) || ImGui::IsKeyPressed(GLFW_KEY_KP_ENTER, false);
    if (ImGui::IsKeyPressed(GLFW_KEY_ESCAPE, false) ||
        (is_entered && answer_.empty() && !ImGui::GetIO().NavVisible))
        answer_ = question_->preferred;
    if (!answer_.empty())
        ImGui::CloseCurrentPopup();
    ImGui::EndPopup();
}

std::string Application::ask(const std::string& title, const std::string& message,
                             const std::vector<std::string>& buttons,
                             const std::string& preferred) {
    if (is_in_frame_ || question_ || !options_.screenshot.empty())
        return preferred; // the question cannot be shown: no further frame can be drawn
    const Question question{title, message, preferred, buttons};
    question_ = &question;
    answer_.clear();
    while (answer_.empty() && !glfwWindowShouldClose(window_)) {
        frame(false);
        if (answer_.empty())
            glfwWaitEventsTimeout(0.1);
    }
    question_ = nullptr;
    frame(false); // removes the question from the screen before the statement continues
    return answer_.empty() ? preferred : answer_;
}

void Application::step_chart(int by) {
    const auto count = static_cast<int64_t>(state_.map.charts().size());
    if (count == 0)
        return;
    const int64_t none = by > 0 ? -1 : 0; // so that the first step leads to the first or last chart
    const int64_t from = state_.chosen == k_none ? none : int64_t{state_.chosen};
    state_.chosen = static_cast<uint32_t>((from + by + count) % count);
    state_.hovered = k_none;
}

/// Shortcuts that work in every panel: panel numbers and Escape.
void Application::take_common_keys() {
    const ImGuiIO& io = ImGui::GetIO();
    if (!io.WantTextInput && !io.KeyCtrl)
        for (const auto& [key, panel] : {std::pair(GLFW_KEY_1, 0), std::pair(GLFW_KEY_2, 1),
                                         std::pair(GLFW_KEY_3, 2), std::pair(GLFW_KEY_0, 3)})
            if (ImGui::IsKeyPressed(key, false))
                panels_->choose(panel);
    if (ImGui::IsKeyPressed(GLFW_KEY_ESCAPE, false))
        state_.chosen = k_none;
}

void Application::perform(Action action) {
    switch (action) {
    case Action::new_scene:
        if (may_discard())
            state_.run("file -new -force;");
        break;
    case Action::open:
    case Action::import:
        return open_file(action == Action::import);
    case Action::save:
    case Action::save_as:
        return save(action == Action::save_as);
    case Action::export_mesh:
        return export_mesh();
    case Action::quit:
        ends_ = may_discard();
        break;
    default:
        change_view(action);
    }
}

/// Actions that change only the view and the keyboard focus, never the scene.
void Application::change_view(Action action) {
    switch (action) {
    case Action::frame_all:
        panels_->frame_all();
        return uvs_->frame_all(state_);
    case Action::toggle_alone:
        return panels_->toggle_alone();
    case Action::focus_panels:
        focuses_panels_ = true;
        break;
    case Action::focus_uv:
        focuses_uvs_ = true;
        break;
    case Action::focus_attributes:
        return attributes_.focus();
    case Action::focus_console:
        return console_.focus();
    case Action::next_chart:
    case Action::previous_chart:
        return step_chart(action == Action::next_chart ? 1 : -1);
    case Action::open_menu:
        opens_menu_ = true;
        break;
    case Action::help:
        shows_help_ = !shows_help_;
        break;
    default:
        break;
    }
}

} // namespace window
