/// Libraries that are loaded at run time, as the system at hand does it.
#pragma once

#include <string>

namespace host::graph::library {

/// The usual ending of a plug-in's file.
extern const char* const k_extension;
/// Under these names a plug-in's entry points stand in its symbol table.
extern const char* const k_initialize;
extern const char* const k_uninitialize;
/// Between the directories of a search path.
extern const char k_path_separator;

/// Null when the file cannot be loaded, with the system's reason in `error`.
void* open(const std::string& path, std::string& error);
void close(void* library);
/// Null when the library has no such symbol.
void* find(void* library, const char* symbol);
/// Whether code or data at `address` belongs to the library.
bool contains(void* library, const void* address);

} // namespace host::graph::library
