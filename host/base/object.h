/// The object behind an MObject. Objects are reference counted and deleted with their last handle,
/// so handles never dangle. Whether a node is still in the scene is a separate matter: see
/// `is_valid` and `is_alive`.
///
/// The public classes access objects only through this header. An object has a type and provides
/// interfaces (faces): dependency node, DAG node, mesh holder. The graph derives nodes, attributes
/// and data from `Object` and implements the applicable faces.
#pragma once

#include <maya/MFn.h>
#include <maya/MMatrix.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

namespace host {

class Mesh;

/// Name and type name of a dependency node.
class NodeFace {
public:
    virtual MString name() const = 0;
    virtual MString type_name() const = 0;

protected:
    ~NodeFace() = default;
};

/// Position of a node in the DAG. The world is not represented: top-level nodes have no parent.
/// Parent 0 defines the default path; an instanced node has several parents.
class DagFace {
public:
    virtual unsigned int parent_count() const = 0;
    virtual MObject parent(unsigned int index) const = 0;
    virtual unsigned int child_count() const = 0;
    virtual MObject child(unsigned int index) const = 0;
    /// The node's own matrix, without those of its ancestors; the identity for shapes.
    virtual MMatrix local_matrix() const = 0;

protected:
    ~DagFace() = default;
};

/// An object with a polygon mesh: a shape node or mesh data.
class MeshFace {
public:
    /// Updates the mesh by evaluating the node; called once when a function set or iterator is
    /// attached.
    virtual MStatus refresh() = 0;
    /// The current mesh, NULL if there is none. O(1), because iterators call it for every element.
    virtual const Mesh* mesh() const = 0;
    /// The mesh for in-place changes, NULL if there is none. Marks dependent plugs dirty.
    virtual Mesh* edit() = 0;
    /// Replaces the mesh.
    virtual MStatus set_mesh(const Mesh& mesh) = 0;

protected:
    ~MeshFace() = default;
};

class MHOST_EXPORT Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    MFn::Type type() const { return type_; }
    /// Whether a function set of this type can be attached. By default this follows from the type
    /// hierarchy; mesh data also accepts the mesh function set.
    virtual bool has_fn(MFn::Type type) const;

    /// Whether the object is in the scene; always true for data.
    virtual bool is_valid() const { return true; }
    /// Whether the object is in the scene or may return to it by undo.
    virtual bool is_alive() const { return true; }

    /// The interfaces of this object; NULL if it does not provide one.
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
    /// Used when a node's plug-in is unloaded: the type becomes kUnknown.
    void set_type(MFn::Type type) { type_ = type; }

private:
    MFn::Type type_;
    unsigned int references_ = 0;
};

/// The interfaces of the object behind a handle; NULL also for the null object.
inline NodeFace* node_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_node();
}
inline DagFace* dag_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_dag();
}
inline MeshFace* mesh_face(const MObject& object) {
    return object.host_object() == nullptr ? nullptr : object.host_object()->as_mesh();
}

/// The name of a type, such as "kMesh", and its parent in the type hierarchy, kInvalid at the root.
MHOST_EXPORT const char* type_text(MFn::Type type);
MHOST_EXPORT MFn::Type type_above(MFn::Type type);

} // namespace host
