// The plug-in's node: attributes, compute, published results, seams in the panels.
#include "host/base/strictness.h"
#include "tests/plugin_in_host/plugin_fixture.h"

#include <maya/MFnMesh.h>

namespace host::graph::testing {

namespace {

struct AttributeRow {
    const char* long_name;
    const char* short_name;
    const char* type;
    bool affects;
};

/// Attributes that scene files and users' scripts depend on.
constexpr AttributeRow k_rows[] = {
    {"inMesh", "im", "mesh", true},
    {"outMesh", "om", "mesh", false},
    {"UV_Set", "p_uv", "string", true},
    {"Charts", "p_ch", "long", true},
    {"Stretch", "p_st", "float", true},
    {"Padding", "p_pa", "long", true},
    {"Texture_Width", "p_wi", "long", true},
    {"Texture_Height", "p_he", "long", true},
    {"High_Quality", "p_hq", "bool", true},
    {"Keep_Borders", "p_ks", "bool", true},
    {"Cut_Grooves", "p_ug", "bool", true},
    {"Groove_Angle", "p_ga", "float", true},
    {"Cut_Ridges", "p_ur", "bool", true},
    {"Ridge_Angle", "p_ra", "float", true},
    {"Adjacency_Method", "p_am", "long", true},
    {"Epsilon", "p_ep", "float", true},
    {"Skip_compute", "p_sc", "long", true},
    {"Stretch_result", "res_s", "float", false},
    {"Charts_result", "res_c", "long", false},
    {"Mesh_path", "p_path", "string", false},
    {"Visualization", "p_vis", "bool", true},
};

constexpr size_t k_base_attributes = 4; ///< attributes of every node, before the plug-in's own

size_t callbacks_attached() {
    size_t count = 0;
    for (const char* panel : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
        count += Callbacks::current().of_panel(panel).size();
    return count;
}

} // namespace

class PluginNodeTest : public PluginTest {
protected:
    /// A cube with history, unwrapped by the command but not evaluated yet.
    Node& unwrapped() {
        shape_ = &add_cube_with_history();
        select(*shape_->parents().front());
        EXPECT_EQ(run("tessora"), MS::kSuccess);
        return plug(*shape_, "inMesh").source()->node();
    }
    /// Number of unwraps published since the last call.
    size_t unwraps() {
        size_t count = 0;
        for (const std::string& text : script.texts)
            count += text.find("Charts_result") != std::string::npos;
        script.texts.clear();
        return count;
    }
    MStatus pull_mesh(Node& node) { return evaluate(plug(node, "outMesh")); }
    std::string errors_of(const std::function<void()>& action) {
        ::testing::internal::CaptureStderr();
        action();
        return ::testing::internal::GetCapturedStderr();
    }

