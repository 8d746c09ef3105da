#include "polygon/twins.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace tessora::polygon {

namespace {

uint64_t mixed(uint64_t z) {
    z += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

/// Equal for polygons on the same vertices.
uint64_t vertex_sum(const IndexSpan& vertices) {
    uint64_t sum = 0;
    for (const uint32_t vertex : vertices)
        sum += mixed(vertex);
    return sum;
}

bool are_twins(const IndexSpan& a, const IndexSpan& b) {
    const uint32_t n = a.size();
    const uint32_t* const found = std::find(b.begin(), b.end(), a[0]);
    if (n != b.size() || found == b.end() || std::count(b.begin(), b.end(), a[0]) != 1)
        return false;
    const auto first = static_cast<uint32_t>(found - b.begin());
    bool same = true, reversed = true;
    for (uint32_t i = 0; i < n; ++i) {
        same = same && a[i] == b[(first + i) % n];
        reversed = reversed && a[i] == b[(first + n - i) % n];
    }
    return same || reversed;
}

} // namespace

std::vector<uint32_t> first_twins(const Polygons& polygons) {
    std::vector<uint32_t> twin(polygons.count);
    std::vector<uint64_t> sums;
    for (uint32_t p = 0; p < polygons.count; ++p) {
        twin[p] = p;
        if (polygons.corners_of(p) > 3)
            sums.push_back(vertex_sum(polygons.vertices(p)));
    }
    std::sort(sums.begin(), sums.end());
    std::unordered_set<uint64_t> repeated;
    for (size_t i = 1; i < sums.size(); ++i)
        if (sums[i] == sums[i - 1])
            repeated.insert(sums[i]);
    if (repeated.empty())
        return twin;
    std::unordered_map<uint64_t, std::vector<uint32_t>> firsts; // one of each kind
    for (uint32_t p = 0; p < polygons.count; ++p) {
        const IndexSpan vertices = polygons.vertices(p);
        const uint64_t sum = vertex_sum(vertices);
        if (vertices.size() <= 3 || repeated.count(sum) == 0)
            continue;
        std::vector<uint32_t>& kinds = firsts[sum];
        const auto found = std::find_if(kinds.begin(), kinds.end(), [&](uint32_t first) {
            return are_twins(vertices, polygons.vertices(first));
        });
        if (found == kinds.end())
            kinds.push_back(p);
        else
            twin[p] = *found;
    }
    return twin;
}

} // namespace tessora::polygon
