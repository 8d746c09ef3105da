#include "atlas/polygon_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace {

using namespace tessora::atlas;
using Words = std::vector<uint32_t>;

template <class Value>
Array array_of(const std::vector<Value>& values, size_t components, Type type) {
    return {values.data(), values.size() / components, 0, type};
}

/// Owns the arrays of a mesh.
struct Made {
    std::vector<float> positions;
    Words indices, offsets;
    std::vector<uint8_t> cuts;

    PolygonMesh view() const {
        PolygonMesh mesh;
        mesh.positions = array_of(positions, 3, Type::float32);
        mesh.indices = array_of(indices, 1, Type::uint32);
        if (!offsets.empty())
            mesh.offsets = array_of(offsets, 1, Type::uint32);
        if (!cuts.empty())
            mesh.cuts = array_of(cuts, 1, Type::uint8);
        return mesh;
    }
};

/// Unit cube of six quads; corner 4p+k is at a vertex whose bits are its coordinates.
Made cube() {
    Made made;
    for (int v = 0; v < 8; ++v)
        for (int axis = 0; axis < 3; ++axis)
            made.positions.push_back(static_cast<float>((v >> axis) & 1));
    made.indices = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    made.offsets = {0, 4, 8, 12, 16, 20, 24};
    return made;
}

/// The cube with a vertex of its own for every corner.
Made split_cube() {
    Made made = cube();
    std::vector<float> positions;
    for (uint32_t& vertex : made.indices) {
        for (size_t k = 0; k < 3; ++k)
            positions.push_back(made.positions[3 * vertex + k]);
        vertex = static_cast<uint32_t>(positions.size() / 3 - 1);
    }
    made.positions = positions;
    return made;
}

PolygonAtlas unwrap(const PolygonMesh& mesh, UvSpace space = UvSpace::texture) {
    PolygonAtlas atlas;
    Options options;
    options.quality = Quality::fast;
    const Fault fault = create(mesh, options, space, atlas);
    EXPECT_EQ(fault.status, Status::ok) << fault.text;
    return atlas;
}

std::vector<float> corner_uvs(const PolygonAtlas& atlas) {
    std::vector<float> uvs;
    for (const uint32_t vertex : atlas.corner_vertex)
        uvs.insert(uvs.end(),
                   {atlas.triangles.uvs[2 * vertex], atlas.triangles.uvs[2 * vertex + 1]});
    return uvs;
}

std::string text_of_failure(const PolygonMesh& mesh, const Options& options = Options()) {
    PolygonAtlas atlas;
    const Fault fault = create(mesh, options, UvSpace::texture, atlas);
    EXPECT_NE(fault.status, Status::ok);
    EXPECT_TRUE(atlas.corner_vertex.empty() && atlas.triangles.uvs.empty());
    return fault.text;
}

// === Results
// =======================================================================================

TEST(PolygonMesh, EveryCornerGetsANewVertexOfItsOwnVertex) {
    const Made made = cube();
    const PolygonAtlas atlas = unwrap(made.view());
    ASSERT_EQ(atlas.corner_vertex.size(), made.indices.size());
    for (size_t c = 0; c < made.indices.size(); ++c)
        EXPECT_EQ(atlas.triangles.source_vertex[atlas.corner_vertex[c]], made.indices[c]);
}

TEST(PolygonMesh, TrianglesNameCornersOfOnePolygon) {
    const PolygonAtlas atlas = unwrap(cube().view());
    ASSERT_EQ(atlas.triangle_corner.size(), 36u);
    for (size_t e = 0; e < 36; ++e) {
        EXPECT_EQ(atlas.triangle_corner[e] / 4, e / 6);
        EXPECT_EQ(atlas.triangles.indices[e], atlas.corner_vertex[atlas.triangle_corner[e]]);
    }
}

TEST(PolygonMesh, TextureCoordinatesAreThoseOfToTexture) {
    const Made made = cube();
    PolygonAtlas plain, final;
    Options options;
    options.quality = Quality::fast;
    options.width = 1024;
    options.gutter = 7.0f;
    ASSERT_EQ(create(made.view(), options, UvSpace::isotropic, plain).status, Status::ok);
    ASSERT_EQ(create(made.view(), options, UvSpace::texture, final).status, Status::ok);
    to_texture(plain.triangles.uvs.data(), plain.triangles.uvs.size() / 2, 1024, 512, 7.0f);
    EXPECT_EQ(plain.triangles.uvs, final.triangles.uvs);
}

