/// A handle to an internal object: a node, an attribute or data. Handles are cheap to copy and
/// compare equal if they refer to the same object. A handle keeps data alive; it does not keep a
/// node in the scene (see MObjectHandle).
#pragma once

#include <maya/MFn.h>

namespace host {
class Object;
}

class MHOST_EXPORT MObject {
public:
    /// Constructs the null object.
    MObject();
    MObject(const MObject& other);
    MObject(MObject&& other) noexcept;
    MObject& operator=(const MObject& other);
    MObject& operator=(MObject&& other) noexcept;
    ~MObject();

    bool isNull() const;
    /// Whether a function set of this type can be attached; false for the null object.
    bool hasFn(MFn::Type type) const;
    MFn::Type apiType() const; ///< the most derived type; kInvalid for the null object
    const char* apiTypeStr() const;

    bool operator==(const MObject& other) const;
    bool operator!=(const MObject& other) const;

    static MObject kNullObj;

    /// Internal.
    explicit MObject(host::Object* object);
    host::Object* host_object() const { return object_; }

private:
    host::Object* object_;
};
