/// Callbacks about panels.
#pragma once

#include <maya/MMessage.h>

class MHOST_EXPORT MUiMessage : public MMessage {
public:
    /// Called each time the panel was drawn, with its name. Fails for a panel that does not exist.
    static MCallbackId add3dViewPostRenderMsgCallback(const MString& panelName,
                                                      MStringFunction func, void* clientData = NULL,
                                                      MStatus* ReturnStatus = NULL);
};
