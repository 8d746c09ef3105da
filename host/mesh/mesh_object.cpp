#include "host/mesh/mesh_object.h"

#include <optional>
#include <vector>

namespace host {

namespace {

/// The mesh interface of mesh data and standalone shapes.
class HeldMesh : public MeshFace {
public:
    MStatus refresh() override { return MS::kSuccess; }
    const Mesh* mesh() const override { return mesh_ ? &*mesh_ : nullptr; }
    Mesh* edit() override { return mesh_ ? &*mesh_ : nullptr; }
    MStatus set_mesh(const Mesh& mesh) override {
        mesh_ = mesh;
        return MS::kSuccess;
    }

private:
    std::optional<Mesh> mesh_;
};

class MeshData final : public Object {
public:
    MeshData() : Object(MFn::kMeshData) {}
    MeshFace* as_mesh() override { return &held_; }

private:
    HeldMesh held_;
};

/// A node outside of any scene. A parent owns its children; children refer back to their parent
/// while it exists.
class PlainNode : public Object, public NodeFace, public DagFace {
public:
    PlainNode(MFn::Type type, const MString& name, const MMatrix& matrix)
        : Object(type), name_(name), matrix_(matrix) {}
    ~PlainNode() override {
        for (const MObject& child : children_)
            static_cast<PlainNode*>(child.host_object())->parent_ = nullptr;
    }

    void add_child(PlainNode& child) {
        child.parent_ = this;
        children_.push_back(MObject(&child));
    }

    NodeFace* as_node() override { return this; }
    DagFace* as_dag() override { return this; }
    MString name() const override { return name_; }
    MString type_name() const override { return type() == MFn::kMesh ? "mesh" : "transform"; }
    unsigned int parent_count() const override { return parent_ == nullptr ? 0 : 1; }
    MObject parent(unsigned int) const override { return MObject(parent_); }
    unsigned int child_count() const override {
        return static_cast<unsigned int>(children_.size());
    }
    MObject child(unsigned int index) const override { return children_[index]; }
    MMatrix local_matrix() const override { return matrix_; }

private:
    MString name_;
    MMatrix matrix_;
    PlainNode* parent_ = nullptr;
    std::vector<MObject> children_;
};

class PlainMeshNode final : public PlainNode {
public:
    explicit PlainMeshNode(const MString& name) : PlainNode(MFn::kMesh, name, MMatrix()) {}
    MeshFace* as_mesh() override { return &held_; }

private:
    HeldMesh held_;
};

} // namespace

MObject make_empty_mesh_data() { return MObject(new MeshData); }

MObject make_mesh_data(const Mesh& mesh) {
    const MObject data = make_empty_mesh_data();
    mesh_face(data)->set_mesh(mesh);
    return data;
}

const Mesh* mesh_of(const MObject& object) {
    MeshFace* const face = mesh_face(object);
    return face == nullptr || face->refresh().error() ? nullptr : face->mesh();
}

MDagPath make_mesh_node(const MString& name, const Mesh& mesh, const MMatrix& matrix) {
    auto* const transform = new PlainNode(MFn::kTransform, name, matrix);
    const MObject holder(transform); // deletes both nodes if a step below throws
    auto* const shape = new PlainMeshNode(name + "Shape");
    transform->add_child(*shape);
    shape->as_mesh()->set_mesh(mesh);
    MDagPath path;
    MDagPath::getAPathTo(MObject(shape), path);
    return path;
}

} // namespace host
