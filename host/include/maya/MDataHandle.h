/// A handle to an attribute's value in a data block; valid only during the compute that requested
/// it. Accessors do not convert: use the one for the attribute's type.
#pragma once

#include <maya/MFnData.h>
#include <maya/MFnNumericData.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

namespace host {
namespace graph {
class Slot;
}
} // namespace host

class MFloatVector;
class MMatrix;
class MVector;

class MHOST_EXPORT MDataHandle {
public:
    MDataHandle();
    MDataHandle(const MDataHandle& other);
    MDataHandle& operator=(const MDataHandle& other);
    ~MDataHandle();

    bool isNumeric() const;
    bool isGeneric() const;
    MFnData::Type type() const;
    MFnNumericData::Type numericType() const;
    MObject attribute();

    /// References to the stored value.
    bool& asBool() const;
    char& asChar() const;
    short& asShort() const;
    int& asInt() const;
    float& asFloat() const;
    double& asDouble() const;
    /// Empty if no string was set.
    MString& asString() const;
    /// The stored mesh, for MFnMesh and the mesh iterators; null if there is none. Changing it
    /// changes the data block.
    MObject asMesh() const;
    MMatrix& asMatrix() const;
    /// Data objects: meshes, matrices, strings.
    MObject data();

    void setBool(bool value);
    void setChar(char value);
    void setShort(short value);
    void setInt(int value);
    void setFloat(float value);
    void setDouble(double value);
    void setString(const MString& value);
    /// Stores a copy of the data object.
    MStatus setMObject(const MObject& value);
    void set3Float(float x, float y, float z);
    void set3Double(double x, double y, double z);
    void set(bool value);
    void set(char value);
    void set(short value);
    void set(int value);
    void set(float value);
    void set(double value);
    void set(const MString& value);
    MStatus set(const MObject& value);
    void set(const MMatrix& value);
    void set(const MVector& value);
    void set(const MFloatVector& value);
    void set(float x, float y, float z);

    MStatus copy(const MDataHandle& source);
    MDataHandle child(const MObject& attribute) const;
    /// Marks the value as up to date.
    void setClean();

    /// Internal.
    explicit MDataHandle(host::graph::Slot* slot);
    host::graph::Slot* host_slot() const { return slot_; }

private:
    host::graph::Slot* slot_;
};
