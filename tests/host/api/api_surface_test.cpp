/// Compile-time checks of the public interface against its published form, call by call: the class
/// reference pages of 2008 to 2013 for the mesh function set, the mesh iterators, the progress
/// window and the 3D view, and the 2008 reference for value types. A plug-in that compiles with
/// these headers must compile with those of the real application.
#include <maya/M3dView.h>
#include <maya/MDagPath.h>
#include <maya/MDoubleArray.h>
#include <maya/MFloatArray.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MFnMesh.h>
#include <maya/MFnMeshData.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>
#include <maya/MObjectHandle.h>
#include <maya/MPointArray.h>
#include <maya/MProgressWindow.h>
#include <maya/MStringArray.h>
#include <maya/MTypeId.h>
#include <maya/MUintArray.h>

#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

template <class T>
T& lvalue();
template <class T>
const T& constant();

/// The call compiles and has exactly this type.
#define EXPECT_CALL_TYPE(TYPE, ...)                                                                \
    static_assert(std::is_same<decltype(__VA_ARGS__), TYPE>::value, #__VA_ARGS__)

MStatus* const st = NULL;

// === Value types =================================================================================

EXPECT_CALL_TYPE(MStatus::MStatusCode, constant<MStatus>().statusCode());
EXPECT_CALL_TYPE(bool, constant<MStatus>().error());
EXPECT_CALL_TYPE(bool, constant<MStatus>() == MS::kSuccess);
EXPECT_CALL_TYPE(MString, constant<MStatus>().errorString());
EXPECT_CALL_TYPE(void, constant<MStatus>().perror("text"));
EXPECT_CALL_TYPE(void, constant<MStatus>().perror(constant<MString>()));
static_assert(std::is_same<MS, MStatus>::value, "MS is short for MStatus");
static_assert(MStatus::kSuccess == 0, "success is zero");

EXPECT_CALL_TYPE(const char*, constant<MString>().asChar());
EXPECT_CALL_TYPE(unsigned int, constant<MString>().length());
EXPECT_CALL_TYPE(bool, constant<MString>() == constant<MString>());
EXPECT_CALL_TYPE(bool, constant<MString>() == "text");
EXPECT_CALL_TYPE(MString, constant<MString>() + "text");
EXPECT_CALL_TYPE(MString, "text" + constant<MString>());
EXPECT_CALL_TYPE(MString&, lvalue<MString>() += "text");

template <class A, class T>
constexpr bool has_array_calls() {
    EXPECT_CALL_TYPE(unsigned int, constant<A>().length());
    EXPECT_CALL_TYPE(T&, lvalue<A>()[0u]);
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().append(constant<T>()));
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().insert(constant<T>(), 0u));
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().set(constant<T>(), 0u));
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().remove(0u));
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().clear());
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().setLength(0u));
    EXPECT_CALL_TYPE(MStatus, lvalue<A>().copy(constant<A>()));
    EXPECT_CALL_TYPE(MStatus, constant<A>().get(lvalue<T*>()));
    EXPECT_CALL_TYPE(unsigned int, constant<A>().sizeIncrement());
    EXPECT_CALL_TYPE(A&, lvalue<A>() = constant<A>());
    return std::is_copy_constructible<A>::value && std::is_default_constructible<A>::value &&
           std::is_constructible<A, unsigned int, T>::value;
}
static_assert(has_array_calls<MIntArray, int>(), "MIntArray");
static_assert(has_array_calls<MUintArray, unsigned int>(), "MUintArray");
static_assert(has_array_calls<MFloatArray, float>(), "MFloatArray");
static_assert(has_array_calls<MDoubleArray, double>(), "MDoubleArray");
static_assert(has_array_calls<MStringArray, MString>(), "MStringArray");
static_assert(has_array_calls<MPointArray, MPoint>(), "MPointArray");
static_assert(has_array_calls<MFloatVectorArray, MFloatVector>(), "MFloatVectorArray");

