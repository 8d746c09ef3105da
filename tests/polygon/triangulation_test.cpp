#include "polygon/orientation.h"
#include "polygon/triangulation.h"
#include "tests/host/mesh/mesh_builder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <tuple>

namespace {

using host::Mesh;
using mesh_builder::outline;
using mesh_builder::Parts;
using mesh_builder::Placement;
using tessora::polygon::IndexSpan;
using tessora::polygon::orientation;
using tessora::polygon::Triangulation;

using Outline = std::vector<std::pair<double, double>>;

Triangulation triangulate(const Parts& parts) {
    const Mesh mesh = parts.mesh();
    return tessora::polygon::triangulate(mesh.connectivity().polygons(), &parts.points[0].x);
}

MVector at(const Parts& parts, std::uint32_t vertex) {
    const host::Float3& p = parts.points[vertex];
    return MVector(static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z));
}

MVector area_of(const Parts& parts, const std::vector<std::uint32_t>& ids) {
    MVector sum;
    for (std::size_t i = 2; i < ids.size(); ++i)
        sum +=
            (at(parts, ids[i - 1]) - at(parts, ids[0])) ^ (at(parts, ids[i]) - at(parts, ids[0]));
    return sum * 0.5;
}

struct Verdict {
    std::size_t triangles = 0;
    int flipped = 0;
    int flat = 0;
    double area = 0.0;         ///< sum over the triangles, projected along the polygon's normal
    double polygon_area = 0.0; ///< length of the polygon's area vector
    bool is_disk = false; ///< the triangles' sides are the polygon's sides and shared diagonals
};

/// Checks the triangles of polygon 0 by independent geometric tests.
Verdict judge(const Parts& parts, const Triangulation& result) {
    Verdict verdict;
    const std::uint32_t n = parts.counts[0];
    const std::vector<std::uint32_t> polygon(parts.vertices.begin(), parts.vertices.begin() + n);
    const MVector area = area_of(parts, polygon);
    verdict.polygon_area = area.length();
    verdict.triangles = n - 2;
    std::multiset<std::pair<std::uint32_t, std::uint32_t>> sides;
    for (std::uint32_t t = 0; t + 2 < n; ++t) {
        const std::uint32_t* c = result.corners.data() + 3 * t;
        const MVector triangle = area_of(parts, {polygon[c[0]], polygon[c[1]], polygon[c[2]]});
        const double along = triangle * area.normal();
        verdict.area += along;
        verdict.flipped += along < -1e-9 * verdict.polygon_area ? 1 : 0;
        verdict.flat += std::fabs(along) <= 1e-12 * verdict.polygon_area ? 1 : 0;
        for (int k = 0; k < 3; ++k)
            sides.insert({c[k], c[(k + 1) % 3]});
    }
    verdict.is_disk = sides.size() == 3 * (n - 2);
    for (const auto& side : sides) {
        const bool is_rim = side.second == (side.first + 1) % n;
        const std::size_t opposite = sides.count({side.second, side.first});
        verdict.is_disk = verdict.is_disk && sides.count(side) == 1 && opposite == (is_rim ? 0 : 1);
    }
    return verdict;
}

void expect_sound(const Parts& parts) {
    const Triangulation result = triangulate(parts);
    const Verdict verdict = judge(parts, result);
    EXPECT_TRUE(result.is_valid[0]);
    EXPECT_TRUE(verdict.is_disk);
    EXPECT_EQ(verdict.flipped, 0);
    EXPECT_NEAR(verdict.area, verdict.polygon_area, 1e-5 * verdict.polygon_area);
}

// === Outlines ====================================================================================

Outline circle(std::uint32_t n) {
    Outline points;
    for (std::uint32_t i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n;
        points.emplace_back(std::cos(angle), std::sin(angle));
    }
    return points;
}

