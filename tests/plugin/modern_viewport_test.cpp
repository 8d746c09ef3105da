/// The overlay as it is compiled with a kit that knows the modern viewport, which the embedded host
/// has not: its source is included here, with a view that tells which viewport a panel shows.
#include "tests/host/view/panel_fixture.h"

#include <maya/M3dView.h>
#include <maya/MSelectionList.h>
#include <maya/MTypes.h>

namespace {

class ModernView : public M3dView {
public:
    enum RendererName {
        kDefaultQualityRenderer,
        kHighQualityRenderer,
        kExternalRenderer,
        kViewport2Renderer
    };
    RendererName getRendererName(MStatus* status) const {
        *status = renderer_status;
        return renderer;
    }
    static RendererName renderer;
    static MStatus renderer_status;
};
ModernView::RendererName ModernView::renderer = kDefaultQualityRenderer;
MStatus ModernView::renderer_status;

} // namespace

#undef MAYA_API_VERSION
#define MAYA_API_VERSION 201200
#define M3dView ModernView
#include "plugin/viewport.cpp" // NOLINT(bugprone-suspicious-include)
#undef M3dView

namespace {

class ModernViewport : public panel_test::PanelTest {
protected:
    ModernViewport() {
        run("polyPlane -n sheet -w 2 -h 2 -sx 2 -sy 2; select -cl;"
            "setAttr topShape.orthographicWidth 4");
        MSelectionList list;
        list.add("sheetShape");
        EXPECT_TRUE(list.getDagPath(0, data.mesh_path));
        for (const int id : {3, 4, 4, 5})
            data.new_seams.append(id);
        EXPECT_TRUE(attach_viewport_callbacks(data));
    }
    ~ModernViewport() override { detach_viewport_callbacks(data); }

    /// Seams in the picture of the panel from above.
    size_t seams_shown() { return panel_test::count(draw(0), panel_test::k_blue); }

    VisualizationData data;
};

TEST_F(ModernViewport, ShowsNoSeamsAndIsWarnedOfOnce) {
    testing::internal::CaptureStderr();
    EXPECT_GT(seams_shown(), 0u);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ModernView::renderer = ModernView::kViewport2Renderer;
    testing::internal::CaptureStderr();
    for (int redraw = 0; redraw < 3; ++redraw)
        EXPECT_EQ(0u, seams_shown());
    EXPECT_EQ("// Warning: Seams are drawn in panels of the legacy viewport only.\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(4u, data.callback_ids.length()); // for when the panel changes its viewport
    ModernView::renderer_status =
        MS::kFailure; // a panel that does not say is taken for a legacy one
    EXPECT_GT(seams_shown(), 0u);
    ModernView::renderer_status = MS::kSuccess;
    ModernView::renderer = ModernView::kDefaultQualityRenderer;
    EXPECT_GT(seams_shown(), 0u);
}

} // namespace
