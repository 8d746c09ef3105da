/// The desktop window: one main loop that draws, and between two frames runs what the user asked
/// for.
///
/// Everything happens on the main thread. A statement that computes for long draws the window from
/// within the host's progress window, with all controls switched off.
#pragma once

#include "host/ui/notices.h"
#include "host/ui/progress_window.h"
#include "window/dialogs.h"
#include "window/file_chooser.h"
#include "window/menu_bar.h"
#include "window/model_panels.h"
#include "window/side_panels.h"
#include "window/uv_panel.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct GLFWwindow;

namespace window {

struct LaunchOptions {
    std::string file;                    ///< to open; empty for none
    int width = 1440, height = 900;      ///< of the window, in pixels
    std::vector<std::string> statements; ///< to run after the file was opened
    std::string screenshot;              ///< PNG to write; the window closes after that
    std::string display;                 ///< a name of k_display_names in lower case, or empty
    std::string places;                  ///< file that says where things stand
    bool is_verbose = false;             ///< tell how long the start took
};

class Application : private host::ProgressListener, private host::NoticeListener {
public:
    /// Errors: `error` is a sentence when there is no screen, no OpenGL or no plug-in.
    explicit Application(const LaunchOptions& options, std::string& error);
    virtual ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Until the user quits. False if a statement, the file or the screenshot failed.
    bool run();

private:
    using Clock = std::chrono::steady_clock;

    // application.cpp: life and jobs
    bool open_window(std::string& error);
    bool write_screenshot();
    void start();
    void run_statements(const std::string& statements);
    std::string summary(const std::string& statements, size_t map_revision) const;
    void main_loop();
    void after_first_frame();
    void set_title();

    // frame.cpp: one frame
    void frame(bool is_live);
    void draw_everything(bool is_live);
    void draw_areas(bool is_live);
    void draw_right(float left, float top, float width, float height, bool is_live);
    void draw_status(float top, float width);
    void draw_help();
    void draw_progress();
    void draw_question();
    void take_common_keys();
    void perform(Action action);
    void change_view(Action action);
    void step_chart(int by);
    std::string ask(const std::string& title, const std::string& message,
                    const std::vector<std::string>& buttons, const std::string& preferred);

    // files.cpp: scenes
    void open_file(bool import);
    void save(bool as_new);
    void export_mesh();
    void write(const std::string& path, const std::string& statement);
    bool may_discard();
    void dropped(const std::vector<std::string>& files);

    // What the host tells in the middle of a statement.
    void changed(const host::ProgressState& progress) override;
    bool is_cancelled() override { return false; }
    bool show(const char* caption, const char* text) override;

    LaunchOptions options_;
    Clock::time_point begin_ = Clock::now();
    GLFWwindow* window_ = nullptr;
    std::unique_ptr<std::streambuf> error_lines_; ///< passes std::cerr on to the console
    std::streambuf* error_stream_ = nullptr;
    State state_;
    Dialogs dialogs_;
    AttributePanel attributes_;
    ConsolePanel console_;
    FileChooser chooser_;
    std::unique_ptr<ModelPanels> panels_;
    std::unique_ptr<UvPanel> uvs_;
    host::ProgressState progress_;
    Clock::time_point last_progress_;
    Clock::duration drawing_time_{}; ///< of the last frame in the middle of a statement
    bool is_in_frame_ = false;
    /// Keys that went down, with what was held beside them, one for each frame: a short press that
    /// begins and ends between two frames counts too.
    struct KeyPress {
        int key, modifiers;
    };
    std::vector<KeyPress> presses_;
    bool had_press_ = false;    ///< the last frame had one, so this one must see it released
    bool is_alt_alone_ = false; ///< Alt went down, and nothing was pressed with it so far
    bool opens_menu_ = false;   ///< in the next frame
    void note_alt(int key, int action);
    void put_press();
    void take_keys_as_they_are();
    /// A question that waits for its answer, in the middle of whatever asked it.
    struct Question {
        std::string title, message, preferred;
        std::vector<std::string> buttons;
    };
    const Question* question_ = nullptr;
    std::string answer_;
    Action action_ = Action::none;             ///< of this frame
    std::vector<std::function<void()>> later_; ///< what must not happen inside a frame
    bool shows_help_ = false;
    bool focuses_uvs_ = false, focuses_panels_ = false;
    bool ends_ = false;
    bool is_good_ = true;
    bool has_failed_ = false; ///< the last statement did
};

} // namespace window
