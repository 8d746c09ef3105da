#include "plugin/polyModifierFty.h"

polyModifierFty::~polyModifierFty() = default;
