// Drawing one frame of the window, and the keyboard, actions and questions handled around it.
#include "app/command.h"
#include "host/commands/session.h"
#include "host/ui/panels.h"
#include "window/application.h"
#include "window/welcome.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl2.h>
#include <cmath>
#include <cstdio>
#include <imgui.h>
#include <utility>

namespace window {
namespace {

constexpr float k_splitter = 5.0f; // pixels between areas, at scale 1

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
    ImGui::PushStyleVar(ImGuiStyleVar_WindowMinSize, {1.0f, 1.0f});
    if (!has_padding)
        ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0.0f, 0.0f});
    ImGui::Begin(name, nullptr, k_area | more);
    ImGui::PopStyleVar(has_padding ? 3 : 4);
}

} // namespace

/// Alt pressed and released without another key or a button opens the first menu.
void Application::note_alt(int key, int action) {
    const bool is_alt = key == GLFW_KEY_LEFT_ALT || key == GLFW_KEY_RIGHT_ALT;
    if (action == GLFW_PRESS)
        is_alt_alone_ = is_alt;
    else if (is_alt && action == GLFW_RELEASE && is_alt_alone_)
        (has_front_ ? front_input_ : input_).add({InputEvent::Kind::key_press, GLFW_KEY_LEFT_ALT});
}

void Application::note_key(int key, int action, int modifiers) {
    note_alt(key, action);
    if (is_computing_ && !question_ && action == GLFW_PRESS && key == GLFW_KEY_ESCAPE)
        return cancel();
    if (action != GLFW_PRESS || key < 0 || key >= GLFW_KEY_LEFT_SHIFT)
        return;
    ++keys_taken_;
    InputEvent event{InputEvent::Kind::key_press, key, modifiers};
    event.is_text =
        key <= GLFW_KEY_GRAVE_ACCENT && (modifiers & (GLFW_MOD_CONTROL | GLFW_MOD_ALT)) == 0;
    (has_front_ ? front_input_ : input_).add(event);
}

void Application::note_character(unsigned int character) {
    state_.glyphs.note(character);
    (has_front_ ? front_input_ : input_)
        .add({InputEvent::Kind::character, static_cast<int>(character)});
}

void Application::note_button(int button, int action, int modifiers) {
    // The pointer may be elsewhere by now: where it was when the button moved.
    double x = pointer_[0], y = pointer_[1];
    if (x < 0.0)
        glfwGetCursorPos(window_, &x, &y);
    const bool is_press = action == GLFW_PRESS;
    is_alt_alone_ = false;
    const bool is_in_front = has_front_ && (is_press || !input_.is_held(button));
    (is_in_front ? front_input_ : input_)
        .add({is_press ? InputEvent::Kind::button_press : InputEvent::Kind::button_release, button,
              modifiers, static_cast<float>(x), static_cast<float>(y)});
}

/// The way of the pointer counts while a button is held, as around edges to be picked.
void Application::note_motion(double x, double y) {
    pointer_[0] = x;
    pointer_[1] = y;
    if (input_.is_any_held())
        input_.add({InputEvent::Kind::motion, 0, 0, static_cast<float>(x), static_cast<float>(y)});
}

/// Feeds ImGui the next events of a queue instead of the present state of keys and buttons. Null:
/// no event, because nothing on the screen takes any now; they wait.
void Application::put_input(InputQueue* queue) {
    ImGuiIO& io = ImGui::GetIO();
    const InputQueue& source = queue ? *queue : input_;
    for (int key = 0; key < GLFW_KEY_LEFT_SHIFT; ++key)
        if (source.is_waiting(key))
            io.KeysDown[key] = false;
    const std::vector<InputEvent> events =
        queue ? queue->next({seen_[0], seen_[1], io.WantTextInput}) : std::vector<InputEvent>();
    state_.pointer_path.clear();
    for (const InputEvent& event : events)
        put_event(event);
    const InputEvent* place = events.empty() ? source.waiting() : &events.back();
    if (place && place->kind != InputEvent::Kind::key_press &&
        place->kind != InputEvent::Kind::character)
        io.MousePos = {place->x, place->y};
    seen_[0] = io.MousePos.x;
    seen_[1] = io.MousePos.y;
    for (int button = 0; button < IM_ARRAYSIZE(io.MouseDown); ++button)
        io.MouseDown[button] = source.is_down(button);
}

