/// Tells whether an object still exists. A deleted node that is held by the undo queue is alive but
/// not valid.
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

    /// The object; the null object if it is not valid.
    MObject object() const;
    /// The object, unchecked.
    const MObject& objectRef() const;

    bool isValid() const; ///< exists in the scene
    bool isAlive() const; ///< still in memory, possibly only for undo
    /// Equal for handles to the same object; 0 for the null object.
    unsigned int hashCode() const;

    bool operator==(const MObjectHandle& other) const;
    bool operator==(const MObject& object) const;
    bool operator!=(const MObjectHandle& other) const;
    bool operator!=(const MObject& object) const;

private:
    MObject object_;
};
