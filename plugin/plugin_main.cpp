// The entry points that the host calls to load and unload the plug-in.
#include "plugin/tmod_cmd.h"
#include "plugin/tmod_node.h"

// This header defines the version symbol, so exactly one source includes it.
#include <maya/MFnPlugin.h>
#include <maya/MStringArray.h>

#ifndef PLUGIN_EXPORT
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif

namespace {

MStringArray menuItems; ///< returned by addMenuItem, to be removed at unload
MString pluginPath;     ///< where the host found the library

MStatus fail(const MStatus& status, const char* tag) {
    status.perror(tag);
    return status;
}

} // namespace

/// Registers command, node, UI hooks and menu item, in this order. Stops at the first failure and
/// leaves what was registered before it; a host that fails to load a plug-in cleans up itself.
PLUGIN_EXPORT MStatus initializePlugin(MObject object) {
    MFnPlugin plugin(object, "Brightfold Labs", "2.11", "Any");
    MStatus status = plugin.registerCommand("tessora", tmod_cmd::creator, tmod_cmd::create_syntax);
    if (!status)
        return fail(status, "registerCommand");
    status = plugin.registerNode("tessora_node", tmod_node::id, tmod_node::creator,
                                 tmod_node::initialize, MPxNode::kDependNode);
    if (!status)
        return fail(status, "Failed to register \"tessora_node\"\n");
    status = plugin.registerUI("tessoraCreateUI", "tessoraDeleteUI", "", "");
    if (!status)
        return fail(status, "registerUI");
    menuItems = plugin.addMenuItem("Tessora", "mainModifyMenu", "tessoraMenuItemClicked", "", false,
                                   nullptr, &status);
    if (!status) {
        status.perror("addMenuItem");
        if (menuItems.length() > 0)
            plugin.removeMenuItem(menuItems);
        return status;
    }
    pluginPath = plugin.loadPath();
    return MS::kSuccess;
}

PLUGIN_EXPORT MStatus uninitializePlugin(MObject object) {
    MFnPlugin plugin(object);
    MStatus status = plugin.deregisterCommand("tessora");
    if (!status)
        return fail(status, "deregisterCommand");
    status = plugin.deregisterNode(tmod_node::id);
    if (!status)
        return fail(status, "failed to deregister \"tessora_node\"\n");
    if (menuItems.length() > 0)
        plugin.removeMenuItem(menuItems);
    return MS::kSuccess;
}
