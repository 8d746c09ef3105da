/// Factory of the unwrap. The node and the command each own one; neither asks it to do anything,
/// because both call the unwrap driver themselves.
#pragma once

#include "plugin/polyModifierFty.h"

#include <maya/MObject.h>

class tmod_fty : public polyModifierFty {
public:
    ~tmod_fty() override;
    MStatus doIt() override;

private:
    MObject mesh_;
};
