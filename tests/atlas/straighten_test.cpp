// Which grids of quads are laid out with straight rows and columns.
#include "atlas/charts/flatten.h"
#include "tests/atlas/check_result.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tessora::atlas;
using atlas_test::TestMesh;

constexpr double k_pi = 3.14159265358979;

/// One chart, laid out by its vertices' x and y.
class Straightening : public testing::Test {
protected:
    /// Where the grid's x and y, from 0 to 1, lie in space.
    using Place = std::function<Vec3(double x, double y)>;

    /// The vertex at p, a new one if there is none.
    uint32_t vertex_at(Vec3 p) {
        for (uint32_t v = 0; 3 * v < mesh.positions.size(); ++v) {
            const float* at = &mesh.positions[3 * v];
            if (length(Vec3{at[0], at[1], at[2]} - p) < 1e-5)
                return v;
        }
        return mesh.vertex(float(p.x), float(p.y), float(p.z));
    }
    /// Appends a grid, joined to those before where they meet.
    void add_grid(int columns, int rows, const Place& place) {
        const auto at = [&](int x, int y) {
            return vertex_at(place(double(x) / columns, double(y) / rows));
        };
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x)
                mesh.polygon({at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1)});
    }
    /// Appends 2 x 2 quads in each sector around a common corner. The sheet is steep, so that its
    /// layout is stretched.
    void add_sectors(int count, double degrees) {
        for (int k = 0; k < count; ++k) {
            const double from = k * degrees * k_pi / 180, to = (k + 1) * degrees * k_pi / 180;
            add_grid(2, 2, [=](double x, double y) {
                const double u = x * std::cos(from) + y * std::cos(to),
                             v = x * std::sin(from) + y * std::sin(to);
                return Vec3{u, v, 0.6 * u};
            });
        }
    }
    void straighten(double limit = 1.176) {
        mesh.connect();
        ASSERT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
        set = std::make_unique<ChartSet>(surface);
        Chart c;
        for (uint32_t t = 0; t < surface.face_count; ++t)
            c.faces.push_back(t);
        for (uint32_t h = 0; h < 3 * surface.face_count; ++h)
            if (surface.mate[h] != k_none)
                set->set_glued(h, true);
        set->rebuild_nodes(c.faces);
        for (uint32_t h = 0; h < 3 * surface.face_count; ++h) {
            const Vec3 p = surface.position[surface.vertex[h]];
            set->uv[set->node[h]] = {p.x, p.y};
        }
        set->refresh(c);
        before = set->uv;
        FlattenOptions options;
        options.limit = limit;
        Flattener flattener(*set, options);
        ASSERT_TRUE(flattener.judge(c));
        flattener.straighten(c);
        EXPECT_TRUE(flattener.judge(c));
    }
    /// Whether every side of a polygon is parallel to an axis.
    bool is_straight() const {
        for (uint32_t h = 0; h < 3 * surface.face_count; ++h) {
            const Vec2 side = set->uv[set->node[next_corner(h)]] - set->uv[set->node[h]];
            if (!surface.false_edge[h] && side.x != 0 && side.y != 0)
                return false;
        }
        return true;
    }
    /// Whether the layout is the one before, up to rounding.
    bool is_as_before() const {
        for (uint32_t n = 0; n < before.size(); ++n)
            if (length(set->uv[n] - before[n]) > 1e-12)
                return false;
        return true;
    }

    TestMesh mesh;
    Surface surface;
    std::unique_ptr<ChartSet> set;
    std::vector<Vec2> before; ///< per node
};

/// Half of a flat ring.
Vec3 half_ring(double x, double y) {
    const double angle = k_pi * (1 - x), radius = 3 + y;
    return {radius * std::cos(angle), radius * std::sin(angle), 0};
}

TEST_F(Straightening, LaysABentStripStraight) {
    add_grid(16, 2, half_ring);
    straighten();
    EXPECT_TRUE(is_straight());
}

TEST_F(Straightening, KeepsTheAreaOfTheChart) {
    add_grid(16, 2, half_ring);
    straighten();
    std::vector<uint32_t> all;
    for (uint32_t t = 0; t < surface.face_count; ++t)
        all.push_back(t);
    EXPECT_NEAR(set->measure(all).flat_area, set->measure(all).area, 1e-9);
}

TEST_F(Straightening, LeavesAStripThatWouldExceedTheLimit) {
    add_grid(16, 2, half_ring);
    straighten(1.001);
    EXPECT_TRUE(is_as_before());
}

TEST_F(Straightening, LeavesFlatShapesThatAreNearlyStraight) {
    add_grid(8, 4, [](double x, double y) { return Vec3{8 * x, 4 * y * (1 - 0.2 * x), 0}; });
    straighten();
    EXPECT_TRUE(is_as_before());
}

TEST_F(Straightening, LeavesTooFewQuads) {
    add_grid(3, 1, half_ring);
    straighten();
    EXPECT_TRUE(is_as_before());
}

TEST_F(Straightening, LeavesQuadsAroundACornerOfThree) {
    add_sectors(3, 120);
    straighten();
    EXPECT_TRUE(is_as_before());
}

TEST_F(Straightening, LeavesQuadsThatWouldLieOnEachOther) {
    add_sectors(5, 70); // four fill the corner
    straighten();
    EXPECT_TRUE(is_as_before());
}

TEST_F(Straightening, LaysSectorsThatDoNotFillTheCornerStraight) {
    add_sectors(3, 70);
    straighten();
    EXPECT_TRUE(is_straight());
}

} // namespace
