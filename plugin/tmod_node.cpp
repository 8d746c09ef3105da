// The node's compute: decides whether to unwrap, reads the settings, publishes the results.
#include "plugin/tmod_node.h"

#include "plugin/guarded.h"
#include "plugin/unwrapper.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MMessage.h>
#include <maya/MNodeMessage.h>
#include <maya/MSelectionList.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

/// The host's node state "has no effect": the input is passed through.
constexpr short k_state_has_no_effect = 1;

MStatus fail(const MStatus& status, const std::string& text) {
    std::cerr << text << std::endl;
    return status;
}

/// The input value of an attribute. A failure is reported here and returned in `status`.
MDataHandle read_input(MDataBlock& block, AttributeId id, MStatus& status) {
    MDataHandle handle = block.inputValue(tmod_node::attributes[id], &status);
    if (!status)
        fail(status, std::string("Retrieving settings failed (") + k_attributes[id].read_tag + ")");
    return handle;
}

/// An attribute and how its value is stored in the settings.
struct SettingRow {
    AttributeId attribute;
    void (*store)(MDataHandle& value, UnwrapSettings& settings);
};

// The order of the reads is the order of the attributes.
const SettingRow k_setting_rows[] = {
    {k_uv_set, [](MDataHandle& v, UnwrapSettings& s) { s.uv_set = v.asString(); }},
    {k_charts, [](MDataHandle& v, UnwrapSettings& s) { s.charts = v.asInt(); }},
    {k_stretch, [](MDataHandle& v, UnwrapSettings& s) { s.stretch = v.asFloat(); }},
    {k_padding, [](MDataHandle& v, UnwrapSettings& s) { s.padding = v.asInt(); }},
    {k_texture_width, [](MDataHandle& v, UnwrapSettings& s) { s.tex_width = v.asInt(); }},
    {k_texture_height, [](MDataHandle& v, UnwrapSettings& s) { s.tex_height = v.asInt(); }},
    {k_high_quality, [](MDataHandle& v, UnwrapSettings& s) { s.high_quality = v.asBool(); }},
    {k_keep_borders, [](MDataHandle& v, UnwrapSettings& s) { s.keep_seams = v.asBool(); }},
    {k_cut_grooves, [](MDataHandle& v, UnwrapSettings& s) { s.use_grooves = v.asBool(); }},
    {k_groove_angle, [](MDataHandle& v, UnwrapSettings& s) { s.groove_angle = v.asFloat(); }},
    {k_cut_ridges, [](MDataHandle& v, UnwrapSettings& s) { s.use_ridges = v.asBool(); }},
    {k_ridge_angle, [](MDataHandle& v, UnwrapSettings& s) { s.ridge_angle = v.asFloat(); }},
    {k_adjacency_method, [](MDataHandle& v, UnwrapSettings& s) { s.adjacency_method = v.asInt(); }},
    {k_epsilon, [](MDataHandle& v, UnwrapSettings& s) { s.epsilon = v.asFloat(); }},
};

MStatus read_settings(MDataBlock& block, UnwrapSettings& settings) {
    settings.reserved_scale = 1.0;
    settings.skip_false_edges = 0;
    for (const SettingRow& row : k_setting_rows) {
        MStatus status;
        MDataHandle value = read_input(block, row.attribute, status);
        if (!status)
            return status;
        row.store(value, settings);
    }
    return MS::kSuccess;
}

} // namespace

tmod_node::~tmod_node() {
    detach_viewport_callbacks(visualization_data_);
    // The host may destroy the instance and keep its node, when the plug-in is unloaded by force: a
    // callback left on the node would then call unloaded code.
    for (unsigned int i = 0; i < removal_ids_.length(); ++i)
        MMessage::removeCallback(removal_ids_[i]);
}

void tmod_node::pre_removal(MObject&, void* client_data) {
    detach_viewport_callbacks(*static_cast<VisualizationData*>(client_data));
}

MStatus tmod_node::compute(const MPlug& plug, MDataBlock& block) {
    return guarded([&] { return evaluate(plug, block); });
}

