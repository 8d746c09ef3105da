/// The plug-in as it is built with a kit that draws in the modern viewport (modern_kit.h), loaded
/// into the embedded host. The tests stand in for that viewport.
#include "tests/fixtures/library_names.h"
#include "tests/platform/d3dx9/failing_new.h"
#include "tests/plugin_in_host/fixture.h"
#include "tests/plugin_in_host/mesh_seams.h"
#include "tests/plugin_in_host/modern_kit.h"

#include <maya/MSelectionList.h>

#include <algorithm>
#include <array>
#include <memory>

namespace plugin_in_host {
namespace {

using Place = std::array<double, 3>;
using Line = std::array<Place, 2>;
using Words = std::vector<std::string>;

class ModernDrawing : public InHostTest {
protected:
    ModernDrawing() { fixtures::keep_names_of(TESSORA_PLUGIN_FOLDER "/tessora.so"); }
    ~ModernDrawing() override {
        modern_kit::record().locator_status = MS::kSuccess;
        modern_kit::record().drawing_status = MS::kSuccess;
    }

    /// A sphere with UVs, unwrapped once with its seams kept.
    void unwrap_ball() {
        ASSERT_TRUE(run("polySphere -n ball -sx 16 -sy 12"));
        existing = seams_of(mesh());
        ASSERT_TRUE(run("select ball; tessora -keep_seams 1 -stretch 0.01")) << last_error;
        added = seams_of(mesh());
        for (const uint32_t seam : existing)
            added.erase(seam);
        ASSERT_GT(existing.size(), 4u);
        ASSERT_GT(added.size(), 4u);
    }
    const host::Mesh& mesh() {
        host::MeshFace& face = *scene.find("ballShape")->as_mesh();
        EXPECT_EQ(face.refresh(), MS::kSuccess);
        return *face.mesh();
    }
    /// A path to a shape below a transform, in place of a locator: the host has no locators.
    MDagPath locator_below(const std::string& transform) {
        EXPECT_TRUE(run("createNode camera -n locator -p " + transform)) << last_error;
        MSelectionList list;
        list.add("locator");
        MDagPath path;
        EXPECT_TRUE(list.getDagPath(0, path));
        drawing.reset(modern_kit::record().drawings.at(0).creator(path.node()));
        return path;
    }
    /// Draws one frame as the viewport does, with the data of the frame before.
    void draw(const MDagPath& locator) {
        shown = MHWRender::MUIDrawManager();
        MUserData* const next =
            drawing->prepareForDraw(locator, MDagPath(), MHWRender::MFrameContext(), data.get());
        if (next != data.get())
            data.reset(next);
        if (drawing->hasUIDrawables())
            drawing->addUIDrawables(locator, shown, MHWRender::MFrameContext(), data.get());
    }
    std::set<Line> lines_of(const Edges& edges) {
        std::set<Line> lines;
        for (const uint32_t edge : edges) {
            const auto& ends = mesh().connectivity().edge(edge);
            lines.insert(line(point(ends.first), point(ends.second)));
        }
        return lines;
    }
    Place point(uint32_t vertex) {
        const host::Float3& p = mesh().points()[vertex];
        return {double(p.x), double(p.y), double(p.z)};
    }
    static std::set<Line> lines_of(const MPointArray& ends) {
        std::set<Line> lines;
        for (unsigned int i = 0; i + 1 < ends.length(); i += 2)
            lines.insert(line({ends[i].x, ends[i].y, ends[i].z},
                              {ends[i + 1].x, ends[i + 1].y, ends[i + 1].z}));
        return lines;
    }
    /// A line whichever way round. The lists may name an edge once for each of its faces.
    static Line line(const Place& a, const Place& b) { return a < b ? Line{a, b} : Line{b, a}; }

