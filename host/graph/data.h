/// Data that travels through connections as an object: vectors of numbers, texts, matrices. Mesh
/// data is made by the mesh part of the host and known here only as an object that holds a mesh.
#pragma once

#include "host/graph/attribute.h"

#include <maya/MMatrix.h>
#include <maya/MObject.h>

namespace host::graph {

class MHOST_EXPORT NumericData : public Object {
public:
    explicit NumericData(Tuple tuple);
    Tuple tuple() const { return tuple_; }
    unsigned int size() const { return tuple_size(tuple_); }
    Value& component(unsigned int index) { return components_[index]; }
    const Value& component(unsigned int index) const { return components_[index]; }

private:
    ~NumericData() override;
    Tuple tuple_;
    Value components_[4];
};

class MHOST_EXPORT StringData : public Object {
public:
    explicit StringData(const MString& text);
    MString text;

private:
    ~StringData() override;
};

class MHOST_EXPORT MatrixData : public Object {
public:
    explicit MatrixData(const MMatrix& matrix);
    MMatrix matrix;

private:
    ~MatrixData() override;
};

/// New mesh data that holds a copy of a mesh (NULL: none yet).
MHOST_EXPORT Ref<Object> mesh_data(const Mesh* mesh);

/// An independent copy; data that cannot be copied comes back itself.
Ref<Object> copy_of_data(Object& data);

} // namespace host::graph
