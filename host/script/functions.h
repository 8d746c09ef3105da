/// Shared by the files that define functions of the script language.
#pragma once

#include "host/script/interpreter.h"

#include <string>

namespace host::script {

void add_core_functions(Interpreter& interpreter);
void add_text_functions(Interpreter& interpreter);
void add_math_functions(Interpreter& interpreter);

/// Throws "Wrong number of arguments on call to NAME: ..." unless min <= count <= max.
void require_arguments(const Invocation& call, size_t min, size_t max);

/// The array argument at a position, shared with the caller's variable. Throws when it is none or
/// of another element type.
Value& array_argument(Invocation& call, size_t index, Basic basic);

} // namespace host::script