TEST(PolygonMesh, ToTextureLeavesHalfAGutterAtTheEndsOfTheLongerSide) {
    float uvs[] = {0.0f, 0.0f, 1.0f, 0.5f};
    to_texture(uvs, 2, 1024, 512, 16.0f);
    EXPECT_FLOAT_EQ(uvs[0], 8.0f / 1024);
    EXPECT_FLOAT_EQ(uvs[2], 1 - 32.0f / 1024 + 8.0f / 1024);
    EXPECT_FLOAT_EQ(uvs[3], uvs[2]);
}

TEST(PolygonMesh, PartitionGivesNeighboursWithChartBordersOpen) {
    Made made = cube();
    made.cuts.assign(24, 1);
    PolygonAtlas atlas;
    ASSERT_EQ(partition(made.view(), Options(), atlas).status, Status::ok);
    EXPECT_EQ(atlas.triangles.chart_count, 6u);
    ASSERT_EQ(atlas.neighbours.size(), 36u);
    EXPECT_EQ(std::count(atlas.neighbours.begin(), atlas.neighbours.end(), k_none), 24);
}

TEST(PolygonMesh, AMeshWithoutPolygonsGivesAnEmptyAtlas) {
    const PolygonAtlas atlas = unwrap(PolygonMesh());
    EXPECT_EQ(atlas.triangles.chart_count, 0u);
    EXPECT_TRUE(atlas.corner_vertex.empty());
}

// === Types and strides
// =============================================================================

TEST(PolygonMesh, SixteenBitIndicesGiveTheSameBits) {
    const Made made = cube();
    const std::vector<uint16_t> narrow(made.indices.begin(), made.indices.end());
    PolygonMesh mesh = made.view();
    mesh.indices = array_of(narrow, 1, Type::uint16);
    EXPECT_EQ(corner_uvs(unwrap(mesh)), corner_uvs(unwrap(made.view())));
}

TEST(PolygonMesh, InterleavedArraysGiveTheSameBits) {
    const Made made = cube();
    std::vector<float> vertices; // position, normal, one float of something else
    for (size_t v = 0; v < 8; ++v) {
        vertices.insert(vertices.end(), &made.positions[3 * v], &made.positions[3 * v] + 3);
        vertices.insert(vertices.end(), 4, 9.0f);
    }
    Words corners;
    for (const uint32_t vertex : made.indices)
        corners.insert(corners.end(), {vertex, 77, 78});
    PolygonMesh mesh = made.view();
    mesh.positions = {vertices.data(), 8, 7 * sizeof(float), Type::float32};
    mesh.indices = {corners.data(), 24, 12, Type::uint32};
    EXPECT_EQ(corner_uvs(unwrap(mesh)), corner_uvs(unwrap(made.view())));
}

TEST(PolygonMesh, DoublePrecisionDoesNotDependOnUnitAndPlace) {
    const Made made = cube();
    std::vector<double> near, far;
    for (const float x : made.positions) {
        near.push_back(static_cast<double>(x) * 0.5 - 0.25);
        far.push_back(static_cast<double>(x) * 512 + 1048576.0 * 1048576);
    }
    PolygonMesh mesh = made.view();
    mesh.positions = array_of(near, 3, Type::float64);
    const std::vector<float> expected = corner_uvs(unwrap(mesh));
    mesh.positions = array_of(far, 3, Type::float64);
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 1u);
    EXPECT_EQ(corner_uvs(unwrap(mesh)).size(), expected.size());
    for (double& x : near)
        x *= 1000;
    mesh.positions = array_of(near, 3, Type::float64);
    EXPECT_EQ(corner_uvs(unwrap(mesh)), expected);
}

// === Neighbours
// ====================================================================================

TEST(PolygonMesh, WithoutWeldingSplitVerticesTearTheMesh) {
    EXPECT_EQ(unwrap(split_cube().view()).triangles.chart_count, 6u);
}

TEST(PolygonMesh, WeldingGivesTheBitsOfTheUnsplitMeshAndKeepsTheVertices) {
    const Made made = split_cube();
    PolygonMesh mesh = made.view();
    mesh.weld = true;
    const PolygonAtlas atlas = unwrap(mesh);
    EXPECT_EQ(corner_uvs(atlas), corner_uvs(unwrap(cube().view())));
    for (size_t c = 0; c < made.indices.size(); ++c)
        EXPECT_EQ(atlas.triangles.source_vertex[atlas.corner_vertex[c]], made.indices[c]);
}

