/// The four-byte number that names a node type in binary scene files. A type keeps its number for
/// good; two types with one number cannot be registered together.
#pragma once

#include <maya/MTypes.h>

class MHOST_EXPORT MTypeId {
public:
    MTypeId() : id_(0) {}
    MTypeId(unsigned int id) : id_(id) {}
    /// A number out of a registered block: 24 bits of prefix, 8 bits of number within it.
    MTypeId(unsigned int prefix, unsigned int id) : id_((prefix << 8) | (id & 0xFFu)) {}

    unsigned int id() const { return id_; }
    bool operator==(const MTypeId& other) const { return id_ == other.id_; }
    bool operator!=(const MTypeId& other) const { return id_ != other.id_; }

private:
    unsigned int id_;
};
