/// Base of the function sets. A function set is attached to an object and operates on it; its
/// methods fail if it is not attached or if the object has an incompatible type.
#pragma once

#include <maya/MObject.h>
#include <maya/MStatus.h>

class MHOST_EXPORT MFnBase {
public:
    MFnBase();
    virtual ~MFnBase();

    /// The object type that this function set operates on.
    virtual MFn::Type type() const;
    /// Whether this function set could be attached to the object.
    bool hasObj(const MObject& object) const;
    bool hasObj(MFn::Type type) const;

    MObject object(MStatus* ReturnStatus = NULL) const;
    /// Attaches to an object; on failure the function set is detached.
    virtual MStatus setObject(MObject& object);
    MStatus setObject(const MObject& object);

protected:
    MFnBase(const MFnBase& other);
    MFnBase& operator=(const MFnBase& other);
    /// Additional checks of derived function sets; kSuccess if `object` is acceptable.
    virtual MStatus accepts(const MObject& object) const;
    MStatus attach(const MObject& object, const char* point);

    MObject object_;
};