    Edges existing, added;
    std::unique_ptr<MHWRender::MPxDrawOverride> drawing;
    std::unique_ptr<MUserData> data;
    MHWRender::MUIDrawManager shown;
};

// === Registration ============================================================================

TEST_F(ModernDrawing, ALocatorAndItsDrawingAreRegisteredUnderOneClassification) {
    const modern_kit::Record& record = modern_kit::record();
    ASSERT_EQ(record.locators.size(), 1u);
    ASSERT_EQ(record.drawings.size(), 1u);
    EXPECT_EQ(record.locators[0].name, "tessora_seams");
    EXPECT_EQ(record.locators[0].id, 0x113C41u);
    EXPECT_TRUE(record.locators[0].initialize());
    EXPECT_EQ(record.locators[0].classification, "drawdb/geometry/tessora_seams");
    EXPECT_EQ(record.drawings[0].classification, record.locators[0].classification);
    EXPECT_EQ(record.drawings[0].registrant, "tessora");
    const std::unique_ptr<MPxLocatorNode> node(
        static_cast<MPxLocatorNode*>(record.locators[0].creator()));
    EXPECT_NE(node, nullptr);
}

TEST_F(ModernDrawing, AnUnwrapCreatesNoLocator) {
    unwrap_ball();
    EXPECT_EQ(names_of_nodes(),
              (Words{"ball", "ballShape", "front", "frontShape", "persp", "perspShape",
                     "polySphere1", "side", "sideShape", "tessora_node1", "top", "topShape"}));
}

TEST_F(ModernDrawing, UnloadingTakesBothAway) {
    ASSERT_TRUE(run("unloadPlugin tessora")) << last_error;
    EXPECT_TRUE(modern_kit::record().locators.empty());
    EXPECT_TRUE(modern_kit::record().drawings.empty());
}

TEST_F(ModernDrawing, ARefusedLocatorIsToldAndDoesNotStopLoading) {
    ASSERT_TRUE(run("unloadPlugin tessora")) << last_error;
    modern_kit::record().locator_status = MS::kNotImplemented;
    EXPECT_TRUE(run("loadPlugin tessora")) << last_error;
    EXPECT_EQ(printed, std::string("warning: Seams cannot be shown in the modern viewport: ") +
                           MStatus(MS::kNotImplemented).errorString().asChar() + "\n");
    EXPECT_TRUE(modern_kit::record().drawings.empty());
    unwrap_ball();
    EXPECT_TRUE(run("file -f -new; unloadPlugin tessora")) << last_error;
}

TEST_F(ModernDrawing, ARefusedDrawingTakesTheLocatorWithIt) {
    ASSERT_TRUE(run("unloadPlugin tessora")) << last_error;
    modern_kit::record().drawing_status = MS::kFailure;
    EXPECT_TRUE(run("loadPlugin tessora")) << last_error;
    EXPECT_TRUE(modern_kit::record().locators.empty());
}

TEST_F(ModernDrawing, TheWarningOfAModernPanelNamesTheStatementThatShowsSeamsThere) {
    unwrap_ball();
    ASSERT_TRUE(run("createNode transform -n set; parent ball set")) << last_error;
    printed.clear();
    for (int redraw = 0; redraw < 3; ++redraw)
        host::graph::Callbacks::current().fire_post_render("modelPanel4");
    EXPECT_EQ(printed,
              "warning: Seams are drawn in panels of the legacy viewport only. To see them in the "
              "modern one, type: createNode -parent \"|set|ball\" tessora_seams\n");
}

// === Drawing =================================================================================

TEST_F(ModernDrawing, ShowsExistingSeamsGreenAndNewOnesBlue) {
    unwrap_ball();
    draw(locator_below("ball"));
    EXPECT_EQ(shown.calls, (Words{"begin", "depth priority 7", "width 3", "color 0 1 0 1", "lines",
                                  "color 0 0 1 1", "lines", "end"}));
    ASSERT_EQ(shown.lists.size(), 2u);
    EXPECT_EQ(lines_of(shown.lists[0]), lines_of(existing));
    EXPECT_EQ(lines_of(shown.lists[1]), lines_of(added));
}

TEST_F(ModernDrawing, AListWithoutSeamsHasNoColor) {
    ASSERT_TRUE(run("polySphere -n ball -sx 16 -sy 12; tessora -stretch 0.01")) << last_error;
    mesh();
    draw(locator_below("ball"));
    EXPECT_EQ(shown.calls,
              (Words{"begin", "depth priority 7", "width 3", "color 0 0 1 1", "lines", "end"}));
}

TEST_F(ModernDrawing, LinesMoveWithTheTransformAndAreNotMovedThemselves) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    ASSERT_TRUE(run("setAttr ball.translateX 5; setAttr ball.scaleY 3"));
    draw(locator);
    ASSERT_EQ(shown.lists.size(), 2u);
    EXPECT_EQ(lines_of(shown.lists[0]), lines_of(existing));
}

TEST_F(ModernDrawing, ShowsTheSeamsOfTheLastUnwrapWithTheSameData) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    draw(locator);
    const std::set<Line> before = lines_of(shown.lists.at(1));
    const MUserData* const first = data.get();
    const unsigned int ends = shown.lists.at(0).length();
    EXPECT_FALSE(first->is_deleted_after_use);
    ASSERT_TRUE(run("setAttr tessora_node1.Stretch 0.5; setAttr tessora_node1.Skip_compute 0"));
    mesh();
    draw(locator);
    EXPECT_EQ(data.get(), first);
    ASSERT_EQ(shown.lists.size(), 2u);
    EXPECT_EQ(shown.lists[0].length(), ends); // not those of the frame before as well
    EXPECT_EQ(lines_of(shown.lists[0]), lines_of(existing));
    EXPECT_NE(lines_of(shown.lists[1]), before);
}

