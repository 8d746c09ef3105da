/// Arrays of the graph's classes: plugs and callback ids.
#include "host/api/array_body.h"

#include <maya/MCallbackIdArray.h>
#include <maya/MPlugArray.h>

MHOST_DEFINE_ARRAY(MCallbackIdArray, MCallbackId, MCallbackId)
MHOST_DEFINE_ARRAY(MPlugArray, MPlug, const MPlug&)
