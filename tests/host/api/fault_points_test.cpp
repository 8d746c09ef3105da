/// Every mesh operation that can fail has a fault point and fails with the armed status.
#include "faultpoint/faultpoint.h"
#include "host/mesh/mesh_object.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/MFnMesh.h>
#include <maya/MFnMeshData.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>

#include <gtest/gtest.h>
#include <string>

namespace {

/// A mapped grid, as data and as a node, with result variables.
struct World {
    World() {
        host::Mesh value = mesh_builder::grid(2, 2).mesh();
        value.add_uv_set("map1");
        data = host::make_mesh_data(value);
        path = host::make_mesh_node("sheet", value);
        for (MFnMesh* mesh : {&on_data, &on_path}) {
            if (mesh == &on_path)
                mesh->setObject(path.node());
            else
                mesh->setObject(data);
            mesh->setUV(0, 0.5f, 0.5f);
            for (int c = 0; c < 4; ++c)
                mesh->assignUV(0, c, 0);
        }
    }
    MObject data;
    MDagPath path;
    MFnMesh on_data;
    MFnMesh on_path;
    MStatus status;
    MPointArray points;
    MIntArray ids;
    MIntArray counts;
    MFloatArray u = MFloatArray(1);
    MFloatArray v = MFloatArray(1);
    MFloatVectorArray normals;
    MStringArray names;
    MString name = "other";
    MVector normal;
    MDagPath found;
    int number = 0;
    int2 pair;
    int triple[3];
    float2 uv;
    double length = 0.0;

