// Host operations failing in the middle of the command: the command returns the status and leaves
// the mesh unchanged.
#include "tests/plugin_in_host/fixture.h"

#include <maya/MStatus.h>

namespace plugin_in_host {

namespace {

struct Refusal {
    const char* history;
    bool tweaked;
    const char* point;
    unsigned nth;
};

std::string name_of(const ::testing::TestParamInfo<Refusal>& info) {
    std::string name = info.param.history;
    name += info.param.tweaked ? "Tweaked" : "Plain";
    for (const char* c = info.param.point; *c != '\0'; ++c)
        if (*c != ':')
            name += *c;
    return name + std::to_string(info.param.nth);
}

constexpr const char* k_history = "History";
constexpr const char* k_recorded = "Recorded";
constexpr const char* k_direct = "Direct";

} // namespace

class RefusalTest : public InHostTest, public ::testing::WithParamInterface<Refusal> {
protected:
    RefusalTest() {
        const std::string history = GetParam().history;
        run(history == k_history ? "polyCube -n box" : "polyCube -ch 0 -n box");
        if (GetParam().tweaked)
            run("setAttr boxShape.pnts[2] 0.25 -0.5 0; setAttr boxShape.pnts[5] 0 0 1.5");
        run(history == k_direct ? "constructionHistory -tgl off" : "constructionHistory -tgl on");
        run("select -r box");
    }
    std::string upstream() {
        host::graph::Slot* const source = find("boxShape.inMesh")->source();
        return source == nullptr ? "" : source->path();
    }
};

TEST_P(RefusalTest, IsReturnedAndTheMeshIsUnchanged) {
    const std::string before = shown("boxShape");
    const std::string fed_by = upstream();
    const std::vector<std::string> nodes = names_of_nodes();
    {
        faultpoint::Scope refusal(GetParam().point, MS::kLicenseFailure, GetParam().nth);
        EXPECT_FALSE(run("tessora"));
        EXPECT_EQ(faultpoint::passes(GetParam().point) >= GetParam().nth, true);
    }
    EXPECT_NE(last_error.find("kLicenseFailure"), std::string::npos) << last_error;
    EXPECT_EQ(shown("boxShape"), before);
    EXPECT_EQ(upstream(), fed_by);
    EXPECT_EQ(names_of_nodes(), nodes);
}

TEST_P(RefusalTest, DoesNotAffectTheNextRun) {
    {
        faultpoint::Scope refusal(GetParam().point, MS::kLicenseFailure, GetParam().nth);
        run("tessora");
    }
    const std::string before = shown("boxShape");
    ASSERT_TRUE(run("tessora")) << last_error;
    EXPECT_NE(shown("boxShape"), before);
    ASSERT_TRUE(run("undo")) << last_error;
    EXPECT_EQ(shown("boxShape"), before);
}

INSTANTIATE_TEST_SUITE_P(
    Points, RefusalTest,
    ::testing::Values(Refusal{k_history, false, "MFnDagNode::parent", 1},
                      Refusal{k_history, false, "MFnDependencyNode::findPlug", 3},
                      Refusal{k_history, false, "MDGModifier::disconnect", 1},
                      Refusal{k_history, false, "MDGModifier::connect", 1},
                      Refusal{k_history, false, "MDGModifier::connect", 2},
                      Refusal{k_history, false, "MDGModifier::doIt", 1},
                      Refusal{k_history, true, "MDGModifier::createNode", 2},
                      Refusal{k_history, true, "MDGModifier::connect", 1},
                      Refusal{k_history, true, "MDGModifier::connect", 3},
                      Refusal{k_history, true, "MDGModifier::doIt", 1},
                      Refusal{k_history, true, "MPlug::numElements", 1},
                      Refusal{k_history, true, "MPlug::numElements", 2},
                      Refusal{k_history, true, "MPlug::elementByPhysicalIndex", 2},
                      Refusal{k_history, true, "MFnNumericData::getData", 2},
                      Refusal{k_history, true, "MPlug::logicalIndex", 2},
                      Refusal{k_history, true, "MPlug::child", 1},
                      Refusal{k_history, true, "MPlug::isConnected", 2},
                      Refusal{k_history, true, "MFnNumericData::create", 1},
                      Refusal{k_history, true, "MFnNumericData::setData", 4},
                      Refusal{k_recorded, true, "MPlug::numElements", 2},
                      Refusal{k_recorded, true, "MPlug::logicalIndex", 1},
                      Refusal{k_recorded, false, "MFnDagNode::duplicate", 1},
                      Refusal{k_recorded, false, "MFnDagNode::getPath", 1},
                      Refusal{k_recorded, false, "MDagModifier::reparentNode", 1},
                      Refusal{k_recorded, false, "MFnDagNode::setIntermediateObject", 1},
                      Refusal{k_recorded, false, "MDGModifier::deleteNode", 1},
                      Refusal{k_recorded, false, "MDGModifier::doIt", 1},
                      Refusal{k_recorded, false, "MDGModifier::doIt", 2},
                      Refusal{k_recorded, false, "MDGModifier::doIt", 3},
                      Refusal{k_recorded, false, "MDGModifier::connect", 2},
                      Refusal{k_recorded, true, "MDGModifier::createNode", 2},
                      Refusal{k_recorded, true, "MDGModifier::doIt", 3},
                      Refusal{k_recorded, true, "MDGModifier::connect", 2},
                      Refusal{k_direct, false, "MItMeshPolygon::MItMeshPolygon", 1},
                      Refusal{k_direct, true, "MItMeshPolygon::MItMeshPolygon", 1},
                      Refusal{k_direct, false, "MFnDagNode::duplicate", 1},
                      Refusal{k_direct, true, "MPlug::setValue", 1},
                      Refusal{k_direct, true, "MPlug::getValue", 2},
                      Refusal{k_direct, true, "MPlug::logicalIndex", 2}),
    name_of);

/// Redo stops half way at a point of the graph's modifiers.
class RedoRefusalTest : public InHostTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(RedoRefusalTest, CanBeUndoneAndTriedAgain) {
    const Refusal& refusal = GetParam();
    run(refusal.history == k_history ? "polyCube -n box" : "polyCube -ch 0 -n box");
    if (refusal.tweaked)
        run("setAttr boxShape.pnts[2] 0.25 -0.5 0");
    run("select -r box");
    const std::string before = shown("boxShape");
    const std::vector<std::string> nodes = names_of_nodes();
    ASSERT_TRUE(run("tessora")) << last_error;
    const std::string unwrapped = shown("boxShape");
    ASSERT_TRUE(run("undo")) << last_error;
    {
        faultpoint::Scope scope(refusal.point, MS::kLicenseFailure, refusal.nth);
        EXPECT_FALSE(run("redo"));
        EXPECT_GE(faultpoint::passes(refusal.point), refusal.nth);
    }
    EXPECT_EQ(shown("boxShape"), before);
    EXPECT_EQ(names_of_nodes(), nodes);
    EXPECT_TRUE(run("undo")) << last_error;
    EXPECT_EQ(shown("boxShape"), before);
    EXPECT_EQ(names_of_nodes(), nodes);
    EXPECT_TRUE(run("redo")) << last_error;
    EXPECT_EQ(shown("boxShape"), unwrapped);
}

INSTANTIATE_TEST_SUITE_P(Points, RedoRefusalTest,
                         ::testing::Values(Refusal{k_history, true, "MDGModifier::doIt", 1},
                                           Refusal{k_history, true, "MPlug::setValue", 1},
                                           Refusal{k_recorded, true, "MDGModifier::undoIt", 1},
                                           Refusal{k_recorded, false, "MDGModifier::doIt", 1},
                                           Refusal{k_recorded, true, "MDGModifier::doIt", 2},
                                           Refusal{k_recorded, true, "MPlug::setValue", 1}),
                         name_of);

} // namespace plugin_in_host
