/// An attribute of a particular node; used to set, read and connect values. Array elements have a
/// logical index (sparse, as written in scripts) and a physical index (position among the existing
/// elements). A plug without attribute is null.
#pragma once

#include <maya/MDGContext.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

class MDataHandle;
class MPlugArray;

namespace host {
namespace graph {
class Slot;
}
} // namespace host

class MHOST_EXPORT MPlug {
public:
    /// Constructs the null plug.
    MPlug();
    /// Null if the node does not have the attribute.
    MPlug(const MObject& node, const MObject& attribute);
    MPlug(const MPlug& other);
    MPlug& operator=(const MPlug& other);
    ~MPlug();

    MObject node(MStatus* ReturnStatus = NULL) const;
    MObject attribute(MStatus* ReturnStatus = NULL) const;
    /// "node.attribute[3].component".
    MString name(MStatus* ReturnStatus = NULL) const;
    /// The name without node, in short names by default; the parameters about instancing and
    /// aliases are ignored.
    MString partialName(bool includeNodeName = false, bool includeNonMandatoryIndices = false,
                        bool includeInstancedIndices = false, bool useAlias = false,
                        bool useFullAttributePath = false, bool useLongNames = false,
                        MStatus* ReturnStatus = NULL) const;

    bool isNull(MStatus* ReturnStatus = NULL) const;
    bool isArray(MStatus* ReturnStatus = NULL) const;
    bool isElement(MStatus* ReturnStatus = NULL) const;
    bool isCompound(MStatus* ReturnStatus = NULL) const;
    bool isChild(MStatus* ReturnStatus = NULL) const;
    bool isNetworked(MStatus* ReturnStatus = NULL) const;
    bool isKeyable(MStatus* ReturnStatus = NULL) const;
    bool isLocked(MStatus* ReturnStatus = NULL) const;

    /// Whether the plug is source or destination of a connection. Connections of its elements and
    /// components do not count.
    bool isConnected(MStatus* ReturnStatus = NULL) const;
    /// Lists the source that feeds this plug (`asDst`) and the destinations it feeds (`asSrc`).
    /// Returns whether the plug has any connection, whether requested or not.
    bool connectedTo(MPlugArray& array, bool asDst, bool asSrc, MStatus* ReturnStatus = NULL) const;

    /// Number of existing elements. Connected elements count only after their first evaluation.
    unsigned int numElements(MStatus* ReturnStatus = NULL) const;
    unsigned int evaluateNumElements(MStatus* ReturnStatus = NULL);
    unsigned int numConnectedElements(MStatus* ReturnStatus = NULL) const;
    /// Never creates an element; null and a failure if there is none.
    MPlug elementByPhysicalIndex(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// Creates the element if it does not exist; it then exists as long as the node.
    MPlug elementByLogicalIndex(unsigned int index, MStatus* ReturnStatus = NULL) const;
    unsigned int logicalIndex(MStatus* ReturnStatus = NULL) const;
    /// The array that this element belongs to.
    MPlug array(MStatus* ReturnStatus = NULL) const;

    unsigned int numChildren(MStatus* ReturnStatus = NULL) const;
    unsigned int numConnectedChildren(MStatus* ReturnStatus = NULL) const;
    MPlug child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    MPlug child(const MObject& attribute, MStatus* ReturnStatus = NULL) const;
    /// The compound that this component belongs to.
    MPlug parent(MStatus* ReturnStatus = NULL) const;

    /// Reading evaluates dirty plugs. Data objects are returned as independent copies.
    MStatus getValue(MObject& value) const;
    MStatus getValue(double& value) const;
    MStatus getValue(float& value) const;
    MStatus getValue(int& value) const;
    MStatus getValue(short& value) const;
    MStatus getValue(bool& value) const;
    MStatus getValue(char& value) const;
    MStatus getValue(MString& value) const;
    MObject asMObject(MStatus* ReturnStatus = NULL) const;
    double asDouble(MStatus* ReturnStatus = NULL) const;
    float asFloat(MStatus* ReturnStatus = NULL) const;
    int asInt(MStatus* ReturnStatus = NULL) const;
    short asShort(MStatus* ReturnStatus = NULL) const;
    bool asBool(MStatus* ReturnStatus = NULL) const;
    MString asString(MStatus* ReturnStatus = NULL) const;

    /// Numbers are converted to the attribute's type. Fails if the plug is locked, not writable or
    /// fed by a connection, or if the types are incompatible. Marks dependent plugs dirty.
    MStatus setValue(const MObject& value);
    MStatus setValue(double value);
    MStatus setValue(float value);
    MStatus setValue(int value);
    MStatus setValue(short value);
    MStatus setValue(bool value);
    MStatus setValue(char value);
    MStatus setValue(const MString& value);
    MStatus setValue(const char* value);
    MStatus setValue(MDataHandle& value);
    MStatus setLocked(bool locked);
    MStatus setKeyable(bool keyable);

    bool operator==(const MPlug& other) const;
    bool operator!=(const MPlug& other) const;
    bool operator==(const MObject& attribute) const;
    bool operator!=(const MObject& attribute) const;

    /// Internal.
    explicit MPlug(host::graph::Slot* slot);
    host::graph::Slot* host_slot() const { return slot_; }

private:
    host::graph::Slot* slot_; ///< NULL for the null plug
    MObject node_;
    MObject attribute_;
};
