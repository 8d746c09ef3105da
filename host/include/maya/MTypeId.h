/// The four-byte id of a node type in binary scene files. A type keeps its id forever; ids must be
/// unique among registered types.
#pragma once

#include <maya/MTypes.h>

class MHOST_EXPORT MTypeId {
public:
    MTypeId() : id_(0) {}
    MTypeId(unsigned int id) : id_(id) {}
    /// An id from a registered block: 24 bits of prefix and 8 bits of id.
    MTypeId(unsigned int prefix, unsigned int id) : id_((prefix << 8) | (id & 0xFFu)) {}

    unsigned int id() const { return id_; }
    bool operator==(const MTypeId& other) const { return id_ == other.id_; }
    bool operator!=(const MTypeId& other) const { return id_ != other.id_; }

private:
    unsigned int id_;
};
