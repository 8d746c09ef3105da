#include "host/mesh/mesh_object.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/MFnMesh.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using Ints = std::vector<int>;

Ints list(const MIntArray& array) {
    Ints items(array.length());
    array.get(items.data());
    return items;
}

Ints sorted(const MIntArray& array) {
    Ints items = list(array);
    std::sort(items.begin(), items.end());
    return items;
}

MMatrix lifted() {
    MMatrix matrix;
    matrix[0][0] = 2.0;
    matrix[3][2] = 10.0;
    return matrix;
}

/// Two quads side by side: vertices 3 4 5 above 0 1 2.
class Iterators : public testing::Test {
protected:
    Iterators() {
        host::Mesh value = mesh_builder::grid(2, 1).mesh();
        value.add_uv_set("map1");
        data = host::make_mesh_data(value);
        path = host::make_mesh_node("strip", value, lifted());
    }
    /// Assigns UVs to both quads; they share the UVs of their common edge if `shared`.
    void map_corners(bool shared) {
        MFnMesh mesh(data);
        for (int i = 0; i < 12; ++i)
            mesh.setUV(i, 0.1f * static_cast<float>(i), 0.5f);
        const int left[4] = {0, 1, 4, 3};
        const int right[4] = {1, 2, 5, 4};
        for (int c = 0; c < 4; ++c) {
            mesh.assignUV(0, c, left[c]);
            mesh.assignUV(1, c, shared ? right[c] : right[c] + 6);
        }
    }
    MObject data;
    MDagPath path;
    MObject nothing;
    int previous = -1;
};

// === Polygons ====================================================================================

TEST_F(Iterators, VisitPolygonsInIdOrder) {
    MItMeshPolygon polygons(data);
    EXPECT_EQ(polygons.count(), 2u);
    Ints visited;
    for (; !polygons.isDone(); polygons.next())
        visited.push_back(static_cast<int>(polygons.index()));
    EXPECT_EQ(visited, (Ints{0, 1}));
    EXPECT_TRUE(polygons.next().error());
    EXPECT_TRUE(polygons.reset());
    EXPECT_EQ(polygons.index(), 0u);
}

TEST_F(Iterators, RejectObjectsWithoutAMesh) {
    MStatus status;
    EXPECT_TRUE(MItMeshPolygon(nothing, &status).isDone());
    EXPECT_TRUE(status == MS::kInvalidParameter);
    EXPECT_TRUE(MItMeshEdge(nothing, &status).isDone());
    EXPECT_TRUE(status == MS::kInvalidParameter);
    EXPECT_TRUE(MItMeshVertex(nothing, &status).isDone());
    EXPECT_TRUE(status == MS::kInvalidParameter);
}

