/// Base of the function sets. A function set is attached to an object and works on it; its methods
/// fail when nothing is attached or when the object is of another kind.
#pragma once

#include <maya/MObject.h>
#include <maya/MStatus.h>

class MHOST_EXPORT MFnBase {
public:
    MFnBase();
    virtual ~MFnBase();

    /// The kind of objects this function set works on.
    virtual MFn::Type type() const;
    /// Whether this function set could be attached to the object.
    bool hasObj(const MObject& object) const;
    bool hasObj(MFn::Type type) const;

    MObject object(MStatus* ReturnStatus = NULL) const;
    /// Attaches; on failure nothing is attached.
    virtual MStatus setObject(MObject& object);
    MStatus setObject(const MObject& object);

protected:
    MFnBase(const MFnBase& other);
    MFnBase& operator=(const MFnBase& other);
    /// What a function set demands beyond the type; kSuccess when the object will do.
    virtual MStatus accepts(const MObject& object) const;
    MStatus attach(const MObject& object, const char* point);

    MObject object_;
};