    MeshNode* shape_ = nullptr;
};

// === Attributes ==============================================================================

class PluginAttributeTest : public PluginNodeTest,
                            public ::testing::WithParamInterface<AttributeRow> {};

TEST_P(PluginAttributeTest, HasItsNamesTypeDefaultAndFlags) {
    const AttributeRow& row = GetParam();
    Node& node = add("tessora_node");
    const Attribute* attribute = node.find_attribute(row.long_name);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(node.find_attribute(row.short_name), attribute);
    EXPECT_STREQ(attribute->type_text(), row.type);
    const bool is_out = std::string(row.long_name) == "outMesh";
    EXPECT_EQ(attribute->flags.storable, !is_out);
    EXPECT_EQ(attribute->flags.writable, !is_out);
    EXPECT_TRUE(attribute->flags.readable && attribute->flags.connectable);
    EXPECT_FALSE(attribute->flags.keyable || attribute->flags.hidden || attribute->flags.array);
    EXPECT_FALSE(attribute->minimum || attribute->maximum);
    const Slot& slot = *node.slot(*attribute);
    EXPECT_EQ(slot.value.number(), 0.0);
    if (attribute->kind() == AttributeKind::text) {
        EXPECT_EQ(slot.value.as_text(), "");
    }
}

TEST_P(PluginAttributeTest, AffectsTheOutputAsListed) {
    const AttributeRow& row = GetParam();
    const std::string name = row.long_name;
    Node& node = add("tessora_node");
    Slot& out = plug(node, "outMesh");
    set_clean(out);
    if (name == "outMesh")
        return;
    if (name == "inMesh") {
        Node& maker = add("polyCube");
        connect(maker, "output", node, "inMesh");
    } else if (std::string(row.type) == "string") {
        EXPECT_EQ(set_value(plug(node, row.long_name), PlugValue::of_text("text")), MS::kSuccess);
    } else {
        set(node, row.long_name, 1.0);
    }
    EXPECT_EQ(is_clean(out), !row.affects);
}

INSTANTIATE_TEST_SUITE_P(Table, PluginAttributeTest, ::testing::ValuesIn(k_rows),
                         [](const auto& row) { return std::string(row.param.long_name); });

TEST_F(PluginNodeTest, AttributesAreInTheOrderOfTheTable) {
    const NodeTypeRef type = scene.find_type("tessora_node");
    ASSERT_EQ(type->attributes().size(), k_base_attributes + std::size(k_rows));
    for (size_t i = 0; i < std::size(k_rows); ++i)
        EXPECT_EQ(type->attributes()[k_base_attributes + i]->long_name(), k_rows[i].long_name);
}

TEST_F(PluginNodeTest, SkipComputeAcceptsAnyInteger) {
    Node& node = add("tessora_node");
    for (const double value : {-3.0, 2.0, 70000.0}) {
        set(node, "Skip_compute", value);
        EXPECT_EQ(pull(node, "Skip_compute"), value);
    }
}

// === Compute =================================================================================

TEST_F(PluginNodeTest, TheFirstPassWithoutVisualizationOnlyDetachesAndTheSecondUnwraps) {
    Node& maker = add("polyCube");
    Node& node = add("tessora_node");
    connect(maker, "output", node, "inMesh");
    EXPECT_EQ(set_value(plug(node, "UV_Set"), PlugValue::of_text("map1")), MS::kSuccess);
    EXPECT_EQ(pull_mesh(node), MS::kSuccess);
    EXPECT_EQ(plug(node, "outMesh").value.as_data(), nullptr);
    EXPECT_EQ(unwraps(), 0u);
    EXPECT_EQ(pull_mesh(node), MS::kSuccess);
    EXPECT_NE(plug(node, "outMesh").value.as_data(), nullptr);
    EXPECT_EQ(unwraps(), 1u);
}

TEST_F(PluginNodeTest, AfterTheFirstUnwrapTheNodeSkipsUntilSkipComputeChanges) {
    Node& node = unwrapped();
    shown(*shape_);
    EXPECT_EQ(unwraps(), 1u);
    for (int i = 0; i < 4; ++i) {
        set(node, "Padding", 3 + i);
        shown(*shape_);
        EXPECT_EQ(unwraps(), 0u);
        EXPECT_FALSE(
            is_clean(plug(node, "outMesh"))); // stays dirty: every read calls compute again
    }
}

TEST_F(PluginNodeTest, SkippingKeepsThePreviousOutput) {
    Node& node = unwrapped();
    const std::string before = shown(*shape_);
    set(plug(node, "inMesh").source()->node(), "width", 5);
    EXPECT_EQ(shown(*shape_), before);
}

TEST_F(PluginNodeTest, AnyOtherSkipComputeValueUnwrapsOnceAndThenSkips) {
    Node& node = unwrapped();
    shown(*shape_);
    unwraps();
    for (const double value : {0.0, 2.0, -1.0, 0.0}) {
        set(node, "Skip_compute", value);
        shown(*shape_);
        EXPECT_EQ(unwraps(), 1u);
        EXPECT_EQ(pull(node, "Skip_compute"), 1.0);
        shown(*shape_);
        EXPECT_EQ(unwraps(), 0u);
    }
}

TEST_F(PluginNodeTest, ChangingVisualizationTakesOnePassAndTheNextOneUnwraps) {
    Node& node = unwrapped();
    shown(*shape_);
    unwraps();
    EXPECT_EQ(callbacks_attached(), 4u);
    set(node, "Visualization", 0);
    set(node, "Skip_compute", 0);
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 0u);
    EXPECT_EQ(unwraps(), 0u);
    shown(*shape_); // unwrapping attaches the callbacks again, even with Visualization off
    EXPECT_EQ(unwraps(), 1u);
    EXPECT_EQ(callbacks_attached(), 4u);
    set(node, "Visualization", 1);
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    EXPECT_EQ(unwraps(), 0u);
}

TEST_F(PluginNodeTest, WithNodeStateHasNoEffectTheOutputIsTheInputAndSeamsDisappear) {
    Node& node = unwrapped();
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    unwraps();
    for (int i = 0; i < 4; ++i) {
        set(node, "nodeState", 1);
        set(node, "Skip_compute", 0);
        Slot& source = *plug(node, "inMesh").source();
        evaluate(source);
        EXPECT_EQ(shown(*shape_), bytes_of(*source.value.as_data()->as_mesh()->mesh()));
        EXPECT_EQ(callbacks_attached(), 0u);
        EXPECT_EQ(unwraps(), 0u);
    }
    set(node, "nodeState", 0);
    set(node, "Skip_compute", 0);
    shown(*shape_);
    EXPECT_EQ(unwraps(), 1u);
    EXPECT_EQ(callbacks_attached(), 4u);
}

TEST_F(PluginNodeTest, ResultsArePublishedByOneCommandWithTheNodesName) {
    Node& node = unwrapped();
    scene.rename(node, "a_rather_long_name_" + std::string(3000, 'x'));
    shown(*shape_);
    std::string published;
    for (const std::string& text : script.texts)
        if (text.find("Charts_result") != std::string::npos)
            published = text;
    char expected[8192];
    std::snprintf(expected, sizeof(expected),
                  "setAttr \"%s.Charts_result\" %d; setAttr \"%s.Stretch_result\" %f;",
                  node.name_text().c_str(), int(pull(node, "Charts_result")),
                  node.name_text().c_str(), pull(node, "Stretch_result"));
    EXPECT_EQ(published, expected);
    EXPECT_GT(pull(node, "Charts_result"), 0.0);
}

TEST_F(PluginNodeTest, PublishingLeavesTheOutputCleanAndRecordsNoUndo) {
    Node& node = unwrapped();
    const size_t entries = undo.undo_count();
    shown(*shape_);
    EXPECT_TRUE(is_clean(plug(node, "outMesh")));
    EXPECT_EQ(undo.undo_count(), entries);
}

TEST_F(PluginNodeTest, TheInputMeshKeepsItsUvs) {
    Node& node = unwrapped();
    Slot& source = *plug(node, "inMesh").source();
    evaluate(source);
    const std::string before = bytes_of(*source.value.as_data()->as_mesh()->mesh());
    shown(*shape_);
    EXPECT_EQ(bytes_of(*source.value.as_data()->as_mesh()->mesh()), before);
}

TEST_F(PluginNodeTest, AnUnknownMeshPathStillAttachesTheOverlay) {
    Node& node = unwrapped();
    EXPECT_EQ(set_value(plug(node, "Mesh_path"), PlugValue::of_text("|no|where")), MS::kSuccess);
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    EXPECT_EQ(unwraps(), 1u);
    // The path stayed empty: the first redraw finds no mesh and removes the callbacks.
    Callbacks::current().fire_post_render("modelPanel1");
    EXPECT_EQ(callbacks_attached(), 0u);
}

// === Seams in the panels =====================================================================

TEST_F(PluginNodeTest, UnwrappingTwiceLeavesOneCallbackPerPanel) {
    Node& node = unwrapped();
    shown(*shape_);
    set(node, "Skip_compute", 0);
    shown(*shape_);
    for (const char* panel : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
        EXPECT_EQ(Callbacks::current().of_panel(panel).size(), 1u);
}

TEST_F(PluginNodeTest, ResultsAndMeshPathDoNotMakeTheNodeUnwrapAgain) {
    Node& node = unwrapped();
    shown(*shape_);
    // Written past the graph, so that the output stays clean and a further unwrap would not be
    // skipped.
    plug(node, "Skip_compute").value = PlugValue::of_double(0);
    unwraps();
    set(node, "Charts_result", 7);
    set(node, "Stretch_result", 0.5);
    EXPECT_EQ(set_value(plug(node, "Mesh_path"), PlugValue::of_text("|elsewhere")), MS::kSuccess);
    shown(*shape_);
    EXPECT_EQ(unwraps(), 0u);
    set(node, "Padding", 3);
    shown(*shape_);
    EXPECT_EQ(unwraps(), 1u);
}

TEST_F(PluginNodeTest, AMeshPathThatResolvesToNothingKeepsTheOldOne) {
    Node& node = unwrapped();
    shown(*shape_);
    EXPECT_EQ(set_value(plug(node, "Mesh_path"), PlugValue::of_text("|no|where")), MS::kSuccess);
    set(node, "Skip_compute", 0);
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    Callbacks::current().fire_post_render("modelPanel1");
    EXPECT_EQ(callbacks_attached(), 4u);
}

TEST_F(PluginNodeTest, AFailingUnwrapLeavesTheCallbacksAttached) {
    Node& node = unwrapped();
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    set(node, "Skip_compute", 0);
    faultpoint::Scope scope("MFnMesh::clearUVs", MS::kLicenseFailure);
    errors_of([&] { EXPECT_FALSE(pull_mesh(node)); });
    EXPECT_EQ(callbacks_attached(), 4u);
}

TEST_F(PluginNodeTest, DestroyingTheNodeRemovesItsCallbacks) {
    const bool was_strict = is_strict();
    set_strict(true); // the pre-removal callback is then not called by undo
    unwrapped();
    shown(*shape_);
    undo.undo();
    EXPECT_EQ(callbacks_attached(), 4u);
    undo.clear();
    EXPECT_EQ(callbacks_attached(), 0u);
    set_strict(was_strict);
}

TEST_F(PluginNodeTest, ForcedUnloadingLeavesNoCallbackOnTheNode) {
    const bool was_strict = is_strict();
    set_strict(true); // which reports calls into unloaded code
    Node& node = unwrapped();
    shown(*shape_);
    ASSERT_EQ(Plugins::current().unload("tessora", true, error), MS::kSuccess) << error;
    EXPECT_TRUE(Callbacks::current().of_node(node).empty());
    EXPECT_EQ(callbacks_attached(), 0u);
    script.lines.clear();
    scene.remove(node);
    EXPECT_TRUE(script.lines.empty());
    set_strict(was_strict);
}

TEST_F(PluginNodeTest, DeletingTheNodeRemovesItsCallbacks) {
    Node& node = unwrapped();
    shown(*shape_);
    EXPECT_EQ(callbacks_attached(), 4u);
    scene.remove(node);
    EXPECT_EQ(callbacks_attached(), 0u);
}

TEST_F(PluginNodeTest, UndoingTheCommandRemovesTheCallbacksByTheNextRedraw) {
    unwrapped();
    shown(*shape_);
    undo.undo();
    Callbacks::current().fire_post_render("modelPanel1");
    EXPECT_EQ(callbacks_attached(), 0u);
}

TEST_F(PluginNodeTest, RedoingACommandThatHasNotUnwrappedYetAttachesNoCallbacks) {
    unwrapped();
    undo.undo();
    undo.redo();
    EXPECT_EQ(callbacks_attached(), 0u);
}

TEST_F(PluginNodeTest, TheFirstRedrawAfterTheMeshIsDeletedRemovesTheCallbacks) {
    unwrapped();
    shown(*shape_);
    scene.remove(*shape_->parents().front());
    EXPECT_EQ(callbacks_attached(), 4u);
    Callbacks::current().fire_post_render("modelPanel2");
    EXPECT_EQ(callbacks_attached(), 0u);
}

TEST_F(PluginNodeTest, AFailingPanelCallbackIsReportedAndOtherPanelsAreAttached) {
    Node& node = unwrapped();
    std::string text;
    {
        faultpoint::Scope refused("MUiMessage::add3dViewPostRenderMsgCallback",
                                  MS::kInvalidParameter, 3);
        faultpoint::Scope view("M3dView::getM3dViewFromModelPanel", MS::kInvalidParameter);
        text = errors_of([&] { EXPECT_EQ(pull_mesh(node), MS::kFailure); });
    }
    EXPECT_EQ(callbacks_attached(), 3u);
    EXPECT_NE(text.find("Could not attach postrender callback to panel modelPanel3: "
                        "(kInvalidParameter)"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\n\nCould not attach viewport callback\n"), std::string::npos) << text;
    // The id of the failed registration was stored; removing it fails and is reported.
    set(node, "Visualization", 0);
    text = errors_of([&] { pull_mesh(node); });
    EXPECT_EQ(text, "Failed to clear viewport callback 2\n\n");
}

// === Failures of the compute =================================================================

struct ReadFault {
    const char* point;
    unsigned nth;
    const char* text;
};

class PluginReadFaultTest : public PluginNodeTest,
                            public ::testing::WithParamInterface<ReadFault> {};

TEST_P(PluginReadFaultTest, IsReportedAndReturned) {
    Node& node = unwrapped();
    // The second pass reads every input.
    shown(*shape_);
    set(node, "Skip_compute", 0);
    const ReadFault& fault = GetParam();
    faultpoint::Scope scope(fault.point, MS::kLicenseFailure, fault.nth);
    const std::string text = errors_of([&] { EXPECT_EQ(pull_mesh(node), MS::kLicenseFailure); });
    EXPECT_EQ(text, std::string(fault.text) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Reads, PluginReadFaultTest,
    ::testing::Values(
        ReadFault{"MDataBlock::inputValue", 1, "Retrieving settings failed (visualization)"},
        ReadFault{"MDataBlock::inputValue", 2, "ERROR getting inMesh"},
        ReadFault{"MDataBlock::outputValue", 1, "ERROR getting outMesh"},
        ReadFault{"MDataBlock::inputValue", 3, "Retrieving settings failed (skip_compute)"},
        ReadFault{"MDataHandle::set", 1, "ERROR setting outMesh"},
        ReadFault{"MDataBlock::outputValue", 2, "ERROR getting state"},
        ReadFault{"MDataBlock::inputValue", 4, "Retrieving settings failed (uv_set)"},
        ReadFault{"MDataBlock::inputValue", 5, "Retrieving settings failed (charts)"},
        ReadFault{"MDataBlock::inputValue", 6, "Retrieving settings failed (stretch)"},
        ReadFault{"MDataBlock::inputValue", 7, "Retrieving settings failed (padding)"},
        ReadFault{"MDataBlock::inputValue", 8, "Retrieving settings failed (tex_width)"},
        ReadFault{"MDataBlock::inputValue", 9, "Retrieving settings failed (tex_height)"},
        ReadFault{"MDataBlock::inputValue", 10, "Retrieving settings failed (high_quality)"},
        ReadFault{"MDataBlock::inputValue", 11, "Retrieving settings failed (keep_seams)"},
        ReadFault{"MDataBlock::inputValue", 12, "Retrieving settings failed (use_grooves)"},
        ReadFault{"MDataBlock::inputValue", 13, "Retrieving settings failed (groove_angle)"},
        ReadFault{"MDataBlock::inputValue", 14, "Retrieving settings failed (use_ridges)"},
        ReadFault{"MDataBlock::inputValue", 15, "Retrieving settings failed (ridge_angle)"},
        ReadFault{"MDataBlock::inputValue", 16, "Retrieving settings failed (adjacency_method)"},
        ReadFault{"MDataBlock::inputValue", 17, "Retrieving settings failed (epsilon)"},
        ReadFault{"MDataBlock::inputValue", 18, "Retrieving settings failed (str_mesh_path)"}));

TEST_F(PluginNodeTest, IfTheInputCannotBeCopiedTheNextEvaluationUnwraps) {
    Node& node = unwrapped();
    {
        faultpoint::Scope scope("MDataHandle::set", MS::kLicenseFailure);
        errors_of([&] { EXPECT_EQ(pull_mesh(node), MS::kLicenseFailure); });
    }
    EXPECT_EQ(unwraps(), 0u);
    EXPECT_EQ(pull_mesh(node), MS::kSuccess);
    EXPECT_EQ(unwraps(), 1u);
}

TEST_F(PluginNodeTest, AFailingPreRemovalRegistrationIsAWarning) {
    Node& node = unwrapped();
    faultpoint::Scope scope("MNodeMessage::addNodePreRemovalCallback", MS::kFailure);
    EXPECT_EQ(pull_mesh(node), MS::kSuccess);
    ASSERT_FALSE(script.lines.empty());
    EXPECT_EQ(script.lines.back(), "Could not attach pre_removal_callback for tmod_node.");
    EXPECT_EQ(unwraps(), 1u);
}

TEST_F(PluginNodeTest, FailingToPublishResultsIsIgnored) {
    Node& node = unwrapped();
    faultpoint::Scope scope("MGlobal::executeCommand", MS::kFailure);
    EXPECT_EQ(pull_mesh(node), MS::kSuccess);
    EXPECT_EQ(callbacks_attached(), 4u);
}

TEST_F(PluginNodeTest, AFailingUnwrapCleansTheOutputAndPublishesNoResults) {
    Node& node = unwrapped();
    EXPECT_EQ(set_value(plug(node, "UV_Set"), PlugValue::of_text("unwrap")), MS::kSuccess);
    faultpoint::Scope scope("MFnMesh::createUVSetDataMesh", MS::kLicenseFailure);
    errors_of([&] { EXPECT_FALSE(pull_mesh(node)); });
    EXPECT_EQ(unwraps(), 0u);
    EXPECT_EQ(callbacks_attached(), 0u);
    EXPECT_TRUE(is_clean(plug(node, "outMesh")));
}

// === Failures of the registration ============================================================

struct AttributeFault {
    const char* point;
    unsigned nth;
    const char* text;
};

class PluginInitializerTest : public PluginNodeTest,
                              public ::testing::WithParamInterface<AttributeFault> {};

TEST_P(PluginInitializerTest, IsReportedAndReturned) {
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess);
    const AttributeFault& fault = GetParam();
    MStatus status;
    std::string text;
    {
        faultpoint::Scope scope(fault.point, MS::kEndOfFile, fault.nth);
        text = errors_of([&] { status = load(); });
    }
    EXPECT_EQ(status, MS::kEndOfFile);
    EXPECT_EQ(text, std::string(fault.text) + "\nFailed to register \"tessora_node\"\n: " +
                        MStatus(MS::kEndOfFile).errorString().asChar() + "\n");
    EXPECT_TRUE(Commands::current().knows("tessora")); // registered before the failure
    EXPECT_FALSE(Plugins::current().is_loaded("tessora"));
    EXPECT_EQ(Plugins::current().unload("tessora", true, error), MS::kInvalidParameter);
}

namespace {

std::vector<AttributeFault> initializer_faults() {
    static const char* const k_adds[] = {"addAttribute",
                                         "addAttribute",
                                         "addAttribute uv_set failed",
                                         "addAttribute charts failed",
                                         "addAttribute stretch failed",
                                         "addAttribute padding failed",
                                         "addAttribute width failed",
                                         "addAttribute height failed",
                                         "addAttribute quality failed",
                                         "addAttribute seams failed",
                                         "addAttribute use_grooves failed",
                                         "addAttribute groove_angle failed",
                                         "addAttribute use_ridges failed",
                                         "addAttribute ridge_angle failed",
                                         "addAttribute amethod failed",
                                         "addAttribute epsilon failed",
                                         "addAttribute skip_compute failed",
                                         "addAttribute res_stretch failed",
                                         "addAttribute res_charts failed",
                                         "addAttribute mesh_path failed",
                                         "addAttribute visualize failed"};
    static const char* const k_affects[] = {"attributeAffects",
                                            "attributeAffects (uv_set)",
                                            "attributeAffects (charts)",
                                            "attributeAffects (stretch)",
                                            "attributeAffects (padding)",
                                            "attributeAffects (tex_width)",
                                            "attributeAffects (tex_height)",
                                            "attributeAffects (high_quality)",
                                            "attributeAffects (keep_seams)",
                                            "attributeAffects (use_grooves)",
                                            "attributeAffects (groove_angle)",
                                            "attributeAffects (use_ridges)",
                                            "attributeAffects (ridge_angle)",
                                            "attributeAffects (adjacency_method)",
                                            "attributeAffects (epsilon)",
                                            "attributeAffects (skip_compute)",
                                            "attributeAffects (visualize)"};
    std::vector<AttributeFault> faults;
    for (unsigned i = 0; i < std::size(k_adds); ++i)
        faults.push_back({"MPxNode::addAttribute", i + 1, k_adds[i]});
    for (unsigned i = 0; i < std::size(k_affects); ++i)
        faults.push_back({"MPxNode::attributeAffects", i + 1, k_affects[i]});
    return faults;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Steps, PluginInitializerTest, ::testing::ValuesIn(initializer_faults()));

} // namespace host::graph::testing
