#include "atlas/geometry/sheets.h"

#include "atlas/geometry/order.h"
#include "atlas/geometry/repeats.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

uint64_t mixed(uint64_t z) {
    z += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

uint32_t find(std::vector<uint32_t>& parent, uint32_t x) {
    while (parent[x] != x)
        x = parent[x] = parent[parent[x]];
    return x;
}

/// Joins the sets of a and b under the smaller number.
void join(std::vector<uint32_t>& parent, uint32_t a, uint32_t b) {
    a = find(parent, a);
    b = find(parent, b);
    parent[std::max(a, b)] = std::min(a, b);
}

/// Numbers that occur more than once, in a table with open addressing.
class Repeats {
public:
    explicit Repeats(size_t most) {
        size_t size = 16;
        while (size < 2 * most)
            size *= 2;
        slots_.assign(size, 0);
    }
    /// False for the first of equal keys.
    bool insert(uint64_t key) {
        key |= 1; // 0 is a free slot
        size_t at = size_t(key >> 1) & (slots_.size() - 1);
        for (; slots_[at] != 0; at = (at + 1) & (slots_.size() - 1))
            if (slots_[at] == key)
                return true;
        slots_[at] = key;
        return false;
    }

private:
    std::vector<uint64_t> slots_;
};

class SheetFinder {
public:
    SheetFinder(Surface& surface, const SheetOptions& options)
        : s_(surface), options_(options), trailing_(surface.face_count, 0) {}

    Sheets run() {
        drop_trailing();
        join_polygons();
        if (find_twins()) {
            open_between_twins();
            find_copies();
        }
        copy_repeats();
        number_kept();
        return std::move(out_);
    }

private:
    /// An edge of a polygon, by the vertex it starts at.
    struct Side {
        uint32_t from, to, half_edge;
        bool operator<(const Side& o) const { return from < o.from; }
    };
    struct Polygon {
        std::vector<Side> sides; ///< by `from`
        std::vector<uint32_t> faces;
        uint32_t kind = k_none; ///< polygons of one kind are twins
    };
    /// Connected polygons.
    struct Sheet {
        std::vector<uint32_t> polygons; ///< that have a twin
        bool may_copy = true;           ///< all have, and none is refused
    };
    struct Match {
        uint32_t polygon, source;
    };

    void open(uint32_t h) {
        const uint32_t mate = s_.mate[h];
        s_.mate[h] = s_.mate[mate] = k_none;
        s_.false_edge[h] = s_.false_edge[mate] = 0;
    }
    uint32_t mates(uint32_t t) const {
        uint32_t count = 0;
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            count += s_.mate[h] != k_none;
        return count;
    }

    /// Marks triangles without area that connect nothing, chains of them from their ends, and opens
    /// their edges.
    void drop_trailing() {
        std::vector<uint32_t> todo;
        for (uint32_t t = 0; t < s_.face_count; ++t)
            if (s_.degenerate[t])
                todo.push_back(t);
        if (todo.empty())
            return;
        note_hints(todo);
        while (!todo.empty()) {
            const uint32_t t = todo.back();
            todo.pop_back();
            if (trailing_[t] || mates(t) > 1)
                continue;
            trailing_[t] = 1;
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                if (s_.mate[h] != k_none) {
                    const uint32_t other = s_.mate[h] / 3;
                    open(h);
                    if (s_.degenerate[other])
                        todo.push_back(other);
                }
        }
        keep_unattached();
    }

    void note_hints(const std::vector<uint32_t>& degenerate) {
        out_.hints.point.assign(s_.face_count, 0);
        out_.hints.inner_mate.assign(3 * size_t(s_.face_count), k_none);
        for (uint32_t t : degenerate) {
            out_.hints.point[t] = is_point(t);
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                if (s_.false_edge[h])
                    out_.hints.inner_mate[h] = s_.mate[h];
        }
    }

    /// Trailing triangles that cannot be hung on any other are laid out after all.
    void keep_unattached() {
        std::vector<uint32_t> loose;
        std::vector<uint8_t> placed(s_.face_count);
        for (uint32_t t = 0; t < s_.face_count; ++t) {
            placed[t] = !trailing_[t];
            if (trailing_[t])
                loose.push_back(t);
        }
        attach_loose({s_.vertex.data(), s_.vertex.size()}, out_.hints, loose, placed,
                     [&](uint32_t t) {
                         trailing_[t] = 0;
                         return std::vector<uint32_t>{t};
                     });
    }

    bool is_point(uint32_t t) const {
        const Vec3 a = s_.position[s_.vertex[3 * t]];
        for (uint32_t c = 3 * t + 1; c < 3 * t + 3; ++c) {
            const Vec3 d = s_.position[s_.vertex[c]] - a;
            if (d.x != 0 || d.y != 0 || d.z != 0)
                return false;
        }
        return true;
    }

    void join_polygons() {
        polygon_.resize(s_.face_count);
        for (uint32_t t = 0; t < s_.face_count; ++t)
            polygon_[t] = t;
        for (uint32_t h = 0; h < 3 * s_.face_count; ++h)
            if (s_.false_edge[h])
                join(polygon_, h / 3, s_.mate[h] / 3);
        for (uint32_t t = 0; t < s_.face_count; ++t)
            polygon_[t] = find(polygon_, t);
    }

    /// Fills polygons_ with those that have a twin. False when there are none.
    bool find_twins() {
        // Twins have the same vertices, so the same sums over their vertices.
        std::vector<uint64_t> sum(s_.face_count, 0);
        for (uint32_t h = 0; h < 3 * s_.face_count; ++h)
            if (!s_.false_edge[h])
                sum[polygon_[h / 3]] += mixed(s_.vertex[h]);
        Repeats repeats(s_.face_count);
        std::vector<uint64_t> repeated;
        for (uint32_t t = 0; t < s_.face_count; ++t)
            if (polygon_[t] == t && !trailing_[t] && repeats.insert(sum[t]))
                repeated.push_back(sum[t]);
        if (repeated.empty())
            return false;
        std::sort(repeated.begin(), repeated.end());
        std::vector<std::pair<uint64_t, uint32_t>> suspects; // (sum, polygon)
        for (uint32_t t = 0; t < s_.face_count; ++t)
            if (polygon_[t] == t && !trailing_[t] &&
                std::binary_search(repeated.begin(), repeated.end(), sum[t]))
                suspects.push_back({sum[t], t});
        std::sort(suspects.begin(), suspects.end());
        collect(suspects);
        for (size_t i = 0, j; i < suspects.size(); i = j) {
            for (j = i; j < suspects.size() && suspects[j].first == suspects[i].first;)
                j++;
            sort_kinds(suspects.data() + i, suspects.data() + j);
        }
        return kinds_ != 0;
    }

    /// Sides and triangles of the suspects.
    void collect(const std::vector<std::pair<uint64_t, uint32_t>>& suspects) {
        place_.assign(s_.face_count, k_none);
        for (const auto& suspect : suspects) {
            place_[suspect.second] = uint32_t(polygons_.size());
            polygons_.emplace_back();
        }
        for (uint32_t t = 0; t < s_.face_count; ++t) {
            const uint32_t place = place_[polygon_[t]];
            if (place == k_none || trailing_[t])
                continue;
            polygons_[place].faces.push_back(t);
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                if (!s_.false_edge[h])
                    polygons_[place].sides.push_back({s_.vertex[h], s_.vertex[next_corner(h)], h});
        }
        for (Polygon& p : polygons_)
            std::sort(p.sides.begin(), p.sides.end());
    }

    /// Numbers the kinds among polygons that look alike.
    void sort_kinds(const std::pair<uint64_t, uint32_t>* first,
                    const std::pair<uint64_t, uint32_t>* last) {
        std::vector<uint32_t> models; // the first of each kind
        std::vector<uint32_t> members;
        for (; first != last; ++first) {
            const uint32_t p = place_[first->second];
            if (!is_polygon(polygons_[p]))
                continue;
            uint32_t model = 0;
            while (model < models.size() &&
                   winding(polygons_[p], polygons_[models[model]]) == Winding::other)
                model++;
            if (model == models.size()) {
                models.push_back(p);
                members.push_back(0);
            }
            if (members[model]++ == 1)
                polygons_[models[model]].kind = kinds_++;
            if (members[model] > 1)
                polygons_[p].kind = polygons_[models[model]].kind;
        }
    }

    /// Whether the border names every vertex once; a set of false edges may also close a surface or
    /// leave a vertex inside.
    bool is_polygon(const Polygon& p) const {
        const auto same_from = [](const Side& a, const Side& b) { return a.from == b.from; };
        if (p.sides.empty() ||
            std::adjacent_find(p.sides.begin(), p.sides.end(), same_from) != p.sides.end())
            return false;
        return std::all_of(p.faces.begin(), p.faces.end(), [&](uint32_t t) {
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
                if (side_from(p, s_.vertex[c]).from != s_.vertex[c])
                    return false;
            return true;
        });
    }

    enum class Winding { alike, against, other };

    /// How two polygons lie to each other; `other` when they are not on the same vertices in the
    /// same cyclic order.
    static Winding winding(const Polygon& a, const Polygon& b) {
        if (a.sides.size() != b.sides.size())
            return Winding::other;
        bool alike = true, against = true;
        for (size_t i = 0; i < a.sides.size(); ++i) {
            if (a.sides[i].from != b.sides[i].from)
                return Winding::other;
            alike = alike && a.sides[i].to == b.sides[i].to;
            against = against && side_from(b, a.sides[i].to).to == a.sides[i].from;
        }
        return alike ? Winding::alike : against ? Winding::against : Winding::other;
    }

    /// The side that starts at a vertex of the polygon; another one for any other vertex.
    static const Side& side_from(const Polygon& p, uint32_t vertex) {
        const auto found =
            std::lower_bound(p.sides.begin(), p.sides.end(), Side{vertex, vertex, 0});
        return found == p.sides.end() ? p.sides.front() : *found;
    }

    const Polygon* polygon_of(uint32_t h) const {
        const uint32_t place = place_[polygon_[h / 3]];
        return place == k_none ? nullptr : &polygons_[place];
    }

    /// Two polygons folded onto each other that have no other neighbours can be one flat chart:
    /// they stay joined, unless sheets are to share their place.
    void open_between_twins() {
        for (const Polygon& p : polygons_)
            if (options_.stack || !meets_only_its_twin(p))
                for (const Side& side : p.sides)
                    if (is_twin(p, mate_of(side)))
                        open(side.half_edge);
    }

    const Polygon* mate_of(const Side& side) const {
        const uint32_t mate = s_.mate[side.half_edge];
        return mate == k_none ? nullptr : polygon_of(mate);
    }

    static bool is_twin(const Polygon& p, const Polygon* other) {
        return p.kind != k_none && other != nullptr && other->kind == p.kind;
    }

    bool meets_only_its_twin(const Polygon& p) const {
        const Polygon* twin = nullptr;
        for (const Side& side : p.sides) {
            if (s_.mate[side.half_edge] == k_none)
                continue;
            const Polygon* const other = mate_of(side);
            if (other == &p || !is_twin(p, other) || (twin != nullptr && other != twin))
                return false;
            twin = other;
        }
        return twin != nullptr;
    }

    /// All sheets, by their first triangle.
    std::vector<Sheet> collect_sheets() {
        std::vector<uint32_t> sheet_of(s_.face_count);
        for (uint32_t t = 0; t < s_.face_count; ++t)
            sheet_of[t] = t;
        for (uint32_t h = 0; h < 3 * s_.face_count; ++h)
            if (s_.mate[h] != k_none && s_.mate[h] > h)
                join(sheet_of, h / 3, s_.mate[h] / 3);
        std::vector<Sheet> sheets;
        std::vector<uint32_t> number(s_.face_count, k_none);
        for (uint32_t t = 0; t < s_.face_count; ++t) {
            if (trailing_[t] || polygon_[t] != t)
                continue;
            uint32_t& sheet = number[find(sheet_of, t)];
            if (sheet == k_none) {
                sheet = uint32_t(sheets.size());
                sheets.emplace_back();
            }
            const uint32_t place = place_[t];
            if (place != k_none && polygons_[place].kind != k_none)
                sheets[sheet].polygons.push_back(place);
            else
                sheets[sheet].may_copy = false;
            if (!options_.refused.empty() && options_.refused[t])
                sheets[sheet].may_copy = false;
        }
        return sheets;
    }

    /// A sheet that matches an earlier one polygon by polygon copies it.
    void find_copies() {
        const std::vector<Sheet> sheets = collect_sheets();
        begin_copies();
        // Per kind: sheets that are laid out and have such a polygon.
        std::vector<std::vector<std::pair<uint32_t, uint32_t>>> laid_out(kinds_);
        std::vector<Match> matches;
        for (uint32_t x = 0; x < sheets.size(); ++x) {
            const std::vector<uint32_t>& own = sheets[x].polygons;
            bool copied = false;
            size_t tries = 0;
            if (own.empty())
                continue;
            for (const auto& [y, twin] : laid_out[polygons_[own[0]].kind]) {
                constexpr size_t k_most_tries = 4; // an early mismatch costs little, a late one all
                if (copied || !sheets[x].may_copy || tries++ == k_most_tries)
                    break;
                copied = sheets[y].polygons.size() == own.size() && match(own[0], twin, matches) &&
                         matches.size() == own.size();
            }
            if (copied)
                copy(matches);
            else
                for (uint32_t p : own)
                    laid_out[polygons_[p].kind].push_back({x, p});
        }
    }

    /// Walks over two sheets at once from twins that correspond. False when they differ somewhere.
    bool match(uint32_t first, uint32_t twin, std::vector<Match>& matches) {
        matches.clear();
        twin_.resize(polygons_.size(), k_none);
        taken_.resize(polygons_.size(), 0);
        const Winding way = winding(polygons_[first], polygons_[twin]);
        const auto add = [&](uint32_t p, uint32_t q) {
            if (p == k_none || q == k_none) // the source has neighbours without a twin
                return false;
            if (twin_[p] != k_none || taken_[q] != 0)
                return twin_[p] == q;
            if (winding(polygons_[p], polygons_[q]) != way)
                return false;
            twin_[p] = q;
            taken_[q] = 1;
            matches.push_back({p, q});
            return true;
        };
        bool same = add(first, twin);
        for (size_t i = 0; same && i < matches.size(); ++i) {
            const Polygon &p = polygons_[matches[i].polygon], &q = polygons_[matches[i].source];
            for (size_t k = 0; same && k < p.sides.size(); ++k) {
                const uint32_t mate = s_.mate[p.sides[k].half_edge];
                const uint32_t other = s_.mate[source_of(p.sides[k], q, way).half_edge];
                same = (mate == k_none) == (other == k_none);
                if (same && mate != k_none)
                    same = add(place_[polygon_[mate / 3]], place_[polygon_[other / 3]]);
            }
        }
        for (const Match& m : matches) {
            twin_[m.polygon] = k_none;
            taken_[m.source] = 0;
        }
        return same;
    }

    static const Side& source_of(const Side& side, const Polygon& source, Winding way) {
        return side_from(source, way == Winding::alike ? side.from : side.to);
    }

    void copy(const std::vector<Match>& matches) {
        const Winding way = winding(polygons_[matches[0].polygon], polygons_[matches[0].source]);
        const uint32_t id = uint32_t(out_.mirrored.size());
        out_.mirrored.push_back(way == Winding::against);
        out_.elsewhere.push_back(0);
        out_.difference.push_back(0);
        for (const Match& m : matches) {
            const Polygon &p = polygons_[m.polygon], &q = polygons_[m.source];
            for (uint32_t t : p.faces) {
                out_.copy[t] = id;
                for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
                    out_.source_corner[c] = side_from(q, s_.vertex[c]).half_edge;
            }
            for (const Side& side : p.sides)
                out_.source_edge[side.half_edge] = source_of(side, q, way).half_edge;
        }
    }

    void begin_copies() {
        out_.copy.assign(s_.face_count, k_none);
        out_.source_corner.assign(3 * size_t(s_.face_count), k_none);
        out_.source_edge.assign(3 * size_t(s_.face_count), k_none);
    }

    /// Sheets that repeat one elsewhere, unless they are copies already. Copies of theirs follow
    /// the same source, so that a doubled mesh has twice the charts. Where copies share the place
    /// of their sheet, a sheet that is copied repeats none.
    void copy_repeats() {
        std::vector<uint8_t> candidate(s_.face_count), copied(s_.face_count); // copied: polygons
        for (uint32_t t = 0; t < s_.face_count && options_.stack && !out_.copy.empty(); ++t)
            if (out_.copy[t] != k_none)
                copied[polygon_[out_.source_corner[3 * t] / 3]] = 1;
        for (uint32_t t = 0; t < s_.face_count; ++t)
            candidate[t] = !trailing_[t] && (options_.refused.empty() || !options_.refused[t]) &&
                           (out_.copy.empty() || out_.copy[t] == k_none) && !copied[polygon_[t]];
        const std::vector<Repeat> repeats = find_repeats(s_, candidate);
        if (out_.copy.empty() && !repeats.empty())
            begin_copies();
        for (const Repeat& repeat : repeats) {
            size_t i = 0;
            for (uint32_t t : repeat.faces) {
                out_.copy[t] = uint32_t(out_.mirrored.size());
                for (uint32_t c = 3 * t; c < 3 * t + 3; ++c, ++i) {
                    out_.source_corner[c] = repeat.source_corner[i];
                    out_.source_edge[c] = repeat.source_edge[i];
                }
            }
            out_.mirrored.push_back(repeat.mirrored);
            out_.elsewhere.push_back(1);
            out_.difference.push_back(repeat.difference);
        }
        if (!repeats.empty())
            follow_repeats();
    }

    /// Copies of sheets that repeat another take that one for their source.
    void follow_repeats() {
        std::vector<uint32_t> repeat(out_.mirrored.size(), k_none); // per copy: what its sheet is
        for (uint32_t t = 0; t < s_.face_count; ++t) {
            if (out_.copy[t] == k_none || out_.elsewhere[out_.copy[t]])
                continue;
            const uint32_t sheet = out_.copy[out_.source_corner[3 * t] / 3];
            repeat[out_.copy[t]] = sheet;
            for (uint32_t c = 3 * t; c < 3 * t + 3 && sheet != k_none; ++c) {
                uint32_t &corner = out_.source_corner[c], &edge = out_.source_edge[c];
                corner = out_.source_corner[corner];
                edge = edge == k_none ? k_none : out_.source_edge[edge];
            }
        }
        for (uint32_t id = 0; id < repeat.size(); ++id)
            if (repeat[id] != k_none) {
                out_.mirrored[id] = out_.mirrored[id] != out_.mirrored[repeat[id]];
                out_.difference[id] = out_.difference[repeat[id]];
            }
    }

    void number_kept() {
        out_.copy.resize(s_.face_count, k_none);
        std::vector<uint32_t> kept;
        for (uint32_t t = 0; t < s_.face_count; ++t)
            if (!trailing_[t] && out_.copy[t] == k_none)
                kept.push_back(t);
        out_.kept = order_by_shape(s_, kept);
        out_.number.assign(s_.face_count, k_none);
        for (uint32_t i = 0; i < out_.kept.size(); ++i)
            out_.number[out_.kept[i]] = i;
    }

    Surface& s_;
    const SheetOptions& options_;
    Sheets out_;
    std::vector<uint8_t> trailing_;
    std::vector<uint32_t> polygon_; ///< per triangle: the first one of its polygon
    std::vector<uint32_t> place_; ///< per first triangle of a polygon: place in polygons_, or none
    std::vector<Polygon> polygons_;
    uint32_t kinds_ = 0;
    std::vector<uint32_t> twin_; ///< per polygon: scratch of match; k_none at rest
    std::vector<uint8_t> taken_; ///< per polygon: scratch of match; 0 at rest
};

} // namespace

Sheets find_sheets(Surface& s, const SheetOptions& options) {
    return SheetFinder(s, options).run();
}

} // namespace tessora::atlas
