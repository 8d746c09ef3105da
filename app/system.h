/// Queries to the operating system, implemented once per system (system_posix.cpp,
/// system_win32.cpp). Files, signals and the prompt have such pairs of their own; no other source
/// of the program depends on the system.
#pragma once

#include <string>

namespace app {

/// Separates the directories of a search path.
extern const char k_path_separator;

/// Call first in main, before any file is opened. On POSIX: standard streams that are closed are
/// opened so that every use of them fails; else the next file opened would get their descriptor,
/// and messages would be written into it; and as many files may be open as the system allows. On
/// Windows: standard streams become binary, and calling a function that the platform exports but
/// does not implement ends the process with a message and exit_unwrap instead of a crash.
void prepare_process();

/// From now on freed memory, up to 64 MiB, stays with the process: one that does one mesh after the
/// other would otherwise return and fetch its heap many times a mesh.
void keep_freed_memory();

/// Directory of the running program, without a trailing slash; "." if unknown.
std::string program_directory();

/// The running program's file; "" if unknown.
std::string program_file();

/// Peak resident memory of the process so far, in MiB.
double peak_memory_mb();

/// True if both standard input and standard output are terminals.
bool is_terminal_input_and_output();
/// True if standard error is a terminal that can move its cursor.
bool is_terminal_error();
/// Width of the terminal on standard error, in columns; 80 if unknown.
int terminal_columns();

/// Looks up a function in a library that is already loaded; null if the library is not loaded or
/// does not export it. `library` is the file name without the system's prefix and extension.
void* loaded_function(const std::string& library, const char* function);

} // namespace app
