/// The desktop window: a main loop that draws frames and runs the user's statements between them.
///
/// Single-threaded. During a long statement the host's callbacks draw frames, with all controls
/// disabled but the button that cancels.
#pragma once

#include "app/view_options.h"
#include "host/ui/notices.h"
#include "host/ui/progress_window.h"
#include "host/ui/stages.h"
#include "window/dialogs.h"
#include "window/file_chooser.h"
#include "window/input_queue.h"
#include "window/layout.h"
#include "window/live_unwrap.h"
#include "window/menu_bar.h"
#include "window/model_panels.h"
#include "window/side_panels.h"
#include "window/tool_bar.h"
#include "window/uv_panel.h"
#include "window/work_progress.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct GLFWwindow;

namespace window {

class Application : private host::ProgressListener,
                    private host::NoticeListener,
                    private host::StageListener {
public:
    /// Errors: sets `error` to a sentence if there is no screen, no OpenGL or no plug-in.
    explicit Application(const app::ViewRequest& options, std::string& error);
    virtual ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Runs until the user quits. Returns false if opening the file, a statement given at launch
    /// or the screenshot failed.
    bool run();

private:
    using Clock = std::chrono::steady_clock;

    // application.cpp: construction, main loop, statements
    bool open_window(std::string& error);
    void take_events();
    void set_scale(double scale);
    void load_fonts();
    bool write_screenshot();
    void start();
    std::string summary(const std::string& statements, size_t map_revision, size_t islands) const;
    void main_loop();
    void after_first_frame();
    void set_title();

    // computing.cpp: running statements, and what happens while they run
    void run_statements(const std::string& statements);
    bool run_and_print(const std::string& statements);
    bool keep_densities(const std::vector<float>& densities);
    void keep_up();
    void cancel();
    void restore_overlay();
    void take_back(size_t undo_count, const UnwrapResults& results);
    void draw_progress();
    bool follow_live();
    void wait_for_events();

    // frame.cpp: drawing one frame, keyboard, modal questions
    /// Without input, while a statement runs: only its progress, or a question, can be answered.
    void frame(bool takes_input);
    void draw_everything(bool takes_input);
    void draw_areas(bool takes_input);
    void draw_left(const AreaBox& box, bool takes_input);
    void draw_right(const AreaBox& box, bool takes_input);
    void draw_uvs(const AreaBox& box, bool takes_input);
    void draw_splitter(const char* name, const AreaBox& box, bool is_upright, float& share,
                       float whole);
    void draw_status(float top, float width);
    static void draw_shortcuts();
    void draw_help();
    void draw_about();
    void draw_question();
    void take_common_keys();
    void perform(Action action);
    void change_view(Action action);
    void step_chart(int by);
    /// Returns the button that was pressed. Enter presses `preferred`, Escape `dismissal`.
    std::string ask(const std::string& title, const std::string& message,
                    const std::vector<std::string>& buttons, const std::string& preferred,
                    const std::string& dismissal);

    // files.cpp: opening, saving, exporting, dropped files
    void open_file(bool import);
    void open_path(const std::string& path, bool import);
    std::string statement_reading(const std::string& path, bool import);
    std::string readable(const std::string& path);
    void save(bool as_new, std::function<void()> then = nullptr);
    void export_mesh();
    void export_converted(const std::string& path);
    void choose_picture();
    void choose_preset(const std::string& name);
    void apply_preset(const std::string& name);
    void write(const std::string& path, const std::string& statement,
               std::function<void()> then = nullptr);
    bool may_replace(const std::string& path);
    void run_now(const std::string& statement);
    /// Calls `then` once the scene has no unsaved changes or the user discards them.
    void unless_unsaved(std::function<void()> then);
    void dropped(const std::vector<std::string>& files);

    // Called by the host while a statement runs.
    void changed(const host::ProgressState& progress) override;
    bool is_cancelled() override { return is_cancelled_; }
    bool reached(const char* stage, float fraction) override;
    bool show(const char* caption, const char* text) override;

    app::ViewRequest options_;
    Clock::time_point begin_ = Clock::now();
    GLFWwindow* window_ = nullptr;
    std::unique_ptr<std::streambuf> error_lines_; ///< forwards std::cerr to the console
    std::streambuf* error_stream_ = nullptr;
    State state_;
    Dialogs dialogs_;
    AttributePanel attributes_;
    ConsolePanel console_;
    FileChooser chooser_;
    std::unique_ptr<ModelPanels> panels_;
    std::unique_ptr<UvPanel> uvs_;
    LiveUnwrap live_;
    WorkProgress progress_;
    bool is_computing_ = false;       ///< a statement runs
    bool is_cancelled_ = false;       ///< it is to stop and to be taken back
    bool is_unwrapping_ = false;      ///< a plug-in shows the host's progress window
    bool has_unwrapped_ = false;      ///< one did, during the last statement
    std::string stale_overlay_;       ///< the node whose overlay a cancelled unwrap spoiled
    Clock::time_point last_poll_;     ///< of events, while a statement runs
    Clock::time_point last_progress_; ///< the last frame drawn while it runs
    Clock::duration drawing_time_{};  ///< of that frame
    bool is_in_frame_ = false;
    InputQueue input_;       ///< waits while a statement runs
    InputQueue front_input_; ///< for a question or the progress, once they are on the screen
    bool has_front_ = false; ///< one of them is
    double pointer_[2] = {-1.0, -1.0}; ///< of the last event, negative before the first
    float seen_[2] = {-1.0f, -1.0f};   ///< of the pointer, in the last frame
    size_t keys_taken_ = 0;            ///< presses, for programs that drive the window
    bool is_alt_alone_ = false;        ///< Alt is down and nothing else was pressed since
    bool opens_menu_ = false;          ///< open the first menu in the next frame
    void note_alt(int key, int action);
    void note_key(int key, int action, int modifiers);
    void note_character(unsigned int character);
    void note_motion(double x, double y);
    void note_button(int button, int action, int modifiers);
    void put_input(InputQueue* queue);
    void put_event(const InputEvent& event);
    void leave_front();
    bool may_run() const;
    void put_key(int key);
    void take_keys_as_they_are();
    std::filesystem::path converted_; ///< a folder of meshes converted from other formats
    std::map<std::string, std::string> sources_; ///< their files, by the converted ones
    AreaShares shares_;
    bool is_uv_alone_ = false; ///< the texture view fills the window
    float screen_scale_ = 1.0f;
    bool wants_fonts_ = false; ///< load the fonts anew before the next frame
    /// A modal question; `ask` draws frames until it is answered.
    struct Question {
        std::string title, message, preferred, dismissal;
        std::vector<std::string> buttons;
    };
    const Question* question_ = nullptr;
    std::string answer_;
    Action action_ = Action::none;             ///< requested in this frame
    std::vector<std::function<void()>> later_; ///< calls postponed to the end of the frame
    bool shows_help_ = false, shows_about_ = false;
    bool focuses_uvs_ = false, focuses_panels_ = false;
    bool ends_ = false;
    bool is_good_ = true;
    bool has_failed_ = false; ///< the last statement failed
};

} // namespace window