void Application::put_event(const InputEvent& event) {
    ImGuiIO& io = ImGui::GetIO();
    if (event.kind == InputEvent::Kind::character)
        return io.AddInputCharacter(static_cast<unsigned int>(event.code));
    if (event.kind == InputEvent::Kind::motion)
        return state_.pointer_path.push_back({double(event.x), double(event.y)});
    opens_menu_ = opens_menu_ || event.code == GLFW_KEY_LEFT_ALT;
    if (event.kind == InputEvent::Kind::key_press && event.code < GLFW_KEY_LEFT_SHIFT) {
        io.KeysDown[event.code] = true;
        // ImGui activates the focused item on Space only; make Enter do the same.
        if ((event.code == GLFW_KEY_ENTER || event.code == GLFW_KEY_KP_ENTER) && !io.WantTextInput)
            io.NavInputs[ImGuiNavInput_Activate] = 1.0f;
    }
    io.KeyCtrl = (event.modifiers & GLFW_MOD_CONTROL) != 0;
    io.KeyShift = (event.modifiers & GLFW_MOD_SHIFT) != 0;
    io.KeyAlt = (event.modifiers & GLFW_MOD_ALT) != 0;
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

void Application::frame(bool takes_input) {
    if (is_in_frame_)
        return;
    is_in_frame_ = true;
    glfwPollEvents();
    if (state_.glyphs.take_news() || wants_fonts_)
        load_fonts();
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    put_input(has_front_ ? &front_input_ : takes_input ? &input_ : nullptr);
    ImGui::NewFrame();
    state_.places.begin_frame();
    draw_everything(takes_input);
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
    if (!takes_input)
        return;
    take_common_keys();
    perform(action_);
    const auto now = std::move(later_);
    later_.clear();
    for (const auto& act : now)
        act();
}

void Application::draw_everything(bool takes_input) {
    const bool opens_menu = opens_menu_ && takes_input && !question_ && !chooser_.is_open();
    opens_menu_ = false;
    state_.places.add("keys/" + std::to_string(keys_taken_), 0.0f, 0.0f, 0.0f, 0.0f);
    action_ = draw_menu_bar(state_, takes_input, opens_menu);
    if (takes_input && action_ == Action::none && !chooser_.is_open())
        action_ = pressed_action(state_);
    draw_areas(takes_input);
    dialogs_.draw(state_, host::script::Session::current().ui().model, takes_input);
    chooser_.draw(state_);
    draw_help();
    draw_about();
    if (question_)
        draw_question();
    else if (is_computing_ && progress_.is_worth_showing(Clock::now()))
        draw_progress();
    else
        return;
    has_front_ = true;
}

/// What was meant for the question or the progress, and came too late, is for nothing else.
void Application::leave_front() {
    has_front_ = false;
    front_input_ = InputQueue();
}

void Application::draw_areas(bool takes_input) {
    const ImGuiViewport* whole = ImGui::GetMainViewport();
    const float gap = std::round(k_splitter * state_.scale), status = ImGui::GetFrameHeight();
    const AreaBox box{0.0f, whole->WorkPos.y, whole->WorkSize.x, whole->WorkSize.y - status};
    draw_status(box.top + box.height, box.width);
    if (is_uv_alone_)
        return draw_uvs(box, takes_input);
    const float right = std::round(shares_.right * box.width);
    const float left = box.width - right - gap;
    draw_left({0.0f, box.top, left, box.height}, takes_input);
    float share = shares_.right;
    draw_splitter("columns", {left, box.top, gap, box.height}, true, share, -box.width);
    draw_right({left + gap, box.top, right, box.height}, takes_input);
    shares_.right = share;
    shares_.limit();
}

void Application::draw_left(const AreaBox& box, bool takes_input) {
    const float gap = std::round(k_splitter * state_.scale);
    const float console = std::round(shares_.console * box.height);
    const float panels = box.height - console - gap;
    const float tools = std::round(ImGui::GetFrameHeight() + 10.0f * state_.scale);
    begin_area("Tools", box.left, box.top, box.width, tools, true);
    ImGui::SetCursorPosY(5.0f * state_.scale);
    ImGui::BeginDisabled(!takes_input);
    draw_tool_bar(state_);
    ImGui::EndDisabled();
    ImGui::End();
    if (focuses_panels_)
        ImGui::SetNextWindowFocus();
    focuses_panels_ = false;
    begin_area("Panels", box.left, box.top + tools, box.width, panels - tools, false,
               ImGuiWindowFlags_NoNavInputs | ImGuiWindowFlags_NoNavFocus);
    panels_->draw(takes_input);
    ImGui::End();
    if (takes_input)
        draw_walk(state_, box.left, box.top + panels);
    draw_splitter("console", {box.left, box.top + panels, box.width, gap}, false, shares_.console,
                  -box.height);
    begin_area("Console", box.left, box.top + panels + gap, box.width, console, true);
    ImGui::BeginDisabled(!takes_input);
    console_.draw(state_);
    ImGui::EndDisabled();
    ImGui::End();
}

void Application::draw_uvs(const AreaBox& box, bool takes_input) {
    if (focuses_uvs_)
        ImGui::SetNextWindowFocus();
    focuses_uvs_ = false;
    begin_area("UVs", box.left, box.top, box.width, box.height, true, ImGuiWindowFlags_NoNavInputs);
    if (uvs_->draw(state_, takes_input))
        later_.push_back([this] { change_view(Action::toggle_uv_alone); });
    ImGui::End();
}

void Application::draw_right(const AreaBox& box, bool takes_input) {
    const float gap = std::round(k_splitter * state_.scale);
    const float uvs = std::round(shares_.texture * box.height);
    const float results = std::round(shares_.results * box.height);
    draw_uvs({box.left, box.top, box.width, uvs}, takes_input);
    draw_splitter("texture", {box.left, box.top + uvs, box.width, gap}, false, shares_.texture,
                  box.height);
    float top = box.top + uvs + gap;
    begin_area("Results", box.left, top, box.width, results, true);
    draw_results(state_);
    ImGui::End();
    top += results;
    draw_splitter("results", {box.left, top, box.width, gap}, false, shares_.results, box.height);
    top += gap;
    begin_area("Attributes", box.left, top, box.width, box.top + box.height - top, true);
    ImGui::BeginDisabled(!takes_input);
    attributes_.draw(state_);
    ImGui::EndDisabled();
    ImGui::End();
}

/// Draws the bar between two areas. Dragging it changes `share` by the way in relation to `whole`,
/// which is negative if the share grows towards the left or the top.
void Application::draw_splitter(const char* name, const AreaBox& box, bool is_upright, float& share,
                                float whole) {
    const std::string id = std::string("splitter/") + name;
    begin_area(id.c_str(), box.left, box.top, box.width, box.height, false,
               ImGuiWindowFlags_NoNavFocus | ImGuiWindowFlags_NoNavInputs |
                   ImGuiWindowFlags_NoBackground);
    ImGui::InvisibleButton(id.c_str(), {box.width, box.height});
    const bool is_dragged = ImGui::IsItemActive();
    if (is_dragged || ImGui::IsItemHovered()) {
        ImGui::SetMouseCursor(is_upright ? ImGuiMouseCursor_ResizeEW : ImGuiMouseCursor_ResizeNS);
        ImGui::GetWindowDrawList()->AddRectFilled(ImGui::GetItemRectMin(), ImGui::GetItemRectMax(),
                                                  ImGui::GetColorU32(colour::accent));
    }
    const ImVec2 moved = ImGui::GetIO().MouseDelta;
    if (is_dragged)
        share += (is_upright ? moved.x : moved.y) / whole;
    if (ImGui::IsItemDeactivated())
        later_.push_back([this] { remember_shares(shares_); });
    state_.places.add_item(id);
    ImGui::End();
}

void Application::draw_status(float top, float width) {
    begin_area("Status", 0.0f, top, width, ImGui::GetFrameHeight(), true,
               ImGuiWindowFlags_NoNavFocus | ImGuiWindowFlags_NoNavInputs);
    ImGui::SetCursorPosY(4.0f * state_.scale);
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
    state_.places.add_item("status/" + words);
    state_.places.add_item("title/" + state_.title);
    ImGui::PopFont();
    ImGui::End();
}

/// Draws the table of keys in two halves side by side, divided where a group begins.
void Application::draw_shortcuts() {
    const std::vector<Shortcut>& rows = shortcuts();
    size_t half = rows.size();
    for (size_t i = 0; i < rows.size(); ++i)
        if (*rows[i].keys == 0 && (half == rows.size() || i <= rows.size() / 2))
            half = i;
    if (!ImGui::BeginTable("keys", 4, ImGuiTableFlags_SizingFixedFit))
        return;
    const auto put = [&](size_t i) {
        const Shortcut none{"", ""};
        const Shortcut& row = i < rows.size() ? rows[i] : none;
        ImGui::TableNextColumn();
        ImGui::TextColored(*row.meaning ? colour::accent : colour::text, "%s   ", row.keys);
        ImGui::TableNextColumn();
        ImGui::Text("%s   ", row.meaning);
    };
    for (size_t i = 0; i < std::max(half, rows.size() - half - 1); ++i) {
        ImGui::TableNextRow();
        put(i < half ? i : rows.size());
        put(half + 1 + i);
    }
    ImGui::EndTable();
}

void Application::draw_help() {
    if (!shows_help_)
        return;
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Always, {0.5f, 0.5f});
    if (ImGui::Begin("Keyboard and mouse", &shows_help_,
                     ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_AlwaysAutoResize |
                         ImGuiWindowFlags_NoSavedSettings)) {
        const ImVec2 at = ImGui::GetWindowPos(), size = ImGui::GetWindowSize();
        state_.places.add("help", at.x, at.y, size.x, size.y);
        ImGui::PushFont(state_.fonts.small);
        draw_shortcuts();
        ImGui::PopFont();
        if (ImGui::IsWindowFocused() &&
            ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape), false))
            shows_help_ = false;
    }
    ImGui::End();
}

