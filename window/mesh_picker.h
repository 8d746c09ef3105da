/// Finds the first triangle that a ray hits.
///
/// A bounding volume hierarchy, split at the median along the longest axis, at most four triangles
/// per leaf; rays visit the nearer child first. Ray-triangle test: Möller, Trumbore, "Fast, minimum
/// storage ray/triangle intersection", 1997.
#pragma once

#include <cstdint>
#include <vector>

namespace window {

struct Ray {
    double origin[3];
    double direction[3]; ///< any length but 0
};

class MeshPicker {
public:
    MeshPicker() = default;
    /// Shape: points[9 * triangles]; kept by reference, must outlive the picker.
    /// Cost:  O(n log n).
    explicit MeshPicker(const std::vector<float>& points);

    /// The nearest triangle ahead of the origin, facing either way; 0xFFFFFFFF if none.
    /// `distance`: receives its distance, in multiples of the direction's length.
    uint32_t first_hit(const Ray& ray, double* distance = nullptr) const;

private:
    struct Box {
        float low[3], high[3];
        uint32_t begin, end; ///< range in order_
        uint32_t right;      ///< second child, 0 for a leaf; the first follows its parent
    };
    uint32_t build(uint32_t begin, uint32_t end, const std::vector<float>& middles);
    bool meets(const Box& box, const Ray& ray, double nearest, double& entry) const;
    double distance(uint32_t triangle, const Ray& ray) const;

    const std::vector<float>* points_ = nullptr;
    std::vector<uint32_t> order_;
    std::vector<Box> boxes_;
};

} // namespace window
