#include "faultpoint/faultpoint.h"
#include "host/mesh/mesh_object.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/MFnMesh.h>
#include <maya/MFnMeshData.h>
#include <maya/MObjectHandle.h>
#include <maya/MUintArray.h>

#include <gtest/gtest.h>
#include <string>

namespace {

using host::make_mesh_data;
using host::make_mesh_node;
using mesh_builder::cube;
using mesh_builder::grid;

std::vector<int> list(const MIntArray& array) {
    std::vector<int> items(array.length());
    array.get(items.data());
    return items;
}

using Ints = std::vector<int>;

MMatrix moved_and_stretched() {
    MMatrix matrix;
    matrix[0][0] = 2.0;
    matrix[3][2] = 10.0;
    return matrix;
}

MPointArray square_points() {
    MPointArray points;
    points.append(0, 0);
    points.append(1, 0);
    points.append(1, 1);
    points.append(0, 1);
    return points;
}

MIntArray ints(std::initializer_list<int> values) {
    MIntArray array;
    for (const int value : values)
        array.append(value);
    return array;
}

// === Attaching ===================================================================================

TEST(FnMesh, AttachesToMeshData) {
    MStatus status(MS::kFailure);
    MObject data = make_mesh_data(cube().mesh());
    const MFnMesh mesh(data, &status);
    EXPECT_TRUE(status);
    EXPECT_EQ(mesh.numPolygons(), 6);
}

TEST(FnMesh, AttachesToAShapeAndToAPath) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    MStatus status;
    MObject node = path.node();
    EXPECT_EQ(MFnMesh(node, &status).numPolygons(), 6);
    EXPECT_TRUE(status);
    EXPECT_EQ(MFnMesh(path, &status).numPolygons(), 6);
    EXPECT_TRUE(status);
}

TEST(FnMesh, AttachesToTheTransformAboveAShape) {
    MDagPath path = make_mesh_node("box", cube().mesh());
    const MObject kept = path.transform();
    path.pop();
    MStatus status;
    const MFnMesh mesh(path, &status);
    EXPECT_TRUE(status);
    EXPECT_EQ(mesh.fullPathName(), "|box|boxShape");
}

TEST(FnMesh, RejectsObjectsWithoutAMesh) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    for (MObject object : {MObject(), path.transform()}) {
        MStatus status;
        MFnMesh mesh(object, &status);
        EXPECT_TRUE(status == MS::kInvalidParameter);
        mesh.numPolygons(&status);
        EXPECT_TRUE(status == MS::kFailure);
    }
}

TEST(FnMesh, RejectsMeshDataWithoutGeometry) {
    MFnMeshData maker;
    MObject data = maker.create();
    MStatus status;
    MFnMesh mesh(data, &status);
    EXPECT_TRUE(status.error());
}

TEST(FnMesh, AttachesToAnotherObjectBySetObject) {
    MFnMesh mesh;
    MObject data = make_mesh_data(grid(3, 3).mesh());
    EXPECT_TRUE(mesh.setObject(data));
    EXPECT_EQ(mesh.numPolygons(), 9);
    EXPECT_TRUE(mesh.object() == data);
}

TEST(FnMesh, IsDetachedAfterAFailedSetObject) {
    MObject data = make_mesh_data(cube().mesh());
    MFnMesh mesh(data);
    MObject nothing;
    EXPECT_TRUE(mesh.setObject(nothing).error());
    MStatus status;
    EXPECT_TRUE(mesh.object(&status).isNull());
    EXPECT_TRUE(status.error());
}

// === Creation ====================================================================================

TEST(FnMesh, CreatesIntoMeshData) {
    MFnMeshData maker;
    MObject data = maker.create();
    MFnMesh mesh;
    MStatus status;
    const MObject made =
        mesh.create(4, 1, square_points(), ints({4}), ints({0, 1, 2, 3}), data, &status);
    EXPECT_TRUE(status);
    EXPECT_TRUE(made == data);
    EXPECT_EQ(mesh.numVertices(), 4);
    EXPECT_EQ(MFnMesh(data).numEdges(), 4);
}

