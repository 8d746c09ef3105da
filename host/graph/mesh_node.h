/// The mesh shape node: outMesh is inMesh with the vertex offsets of pnts (the tweaks) added.
///
/// A shape without construction history stores its geometry in inMesh. A shape whose history is
/// disconnected keeps the last mesh that came through the connection. Writing outMesh writes inMesh
/// unless inMesh is connected. Editing the mesh in place also edits inMesh; tweaks are added on
/// top.
#pragma once

#include "host/graph/dag.h"

namespace host::graph {

struct MeshAttributes {
    Ref<Attribute> in_mesh;
    Ref<Attribute> out_mesh;
    Ref<Attribute> world_mesh;
    Ref<Attribute> tweaks; ///< "pnts"
};
MHOST_EXPORT const MeshAttributes& mesh_attributes();

class MHOST_EXPORT MeshNode : public DagNode, public MeshFace {
public:
    explicit MeshNode(const NodeTypeRef& type);

    MeshFace* as_mesh() override { return this; }
    MStatus refresh() override;
    const Mesh* mesh() const override;
    Mesh* edit() override;
    MStatus set_mesh(const Mesh& mesh) override;

    bool has_tweaks() const;
    /// Computes outMesh or worldMesh.
    MStatus compute_output(Slot& output);

private:
    ~MeshNode() override;
    void combine() const;
    /// inMesh was edited in place since outMesh was last computed.
    mutable bool edited_ = false;
};

/// Returns a mesh with `offsets` added to its points: element i of the float3 array is added to
/// point i. Elements beyond the last point are ignored.
Ref<Object> tweaked(const Mesh& mesh, const Slot& offsets);

} // namespace host::graph
