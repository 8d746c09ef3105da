/// Loading of shared libraries at run time; one implementation per operating system.
#pragma once

#include <string>

namespace host::graph::library {

/// File extension of plug-ins.
extern const char* const k_extension;
/// Names of a plug-in's entry points in the library's symbol table.
extern const char* const k_initialize;
extern const char* const k_uninitialize;
/// Separates the directories of a search path.
extern const char k_path_separator;

/// Returns NULL if the file cannot be loaded; `error` then holds the system's message.
void* open(const std::string& path, std::string& error);
void close(void* library);
/// Returns NULL if the library does not export the symbol.
void* find(void* library, const char* symbol);
/// Whether the address of a function or variable lies inside the library.
bool contains(void* library, const void* address);

} // namespace host::graph::library
