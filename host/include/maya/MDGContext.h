/// In what circumstances the graph is evaluated. This host knows the normal context only: now.
#pragma once

#include <maya/MStatus.h>

class MHOST_EXPORT MDGContext {
public:
    MDGContext();
    bool isNormal(MStatus* ReturnStatus = NULL) const;

    static const MDGContext fsNormal;
};
