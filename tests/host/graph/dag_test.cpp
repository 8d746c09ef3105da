// Hierarchy, names, paths, selection, copies.
#include "host/graph/callbacks.h"
#include "host/graph/uv_layout.h"
#include "tests/host/graph/fixture.h"
#include "tests/platform/d3dx9/failing_new.h"

#include <maya/MFnDagNode.h>
#include <maya/MItSelectionList.h>
#include <maya/MNodeMessage.h>
#include <maya/MSelectionList.h>
#include <maya/MStringArray.h>

#include <cmath>
#include <new>
#include <set>

namespace host::graph::testing {

using DagTest = SceneTest;

TEST_F(DagTest, ANewSceneHasFourCameras) {
    for (const char* name : {"persp", "top", "front", "side"}) {
        Node* node = scene.find(name);
        ASSERT_NE(node, nullptr) << name;
        EXPECT_TRUE(node->is_default);
        ASSERT_EQ(node->as_dag_node()->children().size(), 1u);
        EXPECT_EQ(node->as_dag_node()->children()[0]->type(), MFn::kCamera);
    }
    EXPECT_EQ(remove_node_edit(*scene.find("persp"))->redo(), MS::kFailure);
}

TEST_F(DagTest, CamerasOfANewSceneAreTurnedByAnglesInRadians) {
    EXPECT_NEAR(plug(*scene.find("top"), "rotateX").value.number(), -std::acos(0.0), 1e-12);
    EXPECT_NEAR(plug(*scene.find("side"), "rotateY").value.number(), std::acos(0.0), 1e-12);
}

TEST_F(DagTest, ThereIsNoChildBehindTheLast) {
    DagNode& parent = add_dag("transform", "parent");
    add_dag("transform", "first", &parent);
    DagNode& second = add_dag("transform", "second", &parent);
    EXPECT_FALSE(parent.child(1).isNull());
    scene.remove(second);
    EXPECT_TRUE(parent.child(1).isNull());
}

TEST_F(DagTest, ComponentsAreSortedAndListedOnce) {
    const Ref<Component> faces = new Component(ComponentKind::face, {3, 1, 3, 2});
    EXPECT_EQ(faces->ids(), (std::vector<int>{1, 2, 3}));
}

TEST_F(DagTest, ATakenNameGetsTheNextFreeNumber) {
    EXPECT_EQ(add("polyCube").name_text(), "polyCube1");
    EXPECT_EQ(add("polyCube").name_text(), "polyCube2");
    EXPECT_EQ(add("polyCube", "thing").name_text(), "thing");
    EXPECT_EQ(add("polyCube", "thing").name_text(), "thing1");
    EXPECT_EQ(add("polyCube", "part07").name_text(), "part07");
    EXPECT_EQ(add("polyCube", "part07").name_text(), "part08");
}

TEST_F(DagTest, AFreedNumberIsUsedAgain) {
    add("polyCube");
    Node& second = add("polyCube");
    add("polyCube");
    scene.remove(second);
    EXPECT_EQ(add("polyCube").name_text(), "polyCube2");
    EXPECT_EQ(add("polyCube").name_text(), "polyCube4");
}

TEST_F(DagTest, InvalidCharactersInNamesBecomeUnderscores) {
    EXPECT_EQ(add("polyCube", "a b-c").name_text(), "a_b_c");
    EXPECT_EQ(add("polyCube", "1st").name_text(), "_1st");
    EXPECT_EQ(add("polyCube", "ns:box").name_text(), "ns:box");
}

TEST_F(DagTest, NodesBelowDifferentParentsMayShareAName) {
    DagNode& a = add_dag("transform", "a");
    DagNode& b = add_dag("transform", "b");
    DagNode& first = add_dag("transform", "leaf", &a);
    DagNode& second = add_dag("transform", "leaf", &b);
    EXPECT_EQ(second.name_text(), "leaf");
    EXPECT_EQ(scene.find("leaf"), nullptr);
    EXPECT_EQ(scene.find("|a|leaf"), &first);
    EXPECT_EQ(scene.find("b|leaf"), &second);
    EXPECT_EQ(scene.partial_name(first.path()), "a|leaf");
    EXPECT_EQ(scene.partial_name(a.path()), "a");
    EXPECT_EQ(scene.find("|leaf"), nullptr);
}

TEST_F(DagTest, ReparentingRenamesOnAClashAndUndoRestoresTheName) {
    DagNode& a = add_dag("transform", "a");
    add_dag("transform", "leaf", &a);
    DagNode& loose = add_dag("transform", "leaf");
    EditPtr edit = reparent_edit(loose, &a);
    EXPECT_EQ(edit->redo(), MS::kSuccess);
    EXPECT_EQ(loose.name_text(), "leaf1");
    edit->undo();
    EXPECT_EQ(full_name(loose.path()), "|leaf");
}

TEST_F(DagTest, DeletingATransformDeletesItsDescendantsAndUndoRestoresThem) {
    MeshNode& shape = add_cube();
    DagNode& transform = *shape.parents().front();
    set(transform, "translateX", 3);
    scene.select({SelectionItem(transform)});
    EditPtr edit = remove_node_edit(transform);
    EXPECT_EQ(edit->redo(), MS::kSuccess);
    EXPECT_FALSE(shape.is_valid());
    EXPECT_TRUE(scene.selection().empty());
    EXPECT_EQ(scene.find("box"), nullptr);
    edit->undo();
    EXPECT_TRUE(shape.is_valid());
    EXPECT_EQ(scene.find("|box|boxShape"), &shape);
    EXPECT_EQ(scene.selection().size(), 1u);
    EXPECT_EQ(pull(transform, "tx"), 3.0);
}

TEST_F(DagTest, MatricesScaleThenRotateThenTranslate) {
    DagNode& node = add_dag("transform");
    set(node, "scaleX", 2);
    set(node, "rotateZ", std::acos(0.0));
    set(node, "translateY", 5);
    const MMatrix m = node.local_matrix();
    EXPECT_NEAR(m[0][1], 2.0, 1e-12); // the x axis turns to y
    EXPECT_NEAR(m[1][0], -1.0, 1e-12);
    EXPECT_NEAR(m[3][1], 5.0, 1e-12);
}

TEST_F(DagTest, ShearMovesScaledPointsAlongTheAxesBefore) {
    DagNode& node = add_dag("transform");
    set(node, "shearXY", 2);
    set(node, "shearXZ", 3);
    set(node, "shearYZ", 5);
    set(node, "scaleZ", 7);
    const double expected[3][3] = {{1, 0, 0}, {2, 1, 0}, {21, 35, 7}};
    const MMatrix m = node.local_matrix();
    for (unsigned row = 0; row < 3; ++row)
        for (unsigned column = 0; column < 3; ++column)
            EXPECT_EQ(m[row][column], expected[row][column]) << row << " " << column;
}

TEST_F(DagTest, PivotsAreFixedPoints) {
    DagNode& node = add_dag("transform");
    for (const char* name : {"rotatePivotX", "scalePivotX"})
        set(node, name, 4);
    set(node, "rotateY", 1.0);
    set(node, "scaleX", 3.0);
    const MMatrix m = node.local_matrix();
    EXPECT_NEAR(4 * m[0][0] + m[3][0], 4.0, 1e-12);
    EXPECT_NEAR(4 * m[0][2] + m[3][2], 0.0, 1e-12);
}

TEST_F(DagTest, PivotsOfAnUnturnedNodeOnlyMoveByTheirTranslations) {
    DagNode& node = add_dag("transform");
    double value = 1, expected[3] = {0, 0, 0};
    for (const char* name :
         {"translate", "rotatePivot", "scalePivot", "rotatePivotTranslate", "scalePivotTranslate"})
        for (unsigned axis = 0; axis < 3; ++axis) {
            set(node, (std::string(name) + "XYZ"[axis]).c_str(), value);
            if (std::string(name).find("ranslate") != std::string::npos)
                expected[axis] += value;
            value *= 2;
        }
    const MMatrix m = node.local_matrix();
    for (unsigned axis = 0; axis < 3; ++axis)
        EXPECT_EQ(m[3][axis], expected[axis]) << axis;
}

TEST_F(DagTest, AnInstanceIsDeletedWithItsLastPath) {
    DagNode& a = add_dag("transform", "a");
    DagNode& b = add_dag("transform", "b");
    DagNode& leaf = add_dag("transform", "leaf", &a);
    ASSERT_EQ(scene.add_instance(leaf, b), MS::kSuccess);
    EXPECT_EQ(leaf.all_paths().size(), 2u);
    EXPECT_EQ(scene.find("leaf"), &leaf);
    const Removal removal = scene.remove(a);
    EXPECT_TRUE(leaf.is_valid());
    EXPECT_EQ(full_name(leaf.path()), "|b|leaf");
    scene.restore(removal);
    EXPECT_EQ(leaf.all_paths().size(), 2u);
    EXPECT_EQ(full_name(leaf.path()), "|a|leaf");
}

TEST_F(DagTest, AddingAndTakingAwayAnInstanceModifiesTheScene) {
    DagNode& a = add_dag("transform", "a");
    DagNode& b = add_dag("transform", "b");
    DagNode& leaf = add_dag("transform", "leaf", &a);
    scene.is_modified = false;
    ASSERT_EQ(scene.add_instance(leaf, b), MS::kSuccess);
    EXPECT_TRUE(scene.is_modified);
    scene.is_modified = false;
    ASSERT_EQ(scene.remove_instance(leaf, b), MS::kSuccess);
    EXPECT_TRUE(scene.is_modified);
}

TEST_F(DagTest, ATypeIsRegisteredOnlyIfItsNameAndItsIdAreFree) {
    static int initialized = 0; // the attributes of a type that exists would be overwritten
    const auto register_type = [](const char* name, unsigned id) {
        return register_node_type(
            name, id, ScaleNode::create, [] { return ++initialized, MStatus(); }, "test");
    };
    EXPECT_EQ(register_type("scaleNode", 0x7777), MS::kInvalidParameter);
    EXPECT_EQ(register_type("freshNode", 0x1234), MS::kInvalidParameter); // scaleNode's
    EXPECT_FALSE(scene.find_type("freshNode"));
    EXPECT_EQ(initialized, 0);
}

int g_packings = 0;

TEST_F(DagTest, ALayoutIsPackedAgainOnlyIfOneOfItsSettingsChanged) {
    g_packings = 0;
    set_uv_packer([](const Mesh& mesh, uint32_t set, const UvLayout&, UvSet& packed, std::string&) {
        packed = mesh.uv_set(set);
        return ++g_packings > 0;
    });
    Node& node = add("polyLayoutUV");
    connect(add_cube(), "outMesh", node, "inputPolymesh");
    int expected = 0;
    const std::pair<const char*, double> settings[] = {
        {"textureWidth", 512}, {"textureWidth", 100},   {"textureHeight", 200},
        {"gutter", 5},         {"rotateForBestFit", 0}, {"scale", 0},
        {"prescale", 1},       {"inputComponents", 0},  {"lockComponents", 1}};
    for (const auto& [name, value] : settings)
        for (int time = 0; time < 2; ++time) {
            if (std::string(name) == "inputComponents")
                set_value(plug(node, name), PlugValue::of_text("f[0]"));
            else
                set(node, name, value);
            evaluate(plug(node, "output"));
            expected += time == 0;
            EXPECT_EQ(g_packings, expected) << name;
        }
    set_uv_packer(nullptr);
}

// === Copies ==================================================================================

TEST_F(DagTest, DuplicatingWithTweaksGivesTheSamePoints) {
    MeshNode& shape = add_cube();
    set(shape, "pnts[0].pntx", 10);
    std::vector<Scene::Copy> copies;
    ASSERT_EQ(scene.duplicate(*shape.parents().front(), true, copies), MS::kSuccess);
    for (const Scene::Copy& copy : copies)
        scene.add(*copy.node, copy.parent);
    EXPECT_EQ(point(static_cast<MeshNode&>(*copies[1].node), 0).x, point(shape, 0).x);
}

TEST_F(DagTest, ADuplicateHasTheEvaluatedMeshButNoConnections) {
    Node& maker = add("polyCube");
    MeshNode& shape = add_cube();
    connect(maker, "output", shape, "inMesh");
    set(maker, "width", 6);
    const MObject made = MFnDagNode(MObject(&shape)).duplicate();
    auto& copied = static_cast<MeshNode&>(*node_of(made)->as_dag_node()->children()[0]);
    EXPECT_EQ(plug(copied, "inMesh").source(), nullptr);
    EXPECT_EQ(point(copied, 0).x, -3.0f);
}

// === Meshes ==================================================================================

TEST_F(DagTest, ATweakNodeAddsItsOffsets) {
    Node& maker = add("polyCube");
    Node& tweak = add("polyTweak");
    MeshNode& shape = add_cube();
    connect(maker, "output", tweak, "inputPolymesh");
    connect(tweak, "output", shape, "inMesh");
    const float before = point(shape, 1).y;
    set(tweak, "tweak[1].tweakY", 0.25);
    EXPECT_EQ(point(shape, 1).y, before + 0.25f);
    set(tweak, "nodeState", 1);
    EXPECT_EQ(point(shape, 1).y, before);
}

TEST_F(DagTest, AShapeKeepsItsMeshWhenItsHistoryIsDisconnected) {
    Node& maker = add("polyCube");
    MeshNode& shape = add_cube();
    connect(maker, "output", shape, "inMesh");
    set(maker, "height", 8);
    EXPECT_EQ(point(shape, 0).y, -4.0f);
    scene.remove(maker);
    EXPECT_EQ(point(shape, 0).y, -4.0f);
}

TEST_F(DagTest, EditingAShapeInPlaceKeepsItsTweaks) {
    MeshNode& shape = add_cube();
    set(shape, "pnts[0].pntx", 10);
    const float x = point(shape, 0).x;
    shape.edit()->edit_uv_set(0).u[0] = 0.125f;
    EXPECT_EQ(shape.mesh()->uv_set(0).u[0], 0.125f);
    EXPECT_EQ(shape.mesh()->points()[0].x, x);
    EXPECT_EQ(point(shape, 0).x, x);
}

// === Selection ===============================================================================

TEST_F(DagTest, NamesResolveToNodesPlugsAndComponents) {
    MeshNode& shape = add_cube();
    EXPECT_EQ(resolve("box").size(), 1u);
    EXPECT_EQ(resolve("box*").size(), 2u);
    EXPECT_EQ(resolve("nothing").size(), 0u);
    ASSERT_EQ(resolve("box.translateX").size(), 1u);
    ASSERT_EQ(resolve("box.outMesh").size(),
              1u); // an attribute of the shape, found through its transform
    EXPECT_EQ(resolve("box.outMesh")[0].node.get(), &shape);
    const Selection vertices = resolve("box.vtx[2:4]");
    ASSERT_EQ(vertices.size(), 1u);
    EXPECT_EQ(vertices[0].component->ids(), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(names_of(vertices[0]), std::vector<std::string>{"box.vtx[2:4]"});
    EXPECT_EQ(resolve("box.f[*]")[0].component->ids().size(), 6u);
    EXPECT_EQ(resolve("box.vtx[8]").size(), 0u);
}

TEST_F(DagTest, NamingAMissingElementOfAShapesArrayDoesNotMakeIt) {
    MeshNode& shape = add_cube();
    EXPECT_EQ(resolve("box.pnts[3]").size(), 0u);
    EXPECT_EQ(resolve("boxShape.pnts[3]").size(), 0u);
    EXPECT_EQ(shape.find_plug("pnts[3]", false), nullptr);
    ASSERT_NE(shape.find_plug("pnts[3]", true), nullptr);
    EXPECT_EQ(resolve("box.pnts[3]").size(), 1u);
}

TEST_F(DagTest, AFilterFindsShapesBelowSelectedTransformsInOrder) {
    MeshNode& second = add_cube("second");
    MeshNode& first = add_cube("first");
    DagNode& group = add_dag("transform", "group");
    scene.reparent(*first.parents().front(), &group, SIZE_MAX);
    MSelectionList list;
    list.add("persp");
    list.add("group");
    list.add("secondShape");
    MItSelectionList item(list);
    item.setFilter(MFn::kMesh);
    std::vector<Node*> found;
    for (; !item.isDone(); item.next()) {
        MDagPath path;
        EXPECT_EQ(item.getDagPath(path), MS::kSuccess);
        found.push_back(node_of(path.node()));
    }
    EXPECT_EQ(found, (std::vector<Node*>{&first, &second}));
}

TEST_F(DagTest, AFailedLookUpLeavesListAndPathUnchanged) {
    add_cube();
    MSelectionList list;
    list.add("box");
    EXPECT_EQ(list.add("nothing"), MS::kInvalidParameter);
    EXPECT_EQ(list.length(), 1u);
    MDagPath path;
    list.getDagPath(0, path);
    EXPECT_EQ(path.fullPathName(), "|box");
    EXPECT_EQ(list.getDagPath(1, path), MS::kInvalidParameter);
    EXPECT_EQ(path.fullPathName(), "|box");
}

TEST_F(DagTest, ASelectedPathThroughAnInstanceIsKept) {
    DagNode& a = add_dag("transform", "a");
    DagNode& b = add_dag("transform", "b");
    DagNode& leaf = add_dag("transform", "leaf", &a);
    scene.add_instance(leaf, b);
    MSelectionList list;
    list.add("|b|leaf");
    MDagPath path;
    list.getDagPath(0, path);
    EXPECT_EQ(path.fullPathName(), "|b|leaf");
    EXPECT_EQ(path.partialPathName(), "b|leaf");
}

TEST_F(DagTest, ShapesBelowASelectedInstanceAreFoundThroughItsPath) {
    MeshNode& shape = add_cube();
    DagNode& other = add_dag("transform", "other");
    DagNode& box = *shape.parents().front();
    scene.add_instance(shape, other);
    MSelectionList list;
    list.add("other");
    MItSelectionList item(list, MFn::kMesh);
    MDagPath path;
    EXPECT_EQ(item.getDagPath(path), MS::kSuccess);
    EXPECT_EQ(path.fullPathName(), "|other|boxShape");
    EXPECT_EQ(names_of(resolve("other.vtx[1]")[0]), std::vector<std::string>{"other.vtx[1]"});
    // A path stored while there was only one stays the same thing.
    scene.remove_instance(shape, other);
    const SelectionItem before(shape);
    scene.add_instance(shape, other);
    EXPECT_TRUE(before.same_thing(SelectionItem(shape)));
    EXPECT_FALSE(before.same_thing(SelectionItem(DagPath{&other, &shape})));
    EXPECT_EQ(before.path(), (DagPath{&box, &shape}));
}

// === Callbacks ===============================================================================

namespace {
int g_calls = 0;
bool g_was_connected = false;
void count_call(MObject& node, void*) {
    g_calls += 1;
    g_was_connected = !node_of(node)->find_plug("result")->destinations().empty();
}
} // namespace

TEST_F(DagTest, PreRemovalCallbacksAreCalledOnEveryDeletionBeforeDisconnection) {
    g_calls = 0;
    Node& node = add("scaleNode");
    Node& other = add("scaleNode");
    connect(node, "result", other, "input");
    MObject object(&node);
    MStatus status;
    const MCallbackId id =
        MNodeMessage::addNodePreRemovalCallback(object, count_call, nullptr, &status);
    ASSERT_EQ(status, MS::kSuccess);
    EditPtr removing = remove_node_edit(node);
    removing->redo();
    EXPECT_EQ(g_calls, 1);
    EXPECT_TRUE(g_was_connected);
    removing->undo();
    removing->redo(); // redo of the deletion
    EXPECT_EQ(g_calls, 2);
    EXPECT_EQ(MMessage::removeCallback(id), MS::kSuccess);
    EXPECT_EQ(MMessage::removeCallback(id), MS::kInvalidParameter);
    EXPECT_EQ(MMessage::removeCallback(0), MS::kInvalidParameter);
}

// === Primitives ==============================================================================

TEST(Primitives, HaveTheCountsOfTheirSubdivisions) {
    const Mesh cube = make_cube(1, 1, 1, 2, 3, 4);
    EXPECT_EQ(cube.connectivity().polygon_count(), 2u * (6 + 8 + 12));
    EXPECT_EQ(make_cube(1, 1, 1, 1, 1, 1).connectivity().vertex_count(), 8u);
    EXPECT_EQ(make_plane(1, 1, 3, 2).connectivity().vertex_count(), 12u);
    EXPECT_EQ(make_sphere(1, 20, 20).connectivity().vertex_count(), 382u);
    EXPECT_EQ(make_cylinder(1, 2, 20, 1, 1).connectivity().vertex_count(), 42u);
    EXPECT_EQ(make_cylinder(1, 2, 20, 1, 0).connectivity().polygon_count(), 22u);
    EXPECT_EQ(make_cylinder(1, 2, 20, 1, 3).connectivity().polygon_count(), 140u);
    EXPECT_EQ(make_torus(1, 0.5, 20, 10).connectivity().vertex_count(), 200u);
}

/// Every edge has two polygons that run along it in opposite directions, and all normals face out.
void expect_closed_and_outward(const Mesh& mesh) {
    const Connectivity& c = mesh.connectivity();
    for (uint32_t edge = 0; edge < c.edge_count(); ++edge)
        EXPECT_EQ(c.edge_polygons(edge).size(), 2u);
    double volume = 0;
    for (uint32_t p = 0; p < c.polygon_count(); ++p) {
        const uint32_t first = c.first_corner(p);
        const auto at = [&](uint32_t i) { return mesh.points()[c.corner_vertex(first + i)]; };
        for (uint32_t i = 1; i + 1 < c.corners_of(p); ++i) {
            const Float3 a = at(0), b = at(i), d = at(i + 1);
            volume += a.x * (b.y * d.z - b.z * d.y) + a.y * (b.z * d.x - b.x * d.z) +
                      a.z * (b.x * d.y - b.y * d.x);
        }
    }
    EXPECT_GT(volume, 0.0);
}

TEST(Primitives, SolidsAreClosedAndFaceOutward) {
    expect_closed_and_outward(make_cube(1, 2, 3, 2, 3, 1));
    expect_closed_and_outward(make_sphere(1, 8, 6));
    expect_closed_and_outward(make_cylinder(1, 2, 8, 3, 0));
    expect_closed_and_outward(make_cylinder(1, 2, 8, 3, 3));
    expect_closed_and_outward(make_torus(1, 0.25, 8, 6));
}

TEST(Primitives, APlaneFacesUp) { EXPECT_EQ(make_plane(1, 1, 2, 2).normal(0).y, 1.0); }

TEST(Primitives, NoPolygonUsesATextureCoordinateTwice) {
    for (const Mesh& mesh :
         {make_cube(1, 1, 1, 2, 2, 2), make_plane(1, 1, 2, 3), make_sphere(1, 8, 6),
          make_cylinder(1, 2, 8, 3, 0), make_cylinder(1, 2, 8, 3, 3), make_torus(1, 0.25, 8, 6)}) {
        const Connectivity& c = mesh.connectivity();
        const std::vector<int32_t>& ids = mesh.uv_set(0).corner_uvs;
        for (uint32_t p = 0; p < c.polygon_count(); ++p) {
            const auto first = ids.begin() + c.first_corner(p);
            const std::set<int32_t> distinct(first, first + c.corners_of(p));
            EXPECT_EQ(distinct.size(), c.corners_of(p)) << p;
        }
    }
}

TEST(Primitives, CapsOfACylinderHaveTheirShapeInTheTexture) {
    const Mesh mesh = make_cylinder(2, 2, 8, 1, 3);
    const Connectivity& faces = mesh.connectivity();
    const UvSet& set = mesh.uv_set(0);
    size_t caps = 0;
    for (uint32_t f = 0; f < faces.polygon_count(); ++f) {
        const auto corner = [&](uint32_t k) {
            return faces.first_corner(f) + k % faces.polygon_vertices(f).size();
        };
        const auto point = [&](uint32_t k) {
            return mesh.points()[faces.polygon_vertices(f)[corner(k) - faces.first_corner(f)]];
        };
        if (point(0).y != point(1).y || point(1).y != point(2).y)
            continue;
        ++caps;
        for (uint32_t k = 0; k < faces.polygon_vertices(f).size(); ++k) {
            const auto a = size_t(set.corner_uvs[corner(k)]),
                       b = size_t(set.corner_uvs[corner(k + 1)]);
            const double flat = std::hypot(set.u[a] - set.u[b], set.v[a] - set.v[b]);
            const double space =
                std::hypot(point(k).x - point(k + 1).x, point(k).z - point(k + 1).z);
            EXPECT_NEAR(flat / space, 0.15625 / 2, 1e-6);
        }
    }
    EXPECT_EQ(caps, 2u * 3 * 8);
}

struct PrimitiveDefaults {
    const char* type;
    std::vector<std::pair<const char*, double>> lengths, subdivisions;
};

TEST_F(DagTest, PrimitivesHaveTheirDefaultsAndWholeSubdivisions) {
    const PrimitiveDefaults primitives[] = {
        {"polyCube", {{"w", 1}, {"h", 1}, {"d", 1}}, {{"sw", 1}, {"sh", 1}, {"sd", 1}}},
        {"polyPlane", {{"w", 1}, {"h", 1}}, {{"sw", 10}, {"sh", 10}}},
        {"polySphere", {{"r", 1}}, {{"sa", 20}, {"sh", 20}}},
        {"polyCylinder", {{"r", 1}, {"h", 2}}, {{"sa", 20}, {"sh", 1}, {"sc", 1}}},
        {"polyTorus", {{"r", 1}, {"sr", 0.5}}, {{"sa", 20}, {"sh", 20}}}};
    for (const auto& [type, lengths, subdivisions] : primitives) {
        Node& node = add(type);
        for (const auto& [name, value] : lengths) {
            EXPECT_EQ(pull(node, name), value) << type << " " << name;
            EXPECT_EQ(plug(node, name).attribute().kind(), AttributeKind::real64) << name;
        }
        for (const auto& [name, value] : subdivisions) {
            EXPECT_EQ(pull(node, name), value) << type << " " << name;
            EXPECT_EQ(plug(node, name).attribute().kind(), AttributeKind::integer) << name;
        }
    }
}

TEST(Primitives, HaveAtLeastOnePartInEveryDirection) {
    EXPECT_EQ(make_cube(1, 1, 1, 0, -1, 0).connectivity().polygon_count(), 6u);
    EXPECT_EQ(make_plane(1, 1, 0, 1).connectivity().polygon_count(), 1u);
    EXPECT_EQ(make_plane(1, 1, 1, -1).connectivity().polygon_count(), 1u);
}

TEST(Primitives, EveryCornerHasAUvInTheUnitSquare) {
    for (const Mesh& mesh :
         {make_cube(1, 1, 1, 1, 1, 1), make_plane(1, 1, 2, 2), make_sphere(1, 8, 6),
          make_cylinder(1, 2, 8, 2, 2), make_torus(1, 0.25, 8, 6)}) {
        const UvSet& set = mesh.uv_set(0);
        ASSERT_EQ(set.corner_uvs.size(), mesh.connectivity().corner_count());
        for (const int32_t uv : set.corner_uvs) {
            ASSERT_GE(uv, 0);
            ASSERT_LT(static_cast<size_t>(uv), set.u.size());
            EXPECT_TRUE(set.u[size_t(uv)] >= 0 && set.u[size_t(uv)] <= 1);
            EXPECT_TRUE(set.v[size_t(uv)] >= 0 && set.v[size_t(uv)] <= 1);
        }
    }
}

TEST_F(DagTest, IfMemoryRunsOutANodeIsInTheSceneOrNotAtAll) {
    DagNode& parent = add_dag("transform", "parent");
    const size_t before = scene.nodes().size();
    for (unsigned nth = 1;; ++nth) {
        const Ref<Node> node = scene.make_node(scene.find_type("transform"), "child");
        bool added = false;
        bool failed = false;
        {
            const FailingNew failing(nth);
            try {
                added = static_cast<bool>(scene.add(*node, &parent));
            } catch (const std::bad_alloc&) {
            }
            failed = FailingNew::happened();
        }
        EXPECT_EQ(added, !failed) << nth;
        EXPECT_EQ(scene.nodes().size(), before + (added ? 1 : 0)) << nth;
        EXPECT_EQ(scene.find("child") != nullptr, added) << nth;
        EXPECT_EQ(parent.children().size(), added ? 1u : 0u) << nth;
        EXPECT_EQ(node->as_dag_node()->parents().size(), added ? 1u : 0u) << nth;
        if (added) {
            EXPECT_GT(nth, 3u);
            return;
        }
        EXPECT_EQ(scene.add(*node, &parent), MS::kSuccess) << nth;
        scene.remove(*node);
    }
}

TEST(Primitives, PartsOfATurnAreExactAtQuarterTurnsAndAccurateElsewhere) {
    for (int k = -8; k <= 16; ++k) {
        const TurnPart t = turn_part(k, 8);
        const double angle = k * 0.78539816339744830962;
        EXPECT_NEAR(t.cosine, std::cos(angle), 4e-16 * 8) << k;
        EXPECT_NEAR(t.sine, std::sin(angle), 4e-16 * 8) << k;
    }
    EXPECT_EQ(turn_part(1, 4).cosine, 0.0);
    EXPECT_EQ(turn_part(1, 4).sine, 1.0);
    EXPECT_EQ(turn_part(3, 6).cosine, -1.0);
    for (int k = 0; k < 360; ++k)
        EXPECT_NEAR(turn_part(k, 360).sine, std::sin(k * 3.14159265358979323846 / 180.0), 1e-15);
}

} // namespace host::graph::testing
