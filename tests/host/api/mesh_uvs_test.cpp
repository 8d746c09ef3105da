#include "host/mesh/mesh_object.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/MFnMesh.h>
#include <maya/MUintArray.h>

#include <gtest/gtest.h>

namespace {

MFloatArray floats(std::initializer_list<float> values) {
    MFloatArray array;
    for (const float value : values)
        array.append(value);
    return array;
}

MIntArray ints(std::initializer_list<int> values) {
    MIntArray array;
    for (const int value : values)
        array.append(value);
    return array;
}

/// Mesh data of two quads with an empty set "map1".
class FnMeshUvs : public testing::Test {
protected:
    FnMeshUvs() {
        host::Mesh value = mesh_builder::grid(2, 1).mesh();
        value.add_uv_set("map1");
        data = host::make_mesh_data(value);
        mesh.setObject(data);
    }
    void expect_assigned(std::initializer_list<int> counts, std::initializer_list<int> ids) {
        MIntArray got_counts;
        MIntArray got_ids;
        ASSERT_TRUE(mesh.getAssignedUVs(got_counts, got_ids));
        ASSERT_EQ(got_counts.length(), counts.size());
        ASSERT_EQ(got_ids.length(), ids.size());
        unsigned int i = 0;
        for (const int count : counts)
            EXPECT_EQ(got_counts[i++], count);
        i = 0;
        for (const int id : ids)
            EXPECT_EQ(got_ids[i++], id);
    }

