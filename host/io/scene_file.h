/// Scenes in the host's ASCII format: what is here is saved with live history and comes back; what
/// the host does not know is kept (scene_notes.h).
#pragma once

#include "host/io/export.h"
#include "host/script/interpreter.h"

#include <string>

namespace host {

/// Reads statements into the scene, which the caller has emptied for opening. Nodes whose names are
/// taken get new ones. Loads plug-ins that the file requires when it can. The whole text is checked
/// first: a syntax error changes nothing.
/// Errors: script::ScriptError with file, line and column. What a scene of another installation may
///         say (unknown nodes, attributes, plug-ins) is a warning at most.
TESSORA_IO_API void read_scene(const std::string& text, const std::string& file,
                               script::Interpreter& interpreter);

/// The scene as text; `name` stands in its header. The same scene gives the same bytes.
TESSORA_IO_API std::string write_scene(const std::string& name);

} // namespace host
