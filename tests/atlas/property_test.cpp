// The engine's guarantees on small random meshes with random topology, cuts, polygons, degenerate
// triangles and options. TESSORA_PROPERTY_RUNS sets the number of meshes (default 2,000);
// TESSORA_PROPERTY_SEED runs a single seed.
#include "tests/atlas/check_result.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

using namespace atlas_test;
using namespace tessora::atlas;

constexpr uint64_t k_shards = 8; ///< test cases among which the seeds are divided

/// The same numbers on every platform (splitmix64).
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t next() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t n) { return uint32_t(next() % n); }
    float unit() { return float(next() >> 40) / float(1 << 24); }
    bool chance(float p) { return unit() < p; }
    template <class T, size_t n>
    T pick(const T (&list)[n]) {
        return list[below(uint32_t(n))];
    }

private:
    uint64_t state_;
};

struct Case {
    TestMesh mesh;
    Options options;
    bool polygons_are_sound = true; ///< every group of false edges could be a polygon
    TestMesh single;                ///< what `mesh` has twice; empty when nothing
};

/// A grid of cells, possibly closed to a cylinder or torus, possibly with inconsistent windings.
void add_sheet(Random& random, TestMesh& mesh) {
    const uint32_t m = 1 + random.below(7), n = 1 + random.below(7);
    const bool around = m > 2 && random.chance(0.3f), along = n > 2 && random.chance(0.3f);
    const float bend = random.chance(0.3f) ? 0.0f : random.unit() * 3;
    const float noise = random.chance(0.5f) ? 0.0f : random.unit();
    const float squash = random.chance(0.1f) ? 1e-4f : 1.0f;
    const uint32_t columns = around ? m : m + 1, rows = along ? n : n + 1;
    std::vector<uint32_t> id(columns * rows);
    for (uint32_t j = 0; j < rows; ++j)
        for (uint32_t i = 0; i < columns; ++i) {
            const float a = 6.2831853f * float(i) / float(m), b = 6.2831853f * float(j) / float(n);
            float x = float(i), y = float(j), z = bend * random.unit();
            if (around) {
                const float r = along ? 3 + std::cos(b) : 1.0f + 0.2f * float(j);
                x = r * std::cos(a);
                z = r * std::sin(a);
                if (along)
                    y = std::sin(b);
            }
            id[j * columns + i] = mesh.vertex(x + noise * (random.unit() - 0.5f),
                                              squash * (y + noise * (random.unit() - 0.5f)),
                                              z + noise * (random.unit() - 0.5f));
        }
    const bool mixed_windings = random.chance(0.1f);
    for (uint32_t j = 0; j < n; ++j)
        for (uint32_t i = 0; i < m; ++i) {
            const uint32_t i1 = (i + 1) % columns, j1 = (j + 1) % rows;
            const uint32_t a = id[j * columns + i], b = id[j * columns + i1];
            const uint32_t c = id[j1 * columns + i1], d = id[j1 * columns + i];
            if (mixed_windings && random.chance(0.2f)) {
                mesh.triangle(a, c, b);
                mesh.triangle(a, d, c);
            } else if (random.chance(0.5f)) {
                mesh.triangle(a, b, c);
                mesh.triangle(a, c, d);
            } else {
                mesh.triangle(a, b, d);
                mesh.triangle(b, c, d);
            }
        }
}

/// Random triangles between few vertices: edges of many triangles, folds, duplicates.
void add_soup(Random& random, TestMesh& mesh) {
    const uint32_t vertices = 4 + random.below(8), count = 1 + random.below(25);
    const uint32_t base = uint32_t(mesh.positions.size() / 3);
    const bool lattice = random.chance(0.5f);
    for (uint32_t i = 0; i < vertices; ++i) {
        float p[3];
        for (float& x : p)
            x = lattice ? float(random.below(3)) : random.unit() * 3;
        mesh.vertex(p[0], p[1], p[2]);
    }
    for (uint32_t i = 0; i < count; ++i)
        mesh.triangle(base + random.below(vertices), base + random.below(vertices),
                      base + random.below(vertices));
}

