/// Registration of a plug-in's commands, nodes and menu items, called from its two entry points.
/// Include this header in exactly one source file of a plug-in: it defines the symbol that holds
/// the interface version the plug-in was built with. Other files must define MNoVersionString
/// before including it.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MPxNode.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>
#include <maya/MSyntax.h>
#include <maya/MTypeId.h>

#ifndef MNoVersionString
#define MHOST_TEXT_OF(number) #number
#define MHOST_VERSION_TEXT(number) MHOST_TEXT_OF(number)
PLUGIN_EXPORT char MApiVersion[] = MHOST_VERSION_TEXT(MAYA_API_VERSION);
#endif

#ifndef MNoPluginEntry
/// Called after loading and before unloading.
PLUGIN_EXPORT MStatus initializePlugin(MObject object);
PLUGIN_EXPORT MStatus uninitializePlugin(MObject object);
#endif

typedef void* (*MCreatorFunction)();
typedef MSyntax (*MCreateSyntaxFunction)();
typedef MStatus (*MInitializeFunction)();

class MHOST_EXPORT MFnPlugin : public MFnBase {
public:
    MFnPlugin(MObject& object, const char* vendor = "Unknown", const char* version = "Unknown",
              const char* requiredApiVersion = "Any", MStatus* ReturnStatus = NULL);
    ~MFnPlugin() override;

    MFn::Type type() const override;

    MString vendor(MStatus* ReturnStatus = NULL) const;
    MString version(MStatus* ReturnStatus = NULL) const;
    MString apiVersion(MStatus* ReturnStatus = NULL) const;
    MString name(MStatus* ReturnStatus = NULL) const;
    /// The directory of the plug-in's library.
    MString loadPath(MStatus* ReturnStatus = NULL) const;
    MStatus setName(const MString& name, bool allowRename = true);
    MStatus setVersion(const MString& version);

    /// Fails if the name is taken. Unloading the plug-in removes the command.
    MStatus registerCommand(const MString& commandName, MCreatorFunction creatorFunction,
                            MCreateSyntaxFunction createSyntaxFunction = NULL);
    MStatus deregisterCommand(const MString& commandName);
    /// Fails if the name or id is taken, or with the status of the initializer.
    MStatus registerNode(const MString& typeName, const MTypeId& typeId,
                         MCreatorFunction creatorFunction, MInitializeFunction initFunction,
                         MPxNode::Type type = MPxNode::kDependNode,
                         const MString* classification = NULL);
    /// Existing nodes become unknown nodes: they keep their values and compute nothing.
    MStatus deregisterNode(const MTypeId& typeId);

    /// Names of script procedures to run after loading and before unloading; the second pair is
    /// used in batch mode. Empty: no procedure.
    MStatus registerUI(const MString& creationProc, const MString& deletionProc,
                       const MString& creationBatchProc = "",
                       const MString& deletionBatchProc = "");
    /// Adds an item to a menu, optionally with an option box. Returns the names of the items
    /// created, even if a later step failed.
    MStringArray addMenuItem(const MString& menuItemName, const MString& parentName,
                             const MString& commandName, const MString& commandParams,
                             bool needOptionBox = false, const MString* optBoxFunction = NULL,
                             MStatus* ReturnStatus = NULL);
    MStatus removeMenuItem(MStringArray& menuItemNames);
};