Outline star(std::uint32_t n, unsigned seed) {
    std::mt19937 random(seed);
    Outline points;
    for (std::uint32_t i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n;
        const double radius = 0.3 + 0.7 * (random() / 4294967296.0);
        points.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    return points;
}

/// A comb with teeth of uneven length, pointing up.
Outline comb(std::uint32_t teeth) {
    Outline points = {{static_cast<double>(teeth), -1.0}};
    for (std::uint32_t i = teeth; i > 0; --i) {
        points.emplace_back(i - 0.3, 1.0 + 0.5 * (i % 3));
        points.emplace_back(i - 0.9, 0.0 + 0.1 * (i % 4));
    }
    points.emplace_back(0.0, -1.0);
    return points;
}

/// A band wound into a spiral.
Outline spiral(std::uint32_t n, double turns) {
    Outline out;
    Outline back;
    for (std::uint32_t i = 0; i < n; ++i) {
        const double share = static_cast<double>(i) / n;
        const double angle = 6.283185307179586 * turns * share;
        const double radius = 1.0 + turns * share;
        out.emplace_back((radius + 0.4) * std::cos(angle), (radius + 0.4) * std::sin(angle));
        back.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    out.insert(out.end(), back.rbegin(), back.rend());
    return out;
}

Placement tilted() {
    Placement placement;
    placement.origin = MVector(3, -7, 11);
    placement.right = MVector(2, 1, -0.5).normal();
    placement.up = (MVector(0.3, 0.7, 1) ^ placement.right).normal();
    return placement;
}

/// A square plate with square holes, each connected to the outline by a bridge walked twice.
Outline plate(std::uint32_t holes) {
    Outline points;
    const double width = 3.0 * holes + 1.0;
    points.emplace_back(0.0, 0.0);
    for (std::uint32_t i = 0; i < holes; ++i) {
        const double x = 1.0 + 3.0 * i;
        points.emplace_back(x, 0.0);
        for (const auto& corner : Outline{{0, 1}, {0, 2}, {1, 2}, {1, 1}, {0, 1}})
            points.emplace_back(x + corner.first, corner.second);
        points.emplace_back(x, 0.0);
    }
    points.emplace_back(width, 0.0);
    points.emplace_back(width, 3.0);
    points.emplace_back(0.0, 3.0);
    return points;
}

// === Simple polygons =============================================================================

TEST(Triangulation, CutsAConvexPolygon) { expect_sound(outline(circle(17))); }
TEST(Triangulation, CutsAConcavePolygon) { expect_sound(outline(star(19, 4))); }
TEST(Triangulation, CutsALongStar) { expect_sound(outline(star(5000, 5))); }
TEST(Triangulation, CutsALongComb) { expect_sound(outline(comb(3000))); }
TEST(Triangulation, CutsALongSpiral) { expect_sound(outline(spiral(3000, 20))); }
TEST(Triangulation, CutsATiltedStar) { expect_sound(outline(star(600, 6), tilted())); }
TEST(Triangulation, CutsATiltedSpiral) { expect_sound(outline(spiral(400, 6), tilted())); }

TEST(Triangulation, CutsManyRandomStarsOfEverySize) {
    for (std::uint32_t n = 3; n < 160; ++n)
        for (unsigned seed = 0; seed < 6; ++seed) {
            SCOPED_TRACE(testing::Message() << n << " corners, seed " << seed);
            expect_sound(outline(star(n, 1000 * seed + n), seed % 2 == 0 ? Placement() : tilted()));
        }
}

/// Grows a simple polygon by moving edge midpoints wherever the result is simple.
Outline grown(std::uint32_t n, unsigned seed) {
    std::mt19937 random(seed);
    const auto crosses = [](const std::pair<double, double>& a, const std::pair<double, double>& b,
                            const std::pair<double, double>& c,
                            const std::pair<double, double>& d) {
        const auto turn = [](const std::pair<double, double>& p, const std::pair<double, double>& q,
                             const std::pair<double, double>& r) {
            return orientation({p.first, p.second}, {q.first, q.second}, {r.first, r.second});
        };
        return turn(a, b, c) * turn(a, b, d) <= 0 && turn(c, d, a) * turn(c, d, b) <= 0;
    };
    // Integer coordinates: many corners are collinear or at the same height.
    Outline points = {{0, 0}, {40, 0}, {20, 40}};
    for (int tries = 0; points.size() < n && tries < 20000; ++tries) {
        const std::size_t at = random() % points.size();
        const std::pair<double, double> a = points[at];
        const std::pair<double, double> b = points[(at + 1) % points.size()];
        const std::pair<double, double> p(static_cast<double>(random() % 41),
                                          static_cast<double>(random() % 41));
        bool is_free = true;
        for (std::size_t i = 0; i < points.size() && is_free; ++i) {
            const auto& c = points[i];
            const auto& d = points[(i + 1) % points.size()];
            if (i == at)
                continue;
            is_free = p != c && p != d;
            if (d != a && c != a)
                is_free = is_free && !crosses(a, p, c, d);
            if (c != b && d != b)
                is_free = is_free && !crosses(p, b, c, d);
            if (d == a || c == b) { // the neighbours must not fold back onto the new edges
                const auto& far = d == a ? c : d;
                const auto& near = d == a ? d : c;
                is_free =
                    is_free && !(orientation({far.first, far.second}, {near.first, near.second},
                                             {p.first, p.second}) == 0);
            }
        }
        if (is_free &&
            orientation({a.first, a.second}, {b.first, b.second}, {p.first, p.second}) != 0)
            points.insert(points.begin() + static_cast<std::ptrdiff_t>(at) + 1, p);
    }
    return points;
}

TEST(Triangulation, CutsRandomSimplePolygonsOnIntegerCoordinates) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        expect_sound(outline(grown(4 + seed % 90, seed)));
    }
}

