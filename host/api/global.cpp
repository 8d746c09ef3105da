/// MGlobal.
#include "host/base/fault.h"
#include "host/graph/edits.h"
#include "host/graph/plugins.h"
#include "host/graph/script_host.h"
#include "host/graph/selection.h"
#include "host/graph/undo.h"

#include <maya/MGlobal.h>

#include <algorithm>

using host::pass_fault;
using host::report;
using host::graph::CommandResult;
using host::graph::Scene;
using host::graph::Selection;
using host::graph::SelectionItem;
using host::graph::Severity;

MGlobal::MMayaState MGlobal::mayaState(MStatus* ReturnStatus) {
    report(ReturnStatus, MS::kSuccess);
    return host::graph::Plugins::current().mode == host::graph::AppMode::interactive ? kInteractive
                                                                                     : kBatch;
}

int MGlobal::apiVersion() { return MAYA_API_VERSION; }
MString MGlobal::mayaVersion() { return "2008"; }
bool MGlobal::isUndoing() { return host::graph::UndoQueue::current().is_undoing(); }
bool MGlobal::isRedoing() { return host::graph::UndoQueue::current().is_redoing(); }

// === Script commands =========================================================================

namespace {

MStatus execute(const MString& command, bool display, bool undoable, CommandResult& result) {
    const MStatus status = pass_fault("MGlobal::executeCommand");
    if (!status)
        return status;
    host::graph::ScriptHost* const script = host::graph::script_host();
    if (script == nullptr)
        return MS::kNotImplemented;
    return script->execute(command.asChar(), display, undoable, result);
}

template <class T>
MStatus execute_for(const MString& command, T& value, bool display, bool undoable) {
    CommandResult result;
    const MStatus status = execute(command, display, undoable, result);
    if (!status)
        return status;
    return result.to(value) ? MS::kSuccess : MS::kFailure;
}

} // namespace

MStatus MGlobal::executeCommand(const MString& command, bool displayEnabled, bool undoEnabled) {
    CommandResult ignored;
    return execute(command, displayEnabled, undoEnabled, ignored);
}

MStatus MGlobal::executeCommand(const MString& command, int& result, bool displayEnabled,
                                bool undoEnabled) {
    return execute_for(command, result, displayEnabled, undoEnabled);
}

MStatus MGlobal::executeCommand(const MString& command, double& result, bool displayEnabled,
                                bool undoEnabled) {
    return execute_for(command, result, displayEnabled, undoEnabled);
}

MStatus MGlobal::executeCommand(const MString& command, MString& result, bool displayEnabled,
                                bool undoEnabled) {
    std::string text;
    const MStatus status = execute_for(command, text, displayEnabled, undoEnabled);
    if (status)
        result = text.c_str();
    return status;
}

MStatus MGlobal::executeCommand(const MString& command, MIntArray& result, bool displayEnabled,
                                bool undoEnabled) {
    CommandResult value;
    const MStatus status = execute(command, displayEnabled, undoEnabled, value);
    if (!status)
        return status;
    if (value.kind != CommandResult::Kind::integer)
        return MS::kFailure;
    result.clear();
    for (const int one : value.integers)
        result.append(one);
    return status;
}

MStatus MGlobal::executeCommand(const MString& command, MDoubleArray& result, bool displayEnabled,
                                bool undoEnabled) {
    CommandResult value;
    const MStatus status = execute(command, displayEnabled, undoEnabled, value);
    if (!status)
        return status;
    if (value.kind != CommandResult::Kind::integer && value.kind != CommandResult::Kind::real)
        return MS::kFailure;
    result.clear();
    for (const int one : value.integers)
        result.append(one);
    for (const double one : value.reals)
        result.append(one);
    return status;
}

MStatus MGlobal::executeCommand(const MString& command, MStringArray& result, bool displayEnabled,
                                bool undoEnabled) {
    CommandResult value;
    const MStatus status = execute(command, displayEnabled, undoEnabled, value);
    if (!status)
        return status;
    if (value.kind == CommandResult::Kind::none)
        return MS::kFailure;
    result.clear();
    for (const std::string& one : value.to_texts())
        result.append(one.c_str());
    return status;
}

