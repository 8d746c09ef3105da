// The entry points that the host calls to load and unload the plug-in.
#include "plugin/guarded.h"
#include "plugin/kit.h"
#include "plugin/seam_locator.h"
#include "plugin/tmod_cmd.h"
#include "plugin/tmod_node.h"

// This header defines the version symbol, so exactly one source includes it.
#include <maya/MFnPlugin.h>
#include <maya/MGlobal.h>
#include <maya/MStringArray.h>
#if KIT_HAS_MODERN_DRAWING
#include <maya/MDrawRegistry.h>
#endif

namespace {

MStringArray menuItems; ///< returned by addMenuItem, to be removed at unload
MString pluginPath;     ///< where the host found the library

MStatus fail(const MStatus& status, const char* tag) {
    status.perror(tag);
    return status;
}

/// The application creates the entries of a menu when it is first opened, and only if the menu is
/// empty then: an item added before would keep them away.
void fill_modify_menu() {
    if (MGlobal::mayaState() == MGlobal::kInteractive)
        MGlobal::executeCommand("if (`menu -exists mainModifyMenu`) "
                                "eval(`menu -query -postMenuCommand mainModifyMenu`)",
                                false, false);
}

#if KIT_HAS_MODERN_DRAWING
bool hasSeamLocator; ///< whether the locator and its drawing are registered

MStatus register_seam_locator(MFnPlugin& plugin) {
    const MString classification(SeamLocator::classification);
    MStatus status =
        plugin.registerNode(SeamLocator::type_name, SeamLocator::id, SeamLocator::creator,
                            SeamLocator::initialize, MPxNode::kLocatorNode, &classification);
    if (!status)
        return status;
    status = MHWRender::MDrawRegistry::registerDrawOverrideCreator(
        classification, SeamLocator::registrant, SeamDrawing::creator);
    if (!status)
        plugin.deregisterNode(SeamLocator::id);
    return status;
}

/// Unwrapping does not need the locator: without it the plug-in is loaded nevertheless.
void offer_seam_locator(MFnPlugin& plugin) {
    const MStatus status = guarded([&] { return register_seam_locator(plugin); });
    hasSeamLocator = status;
    if (!status)
        MGlobal::displayWarning(MString("Seams cannot be shown in the modern viewport: ") +
                                status.errorString());
}

MStatus withdraw_seam_locator(MFnPlugin& plugin) {
    if (!hasSeamLocator)
        return MS::kSuccess;
    MHWRender::MDrawRegistry::deregisterDrawOverrideCreator(SeamLocator::classification,
                                                            SeamLocator::registrant);
    return plugin.deregisterNode(SeamLocator::id);
}
#else
void offer_seam_locator(MFnPlugin&) {}
MStatus withdraw_seam_locator(MFnPlugin&) { return MS::kSuccess; }
#endif

/// Registers command, node, UI hooks and menu item, in this order. Stops at the first failure and
/// leaves what was registered before it; a host that fails to load a plug-in cleans up itself.
MStatus register_all(MObject& object) {
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
    fill_modify_menu();
    menuItems = plugin.addMenuItem("Tessora", "mainModifyMenu", "tessoraMenuItemClicked", "", false,
                                   nullptr, &status);
    if (!status) {
        status.perror("addMenuItem");
        if (menuItems.length() > 0)
            plugin.removeMenuItem(menuItems);
        return status;
    }
    offer_seam_locator(plugin);
    pluginPath = plugin.loadPath();
    return MS::kSuccess;
}

MStatus deregister_all(MObject& object) {
    MFnPlugin plugin(object);
    MStatus status = withdraw_seam_locator(plugin);
    if (!status)
        return fail(status, "failed to deregister \"tessora_seams\"\n");
    status = plugin.deregisterCommand("tessora");
    if (!status)
        return fail(status, "deregisterCommand");
    status = plugin.deregisterNode(tmod_node::id);
    if (!status)
        return fail(status, "failed to deregister \"tessora_node\"\n");
    if (menuItems.length() > 0)
        plugin.removeMenuItem(menuItems);
    return MS::kSuccess;
}

} // namespace

PLUGIN_EXPORT MStatus initializePlugin(MObject object) {
    return guarded([&] { return register_all(object); });
}

PLUGIN_EXPORT MStatus uninitializePlugin(MObject object) {
    return guarded([&] { return deregister_all(object); });
}
