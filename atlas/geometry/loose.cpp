#include "atlas/geometry/loose.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <set>
#include <utility>

namespace tessora::atlas {
namespace {

/// The edges of loose triangles and the vertices of points: who of the placed triangles uses them,
/// and who waits for one that does. A vertex is an edge from itself to itself that every corner
/// there uses.
class LooseEdges {
public:
    LooseEdges(Span<uint32_t> vertex, const LooseHints& hints, const std::vector<uint32_t>& loose)
        : vertex_(vertex), hints_(hints) {
        for (uint32_t t : loose)
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
                if (vertex[h] != vertex[next_corner(h)])
                    keys_.push_back(ends(h));
                if (hints.point[t])
                    keys_.push_back({vertex[h], vertex[h]});
            }
        std::sort(keys_.begin(), keys_.end());
        keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
        edges_.resize(keys_.size());
        uint32_t vertices = 0;
        for (size_t c = 0; c < vertex.size; ++c)
            vertices = std::max(vertices, vertex[c] + 1);
        touched_.assign(vertices, 0);
        for (const Ends& key : keys_)
            touched_[key.first] = touched_[key.second] = 1;
    }
    /// Notes a triangle as placed; gives who waited for it.
    std::vector<uint32_t> place(uint32_t t) {
        std::vector<uint32_t> waited;
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            if (!touched_[vertex_[h]])
                continue;
            if (vertex_[h] != vertex_[next_corner(h)])
                note(edge_of(ends(h)), h, waited);
            note(edge_of({vertex_[h], vertex_[h]}), h, waited);
        }
        return waited;
    }
    /// Finds where to hang a triangle; has it wait when there is no place yet.
    Attachment attach(uint32_t t, const std::vector<uint8_t>& placed) {
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            const uint32_t mate = hints_.inner_mate[h];
            if (mate != k_none && placed[mate / 3])
                return {h, mate};
        }
        for (const bool alike : {true, false})
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
                const bool has_length = vertex_[h] != vertex_[next_corner(h)];
                const Edge* edge = has_length ? edge_of(ends(h)) : nullptr;
                if (edge != nullptr && !edge->users[goes_up(h) != alike].empty())
                    return {h, nearest(edge->users[goes_up(h) != alike], h)};
            }
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            const Edge* edge = edge_of({vertex_[h], vertex_[h]});
            if (hints_.point[t] && edge != nullptr && !edge->users[0].empty())
                return {h, nearest(edge->users[0], h)};
        }
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            for (Edge* edge : {edge_of(ends(h)), edge_of({vertex_[h], vertex_[h]})})
                if (edge != nullptr)
                    edge->waiting.push_back(t);
        return {k_none, k_none};
    }

private:
    using Ends = std::pair<uint32_t, uint32_t>;
    struct Edge {
        std::set<uint32_t> users[2];   ///< placed half-edges, each way
        std::vector<uint32_t> waiting; ///< triangles
    };

    static uint32_t nearest(const std::set<uint32_t>& users, uint32_t h) {
        const auto above = users.lower_bound(h);
        if (above == users.begin())
            return *above;
        const uint32_t below = *std::prev(above);
        return above != users.end() && *above - h < h - below ? *above : below;
    }
    bool goes_up(uint32_t h) const { return vertex_[h] < vertex_[next_corner(h)]; }
    Ends ends(uint32_t h) const { return std::minmax(vertex_[h], vertex_[next_corner(h)]); }
    Edge* edge_of(Ends key) {
        const auto found = std::lower_bound(keys_.begin(), keys_.end(), key);
        return found == keys_.end() || *found != key ? nullptr
                                                     : &edges_[size_t(found - keys_.begin())];
    }
    void note(Edge* edge, uint32_t h, std::vector<uint32_t>& waited) {
        if (edge == nullptr)
            return;
        const bool is_vertex = edge == edge_of({vertex_[h], vertex_[h]});
        edge->users[!is_vertex && goes_up(h)].insert(h);
        waited.insert(waited.end(), edge->waiting.begin(), edge->waiting.end());
        edge->waiting.clear();
    }

    Span<uint32_t> vertex_;
    const LooseHints& hints_;
    std::vector<Ends> keys_; ///< ascending
    std::vector<Edge> edges_;
    std::vector<uint8_t> touched_; ///< per vertex: an end of an edge
};

/// Hangs loose triangles one after the other; each that is placed may give others an edge to hang
/// on.
class Attacher {
public:
    Attacher(Span<uint32_t> vertex, const LooseHints& hints, const std::vector<uint32_t>& loose,
             std::vector<uint8_t>& placed)
        : hints_(hints), placed_(placed), edges_(vertex, hints, loose),
          todo_(loose.begin(), loose.end()) {
        for (uint32_t t = 0; t < placed.size(); ++t)
            if (placed[t])
                edges_.place(t);
        // Triangles of polygons that have area go first, so that those polygons stay whole.
        std::stable_partition(todo_.begin(), todo_.end(), [&](uint32_t t) {
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                if (hints.inner_mate[h] != k_none && placed[hints.inner_mate[h] / 3])
                    return true;
            return false;
        });
    }

    std::vector<Attachment>
    run(const std::vector<uint32_t>& loose,
        const std::function<std::vector<uint32_t>(uint32_t triangle)>& keep) {
        work_off();
        for (uint32_t t : loose) {
            if (placed_[t])
                continue;
            for (uint32_t kept : keep(t))
                place(kept);
            work_off();
        }
        return std::move(attachments_);
    }

private:
    void work_off() {
        while (!todo_.empty()) {
            const uint32_t t = todo_.front();
            todo_.pop_front();
            if (placed_[t])
                continue;
            const Attachment found = edges_.attach(t, placed_);
            if (found.own == k_none)
                continue;
            attachments_.push_back(found);
            place(t);
        }
    }
    void place(uint32_t t) {
        placed_[t] = 1;
        const std::vector<uint32_t> waited = edges_.place(t);
        todo_.insert(todo_.end(), waited.begin(), waited.end());
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) // a polygon stays in one chart
            if (hints_.inner_mate[h] != k_none && !placed_[hints_.inner_mate[h] / 3])
                todo_.push_front(hints_.inner_mate[h] / 3);
    }

    const LooseHints& hints_;
    std::vector<uint8_t>& placed_;
    LooseEdges edges_;
    std::deque<uint32_t> todo_;
    std::vector<Attachment> attachments_;
};

} // namespace

std::vector<Attachment>
attach_loose(Span<uint32_t> vertex, const LooseHints& hints, const std::vector<uint32_t>& loose,
             std::vector<uint8_t>& placed,
             const std::function<std::vector<uint32_t>(uint32_t triangle)>& keep) {
    return Attacher(vertex, hints, loose, placed).run(loose, keep);
}

} // namespace tessora::atlas
