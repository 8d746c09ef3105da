#include "window/application.h"

#include "app/atomic_file.h"
#include "app/command.h"
#include "app/line_buffer.h"
#include "app/session_setup.h"
#include "app/unwrap_remarks.h"
#include "host/commands/session.h"
#include "host/graph/plugins.h"
#include "host/view/pixels.h"
#include "window/layout_words.h"
#include "window/preferences.h"

#include <GLFW/glfw3.h>
#include <algorithm>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl2.h>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iostream>

namespace window {
namespace {

using host::script::Session;

constexpr const char* k_scale_preference = "tessora_window_scale";

std::string last_glfw_error() {
    const char* text = nullptr;
    glfwGetError(&text);
    return text ? std::string(": ") + text : std::string();
}

Display display_named(const std::string& name) {
    for (int i = 0; i < k_display_count; ++i) {
        std::string known = k_display_names[i];
        known[0] = char(known[0] + 32);
        if (name == known)
            return static_cast<Display>(i);
    }
    return Display::charts;
}

/// What an edit of the UVs by hand calls for; empty after other statements.
std::string advice_after(const std::string& statements) {
    const auto has = [&](const char* word) { return statements.find(word) != std::string::npos; };
    if (has("tessora "))
        return std::string();
    if (has("polyMapSew") && !has("-before"))
        return "Sewn in the middle. Along my seams lays the charts out anew";
    if (has("polyMapCut") && !has("-before"))
        return "Cut. Along my seams lays the charts out anew";
    if (has("polyEditUV") && has(" -su "))
        return "Scaled. Pack arranges all charts anew, in these proportions";
    return std::string();
}

} // namespace

Application::Application(const app::ViewRequest& options, std::string& error)
    : options_(options),
      state_([this](const std::string& text) { run_statements(text); }, options.places) {
    state_.display = display_named(options.display);
    if (!open_window(error))
        return;
    Session& session = Session::current();
    session.set_output(&state_.console);
    session.on_quit = [this](int) { ends_ = true; };
    session.ui().ask = [this](const std::string& title, const std::string& message,
                              const host::script::StringArray& buttons,
                              const std::string& preferred) {
        return ask(title, message, buttons, preferred, preferred);
    };
    error_lines_ = std::make_unique<app::LineBuffer>(
        [this](const std::string& line) { state_.console.print(line + "\n"); });
    error_stream_ = std::cerr.rdbuf();
    panels_ = std::make_unique<ModelPanels>(state_);
    panels_->on_redraw = [this] { frame(false); };
    uvs_ = std::make_unique<UvPanel>();
    host::set_progress_listener(this);
    host::set_stage_listener(this);
    host::set_notice_listener(this);
    session.interpreter().set_stop([this] {
        keep_up();
        return is_cancelled_;
    });
    // Before loading: only an interactive application runs a plug-in's UI procedures.
    host::graph::Plugins::current().mode = host::graph::AppMode::interactive;
    if (app::load_plugin(error))
        state_.settings = read_settings();
    app::watch_unwraps();
    shares_ = remembered_shares();
    if (const double chosen = preference(k_scale_preference, 0.0); chosen > 0.0)
        set_scale(chosen);
}

Application::~Application() {
    if (error_stream_)
        std::cerr.rdbuf(error_stream_);
    host::set_progress_listener(nullptr);
    host::set_stage_listener(nullptr);
    host::set_notice_listener(nullptr);
    Session::current().interpreter().set_stop(nullptr);
    Session::current().set_output(nullptr);
    Session::current().on_quit = nullptr;
    Session::current().ui().ask = nullptr;
    panels_.reset();
    uvs_.reset();
    std::error_code ignored;
    if (!converted_.empty())
        std::filesystem::remove_all(converted_, ignored);
    if (window_) {
        ImGui_ImplOpenGL2_Shutdown();
        ImGui_ImplGlfw_Shutdown();
        ImGui::DestroyContext();
        glfwDestroyWindow(window_);
    }
    glfwTerminate();
}

bool Application::open_window(std::string& error) {
    if (!glfwInit()) {
        error = "there is no screen to open a window on" + last_glfw_error();
        return false;
    }
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 2);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 1);
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    window_ = glfwCreateWindow(options_.width, options_.height, "Tessora", nullptr, nullptr);
    if (!window_) {
        error = "the system gives no OpenGL window" + last_glfw_error();
        return false;
    }
    glfwMakeContextCurrent(window_);
    glfwSwapInterval(1);
    glfwSetWindowUserPointer(window_, this);
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    io.IniFilename = nullptr;
    io.ConfigInputTextCursorBlink = false; // the window draws nothing when nothing happens
    float ignored = 1.0f;
    glfwGetWindowContentScale(window_, &screen_scale_, &ignored);
    state_.scale = screen_scale_;
    state_.fonts = set_theme(state_.scale, state_.glyphs.characters());
    ImGui_ImplGlfw_InitForOpenGL(window_, false);
    take_events();
    ImGui_ImplOpenGL2_Init();
    return true;
}

