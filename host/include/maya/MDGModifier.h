/// Records changes of the dependency graph and carries them out. `doIt` does what was recorded
/// since the last time, so rounds of recording and doing add up; `undoIt` takes all of it back; a
/// `doIt` after that does everything again. A failing `doIt` leaves done what was done before the
/// failure. A modifier that is destroyed neither undoes nor does anything.
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

    /// A node that is usable at once (its plugs, its values) and joins the graph with `doIt`. DAG
    /// types fail: they need an MDagModifier.
    MObject createNode(const MTypeId& typeId, MStatus* ReturnStatus = NULL);
    MObject createNode(const MString& type, MStatus* ReturnStatus = NULL);
    MStatus deleteNode(const MObject& node);
    MStatus renameNode(const MObject& node, const MString& newName);

    /// The destination must be free by the time this is done.
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