/// A fan around one vertex, with less or more than 360 degrees.
void add_fan(Random& random, TestMesh& mesh) {
    const uint32_t count = 3 + random.below(20);
    const float height = random.unit() * 4;
    const uint32_t hub = mesh.vertex(0, 0, 0);
    std::vector<uint32_t> rim;
    for (uint32_t i = 0; i < count; ++i) {
        const float a = 6.2831853f * float(i) / float(count);
        rim.push_back(mesh.vertex(std::cos(a), std::sin(a), height * (random.unit() - 0.5f)));
    }
    const bool open = random.chance(0.3f);
    for (uint32_t i = 0; i + (open ? 1 : 0) < count; ++i)
        mesh.triangle(hub, rim[i], rim[(i + 1) % count]);
}

/// Joins chains of neighbouring triangles to polygons without holes.
void add_polygons(Random& random, TestMesh& mesh) {
    mesh.false_edges.assign(mesh.indices.size(), k_none);
    std::vector<uint8_t> used(mesh.faces(), 0);
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        if (used[t] || random.chance(0.4f))
            continue;
        std::vector<uint32_t> corners(mesh.indices.begin() + 3 * t,
                                      mesh.indices.begin() + 3 * t + 3);
        uint32_t at = t;
        used[t] = 1;
        for (uint32_t more = 1 + random.below(4); more > 0; --more) {
            const uint32_t h = 3 * at + random.below(3), other = mesh.adjacency[h];
            if (other == k_none || used[other])
                continue;
            for (uint32_t g = 3 * other; g < 3 * other + 3; ++g) {
                const uint32_t apex = mesh.indices[g % 3 == 0 ? g + 2 : g - 1];
                const uint32_t g1 = g % 3 == 2 ? g - 2 : g + 1, h1 = h % 3 == 2 ? h - 2 : h + 1;
                if (mesh.indices[g] != mesh.indices[h1] || mesh.indices[g1] != mesh.indices[h] ||
                    mesh.adjacency[g] != at ||
                    std::find(corners.begin(), corners.end(), apex) != corners.end())
                    continue;
                mesh.false_edges[h] = mesh.false_edges[g] = random.below(100);
                corners.push_back(apex);
                used[other] = 1;
                at = other;
                break;
            }
        }
    }
}

void add_cuts(Random& random, TestMesh& mesh) {
    const float share = random.unit() * 0.4f;
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        const bool inside = !mesh.false_edges.empty() && mesh.false_edges[h] != k_none;
        if (mesh.adjacency[h] == k_none || inside || !random.chance(share))
            continue;
        const uint32_t other = mesh.adjacency[h];
        if (random.chance(0.7f)) // open both sides of the edge, else one only
            for (uint32_t g = 3 * other; g < 3 * other + 3; ++g)
                if (mesh.adjacency[g] == h / 3 &&
                    mesh.indices[g] == mesh.indices[h % 3 == 2 ? h - 2 : h + 1])
                    mesh.adjacency[g] = k_none;
        mesh.adjacency[h] = k_none;
    }
}

/// Pairs the triangles of crowded edges at random: mostly as sheets, now and then against the
/// rules.
void add_sheets(Random& random, TestMesh& mesh) {
    std::map<std::pair<uint32_t, uint32_t>, std::vector<uint32_t>> uses;
    for (uint32_t h = 0; h < mesh.indices.size(); h++)
        uses[std::minmax({mesh.indices[h], mesh.indices[h % 3 == 2 ? h - 2 : h + 1]})].push_back(h);
    for (auto& [ends, list] : uses) {
        if (list.size() < 3)
            continue;
        for (size_t i = list.size(); i > 1; i--)
            std::swap(list[i - 1], list[random.below(uint32_t(i))]);
        const bool strict = random.chance(0.8f);
        for (size_t i = 0; i < list.size(); i++)
            for (size_t j = i + 1; j < list.size(); j++) {
                const uint32_t g = list[i], h = list[j];
                if (mesh.adjacency[g] != k_none || mesh.adjacency[h] != k_none || g / 3 == h / 3 ||
                    (strict && mesh.indices[g] == mesh.indices[h]))
                    continue;
                mesh.adjacency[g] = h / 3;
                if (strict || random.chance(0.7f))
                    mesh.adjacency[h] = g / 3;
            }
    }
}

/// Appends the whole mesh once more, on the same vertices: wound alike or against it, adjacent to
/// itself only.
void add_copy(TestMesh& mesh, bool reversed) {
    const uint32_t corners = uint32_t(mesh.indices.size());
    for (uint32_t h = 0; h < corners; h++) {
        const uint32_t t = h / 3, k = h % 3;
        const uint32_t corner = reversed ? 3 * t + (3 - k) % 3 : h;
        const uint32_t edge = reversed ? 3 * t + 2 - k : h;
        mesh.indices.push_back(mesh.indices[corner]);
        mesh.adjacency.push_back(
            mesh.adjacency[edge] == k_none ? k_none : mesh.adjacency[edge] + corners / 3);
        if (!mesh.false_edges.empty())
            mesh.false_edges.push_back(mesh.false_edges[edge]);
    }
}