TEST(FnMesh, CreatesATransformAndAShapeWithoutAnOwner) {
    MFnMesh mesh;
    MStatus status;
    const MObject made =
        mesh.create(4, 1, square_points(), ints({4}), ints({0, 1, 2, 3}), MObject(), &status);
    EXPECT_TRUE(status);
    EXPECT_TRUE(made.hasFn(MFn::kTransform));
    EXPECT_TRUE(mesh.object().hasFn(MFn::kMesh));
}

TEST(FnMesh, CreatesTheUvSetMap1) {
    MFnMeshData maker;
    MObject data = maker.create();
    MFnMesh mesh;
    mesh.create(4, 1, square_points(), ints({4}), ints({0, 1, 2, 3}), data);
    EXPECT_EQ(mesh.currentUVSetName(), "map1");
    EXPECT_EQ(mesh.numUVs(), 0);
}

TEST(FnMesh, RejectsInconsistentLists) {
    MFnMeshData maker;
    MObject data = maker.create();
    struct Case {
        int vertices;
        int polygons;
        MIntArray counts;
        MIntArray connects;
    };
    for (const Case& c :
         {Case{5, 1, ints({4}), ints({0, 1, 2, 3})}, Case{4, 2, ints({4}), ints({0, 1, 2, 3})},
          Case{4, 1, ints({-4}), ints({0, 1, 2, 3})}, Case{4, 1, ints({4}), ints({0, 1, 2, -1})},
          Case{4, 1, ints({4}), ints({0, 1, 2})}, Case{-1, 1, ints({4}), ints({0, 1, 2, 3})},
          Case{4, -1, ints({4}), ints({0, 1, 2, 3})}}) {
        MFnMesh mesh;
        MStatus status;
        EXPECT_TRUE(mesh.create(c.vertices, c.polygons, square_points(), c.counts, c.connects, data,
                                &status)
                        .isNull());
        EXPECT_TRUE(status == MS::kInvalidParameter);
    }
}

TEST(FnMesh, RoundsPointsToSinglePrecision) {
    MPointArray points = square_points();
    points[2] = MPoint(0.1, 1, 0);
    MFnMeshData maker;
    MObject data = maker.create();
    MFnMesh mesh;
    mesh.create(4, 1, points, ints({4}), ints({0, 1, 2, 3}), data);
    MPointArray read;
    EXPECT_TRUE(mesh.getPoints(read));
    EXPECT_EQ(read[2].x, static_cast<double>(0.1f));
}

TEST(FnMesh, CopiesIntoAnotherObject) {
    const MObject source = make_mesh_data(cube().mesh());
    MFnMeshData maker;
    MObject data = maker.create();
    MFnMesh mesh;
    MStatus status;
    EXPECT_TRUE(mesh.copy(source, data, &status) == data);
    EXPECT_TRUE(status);
    EXPECT_EQ(MFnMesh(data).numPolygons(), 6);
}

TEST(FnMesh, CopyIsIndependentOfItsSource) {
    host::Mesh value = cube().mesh();
    value.add_uv_set("map1");
    const MObject source = make_mesh_data(value);
    MFnMeshData maker;
    MObject data = maker.create();
    MFnMesh mesh;
    mesh.copy(source, data);
    EXPECT_TRUE(mesh.setUV(3, 0.5f, 0.5f));
    EXPECT_EQ(MFnMesh(data).numUVs(), 4);
    EXPECT_EQ(MFnMesh(source).numUVs(), 0);
}

TEST(FnMesh, CopyInPlaceReplacesTheGeometry) {
    MObject data = make_mesh_data(cube().mesh());
    MFnMesh mesh(data);
    EXPECT_TRUE(mesh.copyInPlace(make_mesh_data(grid(2, 2).mesh())));
    EXPECT_EQ(mesh.numPolygons(), 4);
    EXPECT_TRUE(mesh.copyInPlace(MObject()) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.updateSurface());
}