    MItMeshPolygon polygons() { return MItMeshPolygon(data); }
    MItMeshEdge edges() { return MItMeshEdge(data); }
    MItMeshVertex vertices() { return MItMeshVertex(data); }
};

struct Case {
    const char* point;
    MStatus (*run)(World& w);
};

/// The status written by a call through its last argument.
#define OUT(CALL) ((void)(CALL), w.status)

const Case k_cases[] = {
    {"MFnMesh::setObject", [](World& w) { return OUT(MFnMesh(w.data, &w.status)); }},
    {"MFnMesh::setObject", [](World& w) { return OUT(MFnMesh(w.path, &w.status)); }},
    {"MFnMesh::create",
     [](World& w) {
         return OUT(w.on_data.create(0, 0, w.points, w.ids, w.ids, w.data, &w.status));
     }},
    {"MFnMesh::copy", [](World& w) { return OUT(w.on_data.copy(w.data, w.data, &w.status)); }},
    {"MFnMesh::copyInPlace", [](World& w) { return w.on_data.copyInPlace(w.data); }},
    {"MFnMesh::updateSurface", [](World& w) { return w.on_data.updateSurface(); }},
    {"MFnMesh::numVertices", [](World& w) { return OUT(w.on_data.numVertices(&w.status)); }},
    {"MFnMesh::numEdges", [](World& w) { return OUT(w.on_data.numEdges(&w.status)); }},
    {"MFnMesh::numPolygons", [](World& w) { return OUT(w.on_data.numPolygons(&w.status)); }},
    {"MFnMesh::numFaceVertices",
     [](World& w) { return OUT(w.on_data.numFaceVertices(&w.status)); }},
    {"MFnMesh::getPoints", [](World& w) { return w.on_data.getPoints(w.points); }},
    {"MFnMesh::getFaceNormals", [](World& w) { return w.on_data.getFaceNormals(w.normals); }},
    {"MFnMesh::getPolygonNormal", [](World& w) { return w.on_data.getPolygonNormal(0, w.normal); }},
    {"MFnMesh::polygonVertexCount",
     [](World& w) { return OUT(w.on_data.polygonVertexCount(0, &w.status)); }},
    {"MFnMesh::getPolygonVertices",
     [](World& w) { return w.on_data.getPolygonVertices(0, w.ids); }},
    {"MFnMesh::getEdgeVertices", [](World& w) { return w.on_data.getEdgeVertices(0, w.pair); }},
    {"MFnMesh::getPolygonTriangleVertices",
     [](World& w) { return w.on_data.getPolygonTriangleVertices(0, 0, w.triple); }},
    {"MFnMesh::getTriangles", [](World& w) { return w.on_data.getTriangles(w.counts, w.ids); }},
    {"MFnMesh::numUVSets", [](World& w) { return OUT(w.on_data.numUVSets(&w.status)); }},
    {"MFnMesh::getUVSetNames", [](World& w) { return w.on_data.getUVSetNames(w.names); }},
    {"MFnMesh::currentUVSetName",
     [](World& w) { return OUT(w.on_data.currentUVSetName(&w.status)); }},
    {"MFnMesh::setCurrentUVSetName",
     [](World& w) { return w.on_data.setCurrentUVSetName("map1"); }},
    {"MFnMesh::createUVSetDataMesh",
     [](World& w) { return w.on_data.createUVSetDataMesh(w.name); }},
    {"MFnMesh::createUVSetWithName",
     [](World& w) { return OUT(w.on_path.createUVSetWithName("x", NULL, &w.status)); }},
    {"MFnMesh::deleteUVSet", [](World& w) { return w.on_data.deleteUVSet("map1"); }},
    {"MFnMesh::renameUVSet", [](World& w) { return w.on_data.renameUVSet("map1", "x"); }},
    {"MFnMesh::numUVs", [](World& w) { return OUT(w.on_data.numUVs(&w.status)); }},
    {"MFnMesh::numUVs", [](World& w) { return OUT(w.on_data.numUVs("map1", &w.status)); }},
    {"MFnMesh::getUVs", [](World& w) { return w.on_data.getUVs(w.u, w.v); }},
    {"MFnMesh::setUVs", [](World& w) { return w.on_data.setUVs(w.u, w.v); }},
    {"MFnMesh::setUV", [](World& w) { return w.on_data.setUV(0, 0, 0); }},
    {"MFnMesh::setSomeUVs", [](World& w) { return w.on_data.setSomeUVs(MIntArray(1), w.u, w.v); }},
    {"MFnMesh::clearUVs", [](World& w) { return w.on_data.clearUVs(); }},
    {"MFnMesh::assignUV", [](World& w) { return w.on_data.assignUV(0, 0, 0); }},
    {"MFnMesh::assignUVs",
     [](World& w) { return w.on_data.assignUVs(MIntArray(4, 0), MIntArray()); }},
    {"MFnMesh::getAssignedUVs", [](World& w) { return w.on_data.getAssignedUVs(w.counts, w.ids); }},
    {"MFnMesh::getPolygonUVid", [](World& w) { return w.on_data.getPolygonUVid(0, 0, w.number); }},
    {"MFnMeshData::create", [](World& w) { return OUT(MFnMeshData().create(&w.status)); }},
    {"MFnDagNode::setObject", [](World& w) { return OUT(MFnDagNode(w.path.node(), &w.status)); }},
    {"MFnDagNode::getPath", [](World& w) { return w.on_path.getPath(w.found); }},
    {"MFnDagNode::parent", [](World& w) { return OUT(w.on_path.parent(0, &w.status)); }},
    {"MFnDagNode::child",
     [](World& w) { return OUT(MFnDagNode(w.path.transform()).child(0, &w.status)); }},
    {"MFnDependencyNode::name", [](World& w) { return OUT(w.on_path.name(&w.status)); }},
    {"MFnDependencyNode::typeName", [](World& w) { return OUT(w.on_path.typeName(&w.status)); }},
    {"MDagPath::node", [](World& w) { return OUT(w.path.node(&w.status)); }},
    {"MDagPath::extendToShape", [](World& w) { return w.path.extendToShape(); }},
    {"MDagPath::inclusiveMatrix", [](World& w) { return OUT(w.path.inclusiveMatrix(&w.status)); }},
    {"MDagPath::getAPathTo",
     [](World& w) {
         const MObject node = w.on_path.object();
         return MDagPath::getAPathTo(node, w.found);
     }},

    {"MItMeshPolygon::MItMeshPolygon",
     [](World& w) { return OUT(MItMeshPolygon(w.data, &w.status)); }},
    {"MItMeshPolygon::MItMeshPolygon",
     [](World& w) { return OUT(MItMeshPolygon(w.path, MObject::kNullObj, &w.status)); }},
    {"MItMeshPolygon::isDone", [](World& w) { return OUT(w.polygons().isDone(&w.status)); }},
    {"MItMeshPolygon::next", [](World& w) { return w.polygons().next(); }},
    {"MItMeshPolygon::reset", [](World& w) { return w.polygons().reset(); }},
    {"MItMeshPolygon::reset", [](World& w) { return w.polygons().reset(w.data); }},
    {"MItMeshPolygon::count", [](World& w) { return OUT(w.polygons().count(&w.status)); }},
    {"MItMeshPolygon::index", [](World& w) { return OUT(w.polygons().index(&w.status)); }},
    {"MItMeshPolygon::setIndex", [](World& w) { return w.polygons().setIndex(1, w.number); }},
    {"MItMeshPolygon::polygonVertexCount",
     [](World& w) { return OUT(w.polygons().polygonVertexCount(&w.status)); }},
    {"MItMeshPolygon::getVertices", [](World& w) { return w.polygons().getVertices(w.ids); }},
    {"MItMeshPolygon::vertexIndex",
     [](World& w) { return OUT(w.polygons().vertexIndex(0, &w.status)); }},
    {"MItMeshPolygon::getPoints", [](World& w) { return w.polygons().getPoints(w.points); }},
    {"MItMeshPolygon::getNormal", [](World& w) { return w.polygons().getNormal(w.normal); }},
    {"MItMeshPolygon::hasValidTriangulation",
     [](World& w) { return OUT(w.polygons().hasValidTriangulation(&w.status)); }},
    {"MItMeshPolygon::numTriangles", [](World& w) { return w.polygons().numTriangles(w.number); }},
    {"MItMeshPolygon::getTriangle",
     [](World& w) { return w.polygons().getTriangle(0, w.points, w.ids); }},
    {"MItMeshPolygon::getTriangles",
     [](World& w) { return w.polygons().getTriangles(w.points, w.ids); }},
    {"MItMeshPolygon::getEdges", [](World& w) { return w.polygons().getEdges(w.ids); }},
    {"MItMeshPolygon::onBoundary",
     [](World& w) { return OUT(w.polygons().onBoundary(&w.status)); }},
    {"MItMeshPolygon::zeroArea", [](World& w) { return OUT(w.polygons().zeroArea(&w.status)); }},
    {"MItMeshPolygon::hasUVs", [](World& w) { return OUT(w.polygons().hasUVs(&w.status)); }},
    {"MItMeshPolygon::hasUVs",
     [](World& w) { return OUT(w.polygons().hasUVs("map1", &w.status)); }},
    {"MItMeshPolygon::getUVIndex", [](World& w) { return w.polygons().getUVIndex(0, w.number); }},

    {"MItMeshEdge::MItMeshEdge", [](World& w) { return OUT(MItMeshEdge(w.data, &w.status)); }},
    {"MItMeshEdge::isDone", [](World& w) { return OUT(w.edges().isDone(&w.status)); }},
    {"MItMeshEdge::next", [](World& w) { return w.edges().next(); }},
    {"MItMeshEdge::reset", [](World& w) { return w.edges().reset(); }},
    {"MItMeshEdge::reset", [](World& w) { return w.edges().reset(w.data); }},
    {"MItMeshEdge::count", [](World& w) { return OUT(w.edges().count(&w.status)); }},
    {"MItMeshEdge::index", [](World& w) { return OUT(w.edges().index(&w.status)); }},
    {"MItMeshEdge::index", [](World& w) { return OUT(w.edges().index(1, &w.status)); }},
    {"MItMeshEdge::setIndex", [](World& w) { return w.edges().setIndex(1, w.number); }},
    {"MItMeshEdge::point",
     [](World& w) { return OUT(w.edges().point(0, MSpace::kObject, &w.status)); }},
    {"MItMeshEdge::getLength", [](World& w) { return w.edges().getLength(w.length); }},
    {"MItMeshEdge::getConnectedFaces",
     [](World& w) { return OUT(w.edges().getConnectedFaces(w.ids, &w.status)); }},
    {"MItMeshEdge::onBoundary", [](World& w) { return OUT(w.edges().onBoundary(&w.status)); }},

    {"MItMeshVertex::MItMeshVertex",
     [](World& w) { return OUT(MItMeshVertex(w.data, &w.status)); }},
    {"MItMeshVertex::isDone", [](World& w) { return OUT(w.vertices().isDone(&w.status)); }},
    {"MItMeshVertex::next", [](World& w) { return w.vertices().next(); }},
    {"MItMeshVertex::reset", [](World& w) { return w.vertices().reset(); }},
    {"MItMeshVertex::reset", [](World& w) { return w.vertices().reset(w.data); }},
    {"MItMeshVertex::count", [](World& w) { return OUT(w.vertices().count(&w.status)); }},
    {"MItMeshVertex::index", [](World& w) { return OUT(w.vertices().index(&w.status)); }},
    {"MItMeshVertex::setIndex", [](World& w) { return w.vertices().setIndex(1, w.number); }},
    {"MItMeshVertex::position",
     [](World& w) { return OUT(w.vertices().position(MSpace::kObject, &w.status)); }},
    {"MItMeshVertex::getConnectedEdges",
     [](World& w) { return w.vertices().getConnectedEdges(w.ids); }},
    {"MItMeshVertex::numConnectedEdges",
     [](World& w) { return w.vertices().numConnectedEdges(w.number); }},
    {"MItMeshVertex::getConnectedFaces",
     [](World& w) { return w.vertices().getConnectedFaces(w.ids); }},
    {"MItMeshVertex::numConnectedFaces",
     [](World& w) { return w.vertices().numConnectedFaces(w.number); }},
    {"MItMeshVertex::getConnectedVertices",
     [](World& w) { return w.vertices().getConnectedVertices(w.ids); }},
    {"MItMeshVertex::onBoundary", [](World& w) { return OUT(w.vertices().onBoundary(&w.status)); }},
    {"MItMeshVertex::getUVs", [](World& w) { return w.vertices().getUVs(w.u, w.v, w.ids); }},
    {"MItMeshVertex::getUVIndices", [](World& w) { return w.vertices().getUVIndices(w.ids); }},
    {"MItMeshVertex::numUVs", [](World& w) { return w.vertices().numUVs(w.number); }},
    {"MItMeshVertex::getUV", [](World& w) { return w.vertices().getUV(w.uv); }},
    {"MItMeshVertex::getUV", [](World& w) { return w.vertices().getUV(0, w.uv); }},
};

#undef OUT

class FaultPoints : public testing::TestWithParam<Case> {};

TEST_P(FaultPoints, ReturnTheArmedStatusAndSucceedUnarmed) {
    World world;
    {
        const faultpoint::Scope scope(GetParam().point, MStatus::kLicenseFailure);
        EXPECT_TRUE(GetParam().run(world) == MS::kLicenseFailure);
    }
    world.status = MS::kFailure;
    const MStatus status = GetParam().run(world);
    EXPECT_TRUE(status) << status.errorString();
}

TEST_P(FaultPoints, LeaveTheMeshUnchangedWhenArmed) {
    World world;
    const host::Mesh before = *host::mesh_of(world.data);
    {
        const faultpoint::Scope scope(GetParam().point, MStatus::kFailure);
        GetParam().run(world);
    }
    const host::Mesh& after = *host::mesh_of(world.data);
    EXPECT_EQ(&after.connectivity(), &before.connectivity());
    ASSERT_EQ(after.uv_set_count(), before.uv_set_count());
    EXPECT_EQ(&after.uv_set(0), &before.uv_set(0));
}

INSTANTIATE_TEST_SUITE_P(All, FaultPoints, testing::ValuesIn(k_cases), [](const auto& info) {
    std::string name = info.param.point;
    for (char& c : name)
        c = c == ':' ? '_' : c;
    return name + "_" + std::to_string(info.index);
});

} // namespace
