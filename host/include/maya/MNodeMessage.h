/// Callbacks on individual nodes.
#pragma once

#include <maya/MMessage.h>

class MHOST_EXPORT MNodeMessage : public MMessage {
public:
    /// Registers a callback for the deletion of a node, also by redo, called while its connections
    /// still exist. It stays registered after the call. Undoing the node's creation may or may not
    /// call it.
    static MCallbackId addNodePreRemovalCallback(MObject& node, MNodeFunction func,
                                                 void* clientData = NULL,
                                                 MStatus* ReturnStatus = NULL);
};
