/// A handle on something inside the host: a node, an attribute, a piece of data. Cheap to copy; two
/// handles are equal when they name the same thing. A handle on data keeps the data; a handle on a
/// node does not keep the node in the scene, and MObjectHandle tells whether it is still there.
#pragma once

#include <maya/MFn.h>

namespace host {
class Object;
}

class MHOST_EXPORT MObject {
public:
    /// The null object.
    MObject();
    MObject(const MObject& other);
    MObject(MObject&& other) noexcept;
    MObject& operator=(const MObject& other);
    MObject& operator=(MObject&& other) noexcept;
    ~MObject();

    bool isNull() const;
    /// True when a function set of this type could be attached; false for the null object.
    bool hasFn(MFn::Type type) const;
    MFn::Type apiType() const; ///< the most exact type; kInvalid for the null object
    const char* apiTypeStr() const;

    bool operator==(const MObject& other) const;
    bool operator!=(const MObject& other) const;

    static MObject kNullObj;

    /// For the host's own code: what the handle refers to, and a handle on it.
    explicit MObject(host::Object* object);
    host::Object* host_object() const { return object_; }

private:
    host::Object* object_;
};
