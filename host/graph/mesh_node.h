/// The mesh shape: what arrives at inMesh (or was left there), with the tweaks of pnts on top, is
/// what outMesh gives.
///
/// A shape without history keeps its geometry in inMesh, and so does one that lost its history: the
/// last value that came through the connection stays. Writing outMesh writes inMesh, unless a
/// connection feeds it. Edits in place change inMesh as well; tweaks stay on top of them.
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
    /// outMesh and worldMesh.
    MStatus compute_output(Slot& output);

private:
    ~MeshNode() override;
    void combine() const;
    /// inMesh was edited in place and outMesh is behind it.
    mutable bool edited_ = false;
};

/// A mesh with offsets added to points: entry i of an array of float3 is the offset of point i.
/// Offsets of points that do not exist are ignored.
Ref<Object> tweaked(const Mesh& mesh, const Slot& offsets);

} // namespace host::graph
