/// What the program asks of the system it runs on. One source per kind of system gives the answers
/// (system_posix.cpp, system_win32.cpp); nothing else in the program asks which one that is, except
/// where files, signals and the prompt have such a pair of their own.
#pragma once

#include <string>

namespace app {

/// Between the directories of a search path.
extern const char k_path_separator;

/// Call first: the standard streams carry bytes as they are, and a failure of a library that cannot
/// be told as a result (an operation that the platform declares but lacks) ends the process with a
/// sentence and exit_unwrap instead of a crash.
void prepare_process();

/// Directory of the running program, without a slash at the end; "." if the system will not say.
std::string program_directory();

/// The largest amount of memory that the process has held so far, in MiB.
double peak_memory_mb();

/// Whether a person is at standard input and output, or at a standard error whose cursor can move.
bool is_terminal_input_and_output();
bool is_terminal_error();
/// Columns of the terminal behind standard error; 80 when it will not say.
int terminal_columns();

/// A function of a library that somebody else in the process has loaded; null when the library is
/// not there or lacks it. `library` is the name without the system's own beginning and ending.
void* loaded_function(const std::string& library, const char* function);

} // namespace app
