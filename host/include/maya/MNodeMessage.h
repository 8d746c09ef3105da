/// Callbacks about single nodes.
#pragma once

#include <maya/MMessage.h>

class MHOST_EXPORT MNodeMessage : public MMessage {
public:
    /// Called whenever the node is about to leave the scene, its connections still in place: on
    /// deletion, on redo of a deletion, on undo of its creation. Stays registered afterwards.
    static MCallbackId addNodePreRemovalCallback(MObject& node, MNodeFunction func,
                                                 void* clientData = NULL,
                                                 MStatus* ReturnStatus = NULL);
};