EXPECT_CALL_TYPE(MVector, constant<MPoint>() - constant<MPoint>());
EXPECT_CALL_TYPE(MPoint, constant<MPoint>() + constant<MVector>());
EXPECT_CALL_TYPE(MPoint, constant<MPoint>() * constant<MMatrix>());
EXPECT_CALL_TYPE(double, constant<MPoint>().distanceTo(constant<MPoint>()));
EXPECT_CALL_TYPE(MVector, constant<MVector>() ^ constant<MVector>());
EXPECT_CALL_TYPE(double, constant<MVector>() * constant<MVector>());
EXPECT_CALL_TYPE(double, constant<MVector>().length());
EXPECT_CALL_TYPE(MVector, constant<MVector>().normal());
EXPECT_CALL_TYPE(MStatus, lvalue<MVector>().normalize());
EXPECT_CALL_TYPE(double, constant<MVector>().angle(constant<MVector>()));
EXPECT_CALL_TYPE(double*, lvalue<MMatrix>()[0u]);
EXPECT_CALL_TYPE(MStatus, constant<MMatrix>().get(lvalue<double[4][4]>()));
EXPECT_CALL_TYPE(MStatus, constant<MMatrix>().get(lvalue<float[4][4]>()));
EXPECT_CALL_TYPE(MMatrix, constant<MMatrix>().inverse());
EXPECT_CALL_TYPE(const MMatrix, MMatrix::identity);

EXPECT_CALL_TYPE(unsigned int, constant<MTypeId>().id());
static_assert(std::is_constructible<MTypeId, unsigned int, unsigned int>::value, "two numbers");
static_assert(MSpace::kTransform == 1 && MSpace::kObject == 2 && MSpace::kPostTransform == 3 &&
                  MSpace::kWorld == 4,
              "published numbers of the spaces");

EXPECT_CALL_TYPE(bool, constant<MObject>().isNull());
EXPECT_CALL_TYPE(bool, constant<MObject>().hasFn(MFn::kMesh));
EXPECT_CALL_TYPE(MFn::Type, constant<MObject>().apiType());
EXPECT_CALL_TYPE(const char*, constant<MObject>().apiTypeStr());
EXPECT_CALL_TYPE(bool, constant<MObjectHandle>().isValid());
EXPECT_CALL_TYPE(bool, constant<MObjectHandle>().isAlive());
EXPECT_CALL_TYPE(MObject, constant<MObjectHandle>().object());
EXPECT_CALL_TYPE(const MObject&, constant<MObjectHandle>().objectRef());

EXPECT_CALL_TYPE(bool, constant<MDagPath>().isValid(st));
EXPECT_CALL_TYPE(MObject, constant<MDagPath>().node(st));
EXPECT_CALL_TYPE(MObject, constant<MDagPath>().transform(st));
EXPECT_CALL_TYPE(MStatus, lvalue<MDagPath>().extendToShape());
EXPECT_CALL_TYPE(MString, constant<MDagPath>().fullPathName(st));
EXPECT_CALL_TYPE(MMatrix, constant<MDagPath>().inclusiveMatrix(st));

// === Meshes ======================================================================================

