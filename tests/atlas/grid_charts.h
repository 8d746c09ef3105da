/// A test fixture: two charts on a grid, flattened without any stage of the engine.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "tests/atlas/check_result.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace atlas_test {

using namespace tessora::atlas;

/// A grid of unit cells whose triangles are assigned to two charts; UV is x and y.
class GridCharts : public testing::Test {
protected:
    using Height = std::function<float(int x, int y)>;
    /// The chart of a triangle, 0 or 1; 2 leaves the cell out. `upper` is true for the second
    /// triangle of a cell.
    using Side = std::function<uint32_t(int x, int y, bool upper)>;

    void build(int columns, int rows, bool quads, const Side& side, const Height& height) {
        TestMesh mesh;
        for (int y = 0; y <= rows; ++y)
            for (int x = 0; x <= columns; ++x)
                mesh.vertex(float(x), float(y), height(x, y));
        std::vector<uint32_t> chart;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                if (side(x, y, false) == 2)
                    continue;
                const uint32_t a = uint32_t(y * (columns + 1) + x), b = a + 1;
                const uint32_t d = a + uint32_t(columns) + 1, c = d + 1;
                if (quads) {
                    mesh.polygon({a, b, c, d});
                } else {
                    mesh.triangle(a, b, c);
                    mesh.triangle(a, c, d);
                }
                chart.push_back(side(x, y, false));
                chart.push_back(side(x, y, !quads));
            }
        mesh.connect();
        ASSERT_EQ(build_surface(mesh.view(), surface).status, Status::ok);
        planes = atoms = build_atoms(surface);
        hardness.assign(surface.face_count, 0.0f);
        set = std::make_unique<ChartSet>(surface);
        Chart charts[2];
        for (uint32_t t = 0; t < surface.face_count; ++t)
            charts[chart[t]].faces.push_back(t);
        for (uint32_t h = 0; h < 3 * surface.face_count; ++h)
            if (surface.mate[h] != k_none && chart[h / 3] == chart[surface.mate[h] / 3])
                set->set_glued(h, true);
        for (Chart& c : charts) {
            set->rebuild_nodes(c.faces);
            for (uint32_t t : c.faces)
                for (uint32_t corner = 3 * t; corner < 3 * t + 3; ++corner) {
                    const Vec3 p = surface.position[surface.vertex[corner]];
                    set->uv[set->node[corner]] = {p.x, p.y};
                }
            set->refresh(c);
            set->add_chart(std::move(c));
        }
    }
    void build_flat(int columns, int rows, bool quads, const Side& side) {
        build(columns, rows, quads, side, [](int, int) { return 0.0f; });
    }
    /// The charts of all triangles as digits, two per cell, cells row by row.
    std::string sides() const {
        std::string text;
        for (uint32_t c : set->chart)
            text += char('0' + c);
        return text;
    }
    void expect_undistorted() {
        for (const Chart& c : set->charts) {
            EXPECT_EQ(c.stretch.flipped, 0u);
            EXPECT_NEAR(set->measure(c.faces).l2(), 1, 1e-12);
            for (uint32_t t : c.faces)
                EXPECT_EQ(set->charts[set->chart[t]].faces.data(), c.faces.data());
        }
    }

    Surface surface;
    Atoms atoms;
    Components planes; ///< none but polygons, until a test joins some
    std::vector<float> hardness;
    std::unique_ptr<ChartSet> set;
};

} // namespace atlas_test