MString MGlobal::executeCommandStringResult(const MString& command, bool displayEnabled,
                                            bool undoEnabled, MStatus* ReturnStatus) {
    MString result;
    report(ReturnStatus, executeCommand(command, result, displayEnabled, undoEnabled));
    return result;
}

MStatus MGlobal::sourceFile(const MString& fileName) {
    const MStatus status = pass_fault("MGlobal::sourceFile");
    if (!status)
        return status;
    host::graph::ScriptHost* const script = host::graph::script_host();
    return script == nullptr ? MStatus(MS::kNotImplemented) : script->source(fileName.asChar());
}

// === Selection ===============================================================================

namespace {

void take_out(Selection& from, const SelectionItem& item) {
    from.erase(std::remove_if(from.begin(), from.end(),
                              [&](const SelectionItem& held) { return held.same_thing(item); }),
               from.end());
}

bool holds(const Selection& selection, const SelectionItem& item) {
    return std::any_of(selection.begin(), selection.end(),
                       [&](const SelectionItem& held) { return held.same_thing(item); });
}

Selection adjusted(const Selection& now, const Selection& wanted,
                   MGlobal::ListAdjustment adjustment) {
    if (adjustment == MGlobal::kReplaceList)
        return wanted;
    Selection result = now;
    if (adjustment == MGlobal::kAddToHeadOfList) {
        for (const SelectionItem& item : wanted)
            take_out(result, item);
        result.insert(result.begin(), wanted.begin(), wanted.end());
        return result;
    }
    for (const SelectionItem& item : wanted) {
        const bool was_there = holds(result, item);
        if (adjustment == MGlobal::kRemoveFromList || adjustment == MGlobal::kXORWithList)
            take_out(result, item);
        if (!was_there && adjustment != MGlobal::kRemoveFromList)
            result.push_back(item);
    }
    return result;
}

} // namespace

MStatus MGlobal::getActiveSelectionList(MSelectionList& dest, bool) {
    const MStatus status = pass_fault("MGlobal::getActiveSelectionList");
    if (status)
        dest.host_items().list = Scene::current().selection();
    return status;
}

MStatus MGlobal::setActiveSelectionList(const MSelectionList& src, ListAdjustment listAdjustment) {
    const MStatus status = pass_fault("MGlobal::setActiveSelectionList");
    if (!status)
        return status;
    Scene& scene = Scene::current();
    return scene.perform_api_call(host::graph::select_edit(
        adjusted(scene.selection(), src.host_items().list, listAdjustment)));
}

MStatus MGlobal::clearSelectionList() { return setActiveSelectionList(MSelectionList()); }

MStatus MGlobal::selectByName(const MString& name, ListAdjustment listAdjustment) {
    MSelectionList list;
    const MStatus status = list.add(name);
    return status ? setActiveSelectionList(list, listAdjustment) : status;
}

MStatus MGlobal::getSelectionListByName(const MString& name, MSelectionList& list) {
    return list.add(name);
}

// === Messages, deletion ======================================================================

void MGlobal::displayInfo(const MString& theMessage) {
    host::graph::show_line(Severity::info, theMessage.asChar());
}
void MGlobal::displayWarning(const MString& theWarning) {
    host::graph::show_line(Severity::warning, theWarning.asChar());
}
void MGlobal::displayError(const MString& theError) {
    host::graph::show_line(Severity::error, theError.asChar());
}

MStatus MGlobal::deleteNode(MObject& object) {
    const MStatus status = pass_fault("MGlobal::deleteNode");
    if (!status)
        return status;
    host::graph::Node* const node = host::graph::node_of(object);
    if (node == nullptr)
        return MS::kInvalidParameter;
    return Scene::current().perform_api_call(host::graph::remove_node_edit(*node));
}