TEST(PolygonMesh, WeldingTakesMinusZeroForZero) {
    Made made;
    made.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, -0.0f, 0, 1, 1, 0, -0.0f, 1, 0};
    made.indices = {0, 1, 2, 3, 4, 5};
    PolygonMesh mesh = made.view();
    mesh.weld = true;
    Words neighbours;
    ASSERT_EQ(find_neighbours(mesh, neighbours).status, Status::ok);
    EXPECT_EQ(neighbours, (Words{k_none, 1, k_none, k_none, k_none, 0}));
}

TEST(PolygonMesh, ACutOpensTheEdgeOnBothSides) {
    Made made;
    made.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    made.indices = {0, 1, 2, 0, 2, 3};
    made.cuts = {0, 0, 1, 0, 0, 0};
    Words neighbours;
    ASSERT_EQ(find_neighbours(made.view(), neighbours).status, Status::ok);
    EXPECT_EQ(neighbours, Words(6, k_none));
}

TEST(PolygonMesh, ACutAtThePolygonsLastEdgeIsThatToItsFirstCorner) {
    Made made = cube();
    made.cuts.assign(24, 0);
    made.cuts[3] = 1; // from vertex 1 to vertex 0, shared with polygon 2
    Words cut, whole;
    ASSERT_EQ(find_neighbours(made.view(), cut).status, Status::ok);
    made.cuts.clear();
    ASSERT_EQ(find_neighbours(made.view(), whole).status, Status::ok);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), k_none), 0);
    EXPECT_EQ(std::count(cut.begin(), cut.end(), k_none), 2);
    Words between;
    for (size_t e = 0; e < cut.size(); ++e)
        if (cut[e] == k_none)
            between.push_back(static_cast<uint32_t>(e / 6));
    EXPECT_EQ(between, (Words{0, 2}));
}

TEST(PolygonMesh, NormalsThatDifferAcrossAnEdgeCutIt) {
    const Made made = split_cube();
    std::vector<float> flat, smooth;
    for (size_t c = 0; c < 24; ++c) {
        constexpr float k_faces[6][3] = {{0, 0, -1}, {0, 0, 1},  {0, -1, 0},
                                         {0, 1, 0},  {-1, 0, 0}, {1, 0, 0}};
        flat.insert(flat.end(), k_faces[c / 4], k_faces[c / 4] + 3);
        for (size_t k = 0; k < 3; ++k)
            smooth.push_back(made.positions[3 * c + k] - 0.5f);
    }
    PolygonMesh mesh = made.view();
    mesh.weld = true;
    mesh.normals = array_of(flat, 3, Type::float32);
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 6u);
    mesh.normals = array_of(smooth, 3, Type::float32);
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 1u);
}

TEST(PolygonMesh, NormalsPerCornerCutASharedVertex) {
    const Made made = cube();
    std::vector<double> normals;
    for (size_t c = 0; c < 24; ++c)
        for (size_t k = 0; k < 3; ++k)
            normals.push_back(c / 4 / 2 == 2 - k ? 1.0 - 2.0 * (c / 4 % 2) : 0.0);
    PolygonMesh mesh = made.view();
    mesh.normals = array_of(normals, 3, Type::float64);
    mesh.normals_per_corner = true;
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 6u);
}

TEST(PolygonMesh, GivenNeighboursAreUsed) {
    Made made;
    made.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    made.indices = {0, 1, 2, 0, 2, 3};
    const Words none(6, k_none);
    PolygonMesh mesh = made.view();
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 1u);
    mesh.neighbours = array_of(none, 1, Type::uint32);
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 2u);
}

TEST(PolygonMesh, ADiagonalGivenAsFalseEdgeIsNoSeam) {
    // Two triangles folded by 90 degrees: without stretch, a seam would cost nothing.
    Made made;
    made.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    made.indices = {0, 1, 2, 0, 2, 3};
    const std::vector<uint8_t> diagonal = {0, 0, 1, 1, 0, 0};
    PolygonMesh mesh = made.view();
    mesh.false_edges = array_of(diagonal, 1, Type::uint8);
    const PolygonAtlas atlas = unwrap(mesh);
    EXPECT_EQ(atlas.triangles.source_vertex.size(), 4u);
}

// === Polygons
// ======================================================================================

