/// Values that travel along connections as objects: vectors of numbers, strings, matrices. Mesh
/// data is implemented in host/mesh; here it is only an object that holds a mesh.
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
    PlugValue& component(unsigned int index) { return components_[index]; }
    const PlugValue& component(unsigned int index) const { return components_[index]; }

private:
    ~NumericData() override;
    Tuple tuple_;
    PlugValue components_[4];
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

/// Creates mesh data with a copy of `mesh`, or empty mesh data if `mesh` is NULL.
MHOST_EXPORT Ref<Object> mesh_data(const Mesh* mesh);

/// Returns an independent copy, or the same object if its type cannot be copied.
Ref<Object> copy_of_data(Object& data);

} // namespace host::graph
