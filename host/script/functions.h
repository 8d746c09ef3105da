/// Helpers for the files that define functions of the script language.
#pragma once

#include "host/script/interpreter.h"

#include <string>

namespace host::script {

void add_core_functions(Interpreter& interpreter);
void add_text_functions(Interpreter& interpreter);
void add_math_functions(Interpreter& interpreter);

/// Throws ScriptFault "Wrong number of arguments on call to NAME: ..." unless the number of
/// arguments is between `min` and `max`.
void require_arguments(const Invocation& call, size_t min, size_t max);

/// Returns the argument at `index`, an array shared with the caller's variable. Throws ScriptFault
/// if it is not an array of `basic`.
Value& array_argument(Invocation& call, size_t index, Basic basic);

} // namespace host::script