TEST(PolygonMesh, AConcavePolygonIsDividedInsideItsOutline) {
    Made made; // an arrow head; a fan from corner 0 would leave it
    made.positions = {0, 0, 0, 2, 1, 0, 0, 2, 0, 1, 1, 0};
    made.indices = {0, 1, 2, 3};
    made.offsets = {0, 4};
    Words corners;
    ASSERT_EQ(triangulate(made.view(), corners).status, Status::ok);
    EXPECT_EQ(corners, (Words{0, 1, 3, 1, 2, 3}));
}

TEST(PolygonMesh, APolygonThatRepeatsAVertexKeepsItsCorners) {
    Made made = cube();
    made.positions.insert(made.positions.end(), {2, 2, 2});
    made.indices.insert(made.indices.end(), {7, 8, 7, 6}); // a spike
    made.offsets.push_back(28);
    const PolygonAtlas atlas = unwrap(made.view());
    ASSERT_EQ(atlas.corner_vertex.size(), 28u);
    for (size_t c = 0; c < 28; ++c)
        EXPECT_EQ(atlas.triangles.source_vertex[atlas.corner_vertex[c]], made.indices[c]);
}

TEST(PolygonMesh, AFlatTriangleAtAWeldedPoleOpensNoEdge) {
    Made made = split_cube();
    made.indices.insert(made.indices.end(), {0, 0, 3});
    made.offsets.push_back(27);
    PolygonMesh mesh = made.view();
    mesh.weld = true;
    EXPECT_EQ(unwrap(mesh).triangles.chart_count, 1u);
}

// === Packing
// =======================================================================================

/// Two unit squares in space whose coordinates lie on each other in the texture, one half as large.
struct TwoSquares {
    Made mesh;
    std::vector<float> uvs = {0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 0.5f, 0, 0.5f, 0.5f, 0, 0.5f};

    TwoSquares() {
        mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 3, 0, 0, 4, 0, 0, 4, 1, 0, 3, 1, 0};
        mesh.indices = {0, 1, 2, 3, 4, 5, 6, 7};
        mesh.offsets = {0, 4, 8};
    }
    PolygonUvs view() const {
        PolygonUvs made;
        made.uvs = array_of(uvs, 2, Type::float32);
        return made;
    }
};

float width_of(const PolygonAtlas& atlas, size_t polygon) {
    const std::vector<float> uvs = corner_uvs(atlas);
    float low = 2, high = -1, left = 2, right = -1;
    for (size_t c = 4 * polygon; c < 4 * polygon + 4; ++c) {
        left = std::min(left, uvs[2 * c]);
        right = std::max(right, uvs[2 * c]);
        low = std::min(low, uvs[2 * c + 1]);
        high = std::max(high, uvs[2 * c + 1]);
    }
    return std::max(right - left, high - low);
}

TEST(PackPolygons, ChartsKeepTheirRelativeSizeAndNoLongerOverlap) {
    const TwoSquares two;
    PackSettings settings;
    settings.turns = Turns::quarter;
    PolygonAtlas atlas;
    const Fault fault = pack(two.mesh.view(), two.view(), settings, atlas);
    ASSERT_EQ(fault.status, Status::ok) << fault.text;
    EXPECT_EQ(atlas.triangles.chart_count, 2u);
    EXPECT_EQ(atlas.packed.size(), 2u);
    ASSERT_EQ(atlas.coverage.size(), 1u);
    EXPECT_GT(atlas.coverage[0], 0.4);
    EXPECT_NEAR(width_of(atlas, 0), 2 * width_of(atlas, 1), 1e-5);
    for (size_t c = 0; c < 8; ++c)
        EXPECT_EQ(atlas.triangles.source_vertex[atlas.corner_vertex[c]], c);
}

TEST(PackPolygons, AKeptChartKeepsItsBits) {
    const TwoSquares two;
    const std::vector<uint8_t> keep = {0, 1};
    PolygonUvs uvs = two.view();
    uvs.keep = array_of(keep, 1, Type::uint8);
    PackSettings settings;
    settings.width = settings.height = 2048;
    PolygonAtlas atlas;
    ASSERT_EQ(pack(two.mesh.view(), uvs, settings, atlas).status, Status::ok);
    const std::vector<float> packed = corner_uvs(atlas);
    EXPECT_TRUE(std::equal(packed.begin() + 8, packed.end(), two.uvs.begin() + 8));
}

