/// `tessora_node`: the modifier that unwraps the mesh on its way through the history.
///
/// Evaluating "outMesh" copies the input mesh, unwraps the copy with the settings in the
/// attributes, publishes chart count and stretch by a script command, and shows the seams. After
/// the first unwrap the node unwraps again only after "Skip_compute" was set to a value other
/// than 1.
#pragma once

#include "plugin/kit.h"
#include "plugin/node_attributes.h"
#include "plugin/polyModifier.h"
#include "plugin/tmod_fty.h"
#include "plugin/unwrap_settings.h"
#include "plugin/viewport.h"

#include <maya/MCallbackIdArray.h>
#include <maya/MDataBlock.h>
#include <maya/MDataHandle.h>
#include <maya/MPlug.h>
#include <maya/MTypeId.h>

#include <cstdint>

class tmod_node : public polyModifierNode {
public:
    ~tmod_node() override;

    MStatus compute(const MPlug& plug, MDataBlock& block) override;
#if KIT_HAS_SCHEDULING
    /// Untrusted: compute runs a script command and changes callbacks, so it must not run in
    /// parallel with anything.
    SchedulingType schedulingType() const override { return kUntrusted; }
#endif

    /// A new instance, owned by the host; null if memory runs out.
    static void* creator();
    /// Declares the attributes and their dependencies. Stops at the first failure.
    static MStatus initialize();
    /// The host calls this before it deletes the node; detaches the node's overlay.
    static void pre_removal(MObject& node, void* client_data);

    /// Draws the seams of the last unwrap again, after the node's removal detached the overlay and
    /// redo brought the node back. The next evaluation need not compute.
    MStatus show_seams_again();

    static MTypeId id;
    static MObject in_mesh;
    static MObject out_mesh;
    static MObject attributes[k_attribute_count];

private:
    static MStatus declare_attributes();
    MStatus evaluate(const MPlug& plug, MDataBlock& block);
    void watch_removal();
    void switch_visualization(bool on);
    MStatus process(const MPlug& plug, MDataBlock& block, MDataHandle& output);
    MStatus unwrap(MObject mesh, UnwrapSettings& settings, MDataHandle& output);
    MStatus publish(const MPlug& plug, const UnwrapSettings& settings) const;
    MStatus show_seams(MDataBlock& block);

    tmod_fty fty_;
    MCallbackIdArray removal_ids_; ///< pre-removal callbacks of this node
    VisualizationData visualization_data_;
    int32_t compute_count_ = 0;        ///< evaluations that got past the visualization switch
    bool visualization_active_ = true; ///< value of "Visualization" at the last evaluation
};
