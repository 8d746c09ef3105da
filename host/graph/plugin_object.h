/// A loaded plug-in, as MFnPlugin accesses it.
#pragma once

#include "host/base/ref.h"
#include "host/graph/plugins.h"

namespace host::graph {

/// The object passed to a plug-in's entry points. It may outlive the plug-in.
class PluginObject : public Object {
public:
    explicit PluginObject(Plugin& owner);
    Plugin* plugin; ///< NULL once the plug-in is unloaded

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
    /// Names of the script procedures to run at load and unload, with a user interface and in batch
    /// mode.
    std::string create_ui, delete_ui, create_batch, delete_batch;
    std::vector<std::string> menu_items; ///< items added and not yet removed

    /// Whether an address lies in the plug-in's library.
    bool contains(const void* address) const;
};

} // namespace host::graph
