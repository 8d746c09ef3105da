/// Registration and removal of callbacks.
#include "host/base/fault.h"
#include "host/graph/callbacks.h"
#include "host/ui/panels.h"

#include <maya/MCallbackIdArray.h>
#include <maya/MNodeMessage.h>
#include <maya/MUiMessage.h>

using host::pass_fault;
using host::report;
using host::graph::Callbacks;

MStatus MMessage::removeCallback(MCallbackId id) {
    const MStatus status = pass_fault("MMessage::removeCallback");
    if (!status)
        return status;
    return Callbacks::current().remove(id) ? MS::kSuccess : MS::kInvalidParameter;
}

MStatus MMessage::removeCallbacks(MCallbackIdArray& ids) {
    MStatus status;
    for (unsigned int i = 0; i < ids.length(); ++i) {
        const MStatus one = removeCallback(ids[i]);
        status = status ? one : status;
    }
    return status;
}

MStatus MMessage::nodeCallbacks(MObject& node, MCallbackIdArray& ids) {
    const host::graph::Node* const watched = host::graph::node_of(node);
    if (watched == nullptr)
        return MS::kInvalidParameter;
    ids.clear();
    for (const host::graph::CallbackId id : Callbacks::current().of_node(*watched))
        ids.append(id);
    return MS::kSuccess;
}

MCallbackId MMessage::currentCallbackId(MStatus* ReturnStatus) {
    const MCallbackId id = Callbacks::current().running();
    report(ReturnStatus, id == 0 ? MS::kFailure : MS::kSuccess);
    return id;
}

MCallbackId MNodeMessage::addNodePreRemovalCallback(MObject& node, MNodeFunction func,
                                                    void* clientData, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MNodeMessage::addNodePreRemovalCallback");
    host::graph::Node* const watched = host::graph::node_of(node);
    if (status && (watched == nullptr || func == NULL))
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return 0;
    return Callbacks::current().add_pre_removal(
        *watched,
        [func, clientData](host::graph::Node& going) {
            MObject object(&going);
            func(object, clientData);
        },
        reinterpret_cast<const void*>(func));
}

MCallbackId MUiMessage::add3dViewPostRenderMsgCallback(const MString& panelName,
                                                       MStringFunction func, void* clientData,
                                                       MStatus* ReturnStatus) {
    MStatus status = pass_fault("MUiMessage::add3dViewPostRenderMsgCallback");
    if (status && (host::find_panel(panelName) < 0 || func == NULL))
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return 0;
    return Callbacks::current().add_post_render(
        panelName.asChar(),
        [func, clientData](const std::string& panel) { func(panel.c_str(), clientData); },
        reinterpret_cast<const void*>(func));
}
