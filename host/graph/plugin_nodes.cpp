#include "host/graph/plugin_nodes.h"

#include <maya/MPlugArray.h>
#include <maya/MPxNode.h>

namespace host::graph {

MStatus PluginNodes::create_instance(Node& node) {
    auto* instance = static_cast<MPxNode*>(node.type_->creator());
    if (instance == nullptr)
        return MS::kInsufficientMemory;
    node.user_node_ = instance;
    instance->node_ = &node;
    instance->postConstructor();
    return MS::kSuccess;
}

void PluginNodes::destroy_instance(Node& node) {
    MPxNode* const instance = node.user_node_;
    node.user_node_ = nullptr;
    if (instance == nullptr)
        return;
    instance->node_ = nullptr;
    delete instance;
}

MStatus PluginNodes::compute(Slot& slot) {
    const Ref<Node> node(&slot.node());
    MDataBlock block{MObject(node.get())};
    return node->user_node()->compute(MPlug(&slot), block);
}

void PluginNodes::report_dirty(Slot& slot, const std::function<void(Slot&)>& stale) {
    MPxNode* const instance = slot.node().user_node();
    if (instance == nullptr)
        return;
    MPlugArray more;
    instance->setDependentsDirty(MPlug(&slot), more);
    for (unsigned int i = 0; i < more.length(); ++i)
        if (more[i].host_slot() != nullptr && &more[i].host_slot()->node() == &slot.node())
            stale(*more[i].host_slot());
}

void PluginNodes::connection_made(Slot& source, Slot& destination) {
    if (MPxNode* instance = source.node().user_node())
        instance->connectionMade(MPlug(&source), MPlug(&destination), true);
    if (MPxNode* instance = destination.node().user_node())
        instance->connectionMade(MPlug(&destination), MPlug(&source), false);
}

void PluginNodes::connection_broken(Slot& source, Slot& destination) {
    if (MPxNode* instance = source.node().user_node())
        instance->connectionBroken(MPlug(&source), MPlug(&destination), true);
    if (MPxNode* instance = destination.node().user_node())
        instance->connectionBroken(MPlug(&destination), MPlug(&source), false);
}

} // namespace host::graph