static_assert(std::is_base_of<MFnDagNode, MFnMesh>::value, "a mesh is a DAG node");
static_assert(std::is_constructible<MFnMesh, const MDagPath&, MStatus*>::value, "from a path");
static_assert(std::is_constructible<MFnMesh, MObject&, MStatus*>::value, "from an object");
static_assert(std::is_constructible<MFnMesh, const MObject&, MStatus*>::value, "from a constant");
EXPECT_CALL_TYPE(MStatus, constant<MFnMesh>().getPoints(lvalue<MPointArray>()));
EXPECT_CALL_TYPE(MStatus, constant<MFnMesh>().getPoints(lvalue<MPointArray>(), MSpace::kWorld));
EXPECT_CALL_TYPE(int, constant<MFnMesh>().numVertices(st));
EXPECT_CALL_TYPE(int, constant<MFnMesh>().numPolygons(st));
EXPECT_CALL_TYPE(int, constant<MFnMesh>().numUVs(constant<MString>(), st));
EXPECT_CALL_TYPE(MString, constant<MFnMesh>().currentUVSetName(st));
EXPECT_CALL_TYPE(MString, constant<MFnMesh>().currentUVSetName(st, -1));
EXPECT_CALL_TYPE(MStatus, constant<MFnMesh>().getUVSetNames(lvalue<MStringArray>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MFnMesh>().createUVSetDataMesh(lvalue<MString>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MFnMesh>().clearUVs(lvalue<const MString*>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MFnMesh>().setUVs(constant<MFloatArray>(), constant<MFloatArray>(),
                                                   lvalue<const MString*>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MFnMesh>().assignUV(0, 0, 0, lvalue<const MString*>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MFnMesh>().assignUVs(constant<MIntArray>(), constant<MIntArray>(),
                                                      lvalue<const MString*>()));
EXPECT_CALL_TYPE(MObject, lvalue<MFnMesh>().copy(constant<MObject>(), lvalue<MObject>(), st));
EXPECT_CALL_TYPE(MObject, lvalue<MFnMeshData>().create(st));

static_assert(std::is_constructible<MItMeshPolygon, const MObject&, MStatus*>::value, "object");
static_assert(std::is_constructible<MItMeshPolygon, const MDagPath&, MObject&, MStatus*>::value,
              "path");
EXPECT_CALL_TYPE(bool, lvalue<MItMeshPolygon>().isDone(st));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshPolygon>().next());
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshPolygon>().reset());
EXPECT_CALL_TYPE(unsigned int, lvalue<MItMeshPolygon>().count(st));
EXPECT_CALL_TYPE(unsigned int, lvalue<MItMeshPolygon>().index(st));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshPolygon>().setIndex(0, lvalue<int>()));
EXPECT_CALL_TYPE(MStatus, constant<MItMeshPolygon>().numTriangles(lvalue<int>()));
EXPECT_CALL_TYPE(MStatus,
                 constant<MItMeshPolygon>().getTriangle(0, lvalue<MPointArray>(),
                                                        lvalue<MIntArray>(), MSpace::kObject));
EXPECT_CALL_TYPE(MStatus, constant<MItMeshPolygon>().getVertices(lvalue<MIntArray>()));
EXPECT_CALL_TYPE(MStatus, constant<MItMeshPolygon>().getNormal(lvalue<MVector>(), MSpace::kObject));

static_assert(std::is_constructible<MItMeshEdge, MObject&, MStatus*>::value, "object");
static_assert(!std::is_constructible<MItMeshEdge, const MObject&, MStatus*>::value,
              "a constant object is no mesh to walk over");
EXPECT_CALL_TYPE(int, lvalue<MItMeshEdge>().index(st));
EXPECT_CALL_TYPE(int, lvalue<MItMeshEdge>().index(0, st));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshEdge>().setIndex(0, lvalue<int>()));
EXPECT_CALL_TYPE(int, constant<MItMeshEdge>().getConnectedFaces(lvalue<MIntArray>(), st));

static_assert(std::is_constructible<MItMeshVertex, MObject&, MStatus*>::value, "object");
EXPECT_CALL_TYPE(int, lvalue<MItMeshVertex>().index(st));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshVertex>().setIndex(0, lvalue<int>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshVertex>().getConnectedEdges(lvalue<MIntArray>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshVertex>().numConnectedEdges(lvalue<int>()));
EXPECT_CALL_TYPE(MStatus, lvalue<MItMeshVertex>().getUVIndices(lvalue<MIntArray>(),
                                                               lvalue<const MString*>()));
EXPECT_CALL_TYPE(MStatus,
                 lvalue<MItMeshVertex>().getUVs(lvalue<MFloatArray>(), lvalue<MFloatArray>(),
                                                lvalue<MIntArray>(), lvalue<const MString*>()));

// === Progress and views ==========================================================================

EXPECT_CALL_TYPE(bool, MProgressWindow::reserve());
EXPECT_CALL_TYPE(MStatus, MProgressWindow::startProgress());
EXPECT_CALL_TYPE(MStatus, MProgressWindow::endProgress());
EXPECT_CALL_TYPE(MStatus, MProgressWindow::setProgressRange(0, 100));
EXPECT_CALL_TYPE(MStatus, MProgressWindow::setProgress(0));
EXPECT_CALL_TYPE(MStatus, MProgressWindow::setTitle(constant<MString>()));
EXPECT_CALL_TYPE(MStatus, MProgressWindow::setProgressStatus(constant<MString>()));
EXPECT_CALL_TYPE(M3dView, M3dView::active3dView(st));
EXPECT_CALL_TYPE(MNativeWindowHdl, M3dView::applicationShell(st));
EXPECT_CALL_TYPE(MStatus,
                 M3dView::getM3dViewFromModelPanel(constant<MString>(), lvalue<M3dView>()));
EXPECT_CALL_TYPE(MStatus, lvalue<M3dView>().getCamera(lvalue<MDagPath>()));
EXPECT_CALL_TYPE(MStatus, lvalue<M3dView>().beginGL());
EXPECT_CALL_TYPE(MStatus, lvalue<M3dView>().endGL());

TEST(ApiSurface, VersionHasSixDigits) {
    EXPECT_GE(MAYA_API_VERSION, 100000);
    EXPECT_LT(MAYA_API_VERSION, 1000000);
    EXPECT_EQ(st, nullptr);
}

} // namespace