TEST(PackPolygons, AFixedDensityIsInTheUnitOfThePositions) {
    const TwoSquares two;
    std::vector<double> positions;
    for (const float x : two.mesh.positions)
        positions.push_back(double{x} * 100); // scaled by the reader
    PolygonMesh mesh = two.mesh.view();
    mesh.positions = array_of(positions, 3, Type::float64);
    PackSettings settings;
    settings.density = Density::fixed;
    settings.turns = Turns::quarter;
    settings.texels_per_unit = 1;
    PolygonAtlas atlas;
    ASSERT_EQ(pack(mesh, two.view(), settings, atlas).status, Status::ok);
    EXPECT_NEAR(width_of(atlas, 0) * 512, 100, 0.1);
    EXPECT_NEAR(width_of(atlas, 1) * 512, 100, 0.1);
    EXPECT_NEAR(atlas.texels_per_unit, 1, 1e-3);
}

TEST(PackPolygons, GivenChartsNeedNotBeConnected) {
    const TwoSquares two;
    const std::vector<uint32_t> charts = {7, 7};
    PolygonUvs uvs = two.view();
    uvs.charts = array_of(charts, 1, Type::uint32);
    PolygonAtlas atlas;
    ASSERT_EQ(pack(two.mesh.view(), uvs, PackSettings(), atlas).status, Status::ok);
    EXPECT_EQ(atlas.triangles.chart_count, 1u);
}

TEST(PackPolygons, FaultsNameArrayAndOption) {
    const TwoSquares two;
    const auto text = [&](const PolygonUvs& uvs, const PackSettings& settings) {
        PolygonAtlas atlas;
        const Fault fault = pack(two.mesh.view(), uvs, settings, atlas);
        EXPECT_NE(fault.status, Status::ok);
        EXPECT_TRUE(atlas.corner_vertex.empty());
        return std::string(fault.text);
    };
    PolygonUvs uvs = two.view();
    uvs.uvs.count = 7;
    EXPECT_EQ(text(uvs, PackSettings()), "uvs: 7 elements for 8 corners");
    uvs.uvs = Array();
    EXPECT_EQ(text(uvs, PackSettings()), "uvs: 0 elements for 8 corners");
    std::vector<float> wild = two.uvs;
    wild[11] = std::numeric_limits<float>::infinity();
    uvs.uvs = array_of(wild, 2, Type::float32);
    EXPECT_EQ(text(uvs, PackSettings()), "uvs[5] is not finite");
    uvs = two.view();
    uvs.charts = uvs.uvs;
    EXPECT_EQ(text(uvs, PackSettings()), "charts: the type is float32; it must be uint32");
    PackSettings settings;
    settings.tiles = 0;
    EXPECT_EQ(text(two.view(), settings), "tiles is 0; it must be 1 to 100");
    settings = PackSettings();
    settings.effort = 11;
    EXPECT_EQ(text(two.view(), settings), "effort is 11; it must be 0 to 10");
    settings = PackSettings();
    settings.density = Density::fixed;
    EXPECT_EQ(text(two.view(), settings),
              "texels_per_unit is 0; it must be over 0 for a fixed density");
}

// === Faults
// ========================================================================================

TEST(PolygonMeshFault, NamesTheIndexThatIsOutOfRange) {
    Made made = cube();
    made.indices[17] = 99;
    EXPECT_EQ(text_of_failure(made.view()), "indices[17] is 99, but there are 8 vertices");
}

TEST(PolygonMeshFault, NamesThePositionThatIsNotFinite) {
    Made made = cube();
    made.positions[3 * 5 + 1] = std::numeric_limits<float>::quiet_NaN();
    PolygonAtlas atlas;
    const Fault fault = create(made.view(), Options(), UvSpace::texture, atlas);
    EXPECT_EQ(fault.status, Status::non_finite_position);
    EXPECT_EQ(fault.element, 5u);
    EXPECT_STREQ(fault.text, "positions[5] is not finite");
}

TEST(PolygonMeshFault, NamesTheArrayOfAWrongType) {
    const Made made = cube();
    PolygonMesh mesh = made.view();
    mesh.indices.type = Type::float32;
    EXPECT_EQ(text_of_failure(mesh), "indices: the type is float32; it must be uint16 or uint32");
    mesh = made.view();
    mesh.offsets.type = static_cast<Type>(99);
    EXPECT_EQ(text_of_failure(mesh), "offsets: the type is unknown; it must be uint32");
}