TEST_F(ModernDrawing, ShowsTheSeamsOfEveryUnwrapInTheHistory) {
    unwrap_ball();
    ASSERT_TRUE(run("select ball; tessora -keep_seams 1 -stretch 0.01")) << last_error;
    mesh();
    Edges kept = existing; // by the second unwrap
    kept.insert(added.begin(), added.end());
    draw(locator_below("ball"));
    ASSERT_EQ(shown.lists.size(), 2u);
    EXPECT_EQ(lines_of(shown.lists[0]), lines_of(kept));
    const std::set<Line> blue = lines_of(shown.lists[1]), of_the_first = lines_of(added);
    EXPECT_TRUE(std::includes(blue.begin(), blue.end(), of_the_first.begin(), of_the_first.end()));
}

TEST_F(ModernDrawing, TheBoxIsThatOfTheMesh) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    EXPECT_TRUE(drawing->isBounded(locator, MDagPath()));
    const MBoundingBox box = drawing->boundingBox(locator, MDagPath());
    EXPECT_FALSE(box.is_empty);
    EXPECT_NEAR(box.min.y, -1.0, 1e-6);
    EXPECT_NEAR(box.max.y, 1.0, 1e-6);
}

TEST_F(ModernDrawing, DrawsOnEveryDeviceAndByTheManagerAlone) {
    locator_below("persp");
    EXPECT_EQ(drawing->supportedDrawAPIs(), MHWRender::kAllDevices);
    drawing->draw(MHWRender::MDrawContext(), nullptr);
}

TEST_F(ModernDrawing, WhereMemoryRunsOutAllSeamsAreShownOrNone) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    draw(locator);
    const Words all = shown.calls;
    const size_t lines = lines_of(shown.lists.at(1)).size();
    int empty = 0;
    for (unsigned failing = 1; failing < 10000; ++failing) {
        bool happened = false;
        {
            const FailingNew failing_new(failing);
            data.reset(
                drawing->prepareForDraw(locator, MDagPath(), MHWRender::MFrameContext(), nullptr));
            happened = FailingNew::happened();
        }
        {
            const FailingNew failing_new(failing);
            drawing->boundingBox(locator, MDagPath()); // must not throw
        }
        shown = MHWRender::MUIDrawManager();
        drawing->addUIDrawables(locator, shown, MHWRender::MFrameContext(), data.get());
        empty += shown.calls.empty();
        if (!shown.calls.empty()) {
            EXPECT_EQ(shown.calls, all);
            EXPECT_EQ(lines_of(shown.lists.at(1)).size(), lines);
        }
        if (!happened)
            break;
    }
    EXPECT_GT(empty, 3);
    EXPECT_FALSE(shown.calls.empty()) << "without a failure at last";
}

// === Nothing to show =========================================================================

TEST_F(ModernDrawing, ALocatorWithoutMeshShowsNothing) {
    unwrap_ball();
    ASSERT_TRUE(run("createNode transform -n alone"));
    const MDagPath locator = locator_below("alone");
    draw(locator);
    EXPECT_EQ(shown.calls, Words());
    EXPECT_TRUE(drawing->boundingBox(locator, MDagPath()).is_empty);
}

TEST_F(ModernDrawing, AMeshThatWasNotUnwrappedShowsNothing) {
    unwrap_ball();
    ASSERT_TRUE(run("polySphere -n other"));
    draw(locator_below("other"));
    EXPECT_EQ(shown.calls, Words());
}

TEST_F(ModernDrawing, SeamsGoWithTheUnwrapThatIsUndoneAndComeBackWithRedo) {
    ASSERT_TRUE(run("polySphere -n ball -sx 16 -sy 12"));
    const MDagPath locator = locator_below("ball");
    ASSERT_TRUE(run("select ball; tessora")) << last_error;
    mesh();
    ASSERT_TRUE(run("undo")) << last_error;
    draw(locator);
    EXPECT_EQ(shown.calls, Words());
    ASSERT_TRUE(run("redo")) << last_error;
    mesh();
    draw(locator);
    EXPECT_FALSE(shown.calls.empty());
}

TEST_F(ModernDrawing, SeamsThatAreSwitchedOffAreNotShown) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    ASSERT_TRUE(run("setAttr tessora_node1.Visualization 0"));
    mesh();
    draw(locator);
    EXPECT_EQ(shown.calls, Words());
    ASSERT_TRUE(run("setAttr tessora_node1.Visualization 1"));
    mesh();
    draw(locator);
    EXPECT_FALSE(shown.calls.empty());
}

TEST_F(ModernDrawing, SeamsGoWithTheDeletedMesh) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    ASSERT_TRUE(run("delete ballShape")) << last_error;
    draw(locator);
    EXPECT_EQ(shown.calls, Words());
    EXPECT_TRUE(drawing->boundingBox(locator, MDagPath()).is_empty);
}

TEST_F(ModernDrawing, AMeshThatCannotBeReadShowsNothing) {
    unwrap_ball();
    const MDagPath locator = locator_below("ball");
    const faultpoint::Scope fault("MFnMesh::getPoints", MS::kFailure);
    draw(locator);
    EXPECT_EQ(shown.calls, Words());
}

} // namespace
} // namespace plugin_in_host
