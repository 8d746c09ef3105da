/// A loaded plug-in, as the function set for plug-ins sees it.
#pragma once

#include "host/graph/plugins.h"
#include "host/graph/ref.h"

namespace host::graph {

/// Names the plug-in to its entry points; may outlive it.
class PluginObject : public Object {
public:
    explicit PluginObject(Plugin& owner);
    Plugin* plugin; ///< null: gone

private:
    ~PluginObject() override;
};

class Plugin {
public:
    Plugin();
    ~Plugin();

    PluginInfo info;
    void* library = nullptr;
    Ref<PluginObject> object;
    /// Script procedures: with a user interface, and without.
    std::string create_ui, delete_ui, create_batch, delete_batch;
    std::vector<std::string> menu_items; ///< what it added and did not remove

    /// Whether an address lies in the plug-in's library.
    bool contains(const void* address) const;
};

} // namespace host::graph
