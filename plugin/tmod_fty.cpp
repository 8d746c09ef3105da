#include "plugin/tmod_fty.h"

tmod_fty::~tmod_fty() = default;

MStatus tmod_fty::doIt() { return MS::kSuccess; }