TEST(Triangulation, AvoidsFlatTrianglesAtCollinearCorners) {
    Outline square;
    for (int i = 0; i < 10; ++i)
        square.emplace_back(i, 0);
    for (int i = 0; i < 10; ++i)
        square.emplace_back(10, i);
    for (int i = 10; i > 0; --i)
        square.emplace_back(i, 10);
    for (int i = 10; i > 0; --i)
        square.emplace_back(0, i);
    const Parts parts = outline(square);
    expect_sound(parts);
    EXPECT_EQ(judge(parts, triangulate(parts)).flat, 0);
}

TEST(Triangulation, CutsANonPlanarPolygon) {
    Parts parts = outline(star(40, 12));
    for (std::size_t i = 0; i < parts.points.size(); ++i)
        parts.points[i].z = 0.15f * std::sin(7.0f * parts.points[i].x);
    const Triangulation result = triangulate(parts);
    const Verdict verdict = judge(parts, result);
    EXPECT_TRUE(result.is_valid[0]);
    EXPECT_TRUE(verdict.is_disk);
    EXPECT_EQ(verdict.flipped, 0);
}

TEST(Triangulation, CutsAConcaveQuadrilateralThroughItsReflexCorner) {
    const Parts parts = outline({{0, 0}, {4, 0}, {1, 1}, {0, 4}});
    expect_sound(parts);
    const Triangulation result = triangulate(parts);
    EXPECT_EQ(result.corners, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
}

TEST(Triangulation, UsesTheShorterDiagonalOfAQuadrilateral) {
    const Triangulation result = triangulate(outline({{0, 0}, {3, -1}, {4, 0}, {3, 1}}));
    EXPECT_EQ(result.corners, (std::vector<std::uint32_t>{0, 1, 3, 1, 2, 3}));
}

TEST(Triangulation, CutsASquareFromItsFirstCorner) {
    const Triangulation result = triangulate(outline({{0, 0}, {1, 0}, {1, 1}, {0, 1}}));
    EXPECT_EQ(result.corners, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
}

TEST(Triangulation, DoesNotDependOnTheUnitOfLength) {
    for (const double scale : {0.001, 1000.0, 1e-12, 1e12}) {
        Parts parts = outline(circle(64), tilted());
        const std::vector<std::uint32_t> plain = triangulate(parts).corners;
        for (host::Float3& p : parts.points)
            p = host::Float3{static_cast<float>(static_cast<double>(p.x) * scale),
                             static_cast<float>(static_cast<double>(p.y) * scale),
                             static_cast<float>(static_cast<double>(p.z) * scale)};
        const Verdict verdict = judge(parts, triangulate(parts));
        EXPECT_EQ(verdict.flipped, 0);
        EXPECT_TRUE(verdict.is_disk);
        EXPECT_EQ(triangulate(parts).corners.size(), plain.size());
    }
}

TEST(Triangulation, HasFewThinTriangles) {
    const Parts parts = outline(circle(200));
    const Triangulation result = triangulate(parts);
    // All triangulations of a polygon inscribed in a circle are equal by the angle criterion; for a
    // wavy outline there is a best one, which no flip improves.
    const Parts wavy = outline(star(200, 3));
    const Triangulation best = triangulate(wavy);
    int improvable = 0;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> tips;
    for (std::size_t i = 0; i < best.corners.size(); ++i) {
        const std::size_t t = i - i % 3;
        tips[{best.corners[i], best.corners[t + (i + 1) % 3]}] = best.corners[t + (i + 2) % 3];
    }
    for (const auto& side : tips) {
        const auto other = tips.find({side.first.second, side.first.first});
        if (other == tips.end())
            continue;
        const auto angle = [&](std::uint32_t tip) {
            return (at(wavy, side.first.first) - at(wavy, tip))
                .angle(at(wavy, side.first.second) - at(wavy, tip));
        };
        const std::uint32_t a = side.first.first;
        const std::uint32_t b = side.first.second;
        const bool is_convex = area_of(wavy, {side.second, a, other->second}).z > 1e-9 &&
                               area_of(wavy, {other->second, b, side.second}).z > 1e-9;
        improvable += is_convex && angle(side.second) + angle(other->second) > 3.1417 ? 1 : 0;
    }
    EXPECT_EQ(improvable, 0);
    EXPECT_EQ(judge(parts, result).flat, 0);
}

// === Self-touching and self-crossing outlines ====================================================

TEST(Triangulation, CutsAPolygonWithABridgeToAHole) { expect_sound(outline(plate(1))); }
TEST(Triangulation, CutsAPolygonWithManyBridgesToHoles) { expect_sound(outline(plate(300))); }
TEST(Triangulation, CutsATiltedPolygonWithBridges) {
    const Parts parts = outline(plate(40), tilted());
    const Verdict verdict = judge(parts, triangulate(parts));
    EXPECT_TRUE(verdict.is_disk);
    EXPECT_EQ(verdict.flipped, 0);
}

TEST(Triangulation, MarksABowTieInvalidAndStillCutsIt) {
    const Parts parts = outline({{0, 0}, {2, 1}, {2, 0}, {0, 1.5}});
    const Triangulation result = triangulate(parts);
    EXPECT_FALSE(result.is_valid[0]);
    EXPECT_TRUE(judge(parts, result).is_disk);
}

TEST(Triangulation, MarksASelfCrossingStarInvalidAndStillCutsIt) {
    Outline pentagram;
    for (std::uint32_t i = 0; i < 5; ++i)
        pentagram.push_back(circle(5)[(2 * i) % 5]);
    const Parts parts = outline(pentagram);
    const Triangulation result = triangulate(parts);
    EXPECT_TRUE(judge(parts, result).is_disk);
}

TEST(Triangulation, MarksAPolygonWithoutAreaInvalid) {
    const Parts parts = outline({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {1.5, 0}});
    const Triangulation result = triangulate(parts);
    EXPECT_FALSE(result.is_valid[0]);
    EXPECT_EQ(result.corners.size(), 9u);
}

TEST(Triangulation, MarksASlantedLineInvalid) {
    for (const std::uint32_t n : {3u, 4u, 5u, 40u}) {
        Parts parts;
        std::vector<std::uint32_t> ids;
        for (std::uint32_t i = 0; i < n; ++i) {
            const int at = static_cast<int>((i * 7) % n);
            ids.push_back(parts.point(3 * at, -5 * at, 7 * at));
        }
        parts.polygon(ids);
        EXPECT_FALSE(triangulate(parts).is_valid[0]) << n << " corners";
    }
}

TEST(Triangulation, ValidTriangulationsOfArbitraryOutlinesAreDisksWithoutFlips) {
    // Many corners on few positions: outlines cross, touch, fold back and overlap themselves.
    std::mt19937 random(11);
    int valid = 0;
    for (int round = 0; round < 6000; ++round) {
        const std::uint32_t n = 3 + random() % 45;
        const std::uint32_t places = 2 + random() % 12;
        Outline points;
        for (std::uint32_t i = 0; i < n; ++i)
            points.emplace_back(random() % places, random() % places);
        const Parts parts = outline(points);
        const Triangulation result = triangulate(parts);
        const Verdict verdict = judge(parts, result);
        ASSERT_TRUE(verdict.is_disk) << "round " << round;
        if (result.is_valid[0]) {
            ASSERT_EQ(verdict.flipped, 0) << "round " << round;
            valid += 1;
        }
    }
    EXPECT_GT(valid, 50);
}

TEST(Triangulation, SurvivesNanAndInfiniteCoordinates) {
    Parts parts = outline(star(50, 2));
    parts.points[7].x = std::nanf("");
    parts.points[9].y = INFINITY;
    const Triangulation result = triangulate(parts);
    EXPECT_FALSE(result.is_valid[0]);
    EXPECT_EQ(result.corners.size(), 3u * 48u);
}

TEST(Triangulation, TakesLinearTimeOnATangledOutline) {
    for (const std::uint32_t n : {2000u, 20000u}) {
        std::mt19937 random(9);
        Outline tangle;
        for (std::uint32_t i = 0; i < n; ++i)
            tangle.emplace_back(random() % 1000, random() % 1000);
        const Parts parts = outline(tangle);
        const Triangulation result = triangulate(parts);
        EXPECT_LT(result.steps, 1500u * n + 100000u);
        EXPECT_EQ(result.corners.size(), 3 * (std::size_t{n} - 2));
    }
}

// === Joined vertices =============================================================================

/// Vertex pairs joined by diagonals of a triangulation, with multiplicity.
std::multiset<std::pair<std::uint32_t, std::uint32_t>> diagonals(const Parts& parts,
                                                                 const Triangulation& result) {
    std::multiset<std::pair<std::uint32_t, std::uint32_t>> found;
    const host::Mesh mesh = parts.mesh();
    for (std::uint32_t p = 0; p < mesh.connectivity().polygon_count(); ++p) {
        const IndexSpan ids = mesh.connectivity().polygon_vertices(p);
        const std::uint32_t n = ids.size();
        const std::uint32_t* c =
            result.corners.data() + Triangulation::first_corner(mesh.connectivity().polygons(), p);
        for (std::uint32_t i = 0; i < 3 * (n - 2); ++i) {
            const std::uint32_t a = c[i];
            const std::uint32_t b = c[i - i % 3 + (i + 1) % 3];
            if (b != (a + 1) % n && a != (b + 1) % n && a < b)
                found.insert(std::minmax(ids[a], ids[b]));
        }
    }
    return found;
}

TEST(Triangulation, AvoidsADiagonalThatIsAMeshEdge) {
    // A triangle whose side is the diagonal that the square would otherwise use.
    Parts parts = outline({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    const std::uint32_t tip = parts.point(0.5, 0.5, 1);
    parts.polygon({0, 2, tip});
    const auto found = diagonals(parts, triangulate(parts));
    EXPECT_EQ(found.count({0, 2}), 0u);
    EXPECT_EQ(found.count({1, 3}), 1u);
}

TEST(Triangulation, UsesAMeshEdgeAsDiagonalIfThereIsNoAlternative) {
    Parts parts = outline({{0, 0}, {4, 0}, {1, 1}, {0, 4}});
    const std::uint32_t tip = parts.point(0.5, 0.5, 1);
    parts.polygon({0, 2, tip});
    EXPECT_EQ(diagonals(parts, triangulate(parts)).count({0, 2}), 1u);
}

TEST(Triangulation, DividesTheTwoSidesOfASheetAlike) {
    for (const std::uint32_t n : {4u, 5u, 6u, 7u, 9u, 16u, 40u, 200u}) {
        SCOPED_TRACE(n);
        Parts parts = outline(star(n, 77));
        for (host::Float3& p : parts.points) { // convex, so that there are many ways
            const double size = std::hypot(static_cast<double>(p.x), static_cast<double>(p.y));
            p.x = static_cast<float>(static_cast<double>(p.x) / size);
            p.y = static_cast<float>(static_cast<double>(p.y) / size);
        }
        std::vector<std::uint32_t> back(parts.vertices.rbegin(), parts.vertices.rend());
        parts.polygon(back);
        const auto found = diagonals(parts, triangulate(parts));
        for (const auto& pair : found)
            EXPECT_EQ(found.count(pair), 2u) << pair.first << ' ' << pair.second;
    }
}

TEST(Triangulation, AvoidsADiagonalSharedByManyQuadrilaterals) {
    // All quadrilaterals have the same two opposite vertices; only one may use the diagonal between
    // them.
    Parts parts;
    const std::uint32_t n = 2000;
    const std::uint32_t low = parts.point(0, 0, -0.1);
    const std::uint32_t high = parts.point(0, 0, 0.1);
    for (std::uint32_t i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n;
        parts.point(std::cos(angle), std::sin(angle), 0);
    }
    for (std::uint32_t i = 0; i < n; i += 2)
        parts.polygon({low, 2 + i, high, 3 + i});
    const Triangulation result = triangulate(parts);
    EXPECT_LE(diagonals(parts, result).count({low, high}), 1u);
    EXPECT_LT(result.steps, 20u * n);
}

TEST(Triangulation, SeparatesTwoLobesThatMeetInOneVertex) {
    // The outline visits its first vertex twice.
    Parts parts = outline({{0, 0}, {2, -1}, {2, 2}, {0, 0}, {-2, 1}, {-2, -1}});
    parts.vertices[3] = 0;
    const Triangulation result = triangulate(parts);
    EXPECT_EQ(diagonals(parts, result).count({0, 0}), 1u);
    EXPECT_EQ(judge(parts, result).flipped, 0);
}

// === Cost ========================================================================================

/// Number of triangles of a counter-clockwise outline in the xy plane that turn clockwise.
int flipped_in_the_plane(const Parts& parts, const Triangulation& result) {
    const auto flat = [&](std::size_t i) {
        const host::Float3& p = parts.points[result.corners[i]];
        return tessora::polygon::Point2{static_cast<double>(p.x), static_cast<double>(p.y)};
    };
    int flipped = 0;
    for (std::size_t i = 0; i < result.corners.size(); i += 3)
        flipped += orientation(flat(i), flat(i + 1), flat(i + 2)) < 0 ? 1 : 0;
    return flipped;
}

struct Family {
    const char* name;
    Outline (*make)(std::uint32_t corners);
};

Outline big_circle(std::uint32_t n) { return circle(n); }
Outline big_star(std::uint32_t n) { return star(n, 8); }
Outline big_comb(std::uint32_t n) { return comb(n / 2 - 1); }
Outline big_spiral(std::uint32_t n) { return spiral(n / 2, 30); }
Outline big_plate(std::uint32_t n) { return plate(n / 7); }
Outline big_ellipse(std::uint32_t n) {
    Outline points = circle(n);
    for (auto& p : points)
        p.second *= 0.1;
    return points;
}

class TriangulationCost : public testing::TestWithParam<Family> {};

TEST_P(TriangulationCost, StepsPerCornerAreBoundedForShortAndLongOutlines) {
    for (const std::uint32_t n : {1000u, 10000u, 100000u}) {
        const Parts parts = outline(GetParam().make(n));
        const Triangulation result = triangulate(parts);
        EXPECT_LT(static_cast<double>(result.steps), 80.0 * n) << n << " corners";
        EXPECT_EQ(flipped_in_the_plane(parts, result), 0) << n << " corners";
        EXPECT_TRUE(result.is_valid[0]) << n << " corners";
    }
}

INSTANTIATE_TEST_SUITE_P(Outlines, TriangulationCost,
                         testing::Values(Family{"circle", big_circle}, Family{"star", big_star},
                                         Family{"comb", big_comb}, Family{"spiral", big_spiral},
                                         Family{"plate", big_plate},
                                         Family{"ellipse", big_ellipse}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
