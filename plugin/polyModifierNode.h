/// Base of a node that the poly-modifier command inserts into a mesh's history.
///
/// The concrete node declares the attributes "inMesh" and "outMesh": the command finds the place to
/// connect by these names.
#pragma once

#include <maya/MPxNode.h>

class polyModifierNode : public MPxNode {
public:
    ~polyModifierNode() override;
};
