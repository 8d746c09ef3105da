/// Commands that build dialogs, and commands that operate them without a screen.
#pragma once

#include "host/commands/ui_model.h"
#include "host/script/flags.h"
#include "host/script/functions.h"

#include <functional>
#include <memory>
#include <string>

namespace host::script {

/// Asks the user a question. Returns the label of the pressed button, one of `buttons`.
using Ask = std::function<std::string(const std::string& title, const std::string& message,
                                      const StringArray& buttons, const std::string& preferred)>;

struct UiState {
    UiModel model;
    Ask ask; ///< if empty, the preferred button is the answer
    /// Queue of answers from `uiAnswer`; used up, first in first out, before `ask` is called.
    std::vector<std::string> answers;
};

/// Adds window, layouts, controls, deleteUI, showWindow, setParent, confirmDialog, and commands
/// that only this host has: uiControls (lists the controls of a window), uiSet (changes a value as
/// a user would), uiPress (presses a button or chooses a menu item), uiAnswer (answers the next
/// question).
MHOST_EXPORT void add_ui_commands(Interpreter& interpreter, const std::shared_ptr<UiState>& state);

} // namespace host::script
