/// Application-wide functions: script commands, selection, messages.
#pragma once

#include <maya/MDoubleArray.h>
#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MSelectionList.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>

class MHOST_EXPORT MGlobal {
public:
    enum MMayaState { kInteractive = 0, kBatch, kLibraryApp, kBaseUIMode };
    enum ListAdjustment {
        kReplaceList,
        kXORWithList,
        kAddToList,
        kRemoveFromList,
        kAddToHeadOfList
    };

    static MMayaState mayaState(MStatus* ReturnStatus = NULL);
    static int apiVersion();
    static MString mayaVersion();
    static bool isUndoing();
    static bool isRedoing();

    /// Runs script statements immediately, also during compute. The forms with a result fail if the
    /// result of the last statement cannot be converted.
    static MStatus executeCommand(const MString& command, bool displayEnabled = false,
                                  bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, int& result, bool displayEnabled = false,
                                  bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, double& result,
                                  bool displayEnabled = false, bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, MString& result,
                                  bool displayEnabled = false, bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, MIntArray& result,
                                  bool displayEnabled = false, bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, MDoubleArray& result,
                                  bool displayEnabled = false, bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, MStringArray& result,
                                  bool displayEnabled = false, bool undoEnabled = false);
    static MString executeCommandStringResult(const MString& command, bool displayEnabled = false,
                                              bool undoEnabled = false,
                                              MStatus* ReturnStatus = NULL);
    static MStatus sourceFile(const MString& fileName);

    /// Copies the active selection to `dest`.
    static MStatus getActiveSelectionList(MSelectionList& dest,
                                          bool orderedSelectionIfAvailable = false);
    static MStatus setActiveSelectionList(const MSelectionList& src,
                                          ListAdjustment listAdjustment = kReplaceList);
    static MStatus clearSelectionList();
    static MStatus selectByName(const MString& name, ListAdjustment listAdjustment = kAddToList);
    static MStatus getSelectionListByName(const MString& name, MSelectionList& list);

    /// Print a line for the user, with a prefix such as "// Warning: ".
    static void displayInfo(const MString& theMessage);
    static void displayWarning(const MString& theWarning);
    static void displayError(const MString& theError);

    /// Deletes a node immediately; a DAG node with everything below it.
    static MStatus deleteNode(MObject& object);
};
