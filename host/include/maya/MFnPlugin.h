/// What a plug-in tells the host about itself, from its two entry points. Include this header in
/// exactly one source of a plug-in: it emits the symbol that says which interface the plug-in was
/// built with. Others define MNoVersionString first.
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
/// Called after loading and before unloading. A failure makes the host give the plug-in up.
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
    /// The directory that the library was loaded from.
    MString loadPath(MStatus* ReturnStatus = NULL) const;
    MStatus setName(const MString& name, bool allowRename = true);
    MStatus setVersion(const MString& version);

    /// Fails when the name is taken. The command goes with the plug-in.
    MStatus registerCommand(const MString& commandName, MCreatorFunction creatorFunction,
                            MCreateSyntaxFunction createSyntaxFunction = NULL);
    MStatus deregisterCommand(const MString& commandName);
    /// Fails when name or id are taken, or with the status of the initializer.
    MStatus registerNode(const MString& typeName, const MTypeId& typeId,
                         MCreatorFunction creatorFunction, MInitializeFunction initFunction,
                         MPxNode::Type type = MPxNode::kDependNode,
                         const MString* classification = NULL);
    /// Nodes that exist become unknown ones: they keep their values and compute nothing.
    MStatus deregisterNode(const MTypeId& typeId);

    /// Script procedures to be run after loading and before unloading; the second pair is used when
    /// there is no user interface. Empty: none.
    MStatus registerUI(const MString& creationProc, const MString& deletionProc,
                       const MString& creationBatchProc = "",
                       const MString& deletionBatchProc = "");
    /// Adds an item to a menu, and an option box to the item when asked for. Gives the names of
    /// what was made, also when a later part failed.
    MStringArray addMenuItem(const MString& menuItemName, const MString& parentName,
                             const MString& commandName, const MString& commandParams,
                             bool needOptionBox = false, const MString* optBoxFunction = NULL,
                             MStatus* ReturnStatus = NULL);
    MStatus removeMenuItem(MStringArray& menuItemNames);
};