TEST(PolygonMeshFault, NamesTheArrayOfAShortStride) {
    const Made made = cube();
    PolygonMesh mesh = made.view();
    mesh.positions.stride = 8;
    EXPECT_EQ(text_of_failure(mesh), "positions: the stride is 8 bytes, an element takes 12");
}

TEST(PolygonMeshFault, NamesTheArrayAtANullPointer) {
    const Made made = cube();
    PolygonMesh mesh = made.view();
    mesh.positions.data = nullptr;
    EXPECT_EQ(text_of_failure(mesh), "positions: 8 elements at a null pointer");
}

TEST(PolygonMeshFault, NamesTheArrayThatIsTooLarge) {
    const Made made = cube();
    PolygonMesh mesh = made.view();
    mesh.indices.count = 0x60000000u;
    EXPECT_EQ(text_of_failure(mesh), "indices: 1610612736 elements are more than 1431655764");
}

TEST(PolygonMeshFault, NamesTheArrayOfAWrongSize) {
    Made made = cube();
    made.cuts.assign(23, 0);
    EXPECT_EQ(text_of_failure(made.view()), "cuts: 23 elements for 24 corners");
    made.cuts.clear();
    PolygonMesh mesh = made.view();
    mesh.normals = array_of(made.positions, 3, Type::float32);
    mesh.normals_per_corner = true;
    EXPECT_EQ(text_of_failure(mesh), "normals: 8 elements for 24 corners");
}

TEST(PolygonMeshFault, DescribesOffsetsThatAreNoPolygons) {
    Made made = cube();
    made.offsets.front() = 1;
    EXPECT_EQ(text_of_failure(made.view()), "offsets[0] is 1; it must be 0");
    made.offsets = {0, 4, 6, 12, 16, 20, 24};
    EXPECT_EQ(text_of_failure(made.view()),
              "offsets: polygon 1 has 2 corners; it must have at least 3");
    made.offsets = {0, 12, 4, 24};
    EXPECT_EQ(text_of_failure(made.view()), "offsets[2] is 4, less than the one before it");
    made.offsets = {0, 4, 8};
    EXPECT_EQ(text_of_failure(made.view()), "offsets ends with 8, but there are 24 indices");
    made.offsets.clear();
    made.indices.pop_back();
    EXPECT_EQ(text_of_failure(made.view()),
              "indices: 23 corners are not a whole number of triangles, and there are no offsets");
}

TEST(PolygonMeshFault, NamesTheNeighbourThatDoesNotExist) {
    Made made;
    made.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0};
    made.indices = {0, 1, 2};
    const Words neighbours = {k_none, 1, k_none};
    PolygonMesh mesh = made.view();
    mesh.neighbours = array_of(neighbours, 1, Type::uint32);
    EXPECT_EQ(text_of_failure(mesh), "neighbours[1] is 1, but there are 1 triangles");
}

TEST(PolygonMeshFault, RefusesEdgesOfTrianglesForPolygons) {
    const Made made = cube();
    PolygonMesh mesh = made.view();
    mesh.neighbours = mesh.indices;
    EXPECT_EQ(text_of_failure(mesh), "neighbours is for meshes of triangles, without offsets");
}

TEST(PolygonMeshFault, NamesTheOptionOutOfRange) {
    const Made made = cube();
    Options options;
    options.max_stretch = 2.0f;
    EXPECT_EQ(text_of_failure(made.view(), options), "max_stretch is 2; it must be 0 to 1");
    options = Options();
    options.height = 0;
    EXPECT_EQ(text_of_failure(made.view(), options), "height is 0; it must be at least 1");
    options = Options();
    options.gutter = -1.0f;
    EXPECT_EQ(text_of_failure(made.view(), options),
              "gutter is -1; it must be a finite number, 0 or more");
}

TEST(PolygonMeshFault, TellsHowManyChartsDoNotFit) {
    Made made = cube();
    made.cuts.assign(24, 1);
    Options options;
    options.width = options.height = 4;
    options.gutter = 3.0f;
    EXPECT_EQ(text_of_failure(made.view(), options),
              "the gutter leaves no room for the charts in a texture of this size (6 charts)");
}

TEST(PolygonMeshFault, TellsThatTheCallerStopped) {
    const Made made = cube();
    Options options;
    options.progress = [](float, void*) { return 1; };
    EXPECT_EQ(text_of_failure(made.view(), options), "the caller stopped the work");
}

} // namespace