// === Reading =====================================================================================

TEST(FnMesh, CountsVerticesEdgesPolygonsAndCorners) {
    MObject data = make_mesh_data(cube().mesh());
    const MFnMesh mesh(data);
    EXPECT_EQ(mesh.numVertices(), 8);
    EXPECT_EQ(mesh.numEdges(), 12);
    EXPECT_EQ(mesh.numPolygons(), 6);
    EXPECT_EQ(mesh.numFaceVertices(), 24);
    EXPECT_EQ(mesh.polygonVertexCount(2), 4);
}

TEST(FnMesh, ReturnsPointsInObjectSpace) {
    MObject data = make_mesh_data(cube().mesh());
    MPointArray points(3);
    EXPECT_TRUE(MFnMesh(data).getPoints(points));
    ASSERT_EQ(points.length(), 8u);
    EXPECT_EQ(points[7], MPoint(1, 1, 1));
}

TEST(FnMesh, ReturnsPointsInWorldSpaceAlongItsPath) {
    const MDagPath path = make_mesh_node("box", cube().mesh(), moved_and_stretched());
    MPointArray points;
    EXPECT_TRUE(MFnMesh(path).getPoints(points, MSpace::kWorld));
    EXPECT_EQ(points[7], MPoint(2, 1, 11));
}

TEST(FnMesh, RejectsWorldSpaceWithoutAPath) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    MObject node = path.node();
    MObject data = make_mesh_data(cube().mesh());
    MPointArray points(2);
    EXPECT_TRUE(MFnMesh(node).getPoints(points, MSpace::kWorld).error());
    EXPECT_TRUE(MFnMesh(data).getPoints(points, MSpace::kWorld).error());
    EXPECT_TRUE(MFnMesh(data).getPoints(points, MSpace::kInvalid) == MS::kInvalidParameter);
    EXPECT_EQ(points.length(), 2u);
}

TEST(FnMesh, ReturnsUnitNormals) {
    const MDagPath path = make_mesh_node("box", cube().mesh(), moved_and_stretched());
    MFloatVectorArray normals;
    MVector normal;
    EXPECT_TRUE(MFnMesh(path).getFaceNormals(normals, MSpace::kWorld));
    EXPECT_EQ(normals[0], MFloatVector(0, 0, -1));
    EXPECT_TRUE(MFnMesh(path).getPolygonNormal(5, normal));
    EXPECT_EQ(normal, MVector(1, 0, 0));
    EXPECT_TRUE(MFnMesh(path).getPolygonNormal(6, normal) == MS::kInvalidParameter);
}

TEST(FnMesh, TransformsNormalsByTheInverseTranspose) {
    mesh_builder::Parts parts;
    parts.point(0, 0, 0);
    parts.point(1, 0, 1);
    parts.point(0, 1, 0);
    parts.polygon({0, 1, 2}); // normal (-1, 0, 1)
    MMatrix stretch;
    stretch[0][0] = 3.0;
    const MDagPath path = make_mesh_node("slope", parts.mesh(), stretch);
    MVector normal;
    EXPECT_TRUE(MFnMesh(path).getPolygonNormal(0, normal, MSpace::kWorld));
    EXPECT_TRUE(normal.isEquivalent(MVector(-1, 0, 3).normal()));
}

TEST(FnMesh, ReturnsTheVerticesOfPolygonsAndEdges) {
    MObject data = make_mesh_data(grid(2, 1).mesh());
    const MFnMesh mesh(data);
    MIntArray ids;
    int2 ends;
    EXPECT_TRUE(mesh.getPolygonVertices(1, ids));
    EXPECT_EQ(list(ids), (Ints{1, 2, 5, 4}));
    EXPECT_TRUE(mesh.getEdgeVertices(1, ends));
    EXPECT_EQ(ends[0] * 10 + ends[1], 14);
}

