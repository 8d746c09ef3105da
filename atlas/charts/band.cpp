#include "atlas/charts/band.h"

namespace tessora::atlas {

Band::Flags::Flags(const ChartSet& set) : has_face(set.surface.face_count, 0) {
    if (set.polygons != nullptr && !set.polygons->empty())
        is_lead.assign(set.surface.face_count, 0);
}

bool Band::grow(const std::vector<uint32_t>& arc_nodes, uint32_t rings) {
    clear();
    const auto add_node = [&](uint32_t n, uint32_t ring) {
        set_.place[n] = uint32_t(nodes_.size());
        nodes_.push_back(n);
        ring_.push_back(ring);
    };
    for (uint32_t n : arc_nodes)
        add_node(n, 0);
    bool whole = true;
    for (size_t i = 0; i < nodes_.size(); ++i) {
        const uint32_t n = nodes_[i], ring = ring_[i];
        if (ring == rings) {
            whole = false;
            continue;
        }
        set_.for_node(n, [&](uint32_t c) {
            const uint32_t t = c / 3;
            if (has_face(t))
                return;
            add_face(t);
            for (uint32_t k = 3 * t; k < 3 * t + 3; ++k) {
                const uint32_t m = set_.node[k];
                if (!has_node(m))
                    add_node(m, ring + 1);
            }
        });
    }
    return whole;
}

void Band::add_face(uint32_t t) {
    if (has_face(t))
        return;
    flags_.has_face[t] = 1;
    faces_.push_back(t);
    if (flags_.is_lead.empty())
        return;
    const uint32_t lead = set_.polygons->lead(t);
    if (lead != k_none && !flags_.is_lead[lead]) {
        flags_.is_lead[lead] = 1;
        leads_.push_back(lead);
    }
}

void Band::clear() {
    for (uint32_t t : faces_)
        flags_.has_face[t] = 0;
    for (uint32_t t : leads_)
        flags_.is_lead[t] = 0;
    nodes_.clear();
    ring_.clear();
    faces_.clear();
    leads_.clear();
}

} // namespace tessora::atlas
