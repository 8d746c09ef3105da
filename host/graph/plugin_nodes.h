/// All calls from the graph into node instances of plug-ins.
#pragma once

#include "host/graph/node.h"

#include <functional>

namespace host::graph {

class PluginNodes {
public:
    /// Creates the plug-in's instance for a new node.
    /// Errors: kInsufficientMemory if the creator returns NULL.
    static MStatus create_instance(Node& node);
    /// Deletes the instance, if any. The node keeps its attributes and values.
    static void destroy_instance(Node& node);
    static MStatus compute(Slot& slot);
    /// Calls setDependentsDirty, and calls `stale` for each plug that the instance adds.
    static void report_dirty(Slot& slot, const std::function<void(Slot&)>& stale);
    static void connection_made(Slot& source, Slot& destination);
    static void connection_broken(Slot& source, Slot& destination);
};

} // namespace host::graph