/// Keys, characters and buttons go through the queues; ImGui takes all else as it comes.
void Application::take_events() {
    static constexpr auto self = [](GLFWwindow* window) {
        return static_cast<Application*>(glfwGetWindowUserPointer(window));
    };
    glfwSetDropCallback(window_, [](GLFWwindow* window, int count, const char** paths) {
        self(window)->dropped({paths, paths + count});
    });
    glfwSetKeyCallback(window_, [](GLFWwindow* window, int key, int, int action, int modifiers) {
        self(window)->note_key(key, action, modifiers);
    });
    glfwSetCharCallback(window_, [](GLFWwindow* window, unsigned int character) {
        self(window)->note_character(character);
    });
    glfwSetMouseButtonCallback(window_,
                               [](GLFWwindow* window, int button, int action, int modifiers) {
                                   self(window)->note_button(button, action, modifiers);
                               });
    glfwSetCursorPosCallback(
        window_, [](GLFWwindow* window, double x, double y) { self(window)->note_motion(x, y); });
    glfwSetWindowFocusCallback(window_, ImGui_ImplGlfw_WindowFocusCallback);
    glfwSetCursorEnterCallback(window_, ImGui_ImplGlfw_CursorEnterCallback);
    glfwSetScrollCallback(window_, ImGui_ImplGlfw_ScrollCallback);
    glfwSetMonitorCallback(ImGui_ImplGlfw_MonitorCallback);
}

/// 0: as the screen asks for.
void Application::set_scale(double scale) {
    set_preference(k_scale_preference, scale);
    state_.scale = scale > 0.0 ? static_cast<float>(std::clamp(scale, 0.5, 4.0)) : screen_scale_;
    wants_fonts_ = true;
}

void Application::load_fonts() {
    wants_fonts_ = false;
    state_.fonts = set_theme(state_.scale, state_.glyphs.characters());
    ImGui_ImplOpenGL2_DestroyFontsTexture();
    ImGui_ImplOpenGL2_CreateFontsTexture();
}

/// Status line text after a statement: what was undone, redone or unwrapped.
/// `islands`: what the seams that it was to follow made of the surface; 0 for all other statements.
std::string Application::summary(const std::string& statements, size_t map_revision,
                                 size_t islands) const {
    const std::string advice = advice_after(statements);
    std::string words = advice;
    if (statements == "undo;")
        words = "Undone: " + state_.redo_name;
    else if (statements == "redo;")
        words = "Redone: " + state_.undo_name;
    else if (advice.empty() && map_revision != state_.map_revision && state_.subject.node) {
        words = state_.subject.node_name() + ": " +
                (islands > 0 ? words_along_seams(state_.map, islands) : words_about(state_.map));
    }
    if (state_.has_changed_rows)
        words += std::string(words.empty() ? "" : ". ") +
                 "The UVs stay as they are until \"Unwrap again\"";
    return words;
}

void Application::set_title() {
    const auto answer = [](const char* question) {
        const Session::Outcome name = Session::current().run(question, "window", false);
        return name.ok ? name.value.to_string() : std::string();
    };
    state_.scene_name = answer("file -q -sceneName");
    const std::string before = state_.opened_name;
    state_.opened_name = answer("file -q -location");
    if (state_.opened_name == "unknown")
        state_.opened_name.clear();
    if (const auto source = sources_.find(state_.opened_name); source != sources_.end())
        state_.opened_name = source->second;
    if (state_.opened_name != before && !state_.opened_name.empty())
        add_recent_file(std::filesystem::absolute(state_.opened_name).lexically_normal().string());
    const std::string shown = state_.opened_name.empty()
                                  ? std::string("untitled")
                                  : std::filesystem::path(state_.opened_name).filename().string();
    state_.title = shown + (state_.is_modified ? " *" : "");
    glfwSetWindowTitle(window_, (state_.title + " - Tessora").c_str());
}

void Application::start() {
    if (!options_.file.empty()) {
        const std::string statement = statement_reading(options_.file, false);
        is_good_ = !statement.empty();
        state_.jobs.add(statement);
    }
    for (const std::string& statements : options_.statements)
        state_.jobs.add(statements);
    state_.refresh();
    set_title();
}

void Application::after_first_frame() {
    if (options_.is_verbose)
        std::fprintf(stderr,
                     "tessora: the window was ready after %.2f s, %.2f s of processor time\n",
                     std::chrono::duration<double>(Clock::now() - begin_).count(),
                     static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
}

void Application::main_loop() {
    // ImGui needs some frames to show all effects of a key, such as a dialog with its focus, and
    // one more for a moved pointer. Nothing is drawn when nothing happened.
    constexpr int k_after_event = 6, k_after_motion = 2;
    bool is_first = true;
    for (int due = k_after_event; !ends_;) {
        frame(true);
        --due;
        if (is_first && state_.jobs.is_empty()) {
            after_first_frame();
            is_first = false;
        }
        if (may_run()) {
            state_.jobs.run_all();
            is_good_ = is_good_ && !(is_first && has_failed_);
            due = k_after_event;
            continue;
        }
        if (glfwWindowShouldClose(window_)) {
            glfwSetWindowShouldClose(window_, GLFW_FALSE);
            perform(Action::quit);
        }
        if (ends_)
            break;
        if (!input_.is_idle() || wants_fonts_)
            due = k_after_event;
        if (due > 0)
            continue;
        state_.places.mark_settled();
        wait_for_events();
        due = input_.is_idle() ? k_after_motion : k_after_event;
    }
}

bool Application::run() {
    start();
    if (options_.screenshot.empty()) {
        main_loop();
        return is_good_;
    }
    frame(true);
    state_.jobs.run_all();
    is_good_ = is_good_ && !has_failed_;
    for (int i = 0; i < 5; ++i) // ImGui needs some frames to settle window sizes
        frame(true);
    after_first_frame();
    return write_screenshot() && is_good_;
}

bool Application::write_screenshot() {
    int width = 0, height = 0;
    glfwGetFramebufferSize(window_, &width, &height);
    glReadBuffer(GL_BACK);
    const std::string png = host::png_of(host::read_pixels(0, 0, width, height));
    app::AtomicFile file;
    std::string error;
    if (file.open(options_.screenshot, error) && file.write(png, error) && file.commit(error))
        return true;
    app::say(error);
    return false;
}

} // namespace window
