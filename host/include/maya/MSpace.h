/// The coordinate system that a method reads or writes in. Object space is the shape's own; world
/// space includes every transform above it and therefore needs a DAG path.
#pragma once

#include <maya/MTypes.h>

class MHOST_EXPORT MSpace {
public:
    enum Space {
        kInvalid = 0,
        kTransform = 1,
        kPreTransform = 2,
        kObject = 2,
        kPostTransform = 3,
        kWorld = 4,
        kLast = 5
    };
};
