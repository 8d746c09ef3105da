/// Records changes of the dependency graph and applies them. `doIt` applies the changes recorded
/// since the previous call, so calls accumulate; `undoIt` reverts all applied changes; `doIt` then
/// applies all of them again. If `doIt` fails, the changes before the failing one remain applied.
/// Destroying a modifier does not undo its changes.
#pragma once

#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MTypeId.h>

#include <memory>

namespace host {
namespace graph {
class Modifier;
}
} // namespace host

class MHOST_EXPORT MDGModifier {
public:
    MDGModifier();
    virtual ~MDGModifier();

    /// Creates a node that can be used at once (plugs, values) but enters the graph with `doIt`.
    /// Fails for DAG types, which need an MDagModifier.
    MObject createNode(const MTypeId& typeId, MStatus* ReturnStatus = NULL);
    MObject createNode(const MString& type, MStatus* ReturnStatus = NULL);
    MStatus deleteNode(const MObject& node);
    MStatus renameNode(const MObject& node, const MString& newName);

    /// `dest` must not be connected when `doIt` runs.
    MStatus connect(const MPlug& source, const MPlug& dest);
    MStatus connect(const MObject& sourceNode, const MObject& sourceAttr, const MObject& destNode,
                    const MObject& destAttr);
    MStatus disconnect(const MPlug& source, const MPlug& dest);
    MStatus disconnect(const MObject& sourceNode, const MObject& sourceAttr,
                       const MObject& destNode, const MObject& destAttr);
    MStatus addAttribute(const MObject& node, const MObject& attribute);
    MStatus removeAttribute(const MObject& node, const MObject& attribute);
    MStatus newPlugValue(const MPlug& plug, MObject& value);
    MStatus newPlugValueDouble(const MPlug& plug, double value);
    MStatus newPlugValueFloat(const MPlug& plug, float value);
    MStatus newPlugValueInt(const MPlug& plug, int value);
    MStatus newPlugValueBool(const MPlug& plug, bool value);
    MStatus newPlugValueString(const MPlug& plug, const MString& value);
    MStatus commandToExecute(const MString& command);

    virtual MStatus doIt();
    virtual MStatus undoIt();

protected:
    std::shared_ptr<host::graph::Modifier> modifier_;

private:
    MDGModifier(const MDGModifier&);
    MDGModifier& operator=(const MDGModifier&);
};
