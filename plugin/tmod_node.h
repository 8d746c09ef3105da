/// `tessora_node`: the modifier that unwraps the mesh on its way through the history.
///
/// Pulls of "outMesh" copy the mesh, unwrap the copy with the settings that the attributes hold,
/// publish chart count and stretch by a script command, and show the seams. After the first unwrap
/// the node works again only when "Skip_compute" was set to something other than 1.
#pragma once

#include "plugin/node_attributes.h"
#include "plugin/polyModifierNode.h"
#include "plugin/tmod_fty.h"
#include "plugin/unwrap_settings.h"
#include "plugin/viewport.h"

#include <maya/MDataBlock.h>
#include <maya/MDataHandle.h>
#include <maya/MPlug.h>
#include <maya/MTypeId.h>

#include <cstdint>

class tmod_node : public polyModifierNode {
public:
    ~tmod_node() override;

    MStatus compute(const MPlug& plug, MDataBlock& block) override;

    /// A new instance for the host to own; null when memory ran out.
    static void* creator();
    /// Declares the attributes and what they affect. The first failure ends it.
    static MStatus initialize();
    /// The host is about to delete the node: no drawing may outlive it.
    static void pre_removal(MObject& node, void* client_data);

    static MTypeId id;
    static MObject in_mesh;
    static MObject out_mesh;
    static MObject attributes[k_attribute_count];

private:
    MStatus unwrap(MObject mesh, UnwrapSettings& settings, MDataHandle& output);
    MStatus publish(const MPlug& plug, const UnwrapSettings& settings) const;
    MStatus show_seams(MDataBlock& block);

    tmod_fty fty_;
    VisualizationData visualization_data_;
    int32_t compute_count_ = 0;        ///< passes that got as far as the mesh
    bool visualization_active_ = true; ///< the state that compute last acted on
};
