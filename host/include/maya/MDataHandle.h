/// A place in a node's data block. Handles must not outlive the compute that asked for them. There
/// is no conversion between types: the accessor must be that of the attribute.
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

    /// References into the block.
    bool& asBool() const;
    char& asChar() const;
    short& asShort() const;
    int& asInt() const;
    float& asFloat() const;
    double& asDouble() const;
    /// Empty when nobody set a text.
    MString& asString() const;
    /// The mesh in the block, for the mesh function set and the iterators; null while there is
    /// none. Edits through it change the block.
    MObject asMesh() const;
    MMatrix& asMatrix() const;
    /// Data that is an object: meshes, matrices, texts.
    MObject data();

    void setBool(bool value);
    void setChar(char value);
    void setShort(short value);
    void setInt(int value);
    void setFloat(float value);
    void setDouble(double value);
    void setString(const MString& value);
    /// The block gets a copy of the data.
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
    /// The value is up to date now.
    void setClean();

    /// For the host's own code.
    explicit MDataHandle(host::graph::Slot* slot);
    host::graph::Slot* host_slot() const { return slot_; }

private:
    host::graph::Slot* slot_;
};
