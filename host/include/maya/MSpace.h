/// Coordinate spaces. Object space is local to the shape; world space includes the transforms above
/// it and therefore requires a DAG path.
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