Case random_case(uint64_t seed) {
    Random random(seed);
    Case c;
    for (uint32_t parts = 1 + random.below(3); parts > 0; --parts) {
        const uint32_t kind = random.below(10);
        if (kind < 5)
            add_sheet(random, c.mesh);
        else if (kind < 8)
            add_soup(random, c.mesh);
        else
            add_fan(random, c.mesh);
    }
    if (random.chance(0.2f)) // a degenerate or duplicate triangle
        for (uint32_t i = 1 + random.below(3); i > 0; --i) {
            const uint32_t t = random.below(c.mesh.faces());
            uint32_t v[3];
            for (uint32_t k = 0; k < 3; ++k)
                v[k] = c.mesh.indices[3 * t + k];
            random.chance(0.5f) ? c.mesh.triangle(v[0], v[1], v[random.below(2)])
                                : c.mesh.triangle(v[1], v[2], v[0]);
        }
    if (random.chance(0.2f)) // move up to three vertices onto others
        for (uint32_t i = 0; i < 3; ++i) {
            const uint32_t n = uint32_t(c.mesh.positions.size() / 3);
            const uint32_t from = random.below(n), to = random.below(n);
            for (uint32_t k = 0; k < 3; ++k)
                c.mesh.positions[3 * to + k] = c.mesh.positions[3 * from + k];
        }
    if (random.chance(0.2f)) {
        const float unit = random.chance(0.5f) ? 1e6f : 1e-6f;
        for (float& x : c.mesh.positions)
            x *= unit;
    }
    c.mesh.connect();
    if (random.chance(0.5f))
        add_sheets(random, c.mesh);
    if (random.chance(0.5f))
        add_polygons(random, c.mesh);
    if (random.chance(0.4f))
        add_cuts(random, c.mesh);
    if (random.chance(0.1f)) { // mark any edges as false
        c.mesh.false_edges.resize(c.mesh.indices.size(), k_none);
        for (uint32_t& f : c.mesh.false_edges)
            if (random.chance(0.3f))
                f = 0;
        c.polygons_are_sound = false;
    }
    if (c.polygons_are_sound && random.chance(0.2f)) {
        c.single = c.mesh;
        add_copy(c.mesh, random.chance(0.5f));
    }
    c.options.max_stretch = random.pick({0.0f, 0.03f, 0.05f, 0.15f, 0.15f, 0.5f, 1.0f});
    c.options.quality = random.chance(0.5f) ? Quality::fast : Quality::quality;
    c.options.width = random.pick({256u, 512u, 1024u});
    c.options.height = random.pick({256u, 512u, 1024u});
    c.options.gutter = random.pick({0.0f, 1.0f, 2.0f, 3.5f});
    // Cutting packs several times, which is slow in quality mode.
    c.options.cut_to_pack = c.options.quality == Quality::fast && random.chance(0.1f);
    return c;
}

/// True when no triangle is without area: what hangs on others does not double.
bool names_three_places(const TestMesh& mesh) {
    double least = 1e300, sum = 0;
    for (uint32_t t = 0; t < mesh.faces(); t++) {
        double e[2][3], n = 0;
        for (int k = 0; k < 2; k++)
            for (int i = 0; i < 3; i++)
                e[k][i] = double(mesh.positions[3 * mesh.indices[3 * t + 1 + k] + i]) -
                          mesh.positions[3 * mesh.indices[3 * t] + i];
        for (int i = 0; i < 3; i++) {
            const double c =
                e[0][(i + 1) % 3] * e[1][(i + 2) % 3] - e[0][(i + 2) % 3] * e[1][(i + 1) % 3];
            n += c * c;
        }
        least = std::min(least, std::sqrt(n));
        sum += std::sqrt(n);
    }
    return least > 1e-8 * sum / mesh.faces();
}

