/// Where the graph meets the node instances of plug-ins: the only part of it that calls them.
#pragma once

#include "host/graph/node.h"

#include <functional>

namespace host::graph {

class PluginNodes {
public:
    /// Makes the plug-in's instance for a new node; kInsufficientMemory when its creator gave none.
    static MStatus create_instance(Node& node);
    /// Deletes the instance, if there is one. The node is plain data afterwards.
    static void destroy_instance(Node& node);
    static MStatus compute(Slot& slot);
    /// Asks the instance what else a change of one of its plugs makes stale.
    static void report_dirty(Slot& slot, const std::function<void(Slot&)>& stale);
    static void connection_made(Slot& source, Slot& destination);
    static void connection_broken(Slot& source, Slot& destination);
};

} // namespace host::graph
