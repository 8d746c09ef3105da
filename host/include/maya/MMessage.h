/// Callbacks: what the host calls when something happens. A registration is named by an id, which
/// is never used again; 0 names none.
#pragma once

#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

typedef unsigned long long MCallbackId;
class MCallbackIdArray;

class MHOST_EXPORT MMessage {
public:
    typedef void (*MBasicFunction)(void* clientData);
    typedef void (*MNodeFunction)(MObject& node, void* clientData);
    typedef void (*MStringFunction)(const MString& str, void* clientData);

    /// Fails for an id that names nothing (any more).
    static MStatus removeCallback(MCallbackId id);
    /// Removes all; fails when one of the ids named nothing.
    static MStatus removeCallbacks(MCallbackIdArray& ids);
    static MStatus nodeCallbacks(MObject& node, MCallbackIdArray& ids);
    /// The callback that is running; 0 and a failure outside of any.
    static MCallbackId currentCallbackId(MStatus* ReturnStatus = NULL);
};
