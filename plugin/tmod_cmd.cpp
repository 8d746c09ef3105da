#include "plugin/tmod_cmd.h"

#include "plugin/command_flags.h"
#include "plugin/guarded.h"
#include "plugin/node_attributes.h"
#include "plugin/tmod_node.h"
#include "plugin/unwrapper.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MItSelectionList.h>
#include <maya/MSelectionList.h>

#include <iostream>

namespace {

/// The values that the command writes into a new node.
struct NodeValues {
    const UnwrapSettings& settings;
    const MString& mesh_path;
};

using Write = MStatus (*)(MPlug& plug, const NodeValues& values);

/// One entry per attribute, in the order of AttributeId.
const Write k_writes[k_attribute_count] = {
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.uv_set); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.charts); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.stretch); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.padding); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.tex_width); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.tex_height); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.high_quality); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.keep_seams); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.use_grooves); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.groove_angle); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.use_ridges); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.ridge_angle); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.adjacency_method); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.settings.epsilon); },
    // Skip_compute: 1 skips every unwrap but the first.
    [](MPlug& p, const NodeValues&) { return p.setValue(1); },
    [](MPlug& p, const NodeValues&) { return p.setValue(0.0); },
    [](MPlug& p, const NodeValues&) { return p.setValue(0); },
    [](MPlug& p, const NodeValues& v) { return p.setValue(v.mesh_path); },
    [](MPlug& p, const NodeValues&) { return p.setValue(true); },
};

} // namespace

tmod_cmd::~tmod_cmd() = default;

void* tmod_cmd::creator() {
    tmod_cmd* command = nullptr;
    guarded([&] {
        command = new tmod_cmd;
        return MStatus(MS::kSuccess);
    });
    return command;
}

MSyntax tmod_cmd::create_syntax() {
    MSyntax syntax;
    guarded([&] {
        for (const FlagRow& flag : k_flags)
            syntax.addFlag(flag.short_name, flag.long_name, flag.type);
        return MStatus(MS::kSuccess);
    });
    return syntax;
}

bool tmod_cmd::isUndoable() const { return true; }

void tmod_cmd::reset_settings() {
    for (const FlagRow& flag : k_flags)
        flag.reset(settings_);
    settings_.reserved_scale = 1.0;
    settings_.skip_false_edges = 0;
    settings_.reserved_flag = true;
}

bool tmod_cmd::parse_flags(const MArgList& arguments) {
    MStatus status;
    const MArgDatabase database(syntax(), arguments, &status);
    if (!status)
        return false;
    for (const int index : k_parse_order) {
        const FlagRow& flag = k_flags[index];
        if (database.isFlagSet(flag.short_name))
            flag.read(database, flag.short_name, settings_);
    }
    return true;
}

MStatus tmod_cmd::doIt(const MArgList& arguments) {
    return guarded([&] { return unwrap_selected(arguments); });
}

MStatus tmod_cmd::unwrap_selected(const MArgList& arguments) {
    reset_settings();
    if (!parse_flags(arguments))
        return MS::kFailure;

    MSelectionList selection;
    MGlobal::getActiveSelectionList(selection);
    MItSelectionList item(selection);
    item.setFilter(MFn::kMesh);
    if (item.isDone())
        return MS::kSuccess;

    MDagPath mesh;
    item.getDagPath(mesh);
    mesh.extendToShape();
    setMeshNode(mesh);
    setModifierNodeType(tmod_node::id);
    return doModifyPoly();
}

MStatus tmod_cmd::redoIt() {
    const MStatus status = guarded([&] { return redoModifyPoly(); });
    if (status)
        guarded([&] { return show_seams_again(); });
    const MStatus reported = guarded([&] {
        clearResult();
        appendToResult(static_cast<bool>(status));
        return MStatus(MS::kSuccess);
    });
    return status ? reported : status;
}

MStatus tmod_cmd::undoIt() {
    const MStatus status = guarded([&] { return undoModifyPoly(); });
    const MStatus reported = guarded([&] {
        setResult(status ? "tmod undo succeeded!" : "tmod undo failed!");
        return MStatus(MS::kSuccess);
    });
    return status ? reported : status;
}

/// On the history path: the node comes back with its results, but without its overlay.
MStatus tmod_cmd::show_seams_again() {
    if (modifier_node_.isNull())
        return MS::kSuccess;
    MFnDependencyNode node_fn(modifier_node_);
    auto* node = static_cast<tmod_node*>(node_fn.userNode());
    return node != nullptr ? node->show_seams_again() : MStatus(MS::kSuccess);
}

MStatus tmod_cmd::initModifierNode(MObject modifierNode) {
    modifier_node_ = modifierNode;
    MFnDependencyNode node_fn(modifierNode);
    MString mesh_path;
    for (int i = 0; i < k_attribute_count; ++i) {
        if (i == k_mesh_path) {
            MStatus status;
            mesh_path = getMeshNode().fullPathName(&status);
            if (!status) {
                std::cerr << "Failed to retrieve mesh_path" << std::endl;
                return status;
            }
        }
        MPlug plug(modifierNode, node_fn.attribute(k_attributes[i].long_name));
        const MStatus status = k_writes[i](plug, NodeValues{settings_, mesh_path});
        if (!status) {
            std::cerr << "Failed to connect node attribute: " << k_attributes[i].write_tag
                      << std::endl;
            return status;
        }
    }
    return MS::kSuccess;
}

MStatus tmod_cmd::directModifier(MObject mesh) {
    Unwrapper unwrapper(&settings_);
    begin_progress();
    const MStatus status = unwrapper.unwrap(mesh, nullptr, nullptr);
    end_progress();
    return status;
}
