#include "window/mesh_picker.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace window;

constexpr uint32_t k_nothing = 0xFFFFFFFFu;

/// A triangle in the plane at this z that contains the z axis.
void add_triangle(std::vector<float>& points, float z) {
    points.insert(points.end(), {-1, -1, z, 1, -1, z, 0, 1, z});
}

TEST(MeshPicker, EmptyMeshIsNeverHit) {
    const std::vector<float> none;
    EXPECT_EQ(k_nothing, MeshPicker(none).first_hit({{0, 0, 5}, {0, 0, -1}}));
    EXPECT_EQ(k_nothing, MeshPicker().first_hit({{0, 0, 5}, {0, 0, -1}}));
}

TEST(MeshPicker, FindsTheNearestOfSeveralTriangles) {
    std::vector<float> points;
    for (const float z : {0.0f, 3.0f, 1.0f, 2.0f, -1.0f, -2.0f, -3.0f})
        add_triangle(points, z);
    const MeshPicker picker(points);
    EXPECT_EQ(1u, picker.first_hit({{0, 0, 5}, {0, 0, -1}}));
    EXPECT_EQ(6u, picker.first_hit({{0, 0, -5}, {0, 0, 1}}));
}

TEST(MeshPicker, TrianglesBehindTheOriginAreNotHit) {
    std::vector<float> points;
    add_triangle(points, 0.0f);
    EXPECT_EQ(k_nothing, MeshPicker(points).first_hit({{0, 0, 5}, {0, 0, 1}}));
}

TEST(MeshPicker, BothSidesOfATriangleAreHit) {
    std::vector<float> points;
    add_triangle(points, 0.0f);
    const MeshPicker picker(points);
    EXPECT_EQ(0u, picker.first_hit({{0, 0, 1}, {0, 0, -1}}));
    EXPECT_EQ(0u, picker.first_hit({{0, 0, -1}, {0, 0, 1}}));
}

TEST(MeshPicker, DegenerateTriangleIsNotHit) {
    const std::vector<float> points = {0, 0, 0, 1, 0, 0, 2, 0, 0};
    EXPECT_EQ(k_nothing, MeshPicker(points).first_hit({{0.5, 0, 5}, {0, 0, -1}}));
}

/// Reference without a tree: pickers over at most two triangles, the nearest so far and the next.
uint32_t slow_hit(const std::vector<float>& points, const Ray& ray) {
    std::vector<float> nearest_points;
    uint32_t best = k_nothing;
    for (uint32_t t = 0; t < points.size() / 9; ++t) {
        std::vector<float> pair = nearest_points;
        pair.insert(pair.end(), points.begin() + 9 * t, points.begin() + 9 * t + 9);
        const MeshPicker picker(pair);
        const uint32_t hit = picker.first_hit(ray);
        if (hit == pair.size() / 9 - 1 && hit != k_nothing) {
            best = t;
            nearest_points.assign(pair.end() - 9, pair.end());
        }
    }
    return best;
}

TEST(MeshPicker, TreeAndLinearSearchAgreeOnRandomTriangles) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-5.0f, 5.0f), small(-1.0f, 1.0f);
    std::vector<float> points;
    for (int t = 0; t < 200; ++t) {
        const float at[3] = {place(random), place(random), place(random)};
        for (int k = 0; k < 9; ++k)
            points.push_back(at[k % 3] + small(random));
    }
    const MeshPicker picker(points);
    int hits = 0;
    for (int i = 0; i < 200; ++i) {
        Ray ray;
        for (int axis = 0; axis < 3; ++axis) {
            ray.origin[axis] = 4.0 * static_cast<double>(place(random));
            ray.direction[axis] = 0.5 * static_cast<double>(place(random)) - ray.origin[axis];
        }
        const uint32_t wanted = slow_hit(points, ray);
        ASSERT_EQ(wanted, picker.first_hit(ray)) << "ray " << i;
        hits += wanted != k_nothing;
    }
    EXPECT_GT(hits, 20);
}

} // namespace
