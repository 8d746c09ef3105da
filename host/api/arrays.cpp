#include "host/api/array_body.h"

#include <maya/MDoubleArray.h>
#include <maya/MFloatArray.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MIntArray.h>
#include <maya/MPointArray.h>
#include <maya/MStringArray.h>
#include <maya/MUintArray.h>

MHOST_DEFINE_ARRAY(MDoubleArray, double, double)
MHOST_DEFINE_ARRAY(MFloatArray, float, float)
MHOST_DEFINE_ARRAY(MFloatVectorArray, MFloatVector, const MFloatVector&)
MHOST_DEFINE_ARRAY(MIntArray, int, int)
MHOST_DEFINE_ARRAY(MPointArray, MPoint, const MPoint&)
MHOST_DEFINE_ARRAY(MStringArray, MString, const MString&)
MHOST_DEFINE_ARRAY(MUintArray, unsigned int, unsigned int)

MStatus MPointArray::append(double x, double y, double z, double w) {
    return append(MPoint(x, y, z, w));
}
