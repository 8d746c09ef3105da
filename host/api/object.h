/// What an MObject refers to. Objects count their references; the last handle that goes deletes
/// the object, so a handle never dangles. Whether a node is still part of the scene is another
/// question, which `is_valid` and `is_alive` answer.
///
/// The interface classes know objects only through this header. An object says what it is by its
/// type and offers what it can do as faces: a dependency node, a DAG node, a holder of a mesh. The
/// graph derives its nodes, attributes and data from `Object` and implements the faces that apply.
#pragma once

#include <maya/MFn.h>
#include <maya/MMatrix.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

namespace host {

class Mesh;

/// Name and type name, which every node of the dependency graph has.
class NodeFace {
public:
    virtual MString name() const = 0;
    virtual MString type_name() const = 0;

protected:
    ~NodeFace() = default;
};

/// A node's place in the DAG. The world itself is no node here: top-level nodes have no parent.
/// Parent 0 is the one that "any path" goes through; an instanced node has several.
class DagFace {
public:
    virtual unsigned int parent_count() const = 0;
    virtual MObject parent(unsigned int index) const = 0;
    virtual unsigned int child_count() const = 0;
    virtual MObject child(unsigned int index) const = 0;
    /// Own matrix, without those above; the identity for a shape.
    virtual MMatrix local_matrix() const = 0;

protected:
    ~DagFace() = default;
};

/// Something that holds a polygon mesh: a shape node, or mesh data.
class MeshFace {
public:
    /// Brings the mesh up to date (a node evaluates what feeds it); called once when a function set
    /// or an iterator is attached.
    virtual MStatus refresh() = 0;
    /// The mesh as of now, NULL while there is none. Called per iterator step, so it is O(1).
    virtual const Mesh* mesh() const = 0;
    /// For changing it in place; announces the change. NULL while there is none.
    virtual Mesh* edit() = 0;
    /// Replaces the whole mesh.
    virtual MStatus set_mesh(const Mesh& mesh) = 0;

protected:
    ~MeshFace() = default;
};

class MHOST_EXPORT Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    MFn::Type type() const { return type_; }
    /// Whether a function set of this type fits. The default knows the tree of types, and that mesh
    /// data takes the mesh function set.
    virtual bool has_fn(MFn::Type type) const;

    /// Part of the scene; data always is.
    virtual bool is_valid() const { return true; }
    /// Not yet thrown away for good: in the scene, or waiting in the undo queue.
    virtual bool is_alive() const { return true; }

    /// The faces this object offers; NULL where it does not.
    virtual NodeFace* as_node() { return nullptr; }
    virtual DagFace* as_dag() { return nullptr; }
    virtual MeshFace* as_mesh() { return nullptr; }

    void retain() { references_ += 1; }
    void release() {
        references_ -= 1;
        if (references_ == 0)
            delete this;
    }

protected:
    explicit Object(MFn::Type type) : type_(type) {}
    virtual ~Object();
    /// A node whose plug-in went becomes kUnknown.
    void set_type(MFn::Type type) { type_ = type; }

private:
    MFn::Type type_;
    unsigned int references_ = 0;
};

/// The faces of what a handle refers to; NULL for the null object too.
inline NodeFace* node_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_node();
}
inline DagFace* dag_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_dag();
}
inline MeshFace* mesh_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_mesh();
}

/// The name of a type, "kMesh"; and the type right above it in the tree, kInvalid at the root.
MHOST_EXPORT const char* type_text(MFn::Type type);
MHOST_EXPORT MFn::Type type_above(MFn::Type type);

} // namespace host
