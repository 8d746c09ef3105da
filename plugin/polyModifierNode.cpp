#include "plugin/polyModifierNode.h"

polyModifierNode::~polyModifierNode() = default;
