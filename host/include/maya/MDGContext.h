/// The context of a graph evaluation. This host supports only the normal context: the current time.
#pragma once

#include <maya/MStatus.h>

class MHOST_EXPORT MDGContext {
public:
    MDGContext();
    bool isNormal(MStatus* ReturnStatus = NULL) const;

    static const MDGContext fsNormal;
};
