/// An attribute on a particular node: the place where values are set, read and connected. Elements
/// of arrays have a logical index (as scripts write it, with gaps) and a physical one (position
/// among the elements that exist). A plug that refers to no attribute is null.
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
    /// The null plug.
    MPlug();
    /// Null when the attribute is not the node's.
    MPlug(const MObject& node, const MObject& attribute);
    MPlug(const MPlug& other);
    MPlug& operator=(const MPlug& other);
    ~MPlug();

    MObject node(MStatus* ReturnStatus = NULL) const;
    MObject attribute(MStatus* ReturnStatus = NULL) const;
    /// "node.attribute[3].component".
    MString name(MStatus* ReturnStatus = NULL) const;
    /// Without the node, in short names unless told otherwise; instancing and aliases do not apply.
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

    /// True for a source as well as for a destination. Connections of elements and components are
    /// theirs, not those of what they are a part of.
    bool isConnected(MStatus* ReturnStatus = NULL) const;
    /// Fills the list with what feeds this plug (`asDst`) and what it feeds (`asSrc`). Returns
    /// whether there is any connection at all, asked for or not.
    bool connectedTo(MPlugArray& array, bool asDst, bool asSrc, MStatus* ReturnStatus = NULL) const;

    /// Elements that exist; those that are connected but were never evaluated are not counted.
    unsigned int numElements(MStatus* ReturnStatus = NULL) const;
    unsigned int evaluateNumElements(MStatus* ReturnStatus = NULL);
    unsigned int numConnectedElements(MStatus* ReturnStatus = NULL) const;
    /// Never makes an element; the null plug and a failure when there is none.
    MPlug elementByPhysicalIndex(unsigned int index, MStatus* ReturnStatus = NULL) const;
    /// Makes the element when it is missing; it stays for as long as the node does.
    MPlug elementByLogicalIndex(unsigned int index, MStatus* ReturnStatus = NULL) const;
    unsigned int logicalIndex(MStatus* ReturnStatus = NULL) const;
    /// The array that an element belongs to.
    MPlug array(MStatus* ReturnStatus = NULL) const;

    unsigned int numChildren(MStatus* ReturnStatus = NULL) const;
    unsigned int numConnectedChildren(MStatus* ReturnStatus = NULL) const;
    MPlug child(unsigned int index, MStatus* ReturnStatus = NULL) const;
    MPlug child(const MObject& attribute, MStatus* ReturnStatus = NULL) const;
    /// The compound that a component belongs to.
    MPlug parent(MStatus* ReturnStatus = NULL) const;

    /// Reading evaluates what is out of date. Data comes as an independent copy.
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

    /// Numbers are converted to the attribute's own type. Fails on a plug that is locked, not
    /// writable or fed by a connection, and when the types do not go together. What depends on the
    /// plug is out of date afterwards.
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

    /// For the host's own code.
    explicit MPlug(host::graph::Slot* slot);
    host::graph::Slot* host_slot() const { return slot_; }

private:
    host::graph::Slot* slot_; ///< NULL: null, or an element that is not named yet
    MObject node_;
    MObject attribute_;
};
