/// Shows the dialogs that scripts build (host/commands/ui_model.h). User input becomes the
/// statements uiSet and uiPress, with which a script would operate the dialog.
#pragma once

#include "host/commands/ui_model.h"
#include "window/state.h"

#include <map>
#include <string>

namespace window {

class Dialogs {
public:
    /// Draws every shown window of the model, disabled unless `takes_input`.
    void draw(State& state, const host::UiModel& model, bool takes_input);

private:
    void draw_window(const host::UiControl& window);
    void draw_contents(const host::UiControl& window, bool has_focus);
    void draw_children(const host::UiControl& parent);
    void draw_control(const host::UiControl& control);
    struct Editing;
    template <class DrawField>
    void draw_field(const host::UiControl& control, Editing& editing, DrawField draw);
    void draw_real_slider(const host::UiControl& control);
    void draw_integer_slider(const host::UiControl& control);
    void draw_text_field(const host::UiControl& control);
    void draw_check_box(const host::UiControl& control);
    void draw_option_menu(const host::UiControl& control);
    void draw_button(const host::UiControl& control, float width);
    void draw_annotation(const host::UiControl& control);
    void press(const host::UiControl& button);
    void draw_row(const host::UiControl& row);
    void label(const host::UiControl& control);
    void set(const host::UiControl& control, const std::string& value);

    State* state_ = nullptr;
    const host::UiControl* main_button_ = nullptr; ///< of the window being drawn; null if none
    bool is_on_button_ = false;                    ///< some button of that window has the focus
    /// Values being edited and not yet written to the model, by control name.
    std::map<std::string, float> reals_;
    std::map<std::string, int> integers_;
    std::map<std::string, std::string> texts_;
    std::map<std::string, bool> seen_; ///< windows shown in the last frame
};

} // namespace window
