/// Finds the triangle that a ray meets first.
///
/// A tree of boxes over the triangles, halved at the median along the longest side, two triangles
/// or more per leaf; rays visit the nearer half first. Source of the ray-triangle test: Möller,
/// Trumbore, "Fast, minimum storage ray/triangle intersection", 1997.
#pragma once

#include <cstdint>
#include <vector>

namespace window {

struct Ray {
    double origin[3];
    double direction[3]; ///< of any length but 0
};

class MeshPicker {
public:
    MeshPicker() = default;
    /// Shape: points[9 * triangles]; they must stay as long as this does.
    /// Cost:  O(n log n).
    explicit MeshPicker(const std::vector<float>& points);

    /// The nearest triangle ahead of the origin, from either side, or 0xFFFFFFFF.
    /// `distance`: receives how far it is, in lengths of the ray's direction.
    uint32_t first_hit(const Ray& ray, double* distance = nullptr) const;

private:
    struct Box {
        float low[3], high[3];
        uint32_t begin, end; ///< of order_
        uint32_t right;      ///< second child; 0: a leaf. The first child follows its parent.
    };
    uint32_t build(uint32_t begin, uint32_t end, const std::vector<float>& middles);
    bool meets(const Box& box, const Ray& ray, double nearest, double& entry) const;
    double distance(uint32_t triangle, const Ray& ray) const;

    const std::vector<float>* points_ = nullptr;
    std::vector<uint32_t> order_;
    std::vector<Box> boxes_;
};

} // namespace window