TEST(FnMesh, ReturnsTriangles) {
    MObject data = make_mesh_data(grid(2, 1).mesh());
    const MFnMesh mesh(data);
    MIntArray counts;
    MIntArray ids;
    EXPECT_TRUE(mesh.getTriangles(counts, ids));
    EXPECT_EQ(list(counts), (Ints{2, 2}));
    EXPECT_EQ(list(ids), (Ints{0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4}));
    int triangle[3];
    EXPECT_TRUE(mesh.getPolygonTriangleVertices(1, 1, triangle));
    EXPECT_EQ(triangle[1], 5);
}

TEST(FnMesh, RejectsIdsOutOfRange) {
    MObject data = make_mesh_data(cube().mesh());
    const MFnMesh mesh(data);
    MIntArray ids;
    int2 ends;
    int triangle[3];
    MStatus status;
    for (const int id : {-1, 100}) {
        EXPECT_TRUE(mesh.getPolygonVertices(id, ids) == MS::kInvalidParameter);
        EXPECT_TRUE(mesh.getEdgeVertices(id, ends) == MS::kInvalidParameter);
        EXPECT_TRUE(mesh.getPolygonTriangleVertices(id, 0, triangle) == MS::kInvalidParameter);
        EXPECT_TRUE(mesh.getPolygonTriangleVertices(0, id, triangle) == MS::kInvalidParameter);
        mesh.polygonVertexCount(id, &status);
        EXPECT_TRUE(status == MS::kInvalidParameter);
    }
}

// === Names and paths =============================================================================

TEST(FnMesh, HasANameOnNodesOnly) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    MObject data = make_mesh_data(cube().mesh());
    MStatus status;
    EXPECT_EQ(MFnMesh(path).name(&status), "boxShape");
    EXPECT_TRUE(status);
    EXPECT_EQ(MFnMesh(path).typeName(), "mesh");
    MFnMesh(data).name(&status);
    EXPECT_TRUE(status.error());
}

TEST(FnMesh, FindsAPathForNodesOnly) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    MObject node = path.node();
    MObject data = make_mesh_data(cube().mesh());
    MDagPath found;
    EXPECT_TRUE(MFnMesh(node).getPath(found));
    EXPECT_TRUE(found == path);
    EXPECT_TRUE(MFnMesh(data).getPath(found).error());
    EXPECT_TRUE(found == path);
}

TEST(FnMesh, HasADagPathOnlyIfAttachedWithOne) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    MObject node = path.node();
    MStatus status;
    EXPECT_TRUE(MFnMesh(path).dagPath(&status) == path);
    EXPECT_TRUE(status);
    MFnMesh(node).dagPath(&status);
    EXPECT_TRUE(status.error());
}

// === Objects and paths ===========================================================================

TEST(Object, IsNullByDefault) {
    EXPECT_TRUE(MObject().isNull());
    EXPECT_TRUE(MObject() == MObject::kNullObj);
    EXPECT_FALSE(MObject().hasFn(MFn::kMesh));
    EXPECT_EQ(MObject().apiType(), MFn::kInvalid);
    EXPECT_STREQ(MObject().apiTypeStr(), "kInvalid");
}

TEST(Object, EqualsOtherHandlesToTheSameObject) {
    const MObject a = make_mesh_data(cube().mesh());
    const MObject b = a;
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a != make_mesh_data(cube().mesh()));
}

TEST(Object, HasTheFunctionSetsOfItsType) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    EXPECT_TRUE(path.node().hasFn(MFn::kMesh));
    EXPECT_TRUE(path.node().hasFn(MFn::kDagNode));
    EXPECT_TRUE(path.node().hasFn(MFn::kDependencyNode));
    EXPECT_FALSE(path.node().hasFn(MFn::kTransform));
    EXPECT_STREQ(path.node().apiTypeStr(), "kMesh");
    const MObject data = make_mesh_data(cube().mesh());
    EXPECT_TRUE(data.hasFn(MFn::kMesh));
    EXPECT_TRUE(data.hasFn(MFn::kData));
    EXPECT_FALSE(data.hasFn(MFn::kDependencyNode));
}

