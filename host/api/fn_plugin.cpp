/// MFnPlugin. Registrations are stored with the plug-in, so that unloading can remove them.
#define MNoVersionString
#define MNoPluginEntry

#include "host/base/fault.h"
#include "host/graph/command_registry.h"
#include "host/graph/plugin_object.h"
#include "host/graph/registration.h"
#include "host/ui/menus.h"

#include <maya/MFnPlugin.h>

#include <algorithm>
#include <filesystem>

using host::pass_fault;
using host::report;
using host::graph::Commands;
using host::graph::Plugin;
using host::graph::PluginObject;
using host::graph::Scene;

namespace {

Plugin* plugin_of(const MObject& object) {
    return object.hasFn(MFn::kPlugin) ? static_cast<PluginObject*>(object.host_object())->plugin
                                      : nullptr;
}

/// Passes the fault point and checks that the function set is attached to a loaded plug-in.
Plugin* enter(const char* point, const MObject& object, MStatus& status) {
    status = pass_fault(point);
    Plugin* const plugin = status ? plugin_of(object) : nullptr;
    if (status && plugin == nullptr)
        status = MS::kFailure;
    return plugin;
}

void forget(std::vector<std::string>& list, const std::string& name) {
    list.erase(std::remove(list.begin(), list.end(), name), list.end());
}

MString read(const MObject& object, std::string host::graph::PluginInfo::*member, MStatus* out) {
    const Plugin* const plugin = plugin_of(object);
    report(out, plugin == nullptr ? MS::kFailure : MS::kSuccess);
    return plugin == nullptr ? MString() : MString((plugin->info.*member).c_str());
}

} // namespace

MFnPlugin::MFnPlugin(MObject& object, const char* vendor, const char* version, const char*,
                     MStatus* ReturnStatus) {
    const MStatus status = attach(object, "MFnPlugin::MFnPlugin");
    Plugin* const plugin = plugin_of(object_);
    // Keeps the vendor and version given at load: uninitializePlugin attaches with default values.
    if (status && plugin != nullptr && !plugin->info.loaded) {
        plugin->info.vendor = vendor;
        plugin->info.version = version;
    }
    report(ReturnStatus, status);
}

MFnPlugin::~MFnPlugin() = default;

MFn::Type MFnPlugin::type() const { return MFn::kPlugin; }

MString MFnPlugin::vendor(MStatus* ReturnStatus) const {
    return read(object_, &host::graph::PluginInfo::vendor, ReturnStatus);
}
MString MFnPlugin::version(MStatus* ReturnStatus) const {
    return read(object_, &host::graph::PluginInfo::version, ReturnStatus);
}
MString MFnPlugin::apiVersion(MStatus* ReturnStatus) const {
    return read(object_, &host::graph::PluginInfo::api_version, ReturnStatus);
}
MString MFnPlugin::name(MStatus* ReturnStatus) const {
    return read(object_, &host::graph::PluginInfo::name, ReturnStatus);
}

MString MFnPlugin::loadPath(MStatus* ReturnStatus) const {
    MStatus status;
    const Plugin* const plugin = enter("MFnPlugin::loadPath", object_, status);
    report(ReturnStatus, status);
    if (plugin == nullptr)
        return MString();
    return std::filesystem::path(plugin->info.path).parent_path().string().c_str();
}

MStatus MFnPlugin::setName(const MString& name, bool allowRename) {
    Plugin* const plugin = plugin_of(object_);
    if (plugin == nullptr)
        return MS::kFailure;
    if (!allowRename || name.length() == 0)
        return MS::kInvalidParameter;
    plugin->info.name = name.asChar();
    return MS::kSuccess;
}

MStatus MFnPlugin::setVersion(const MString& version) {
    Plugin* const plugin = plugin_of(object_);
    if (plugin == nullptr)
        return MS::kFailure;
    plugin->info.version = version.asChar();
    return MS::kSuccess;
}

// === Commands and nodes ======================================================================