std::string faults_of(uint64_t seed) {
    const Case c = random_case(seed);
    const bool packed = seed / k_shards % 16 == 0; // packing takes most of the time
    Result result, again;
    std::vector<uint32_t> adjacency;
    const auto run = [&](Result& out) {
        return packed ? create(c.mesh.view(), c.options, out)
                      : partition(c.mesh.view(), c.options, out, adjacency);
    };
    const Failure failure = run(result);
    if (failure.status != Status::ok)
        return std::string("failed: ") + describe(failure.status);
    TestMesh judged = c.mesh;
    if (!c.polygons_are_sound)
        judged.false_edges.clear();
    std::string text;
    for (const std::string& fault : judge(judged, c.options, result, packed, true).faults)
        text += fault + "\n";
    if (c.single.faces() != 0 && names_three_places(c.single)) {
        // What packing cuts for the texture depends on all charts; it cuts both sheets alike. If
        // fast mode's charts cover more, they are the result.
        const bool cut = packed && c.options.cut_to_pack;
        Options fast = c.options;
        fast.quality = Quality::fast;
        const auto charts_of = [&](const Options& options) {
            Result once;
            return partition(c.single.view(), options, once, adjacency).status == Status::ok
                       ? once.chart_count
                       : 0u;
        };
        const uint32_t once = charts_of(c.options);
        if (cut ? result.chart_count % 2 != 0
                : result.chart_count != 2 * once &&
                      !(packed && result.chart_count == 2 * charts_of(fast)))
            text += "twice the mesh has " + std::to_string(result.chart_count) + " charts, once " +
                    std::to_string(once) + "\n";
    }
    if (packed && c.mesh.faces() <= 120) {
        const double gap = smallest_gap(c.mesh, c.options, result);
        if (gap < double(c.options.gutter) - 0.01)
            text += "gap " + std::to_string(gap) + "\n";
    }
    if (run(again).status != Status::ok || again.uvs != result.uvs ||
        again.indices != result.indices || again.chart != result.chart)
        text += "a second run differs\n";
    return text;
}

class AtlasProperty : public ::testing::TestWithParam<uint64_t> {};

TEST_P(AtlasProperty, EveryGuaranteeHoldsOnRandomMeshes) {
    if (const char* one = std::getenv("TESSORA_PROPERTY_SEED")) {
        EXPECT_EQ(faults_of(std::strtoull(one, nullptr, 10)), "");
        return;
    }
    const char* words = std::getenv("TESSORA_PROPERTY_RUNS");
    const uint64_t runs = words != nullptr ? std::strtoull(words, nullptr, 10) : 2000;
    int failed = 0;
    for (uint64_t seed = GetParam(); seed < runs && failed < 5; seed += k_shards) {
        const std::string faults = faults_of(seed);
        failed += !faults.empty();
        EXPECT_EQ(faults, "") << "TESSORA_PROPERTY_SEED=" << seed;
    }
}

TEST(AtlasProperty, NeedlesAFewRoundingStepsWideAreReportedAsTheyAreReturned) {
    EXPECT_EQ(faults_of(97900), "");
}

TEST(AtlasProperty, DoublingAMeshWhosePartsNearlyRepeatDoublesItsCharts) {
    EXPECT_EQ(faults_of(26816), "");
}

TEST(AtlasProperty, NeedlesThatTurnOtherwiseDoNotRepeatEachOther) {
    EXPECT_EQ(faults_of(66993), "");
}

TEST(AtlasProperty, FastModeCoversNoMoreThanQualityModeUnlessWithMoreCharts) {
    for (uint64_t seed = 0; seed < 48; ++seed) {
        Case c = random_case(seed);
        double coverage[2] = {};
        uint32_t charts[2] = {};
        bool net = false;
        for (const Quality quality : {Quality::fast, Quality::quality}) {
            Result result;
            c.options.quality = quality;
            if (create(c.mesh.view(), c.options, result).status != Status::ok)
                continue;
            net = result.chart_count <= 2 && result.stretch < 1e-3f; // and both its sheets
            charts[quality == Quality::quality] = result.chart_count;
            coverage[quality == Quality::quality] =
                judge(c.mesh, c.options, result, true, false).coverage;
        }
        EXPECT_TRUE(net || charts[0] > charts[1] || coverage[1] >= std::min(coverage[0], 0.9))
            << "seed " << seed << ": " << charts[0] << " charts that cover " << coverage[0]
            << " fast, " << charts[1] << " that cover " << coverage[1] << " quality";
    }
}

INSTANTIATE_TEST_SUITE_P(Shard, AtlasProperty, ::testing::Range<uint64_t>(0, k_shards));

} // namespace
