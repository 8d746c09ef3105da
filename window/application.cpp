#include "window/application.h"

#include "app/atomic_file.h"
#include "app/command.h"
#include "app/line_buffer.h"
#include "app/session_setup.h"
#include "host/commands/session.h"
#include "host/graph/plugins.h"
#include "host/view/pixels.h"

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

std::string last_glfw_error() {
    const char* text = nullptr;
    glfwGetError(&text);
    return text ? std::string(": ") + text : std::string();
}

Display display_named(const std::string& name) {
    for (int i = 0; i < 4; ++i) {
        std::string known = k_display_names[i];
        known[0] = char(known[0] + 32);
        if (name == known)
            return static_cast<Display>(i);
    }
    return Display::charts;
}

} // namespace

Application::Application(const LaunchOptions& options, std::string& error)
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
        return ask(title, message, buttons, preferred);
    };
    error_lines_ = std::make_unique<app::LineBuffer>(
        [this](const std::string& line) { state_.console.print(line + "\n"); });
    error_stream_ = std::cerr.rdbuf();
    panels_ = std::make_unique<ModelPanels>(state_);
    panels_->on_redraw = [this] { frame(false); };
    uvs_ = std::make_unique<UvPanel>();
    host::set_progress_listener(this);
    host::set_notice_listener(this);
    // Before loading: only an interactive application runs a plug-in's UI procedures.
    host::graph::Plugins::current().mode = host::graph::AppMode::interactive;
    app::load_plugin(error);
}

Application::~Application() {
    if (error_stream_)
        std::cerr.rdbuf(error_stream_);
    host::set_progress_listener(nullptr);
    host::set_notice_listener(nullptr);
    Session::current().set_output(nullptr);
    Session::current().on_quit = nullptr;
    Session::current().ui().ask = nullptr;
    panels_.reset();
    uvs_.reset();
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
    glfwSetDropCallback(window_, [](GLFWwindow* window, int count, const char** paths) {
        static_cast<Application*>(glfwGetWindowUserPointer(window))
            ->dropped({paths, paths + count});
    });
    glfwSetKeyCallback(window_, [](GLFWwindow* window, int key, int, int action, int modifiers) {
        auto* self = static_cast<Application*>(glfwGetWindowUserPointer(window));
        self->note_alt(key, action);
        const bool is_text = ImGui::GetIO().WantTextInput && key <= GLFW_KEY_GRAVE_ACCENT &&
                             (modifiers & (GLFW_MOD_CONTROL | GLFW_MOD_ALT)) == 0;
        if (action == GLFW_PRESS && key >= 0 && key < GLFW_KEY_LEFT_SHIFT && !is_text)
            self->presses_.push_back({key, modifiers});
    });
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    io.IniFilename = nullptr;
    float scale = 1.0f, ignored = 1.0f;
    glfwGetWindowContentScale(window_, &scale, &ignored);
    state_.fonts = set_theme(scale);
    ImGui_ImplGlfw_InitForOpenGL(window_, true);
    ImGui_ImplOpenGL2_Init();
    return true;
}

void Application::run_statements(const std::string& statements) {
    std::cerr.rdbuf(error_lines_.get());
    const size_t map_revision = state_.map_revision;
    state_.status_revision = state_.console.revision();
    const Session::Outcome outcome = Session::current().run(statements, "window");
    has_failed_ = !outcome.ok;
    std::string result;
    for (const std::string& text : outcome.value.flattened())
        result += (result.empty() ? "" : " ") + text;
    if (outcome.ok && !result.empty())
        state_.console.result(result);
    if (!update_meshes()) {
        has_failed_ = true;
        state_.console.error("A mesh could not be brought up to date; it is shown as it was.");
    }
    std::cerr.rdbuf(error_stream_);
    progress_ = host::ProgressState();
    const bool had_mesh = static_cast<bool>(state_.subject.shape);
    const auto* before = state_.subject.shape.get();
    state_.refresh();
    if (state_.subject.shape && (!had_mesh || before != state_.subject.shape.get()))
        panels_->frame_all();
    state_.status = summary(statements, map_revision);
    set_title();
}