MStatus MFnPlugin::registerCommand(const MString& commandName, MCreatorFunction creatorFunction,
                                   MCreateSyntaxFunction createSyntaxFunction) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::registerCommand", object_, status);
    if (!status)
        return status;
    status = Commands::current().add(commandName.asChar(), creatorFunction, createSyntaxFunction);
    if (status)
        plugin->info.commands.push_back(commandName.asChar());
    return status;
}

MStatus MFnPlugin::deregisterCommand(const MString& commandName) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::deregisterCommand", object_, status);
    if (!status)
        return status;
    auto& own = plugin->info.commands;
    if (std::find(own.begin(), own.end(), commandName.asChar()) == own.end())
        return MS::kInvalidParameter;
    forget(own, commandName.asChar());
    return Commands::current().remove(commandName.asChar());
}

MStatus MFnPlugin::registerNode(const MString& typeName, const MTypeId& typeId,
                                MCreatorFunction creatorFunction, MInitializeFunction initFunction,
                                MPxNode::Type type, const MString* classification) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::registerNode", object_, status);
    if (!status)
        return status;
    if (type != MPxNode::kDependNode)
        return MS::kNotImplemented;
    status = host::graph::register_node_type(
        typeName.asChar(), typeId.id(), creatorFunction, initFunction, plugin->info.name,
        classification == NULL ? "" : classification->asChar());
    if (status)
        plugin->info.node_types.push_back(typeName.asChar());
    return status;
}

MStatus MFnPlugin::deregisterNode(const MTypeId& typeId) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::deregisterNode", object_, status);
    if (!status)
        return status;
    const host::graph::NodeTypeRef type = Scene::current().find_type(typeId.id());
    if (!type || type->plugin != plugin->info.name)
        return MS::kInvalidParameter;
    forget(plugin->info.node_types, type->name);
    return Scene::current().remove_type(type->name);
}

// === User interface ==========================================================================

MStatus MFnPlugin::registerUI(const MString& creationProc, const MString& deletionProc,
                              const MString& creationBatchProc, const MString& deletionBatchProc) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::registerUI", object_, status);
    if (!status)
        return status;
    plugin->create_ui = creationProc.asChar();
    plugin->delete_ui = deletionProc.asChar();
    plugin->create_batch = creationBatchProc.asChar();
    plugin->delete_batch = deletionBatchProc.asChar();
    return status;
}

MStringArray MFnPlugin::addMenuItem(const MString& menuItemName, const MString& parentName,
                                    const MString& commandName, const MString& commandParams,
                                    bool needOptionBox, const MString* optBoxFunction,
                                    MStatus* ReturnStatus) {
    MStringArray names;
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::addMenuItem", object_, status);
    if (!status) {
        report(ReturnStatus, status);
        return names;
    }
    const auto add = [&](const MString& command, bool is_option_box) {
        const std::string name = host::MenuTree::current().add(
            parentName.asChar(), menuItemName.asChar(), command.asChar(), is_option_box);
        if (name.empty())
            return false;
        plugin->menu_items.push_back(name);
        names.append(name.c_str());
        return true;
    };
    const MString command =
        commandParams.length() == 0 ? commandName : commandName + " " + commandParams;
    if (!add(command, false))
        status = MS::kInvalidParameter;
    if (status && needOptionBox) {
        // The option box can fail separately; the names of the items created before are returned
        // anyway.
        status = pass_fault("MFnPlugin::addMenuItem option box");
        if (status && (optBoxFunction == NULL || !add(*optBoxFunction, true)))
            status = MS::kInvalidParameter;
    }
    report(ReturnStatus, status);
    return names;
}

MStatus MFnPlugin::removeMenuItem(MStringArray& menuItemNames) {
    MStatus status;
    Plugin* const plugin = enter("MFnPlugin::removeMenuItem", object_, status);
    if (!status)
        return status;
    for (unsigned int i = 0; i < menuItemNames.length(); ++i) {
        forget(plugin->menu_items, menuItemNames[i].asChar());
        if (!host::MenuTree::current().remove(menuItemNames[i].asChar()))
            status = MS::kInvalidParameter;
    }
    return status;
}
