/// What a scene file says that the host does not know: kept as it stood, written back on saving.
///
/// Nodes of unknown types, statements about attributes that nodes here do not have, connections to
/// either, file information, plug-ins that were asked for.
#pragma once

#include "host/graph/node.h"
#include "host/io/export.h"

#include <string>
#include <utility>
#include <vector>

namespace host {

struct TESSORA_IO_API SceneNotes {
    static SceneNotes& current();

    /// createNode or select statements and what follows them, whole, in the order of the file.
    std::vector<std::string> unknown_nodes;
    /// Statements that speak of a node which is here, about something that is not.
    std::vector<std::pair<graph::Ref<graph::Node>, std::string>> unknown_settings;
    std::vector<std::string> unknown_connections; ///< and relationships, and the like
    std::vector<std::string> requirements;        ///< of plug-ins that could not be loaded
    std::vector<std::pair<std::string, std::string>> file_info;

    void clear() { *this = SceneNotes(); }
};

} // namespace host
