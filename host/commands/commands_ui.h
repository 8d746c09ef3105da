/// Commands that build dialogs, and those that drive them where nobody can see them.
#pragma once

#include "host/commands/ui_model.h"
#include "host/script/flags.h"
#include "host/script/functions.h"

#include <functional>
#include <memory>
#include <string>

namespace host::script {

/// Answers a question: gives the label of the button that was pressed, one of `buttons`.
using Ask = std::function<std::string(const std::string& title, const std::string& message,
                                      const StringArray& buttons, const std::string& preferred)>;

struct UiState {
    UiModel model;
    Ask ask; ///< empty: nobody is there, the preferred button is taken
    /// Answers laid ready by `uiAnswer`, first in first out; they come before `ask`.
    std::vector<std::string> answers;
};

/// Adds window, layouts, controls, deleteUI, showWindow, setParent, confirmDialog and the commands
/// of our own: uiControls (list what a window holds), uiSet (a user changes a value), uiPress (a
/// user presses a button or picks a menu item), uiAnswer (the next question's answer).
MHOST_EXPORT void add_ui_commands(Interpreter& interpreter, const std::shared_ptr<UiState>& state);

} // namespace host::script
