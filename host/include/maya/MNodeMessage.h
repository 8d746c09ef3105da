/// Callbacks on individual nodes.
#pragma once

#include <maya/MMessage.h>

class MHOST_EXPORT MNodeMessage : public MMessage {
public:
    /// Registers a callback for the removal of a node from the scene, called while its connections
    /// still exist: on deletion, redo of a deletion and undo of a creation. Stays registered after
    /// the call.
    static MCallbackId addNodePreRemovalCallback(MObject& node, MNodeFunction func,
                                                 void* clientData = NULL,
                                                 MStatus* ReturnStatus = NULL);
};