TEST(ObjectHandle, OfTheNullObjectIsNeitherValidNorAlive) {
    const MObjectHandle handle;
    EXPECT_FALSE(handle.isValid());
    EXPECT_FALSE(handle.isAlive());
    EXPECT_TRUE(handle.object().isNull());
    EXPECT_EQ(handle.hashCode(), 0u);
}

TEST(ObjectHandle, ReturnsItsObject) {
    const MObject data = make_mesh_data(cube().mesh());
    const MObjectHandle handle(data);
    EXPECT_TRUE(handle.isValid());
    EXPECT_TRUE(handle.isAlive());
    EXPECT_TRUE(handle.object() == data);
    EXPECT_TRUE(handle.objectRef() == data);
    EXPECT_TRUE(handle == data);
    EXPECT_EQ(handle.hashCode(), MObjectHandle(data).hashCode());
}

TEST(DagPath, IsInvalidByDefault) {
    const MDagPath path;
    MStatus status;
    EXPECT_FALSE(path.isValid());
    EXPECT_TRUE(path.node(&status).isNull());
    EXPECT_TRUE(status.error());
    path.inclusiveMatrix(&status);
    EXPECT_TRUE(status.error());
}

TEST(DagPath, NamesItsNodesFromTheTopLevelDown) {
    const MDagPath path = make_mesh_node("box", cube().mesh());
    EXPECT_EQ(path.fullPathName(), "|box|boxShape");
    EXPECT_EQ(path.length(), 2u);
    EXPECT_EQ(path.apiType(), MFn::kMesh);
}

TEST(DagPath, ExtendsFromATransformToItsOnlyShape) {
    MDagPath path = make_mesh_node("box", cube().mesh());
    const MObject shape = path.node();
    EXPECT_TRUE(path.extendToShape());
    EXPECT_TRUE(path.node() == shape);
    const MObject kept = path.transform();
    EXPECT_TRUE(path.pop());
    EXPECT_TRUE(path.node() == kept);
    EXPECT_TRUE(path.extendToShape());
    EXPECT_TRUE(path.node() == shape);
}

TEST(DagPath, RejectsStepsToNodesThatAreNotThere) {
    MDagPath path = make_mesh_node("box", cube().mesh());
    const MObject kept = path.transform();
    EXPECT_TRUE(path.pop(3) == MS::kInvalidParameter);
    EXPECT_TRUE(path.push(kept) == MS::kInvalidParameter);
    path.pop();
    EXPECT_TRUE(path.extendToShapeDirectlyBelow(1) == MS::kInvalidParameter);
    EXPECT_EQ(path.length(), 1u);
    EXPECT_TRUE(MDagPath().extendToShape().error());
}

TEST(DagPath, InclusiveMatrixIncludesTheTransformAtItsEnd) {
    MDagPath path = make_mesh_node("box", cube().mesh(), moved_and_stretched());
    EXPECT_EQ(path.inclusiveMatrix(), moved_and_stretched());
    EXPECT_EQ(path.exclusiveMatrix(), moved_and_stretched());
    const MObject kept = path.transform();
    path.pop();
    EXPECT_EQ(path.inclusiveMatrix(), moved_and_stretched());
    EXPECT_EQ(path.exclusiveMatrix(), MMatrix::identity);
}

TEST(DagPath, DoesNotExistForData) {
    MDagPath path = make_mesh_node("box", cube().mesh());
    EXPECT_TRUE(MDagPath::getAPathTo(make_mesh_data(cube().mesh()), path).error());
    EXPECT_EQ(path.fullPathName(), "|box|boxShape");
}

} // namespace
