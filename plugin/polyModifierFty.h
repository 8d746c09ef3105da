/// Base of a factory: an object that performs a modification outside the dependency graph.
///
/// A modification that is needed in two places (the modifier node's compute and the command's
/// direct path) can be written once as a factory and owned by both.
#pragma once

#include <maya/MStatus.h>

class polyModifierFty {
public:
    polyModifierFty() = default;
    polyModifierFty(const polyModifierFty&) = delete;
    polyModifierFty& operator=(const polyModifierFty&) = delete;
    virtual ~polyModifierFty();

    virtual MStatus doIt() = 0;
};
