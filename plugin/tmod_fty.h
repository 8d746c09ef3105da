/// Factory of the unwrap. The node and the command each own one; neither uses it, because both call
/// the unwrap driver directly.
#pragma once

#include "plugin/polyModifier.h"

#include <maya/MObject.h>

class tmod_fty : public polyModifierFty {
public:
    MStatus doIt() override { return MS::kSuccess; }

private:
    MObject mesh_;
};
