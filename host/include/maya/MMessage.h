/// Base of the callback registrations. Registrations have unique ids, which are never reused; 0 is
/// not a valid id.
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

    /// Fails if no callback has this id.
    static MStatus removeCallback(MCallbackId id);
    /// Removes all callbacks of `ids`; fails if one of the ids was invalid.
    static MStatus removeCallbacks(MCallbackIdArray& ids);
    static MStatus nodeCallbacks(MObject& node, MCallbackIdArray& ids);
    /// The id of the callback being called; 0 and a failure outside of callbacks.
    static MCallbackId currentCallbackId(MStatus* ReturnStatus = NULL);
};
