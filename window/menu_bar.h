/// The menu bar: the window's own items, and behind them those of the host's menu model, where
/// plug-ins add theirs.
#pragma once

#include "window/state.h"

#include <string>

namespace window {

/// What a menu item or a shortcut asks of the window itself; everything else is a statement.
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
    open_menu,
    help
};

/// Draws the bar; gives what was picked. `opens`: the first menu, for the keyboard to go on from.
Action draw_menu_bar(State& state, bool is_live, bool opens);

/// The shortcut pressed in this frame. Not asked while a text field has the keyboard, except for
/// those with Ctrl.
Action pressed_action(State& state);

/// All shortcuts, as lines of key and meaning.
struct Shortcut {
    const char* keys;
    const char* meaning;
};
const std::vector<Shortcut>& shortcuts();

} // namespace window