/// Status line text after a statement: what was undone, redone or unwrapped.
std::string Application::summary(const std::string& statements, size_t map_revision) const {
    std::string words;
    if (statements == "undo;")
        words = "Undone: " + state_.redo_name;
    else if (statements == "redo;")
        words = "Redone: " + state_.undo_name;
    else if (map_revision != state_.map_revision && state_.subject.node) {
        char text[128];
        const size_t count = state_.map.charts().size();
        std::snprintf(text, sizeof text, "%zu %s, worst stretch %.4f, %.1f %% covered", count,
                      count == 1 ? "chart" : "charts", state_.map.worst_stretch(),
                      100.0 * state_.map.coverage());
        words = state_.subject.node_name() + ": " + text;
    }
    if (state_.has_changed_rows)
        words += std::string(words.empty() ? "" : ". ") +
                 "The UVs stay as they are until \"Unwrap again\"";
    return words;
}

void Application::set_title() {
    const Session::Outcome name = Session::current().run("file -q -sceneName", "window", false);
    state_.scene_name = name.ok ? name.value.to_string() : std::string();
    const std::string shown = state_.scene_name.empty()
                                  ? std::string("untitled")
                                  : std::filesystem::path(state_.scene_name).filename().string();
    glfwSetWindowTitle(window_,
                       (shown + (state_.is_modified ? " * - Tessora" : " - Tessora")).c_str());
}

void Application::start() {
    if (!options_.file.empty()) {
        const std::string statement = statement_for_file(options_.file, false);
        if (statement.empty())
            state_.console.error(options_.file + ": not an .obj, .ma or .mel file.");
        is_good_ = !statement.empty();
        state_.jobs.add(statement);
    }
    for (const std::string& statements : options_.statements)
        state_.jobs.add(statements);
    state_.refresh();
}

void Application::after_first_frame() {
    if (options_.is_verbose)
        std::fprintf(stderr,
                     "tessora: the window was ready after %.2f s, %.2f s of processor time\n",
                     std::chrono::duration<double>(Clock::now() - begin_).count(),
                     static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
}

void Application::main_loop() {
    bool is_first = true;
    while (!ends_) {
        frame(true);
        if (is_first && state_.jobs.is_empty()) {
            after_first_frame();
            is_first = false;
        }
        if (!state_.jobs.is_empty()) {
            state_.jobs.run_all();
            is_good_ = is_good_ && !(is_first && has_failed_);
            continue;
        }
        if (glfwWindowShouldClose(window_)) {
            glfwSetWindowShouldClose(window_, GLFW_FALSE);
            perform(Action::quit);
        }
        if (ends_)
            break;
        if (presses_.empty() && !had_press_)
            glfwWaitEventsTimeout(0.25);
        frame(true); // ImGui shows some effects of an event one frame late
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
    for (int i = 0; i < 4; ++i) // ImGui needs some frames to settle window sizes
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

void Application::changed(const host::ProgressState& progress) {
    const bool is_new =
        progress.is_shown != progress_.is_shown || !(progress.status == progress_.status);
    progress_ = progress;
    // Progress may change faster than a frame is drawn: spend at most a fifth of the time drawing.
    const auto now = Clock::now();
    const auto pause = std::max<Clock::duration>(std::chrono::milliseconds(66), 4 * drawing_time_);
    if (!progress.is_shown || (!is_new && now - last_progress_ < pause))
        return;
    frame(false);
    last_progress_ = Clock::now();
    drawing_time_ = last_progress_ - now;
}

bool Application::show(const char* caption, const char* text) {
    state_.console.warning(text);
    if (options_.screenshot.empty())
        ask(caption, text, {"OK"}, "OK");
    return true;
}

} // namespace window
