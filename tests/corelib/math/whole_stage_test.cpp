/// Runs the whole atlas stage, from vertex and index lists to UVs, over the real platform and
/// engine.

#include "corelib/math/atlas_mesh.h"
#include "corelib/math/run_uvatlas.h"
#include "corelib/math/uv_adjustments.h"
#include "platform/d3dx9/inspect.h"
#include "tests/corelib/math/math_fixture.h"

#include <algorithm>

namespace {

/// A cube of quads in triangles, wound outwards.
const std::vector<uint32_t> k_cube = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                      2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};

array<Vertex> cube_corners() {
    array<Vertex> vertices;
    for (uint32_t i = 0; i < 8; ++i)
        vertices.append(Vertex{static_cast<float>(i & 1), static_cast<float>(i >> 1 & 1),
                               static_cast<float>(i >> 2 & 1), 0.0f, 0.0f});
    return vertices;
}

/// The diagonal of a quad is the third edge of its first triangle and the first edge of its second.
std::vector<uint32_t> cube_false_edges() {
    std::vector<uint32_t> false_edges(k_cube.size(), k_none);
    for (size_t quad = 0; quad < 6; ++quad)
        false_edges[6 * quad + 2] = false_edges[6 * quad + 3] = 0;
    return false_edges;
}

int32_t progress_calls;
float last_progress;

int32_t hear(float fraction) {
    ++progress_calls;
    last_progress = fraction;
    return 0;
}

class WholeStage : public LoggedLines {
protected:
    /// Unwraps the cube with all edges between quads cut, or with none cut.
    bool unwrap(uint32_t max_charts, bool cut_everything, uint32_t width, uint32_t height) {
        EXPECT_TRUE(create_device(context_, nullptr, max_charts, 0.25f, width, height, 2.0f, true));
        ID3DXMesh* const mesh = create_mesh(context_, cube_corners(), list_of(k_cube));
        std::vector<uint32_t> adjacency(k_cube.size());
        EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(nullptr, adjacency.data()), D3D_OK);
        std::vector<uint32_t> false_edges = cube_false_edges();
        for (size_t edge = 0; cut_everything && edge < adjacency.size(); ++edge)
            if (false_edges[edge] == k_none)
                adjacency[edge] = k_none;
        ID3DXMesh* out_mesh = nullptr;
        ID3DXBuffer* remap_buffer = nullptr;
        bool made = run_uvatlas(context_, mesh, &out_mesh, &remap_buffer, progress_callback<hear>,
                                true, nullptr, nullptr, adjacency.data(), false_edges.data(), true);
        if (made) {
            EXPECT_TRUE(fit_uv_range(context_, out_mesh));
            EXPECT_TRUE(correct_aspect(context_, out_mesh));
            EXPECT_TRUE(apply_gutter_margin(context_, out_mesh));
            made = read_back(context_, out_mesh, vertices_, indices_);
            out_mesh->Release();
            remap_buffer->Release();
        }
        mesh->Release();
        release_device(context_);
        return made;
    }

    void expect_corners_kept_and_coordinates_inside() {
        ASSERT_EQ(indices_.count(), k_cube.size());
        const array<Vertex> corners = cube_corners();
        for (uint32_t i = 0; i < indices_.count(); ++i) {
            const Vertex made = vertices_.get(indices_.get(i));
            const Vertex source = corners.get(k_cube[i]);
            EXPECT_EQ(made.x, source.x);
            EXPECT_EQ(made.y, source.y);
            EXPECT_EQ(made.z, source.z);
            EXPECT_GE(std::min(made.u, made.v), 0.0f);
            EXPECT_LE(std::max(made.u, made.v), 1.0f);
        }
    }

    std::vector<float> coordinates() const {
        std::vector<float> result;
        for (uint32_t i = 0; i < vertices_.count(); ++i) {
            result.push_back(vertices_.get(i).u);
            result.push_back(vertices_.get(i).v);
        }
        return result;
    }

    AtlasContext context_;
    array<Vertex> vertices_;
    array<uint32_t> indices_;
};

TEST_F(WholeStage, CubeWithAllEdgesCutHasOneChartPerQuad) {
    progress_calls = 0;
    const unsigned before = d3dx9_live_objects();
    ASSERT_TRUE(unwrap(0, true, 128, 128));
    EXPECT_EQ(context_.charts_out, 6u);
    EXPECT_EQ(vertices_.count(), 24u);
    EXPECT_LT(context_.stretch_out, 1e-3f);
    expect_corners_kept_and_coordinates_inside();
    EXPECT_GT(progress_calls, 1);
    EXPECT_LE(progress_calls, 11);
    EXPECT_EQ(last_progress, 1.0f);
    EXPECT_EQ(d3dx9_live_objects(), before);
}

TEST_F(WholeStage, CoordinatesStayInsideTexturesThatAreNotSquare) {
    ASSERT_TRUE(unwrap(0, true, 256, 64));
    expect_corners_kept_and_coordinates_inside();
    ASSERT_TRUE(unwrap(0, false, 64, 128));
    expect_corners_kept_and_coordinates_inside();
}

TEST_F(WholeStage, ChartLimitThatIsTooLowLogsTheMinimum) {
    EXPECT_FALSE(unwrap(2, true, 128, 128));
    EXPECT_EQ(logged(), "Minimum number of charts is 6");
    EXPECT_EQ(context_.charts_out, 0u);
}

TEST_F(WholeStage, ChartLimitThatIsEnoughChangesNothing) {
    ASSERT_TRUE(unwrap(0, true, 128, 128));
    const std::vector<float> without_limit = coordinates();
    ASSERT_TRUE(unwrap(10, true, 128, 128));
    EXPECT_EQ(coordinates(), without_limit);
}

TEST_F(WholeStage, TextureWithoutRoomForTheGuttersIsNotPossible) {
    EXPECT_FALSE(unwrap(0, true, 4, 4));
    EXPECT_EQ(logged(), "Unwrapping not possible. Try increasing the maximum number of charts, the "
                        "allowed stretch or the texture size.\n(D3DERR_MOREDATA)");
    EXPECT_STRNE(d3dx9_last_reason(), "");
}

} // namespace
