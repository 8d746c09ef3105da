/// The command `help`: what commands there are, and what each takes.
#pragma once

#include "host/script/interpreter.h"

#include <string>

namespace host::script {

/// All commands by theme, and how to read on.
std::string help_overview(const Interpreter& interpreter);
/// One command: what it does, its flags with their values and modes. Throws ScriptFault if there is
/// no such command; its text names similar ones.
MHOST_EXPORT std::string help_on(Interpreter& interpreter, const std::string& name);
/// One line on what a built-in command does; empty if unknown.
MHOST_EXPORT std::string summary_of(const std::string& name);

void add_help_command(Interpreter& interpreter);

} // namespace host::script
