/// The menu bar: the window's own items, followed by those that plug-ins and scripts added to the
/// host's menu model.
#pragma once

#include "window/state.h"

#include <string>

namespace window {

/// What a menu item or shortcut can ask of the window itself; all other items run statements.
enum class Action {
    none,
    new_scene,
    open,
    import,
    save,
    save_as,
    export_mesh,
    quit,
    frame_all,
    toggle_alone,
    focus_panels,
    focus_uv,
    focus_attributes,
    focus_console,
    next_chart,
    previous_chart,
    toggle_uv_alone,
    open_menu,
    help,
    about
};

/// Draws the bar and returns the picked action. `opens`: open the first menu for keyboard use.
Action draw_menu_bar(State& state, bool takes_input, bool opens);

/// The action whose shortcut was pressed in this frame; runs shortcuts that stand for statements.
/// Ignores keys without Ctrl while a text field has the focus, function keys excepted.
Action pressed_action(State& state);

/// One line of the keyboard help; an empty meaning marks a heading.
struct Shortcut {
    const char* keys;
    const char* meaning;
};
const std::vector<Shortcut>& shortcuts();

} // namespace window