    MObject data;
    MFnMesh mesh;
};

TEST_F(FnMeshUvs, ListsSetsInOrderOfCreation) {
    MString name("second");
    mesh.createUVSetDataMesh(name);
    MStringArray names;
    EXPECT_TRUE(mesh.getUVSetNames(names));
    ASSERT_EQ(names.length(), 2u);
    EXPECT_EQ(names[0], "map1");
    EXPECT_EQ(names[1], "second");
    EXPECT_EQ(mesh.numUVSets(), 2);
}

TEST_F(FnMeshUvs, WritesBackTheUniqueNameOfANewSet) {
    MString name("map1");
    EXPECT_TRUE(mesh.createUVSetDataMesh(name));
    EXPECT_EQ(name, "map2");
}

TEST_F(FnMeshUvs, CreatesDataSetsOnDataOnly) {
    const MDagPath path = host::make_mesh_node("box", mesh_builder::cube().mesh());
    MFnMesh shape(path);
    MString name("map9");
    EXPECT_TRUE(shape.createUVSetDataMesh(name).error());
    EXPECT_EQ(shape.numUVSets(), 0);
    EXPECT_EQ(name, "map9");
}

TEST_F(FnMeshUvs, CreatesShapeSetsOnShapesOnly) {
    const MDagPath path = host::make_mesh_node("box", mesh_builder::cube().mesh());
    MStatus status;
    EXPECT_EQ(MFnMesh(path).createUVSetWithName("", NULL, &status), "map1");
    EXPECT_TRUE(status);
    EXPECT_EQ(MFnMesh(path).createUVSetWithName("map1"), "map2");
    EXPECT_EQ(mesh.createUVSetWithName("x", NULL, &status), "");
    EXPECT_TRUE(status.error());
}

TEST_F(FnMeshUvs, RejectsPerInstanceSets) {
    const MDagPath path = host::make_mesh_node("box", mesh_builder::cube().mesh());
    const MUintArray instances(1, 0);
    MStatus status;
    MFnMesh(path).createUVSetWithName("x", NULL, &status, &instances);
    EXPECT_TRUE(status == MS::kNotImplemented);
}

TEST_F(FnMeshUvs, SwitchesTheCurrentSet) {
    MString name("second");
    mesh.createUVSetDataMesh(name);
    EXPECT_EQ(mesh.currentUVSetName(), "map1");
    EXPECT_TRUE(mesh.setCurrentUVSetName("second"));
    EXPECT_EQ(mesh.currentUVSetName(), "second");
    EXPECT_TRUE(mesh.setCurrentUVSetName("third").error());
    EXPECT_EQ(mesh.currentUVSetName(), "second");
}

TEST_F(FnMeshUvs, HasNoCurrentSetNameWithoutSets) {
    MObject bare = host::make_mesh_data(mesh_builder::cube().mesh());
    EXPECT_EQ(MFnMesh(bare).currentUVSetName(), "");
    MStatus status;
    MFnMesh(bare).numUVs(&status);
    EXPECT_TRUE(status == MS::kFailure);
}

TEST_F(FnMeshUvs, DeletesSets) {
    EXPECT_TRUE(mesh.deleteUVSet("map1"));
    EXPECT_EQ(mesh.numUVSets(), 0);
    EXPECT_TRUE(mesh.deleteUVSet("map1") == MS::kInvalidParameter);
}

TEST_F(FnMeshUvs, RenamesSetsToFreeNamesOnly) {
    MString other("other");
    mesh.createUVSetDataMesh(other);
    EXPECT_TRUE(mesh.renameUVSet("map1", "other") == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.renameUVSet("map1", "") == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.renameUVSet("map3", "x") == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.renameUVSet("map1", "base"));
    EXPECT_EQ(mesh.currentUVSetName(), "base");
}

TEST_F(FnMeshUvs, SetUVsStoresTheValues) {
    EXPECT_TRUE(mesh.setUVs(floats({0.0f, 0.25f}), floats({1.0f, 0.75f})));
    MFloatArray u;
    MFloatArray v;
    EXPECT_TRUE(mesh.getUVs(u, v));
    ASSERT_EQ(u.length(), 2u);
    EXPECT_EQ(u[1], 0.25f);
    EXPECT_EQ(v[0], 1.0f);
    EXPECT_EQ(mesh.numUVs(), 2);
}

TEST_F(FnMeshUvs, SetUVsRejectsListsOfDifferentLength) {
    EXPECT_TRUE(mesh.setUVs(floats({0, 1}), floats({0})) == MS::kInvalidParameter);
    EXPECT_EQ(mesh.numUVs(), 0);
}

TEST_F(FnMeshUvs, SetUVsRejectsAShorterListUntilCleared) {
    mesh.setUVs(floats({0, 1, 2}), floats({0, 1, 2}));
    EXPECT_TRUE(mesh.setUVs(floats({5}), floats({5})) == MS::kInvalidParameter);
    EXPECT_EQ(mesh.numUVs(), 3);
    EXPECT_TRUE(mesh.clearUVs());
    EXPECT_TRUE(mesh.setUVs(floats({5}), floats({5})));
    EXPECT_EQ(mesh.numUVs(), 1);
}

TEST_F(FnMeshUvs, SetUVsGrowsTheListAndKeepsAssignments) {
    mesh.setUVs(floats({0}), floats({0}));
    mesh.assignUV(0, 2, 0);
    EXPECT_TRUE(mesh.setUVs(floats({3, 4}), floats({3, 4})));
    int uv = -1;
    EXPECT_TRUE(mesh.getPolygonUVid(0, 2, uv));
    EXPECT_EQ(uv, 0);
}

TEST_F(FnMeshUvs, ClearUVsRemovesUvsAndAssignments) {
    mesh.setUVs(floats({0}), floats({0}));
    mesh.assignUV(0, 0, 0);
    EXPECT_TRUE(mesh.clearUVs());
    EXPECT_EQ(mesh.numUVs(), 0);
    int uv = 7;
    EXPECT_TRUE(mesh.getPolygonUVid(0, 0, uv).error());
    EXPECT_EQ(uv, 7);
}

TEST_F(FnMeshUvs, SetUVGrowsTheList) {
    EXPECT_TRUE(mesh.setUV(2, 0.5f, 0.25f));
    EXPECT_EQ(mesh.numUVs(), 3);
    EXPECT_TRUE(mesh.setUV(-1, 0, 0) == MS::kInvalidParameter);
}

TEST_F(FnMeshUvs, SetSomeUVsSetsUvsById) {
    EXPECT_TRUE(mesh.setSomeUVs(ints({3, 1}), floats({3, 1}), floats({30, 10})));
    MFloatArray u;
    MFloatArray v;
    mesh.getUVs(u, v);
    ASSERT_EQ(u.length(), 4u);
    EXPECT_EQ(u[1], 1.0f);
    EXPECT_EQ(v[3], 30.0f);
    EXPECT_EQ(u[0], 0.0f);
}

TEST_F(FnMeshUvs, SetSomeUVsRejectsInconsistentLists) {
    EXPECT_TRUE(mesh.setSomeUVs(ints({0, 1}), floats({0}), floats({0, 1})).error());
    EXPECT_TRUE(mesh.setSomeUVs(ints({0, -1}), floats({0, 1}), floats({0, 1})).error());
    EXPECT_EQ(mesh.numUVs(), 0);
}

TEST_F(FnMeshUvs, AssignUVAssignsOneCorner) {
    mesh.setUVs(floats({0, 1}), floats({0, 1}));
    EXPECT_TRUE(mesh.assignUV(1, 3, 1));
    int uv = -1;
    EXPECT_TRUE(mesh.getPolygonUVid(1, 3, uv));
    EXPECT_EQ(uv, 1);
    EXPECT_TRUE(mesh.getPolygonUVid(1, 2, uv).error());
}

TEST_F(FnMeshUvs, AssignUVRejectsIndicesOutOfRange) {
    mesh.setUVs(floats({0}), floats({0}));
    struct Case {
        int polygon, corner, uv;
    };
    for (const Case& c : {Case{-1, 0, 0}, Case{2, 0, 0}, Case{0, -1, 0}, Case{0, 4, 0},
                          Case{0, 0, -1}, Case{0, 0, 1}})
        EXPECT_TRUE(mesh.assignUV(c.polygon, c.corner, c.uv) == MS::kInvalidParameter);
    expect_assigned({0, 0}, {});
}

TEST_F(FnMeshUvs, AssignUVsAssignsAllCorners) {
    mesh.setUVs(floats({0, 1, 2}), floats({0, 1, 2}));
    EXPECT_TRUE(mesh.assignUVs(ints({4, 4}), ints({0, 1, 2, 0, 2, 1, 0, 2})));
    expect_assigned({4, 4}, {0, 1, 2, 0, 2, 1, 0, 2});
}

TEST_F(FnMeshUvs, AssignUVsLeavesAFaceWithCountZeroUnmapped) {
    mesh.setUVs(floats({0}), floats({0}));
    mesh.assignUVs(ints({4, 4}), ints({0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(mesh.assignUVs(ints({0, 4}), ints({0, 0, 0, 0})));
    expect_assigned({0, 4}, {0, 0, 0, 0});
}

TEST_F(FnMeshUvs, AssignUVsRejectsInconsistentListsWithoutEffect) {
    mesh.setUVs(floats({0}), floats({0}));
    EXPECT_TRUE(mesh.assignUVs(ints({4}), ints({0, 0, 0, 0})).error());
    EXPECT_TRUE(mesh.assignUVs(ints({4, 3}), ints({0, 0, 0, 0, 0, 0, 0})).error());
    EXPECT_TRUE(mesh.assignUVs(ints({4, 0}), ints({0, 0, 0})).error());
    EXPECT_TRUE(mesh.assignUVs(ints({4, 0}), ints({0, 0, 0, 1})).error());
    expect_assigned({0, 0}, {});
}

TEST_F(FnMeshUvs, WorksOnANamedSet) {
    MString name("second");
    mesh.createUVSetDataMesh(name);
    EXPECT_TRUE(mesh.setUVs(floats({1}), floats({2}), &name));
    EXPECT_TRUE(mesh.assignUV(0, 0, 0, &name));
    EXPECT_EQ(mesh.numUVs(name), 1);
    EXPECT_EQ(mesh.numUVs(), 0);
}

TEST_F(FnMeshUvs, RejectsAnUnknownSet) {
    const MString name("nowhere");
    MStatus status;
    MFloatArray u(1);
    MFloatArray v(1);
    MIntArray ids(1);
    int uv = 0;
    EXPECT_TRUE(mesh.setUVs(u, v, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.getUVs(u, v, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.clearUVs(&name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.setUV(0, 0, 0, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.setSomeUVs(ids, u, v, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.assignUV(0, 0, 0, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.assignUVs(ids, ids, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.getAssignedUVs(ids, ids, &name) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.getPolygonUVid(0, 0, uv, &name) == MS::kInvalidParameter);
    mesh.numUVs(name, &status);
    EXPECT_TRUE(status == MS::kInvalidParameter);
}

TEST_F(FnMeshUvs, RejectsAPolygonOrCornerOutOfRange) {
    int uv = 5;
    EXPECT_TRUE(mesh.getPolygonUVid(2, 0, uv) == MS::kInvalidParameter);
    EXPECT_TRUE(mesh.getPolygonUVid(0, 4, uv) == MS::kInvalidParameter);
    EXPECT_EQ(uv, 5);
}

} // namespace