TEST_F(Iterators, RejectComponents) {
    MStatus status;
    MItMeshPolygon(path, data, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
    MItMeshEdge(path, data, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
    MItMeshEdge(data, data, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
    MItMeshVertex(path, data, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
    MItMeshVertex(data, data, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
}

TEST_F(Iterators, AttachToTheTransformAboveAShape) {
    const MObject kept = path.transform();
    path.pop();
    MStatus status;
    EXPECT_EQ(MItMeshPolygon(path, MObject::kNullObj, &status).count(), 2u);
    EXPECT_TRUE(status);
}

TEST_F(Iterators, FailInEveryMethodOnceDone) {
    MItMeshPolygon polygons(data);
    polygons.next();
    polygons.next();
    MIntArray ids(1);
    MPointArray points;
    MVector normal;
    int count = 5;
    MStatus status;
    EXPECT_TRUE(polygons.getVertices(ids).error());
    EXPECT_TRUE(polygons.getNormal(normal).error());
    EXPECT_TRUE(polygons.numTriangles(count).error());
    EXPECT_TRUE(polygons.getTriangle(0, points, ids).error());
    polygons.index(&status);
    EXPECT_TRUE(status.error());
    EXPECT_EQ(ids.length(), 1u);
    EXPECT_EQ(count, 5);
}

TEST_F(Iterators, SetIndexReturnsThePreviousIndex) {
    MItMeshPolygon polygons(data);
    EXPECT_TRUE(polygons.setIndex(1, previous));
    EXPECT_EQ(previous, 0);
    EXPECT_TRUE(polygons.setIndex(2, previous).error());
    EXPECT_TRUE(polygons.setIndex(-1, previous).error());
    EXPECT_EQ(polygons.index(), 1u);
    EXPECT_EQ(previous, 0);
}

TEST_F(Iterators, RestartOnAnotherMesh) {
    MItMeshPolygon polygons(data);
    polygons.next();
    EXPECT_TRUE(polygons.reset(host::make_mesh_data(mesh_builder::cube().mesh())));
    EXPECT_EQ(polygons.index(), 0u);
    EXPECT_EQ(polygons.count(), 6u);
}

TEST_F(Iterators, ReturnVerticesInWindingOrder) {
    MItMeshPolygon polygons(data);
    polygons.setIndex(1, previous);
    MIntArray ids;
    EXPECT_TRUE(polygons.getVertices(ids));
    EXPECT_EQ(list(ids), (Ints{1, 2, 5, 4}));
    EXPECT_EQ(polygons.polygonVertexCount(), 4u);
    EXPECT_EQ(polygons.vertexIndex(2), 5);
    MStatus status;
    polygons.vertexIndex(4, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
}

TEST_F(Iterators, ReturnPolygonPoints) {
    MItMeshPolygon polygons(path);
    MPointArray points;
    EXPECT_TRUE(polygons.getPoints(points, MSpace::kWorld));
    ASSERT_EQ(points.length(), 4u);
    EXPECT_EQ(points[2], MPoint(2, 1, 10));
    EXPECT_TRUE(polygons.getPoints(points));
    EXPECT_EQ(points[2], MPoint(1, 1, 0));
}

TEST_F(Iterators, ReturnUnitNormals) {
    MVector normal;
    EXPECT_TRUE(MItMeshPolygon(path).getNormal(normal, MSpace::kWorld));
    EXPECT_EQ(normal, MVector(0, 0, 1));
    EXPECT_TRUE(MItMeshPolygon(data).getNormal(normal));
    EXPECT_EQ(normal, MVector(0, 0, 1));
    EXPECT_TRUE(MItMeshPolygon(data).getNormal(normal, MSpace::kWorld).error());
}

TEST_F(Iterators, ReturnTrianglesWithIdsAndPoints) {
    MItMeshPolygon polygons(data);
    int count = 0;
    EXPECT_TRUE(polygons.numTriangles(count));
    EXPECT_EQ(count, 2);
    MPointArray points(7);
    MIntArray ids(9);
    EXPECT_TRUE(polygons.getTriangle(1, points, ids));
    EXPECT_EQ(list(ids), (Ints{0, 4, 3}));
    ASSERT_EQ(points.length(), 3u);
    EXPECT_EQ(points[1], MPoint(1, 1, 0));
    EXPECT_TRUE(polygons.getTriangle(2, points, ids) == MS::kInvalidParameter);
    EXPECT_TRUE(polygons.getTriangle(-1, points, ids) == MS::kInvalidParameter);
}

TEST_F(Iterators, ReturnAllTrianglesAtOnce) {
    MPointArray points;
    MIntArray ids;
    EXPECT_TRUE(MItMeshPolygon(path).getTriangles(points, ids, MSpace::kWorld));
    EXPECT_EQ(list(ids), (Ints{0, 1, 4, 0, 4, 3}));
    ASSERT_EQ(points.length(), 6u);
    EXPECT_EQ(points[1], MPoint(2, 0, 10));
}

TEST_F(Iterators, ReportWhetherATriangulationIsValid) {
    EXPECT_TRUE(MItMeshPolygon(data).hasValidTriangulation());
    const MObject bow_tie =
        host::make_mesh_data(mesh_builder::outline({{0, 0}, {2, 1}, {2, 0}, {0, 1.5}}).mesh());
    MItMeshPolygon polygon(bow_tie);
    EXPECT_FALSE(polygon.hasValidTriangulation());
    int count = 0;
    EXPECT_TRUE(polygon.numTriangles(count));
    EXPECT_EQ(count, 2);
}

TEST_F(Iterators, ReturnPolygonEdgesAndBoundaries) {
    MItMeshPolygon polygons(data);
    MIntArray edges;
    EXPECT_TRUE(polygons.getEdges(edges));
    EXPECT_EQ(list(edges), (Ints{0, 1, 2, 3}));
    EXPECT_TRUE(polygons.onBoundary());
    const MObject box = host::make_mesh_data(mesh_builder::cube().mesh());
    EXPECT_FALSE(MItMeshPolygon(box).onBoundary());
    EXPECT_FALSE(MItMeshPolygon(box).zeroArea());
    const MObject needle =
        host::make_mesh_data(mesh_builder::outline({{0, 0}, {1, 0}, {2, 0}}).mesh());
    EXPECT_TRUE(MItMeshPolygon(needle).zeroArea());
}

TEST_F(Iterators, ReportWhetherAPolygonIsMapped) {
    MItMeshPolygon polygons(data);
    int uv = 9;
    EXPECT_FALSE(polygons.hasUVs());
    EXPECT_TRUE(polygons.getUVIndex(0, uv).error());
    EXPECT_EQ(uv, 9);
    map_corners(true);
    EXPECT_TRUE(polygons.hasUVs());
    EXPECT_TRUE(polygons.hasUVs("map1"));
    EXPECT_TRUE(polygons.getUVIndex(2, uv));
    EXPECT_EQ(uv, 4);
    EXPECT_TRUE(polygons.getUVIndex(4, uv) == MS::kInvalidParameter);
    MStatus status;
    EXPECT_FALSE(polygons.hasUVs("nowhere", &status));
    EXPECT_TRUE(status == MS::kInvalidParameter);
}

// === Edges =======================================================================================

TEST_F(Iterators, VisitEdgesInIdOrder) {
    MItMeshEdge edges(data);
    EXPECT_EQ(edges.count(), 7);
    Ints visited;
    for (; !edges.isDone(); edges.next())
        visited.push_back(edges.index());
    EXPECT_EQ(visited, (Ints{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(edges.next().error());
    EXPECT_TRUE(edges.reset());
    EXPECT_EQ(edges.index(), 0);
    EXPECT_TRUE(edges.reset(data));
}

TEST_F(Iterators, ReturnBothEndsOfAnEdge) {
    MItMeshEdge edges(data);
    edges.setIndex(1, previous);
    EXPECT_EQ(edges.index(0), 1);
    EXPECT_EQ(edges.index(1), 4);
    MStatus status;
    edges.index(2, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
    EXPECT_EQ(edges.point(1), MPoint(1, 1, 0));
}

TEST_F(Iterators, ReturnEdgeLengths) {
    MItMeshEdge edges(path);
    double length = 0.0;
    EXPECT_TRUE(edges.getLength(length));
    EXPECT_EQ(length, 1.0);
    EXPECT_TRUE(edges.getLength(length, MSpace::kWorld));
    EXPECT_EQ(length, 2.0);
    EXPECT_EQ(edges.point(1, MSpace::kWorld), MPoint(2, 0, 10));
}

TEST_F(Iterators, ReturnTheFacesOfAnEdge) {
    MItMeshEdge edges(data);
    MIntArray faces;
    MStatus status;
    edges.setIndex(1, previous);
    EXPECT_EQ(edges.getConnectedFaces(faces, &status), 2);
    EXPECT_TRUE(status);
    EXPECT_EQ(sorted(faces), (Ints{0, 1}));
    EXPECT_FALSE(edges.onBoundary());
    edges.setIndex(6, previous);
    EXPECT_EQ(edges.getConnectedFaces(faces), 1);
    EXPECT_EQ(list(faces), (Ints{1}));
    EXPECT_TRUE(edges.onBoundary());
}

TEST_F(Iterators, ReturnAllFacesOfANonManifoldEdge) {
    mesh_builder::Parts parts = mesh_builder::grid(1, 1);
    const std::uint32_t tip = parts.point(0, 0, 1);
    parts.polygon({0, 1, tip});
    parts.polygon({1, 0, tip});
    MObject branching = host::make_mesh_data(parts.mesh());
    MItMeshEdge edges(branching);
    MIntArray faces;
    EXPECT_EQ(edges.getConnectedFaces(faces), 3);
    EXPECT_EQ(sorted(faces), (Ints{0, 1, 2}));
}

TEST_F(Iterators, RejectEdgesOutOfRange) {
    MItMeshEdge edges(data);
    EXPECT_TRUE(edges.setIndex(7, previous).error());
    EXPECT_TRUE(edges.setIndex(-1, previous).error());
    EXPECT_EQ(edges.index(), 0);
}

// === Vertices ====================================================================================

TEST_F(Iterators, VisitVerticesInIdOrder) {
    MItMeshVertex vertices(data);
    EXPECT_EQ(vertices.count(), 6);
    int visited = 0;
    for (; !vertices.isDone(); vertices.next())
        EXPECT_EQ(vertices.index(), visited++);
    EXPECT_EQ(visited, 6);
    EXPECT_TRUE(vertices.next().error());
    EXPECT_TRUE(vertices.reset());
    EXPECT_TRUE(vertices.reset(data));
    EXPECT_EQ(vertices.index(), 0);
}

TEST_F(Iterators, ReturnPositions) {
    MItMeshVertex vertices(path);
    vertices.setIndex(5, previous);
    EXPECT_EQ(vertices.position(), MPoint(2, 1, 0));
    EXPECT_EQ(vertices.position(MSpace::kWorld), MPoint(4, 1, 10));
    MStatus status;
    MItMeshVertex(data).position(MSpace::kWorld, &status);
    EXPECT_TRUE(status.error());
}

TEST_F(Iterators, ReturnTheNeighbourhoodOfAVertex) {
    MItMeshVertex vertices(data);
    vertices.setIndex(4, previous);
    MIntArray ids;
    int count = 0;
    EXPECT_TRUE(vertices.getConnectedEdges(ids));
    EXPECT_EQ(sorted(ids), (Ints{1, 2, 6}));
    EXPECT_TRUE(vertices.numConnectedEdges(count));
    EXPECT_EQ(count, 3);
    EXPECT_TRUE(vertices.getConnectedFaces(ids));
    EXPECT_EQ(sorted(ids), (Ints{0, 1}));
    EXPECT_TRUE(vertices.numConnectedFaces(count));
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(vertices.getConnectedVertices(ids));
    EXPECT_EQ(sorted(ids), (Ints{1, 3, 5}));
    EXPECT_TRUE(vertices.onBoundary());
}

TEST_F(Iterators, ListAFaceOnceThatVisitsTheVertexTwice) {
    mesh_builder::Parts parts;
    for (int i = 0; i < 5; ++i)
        parts.point(i, i % 2, 0);
    parts.polygon({0, 1, 2, 1, 3, 4});
    MObject mesh = host::make_mesh_data(parts.mesh());
    MItMeshVertex vertices(mesh);
    vertices.setIndex(1, previous);
    MIntArray ids;
    EXPECT_TRUE(vertices.getConnectedFaces(ids));
    EXPECT_EQ(list(ids), (Ints{0}));
}

TEST_F(Iterators, ReturnNoEdgesAtAnIsolatedVertex) {
    mesh_builder::Parts parts = mesh_builder::grid(1, 1);
    const std::uint32_t lonely = parts.point(9, 9, 9);
    MObject mesh = host::make_mesh_data(parts.mesh());
    MItMeshVertex vertices(mesh);
    vertices.setIndex(static_cast<int>(lonely), previous);
    MIntArray ids(3);
    EXPECT_TRUE(vertices.getConnectedEdges(ids));
    EXPECT_EQ(ids.length(), 0u);
    EXPECT_FALSE(vertices.onBoundary());
}

TEST_F(Iterators, ReturnOneUvPerMappedFace) {
    map_corners(false);
    MItMeshVertex vertices(data);
    vertices.setIndex(4, previous);
    MFloatArray u;
    MFloatArray v;
    MIntArray faces;
    MIntArray ids;
    EXPECT_TRUE(vertices.getUVs(u, v, faces));
    EXPECT_TRUE(vertices.getUVIndices(ids));
    EXPECT_EQ(list(faces), (Ints{0, 1}));
    EXPECT_EQ(list(ids), (Ints{4, 10}));
    ASSERT_EQ(u.length(), 2u);
    EXPECT_EQ(u[1], 0.1f * 10);
}

TEST_F(Iterators, ReturnAUvSharedByTwoFacesOncePerFace) {
    map_corners(true);
    MItMeshVertex vertices(data);
    vertices.setIndex(4, previous);
    MIntArray ids;
    EXPECT_TRUE(vertices.getUVIndices(ids));
    EXPECT_EQ(list(ids), (Ints{4, 4}));
    int count = 0;
    EXPECT_TRUE(vertices.numUVs(count));
    EXPECT_EQ(count, 1);
}

TEST_F(Iterators, SkipUnmappedFaces) {
    MFnMesh mesh(data);
    mesh.setUV(0, 0.5f, 0.5f);
    mesh.assignUV(1, 0, 0); // vertex 1 of the right quad
    MItMeshVertex vertices(data);
    vertices.setIndex(1, previous);
    MIntArray ids;
    MIntArray faces;
    MFloatArray u;
    MFloatArray v;
    EXPECT_TRUE(vertices.getUVIndices(ids));
    EXPECT_TRUE(vertices.getUVs(u, v, faces));
    EXPECT_EQ(list(ids), (Ints{0}));
    EXPECT_EQ(list(faces), (Ints{1}));
}

TEST_F(Iterators, LeaveArraysUnchangedWhereNoFaceIsMapped) {
    MItMeshVertex vertices(data);
    MIntArray ids(2, 7);
    MIntArray faces(2, 8);
    MFloatArray u(1, 9);
    MFloatArray v(1, 9);
    const MString unknown("nowhere");
    EXPECT_TRUE(vertices.getUVIndices(ids).error());
    EXPECT_TRUE(vertices.getUVs(u, v, faces).error());
    EXPECT_TRUE(vertices.getUVIndices(ids, &unknown) == MS::kInvalidParameter);
    EXPECT_TRUE(vertices.getUVs(u, v, faces, &unknown) == MS::kInvalidParameter);
    EXPECT_EQ(list(ids), (Ints{7, 7}));
    EXPECT_EQ(list(faces), (Ints{8, 8}));
    EXPECT_EQ(u.length() + v.length(), 2u);
    int count = 5;
    EXPECT_TRUE(vertices.numUVs(count));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(vertices.numUVs(count, &unknown) == MS::kInvalidParameter);
}

TEST_F(Iterators, ReturnTheUvSharedByAllFaces) {
    map_corners(true);
    MItMeshVertex vertices(data);
    vertices.setIndex(4, previous);
    float2 uv;
    EXPECT_TRUE(vertices.getUV(uv));
    EXPECT_EQ(uv[0], 0.1f * 4);
    map_corners(false);
    EXPECT_TRUE(vertices.getUV(uv).error());
    EXPECT_TRUE(vertices.getUV(1, uv));
    EXPECT_EQ(uv[0], 0.1f * 10);
    EXPECT_TRUE(vertices.getUV(2, uv) == MS::kInvalidParameter);
}

TEST_F(Iterators, SeeChangesOfTheMesh) {
    MItMeshVertex vertices(data);
    map_corners(true);
    MIntArray ids;
    EXPECT_TRUE(vertices.getUVIndices(ids));
    EXPECT_EQ(list(ids), (Ints{0}));
}

} // namespace