MStatus tmod_node::evaluate(const MPlug& plug, MDataBlock& block) {
    if (compute_count_ == 0)
        watch_removal();

    MStatus status;
    MDataHandle switched = read_input(block, k_visualization, status);
    if (!status)
        return status;
    const bool visualization = switched.asBool();
    if (visualization != visualization_active_) {
        // Deliberate: a pass that finds the switch changed only attaches or detaches the overlay.
        // The output stays dirty, so the next pull unwraps.
        switch_visualization(visualization);
        return MS::kSuccess;
    }

    MDataHandle input = block.inputValue(in_mesh, &status);
    if (!status)
        return fail(status, "ERROR getting inMesh");
    MDataHandle output = block.outputValue(out_mesh, &status);
    if (!status)
        return fail(status, "ERROR getting outMesh");

    ++compute_count_;
    if (compute_count_ > 1) {
        MDataHandle skip = read_input(block, k_skip_compute, status);
        if (!status)
            return status;
        if (skip.asInt() == 1)
            return MS::kSuccess; // deliberate: the output keeps its value and stays dirty
        skip.setInt(1);
    }

    status = output.set(input.asMesh());
    if (!status) {
        --compute_count_; // without a copy of the input the next evaluation must not skip
        return fail(status, "ERROR setting outMesh");
    }
    return process(plug, block, output);
}

void tmod_node::watch_removal() {
    MStatus status;
    MObject self = thisMObject();
    visualization_data_.node = this;
    const MCallbackId id =
        MNodeMessage::addNodePreRemovalCallback(self, pre_removal, &visualization_data_, &status);
    if (status)
        keep_callback(removal_ids_, id);
    else
        MGlobal::displayWarning("Could not attach pre_removal_callback for tmod_node.");
}

void tmod_node::switch_visualization(bool on) {
    visualization_active_ = on;
    if (on)
        attach_viewport_callbacks(visualization_data_);
    else
        detach_viewport_callbacks(visualization_data_);
}

/// Unwraps the copy of the input that `output` holds, unless the node's state says "has no effect".
MStatus tmod_node::process(const MPlug& plug, MDataBlock& block, MDataHandle& output) {
    MStatus status;
    MDataHandle node_state = block.outputValue(state, &status);
    if (!status)
        return fail(status, "ERROR getting state");
    if (node_state.asShort() == k_state_has_no_effect) {
        detach_viewport_callbacks(visualization_data_);
        return MS::kSuccess;
    }

    UnwrapSettings settings;
    status = read_settings(block, settings);
    if (!status)
        return status;
    status = unwrap(output.asMesh(), settings, output);
    if (!status)
        return status;
    guarded([&] { return publish(plug, settings); });
    return show_seams(block);
}

MStatus tmod_node::unwrap(MObject mesh, UnwrapSettings& settings, MDataHandle& output) {
    Unwrapper unwrapper(&settings);
    begin_progress();
    const MStatus status =
        unwrapper.unwrap(mesh, &visualization_data_.existing_seams, &visualization_data_.new_seams);
    end_progress();
    output.setClean();
    return status;
}

MStatus tmod_node::publish(const MPlug& plug, const UnwrapSettings& settings) const {
    MObject node = plug.node();
    const MString name = MFnDependencyNode(node).name();
    const char* const form = "setAttr \"%s.Charts_result\" %d; setAttr \"%s.Stretch_result\" %f;";
    const int size = std::snprintf(nullptr, 0, form, name.asChar(), settings.charts_result,
                                   name.asChar(), settings.stretch_result);
    if (size < 0)
        return MS::kFailure;
    std::string command(static_cast<size_t>(size) + 1, '\0');
    std::snprintf(&command[0], command.size(), form, name.asChar(), settings.charts_result,
                  name.asChar(), settings.stretch_result);
    return MGlobal::executeCommand(command.c_str(), true, false);
}

MStatus tmod_node::show_seams_again() {
    const bool has_seams = visualization_data_.existing_seams.length() > 0 ||
                           visualization_data_.new_seams.length() > 0;
    if (!visualization_active_ || !has_seams)
        return MS::kSuccess;
    return attach_viewport_callbacks(visualization_data_);
}

MStatus tmod_node::show_seams(MDataBlock& block) {
    MStatus status;
    MDataHandle path = read_input(block, k_mesh_path, status);
    if (!status)
        return status;
    const MString mesh_path = path.asString();
    // A path that resolves to nothing leaves the old path, deliberately; draw_seams checks it.
    MSelectionList list;
    list.add(mesh_path);
    list.getDagPath(0, visualization_data_.mesh_path);
    status = attach_viewport_callbacks(visualization_data_);
    if (!status)
        return fail(status, "Could not attach viewport callback");
    return MS::kSuccess;
}
