/// Callbacks on panels.
#pragma once

#include <maya/MMessage.h>

class MHOST_EXPORT MUiMessage : public MMessage {
public:
    /// Registers a callback for the end of each redraw of a panel; its argument is the panel's
    /// name. Fails if there is no such panel.
    static MCallbackId add3dViewPostRenderMsgCallback(const MString& panelName,
                                                      MStringFunction func, void* clientData = NULL,
                                                      MStatus* ReturnStatus = NULL);
};