void Application::draw_about() {
    if (!shows_about_)
        return;
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Appearing,
                            {0.5f, 0.5f});
    if (ImGui::Begin("About Tessora", &shows_about_,
                     ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_AlwaysAutoResize |
                         ImGuiWindowFlags_NoSavedSettings)) {
        ImGui::Text("Tessora %s", app::version());
        state_.places.add_item("about");
        ImGui::TextUnformatted(
            "Automatic UV unwrapping: a plug-in, this window and a command line.\n"
            "The README of the program tells what each can do; F1 shows the keys.");
        ImGui::TextDisabled("Drawn by %s", glGetString(GL_RENDERER));
        ImGui::TextDisabled("Dear ImGui %s, GLFW %s", ImGui::GetVersion(), glfwGetVersionString());
        if (ImGui::Button("Close") ||
            (ImGui::IsWindowFocused() && ImGui::IsKeyPressed(GLFW_KEY_ESCAPE, false)))
            shows_about_ = false;
    }
    ImGui::End();
}

void Application::draw_question() {
    ImGui::SetNextWindowPos(ImGui::GetMainViewport()->GetCenter(), ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSizeConstraints({320.0f * state_.scale, 0.0f},
                                        {640.0f * state_.scale, 900.0f * state_.scale});
    const std::string title = question_->title + "###question";
    if (!ImGui::IsPopupOpen("###question"))
        ImGui::OpenPopup("###question");
    if (!ImGui::BeginPopupModal(title.c_str(), nullptr,
                                ImGuiWindowFlags_AlwaysAutoResize |
                                    ImGuiWindowFlags_NoSavedSettings))
        return;
    ImGui::PushTextWrapPos(600.0f * state_.scale);
    ImGui::TextUnformatted(question_->message.c_str());
    ImGui::PopTextWrapPos();
    ImGui::Dummy({0.0f, 6.0f * state_.scale});
    for (const std::string& button : question_->buttons) {
        if (&button != question_->buttons.data())
            ImGui::SameLine();
        if (ImGui::Button(button.c_str(),
                          {std::max(96.0f * state_.scale,
                                    ImGui::CalcTextSize(button.c_str()).x + 24.0f * state_.scale),
                           0.0f}))
            answer_ = button;
        state_.places.add_item("question/" + button);
        if (button == question_->preferred)
            ImGui::SetItemDefaultFocus();
    }
    // ImGui hides the keyboard focus after mouse use; Enter then means the preferred button.
    const bool is_entered =
        ImGui::IsKeyPressed(GLFW_KEY_ENTER, false) || ImGui::IsKeyPressed(GLFW_KEY_KP_ENTER, false);
    if (ImGui::IsKeyPressed(GLFW_KEY_ESCAPE, false))
        answer_ = question_->dismissal;
    else if (is_entered && answer_.empty() && !ImGui::GetIO().NavVisible)
        answer_ = question_->preferred;
    if (!answer_.empty())
        ImGui::CloseCurrentPopup();
    ImGui::EndPopup();
}

std::string Application::ask(const std::string& title, const std::string& message,
                             const std::vector<std::string>& buttons, const std::string& preferred,
                             const std::string& dismissal) {
    if (is_in_frame_ || question_ || !options_.screenshot.empty())
        return dismissal; // the question cannot be shown: no further frame can be drawn
    state_.glyphs.note(title + message);
    const Question question{title, message, preferred, dismissal, buttons};
    question_ = &question;
    answer_.clear();
    constexpr int k_settling = 6; // frames that ImGui needs to size and centre the question
    for (int frames = 1; answer_.empty() && !glfwWindowShouldClose(window_); ++frames) {
        frame(false);
        if (!front_input_.is_idle())
            frames = 0;
        if (frames < k_settling || !answer_.empty())
            continue;
        state_.places.mark_settled();
        glfwWaitEventsTimeout(0.1);
    }
    question_ = nullptr;
    leave_front();
    frame(false); // removes the question from the screen before the statement continues
    return answer_.empty() ? dismissal : answer_;
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
    if (state_.wanted_scale >= 0.0)
        set_scale(state_.wanted_scale);
    state_.wanted_scale = -1.0;
    if (std::exchange(state_.wants_picture, false))
        choose_picture();
    if (!state_.wanted_preset.empty())
        choose_preset(std::exchange(state_.wanted_preset, std::string()));
    if (std::exchange(state_.frames_chosen, false)) {
        uvs_->frame_lit(state_);
        panels_->frame_chosen();
    }
    if (!state_.wanted_file.empty())
        open_path(std::exchange(state_.wanted_file, std::string()), false);
}

void Application::perform(Action action) {
    switch (action) {
    case Action::new_scene:
        return unless_unsaved([this] { state_.run("file -new -force;"); });
    case Action::open:
    case Action::import:
        return open_file(action == Action::import);
    case Action::save:
    case Action::save_as:
        return save(action == Action::save_as);
    case Action::export_mesh:
        return export_mesh();
    case Action::quit:
        return unless_unsaved([this] { ends_ = true; });
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
    case Action::about:
        shows_about_ = true;
        break;
    case Action::toggle_uv_alone:
        is_uv_alone_ = !is_uv_alone_;
        focuses_uvs_ = true;
        break;
    default:
        break;
    }
}

} // namespace window
