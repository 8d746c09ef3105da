/// Watches an object without trusting that it still exists. A deleted node that waits in the undo
/// queue is alive but not valid.
#pragma once

#include <maya/MObject.h>

class MHOST_EXPORT MObjectHandle {
public:
    MObjectHandle();
    MObjectHandle(const MObject& object);
    MObjectHandle(const MObjectHandle& other);
    MObjectHandle& operator=(const MObjectHandle& other);
    MObjectHandle& operator=(const MObject& object);
    ~MObjectHandle();

    /// The object, or the null object when it is not valid.
    MObject object() const;
    /// The object without any check.
    const MObject& objectRef() const;

    bool isValid() const; ///< exists and is part of the scene
    bool isAlive() const; ///< still in memory, perhaps only for undo
    /// Equal for handles on the same object; 0 for a handle on nothing.
    unsigned int hashCode() const;

    bool operator==(const MObjectHandle& other) const;
    bool operator==(const MObject& object) const;
    bool operator!=(const MObjectHandle& other) const;
    bool operator!=(const MObject& object) const;

private:
    MObject object_;
};
