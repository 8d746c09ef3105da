#include "tests/plugin/collected.h"

#include <gtest/gtest.h>

namespace {

using Edges = std::vector<std::pair<int, int>>;

UnwrapSettings with_grooves(double angle) {
    UnwrapSettings settings = plain_settings();
    settings.use_grooves = true;
    settings.groove_angle = angle;
    return settings;
}

UnwrapSettings with_ridges(double angle) {
    UnwrapSettings settings = plain_settings();
    settings.use_ridges = true;
    settings.ridge_angle = angle;
    return settings;
}

Edges cuts_of(const UnwrapSettings& settings, MObject mesh) {
    Collected result;
    collect(settings, mesh, result);
    EXPECT_TRUE(result.status);
    return result.cuts();
}

Edges cuts_of(const UnwrapSettings& settings, const fixtures::Mesh& mesh) {
    return cuts_of(settings, make_host_mesh(mesh));
}

const Edges k_fold_edge = {{1, 2}};

TEST(EdgeClassifier, DiagonalOfAQuadIsNeitherRealNorCut) {
    for (const bool creases : {false, true}) {
        UnwrapSettings settings = plain_settings();
        settings.use_grooves = settings.use_ridges = creases; // at angles of 0
        Collected result;
        collect(settings, make_host_mesh(fixtures::quad()), result);
        unsigned diagonals = 0;
        for (uint32_t i = 0; i < 6; ++i)
            if (result.real_edges()[i] == 0) {
                ++diagonals;
                EXPECT_EQ(result.cut_edges()[i], 0u);
            }
        EXPECT_EQ(diagonals, 2u);
    }
}

TEST(EdgeClassifier, CoplanarFacesAreAGrooveOfAngle0) {
    EXPECT_EQ(cuts_of(with_grooves(0), fixtures::fold(1, 0)), k_fold_edge);
    EXPECT_EQ(cuts_of(with_grooves(0.001), fixtures::fold(1, 0)), Edges());
}

TEST(EdgeClassifier, CoplanarFacesAreNotARidge) {
    EXPECT_EQ(cuts_of(with_ridges(0), fixtures::fold(1, 0)), Edges());
}

TEST(EdgeClassifier, CubeIsCutEverywhereAtARidgeAngleOf90) {
    Collected result;
    collect(with_ridges(90), make_host_mesh(fixtures::cube()), result);
    EXPECT_EQ(result.cuts().size(), 12u);
    EXPECT_EQ(result.cut_edges(), result.real_edges());
}

TEST(EdgeClassifier, CubeIsNotCutAtARidgeAngleOf90Point5) {
    EXPECT_EQ(cuts_of(with_ridges(90.5), fixtures::cube()), Edges());
}

TEST(EdgeClassifier, CubeHasNoGrooves) {
    EXPECT_EQ(cuts_of(with_grooves(0), fixtures::cube()), Edges());
}

TEST(EdgeClassifier, ConvexFoldIsCutAtRidgeAnglesUpToItsOwn) {
    const fixtures::Mesh fold = fixtures::fold(0, -1);
    EXPECT_EQ(cuts_of(with_ridges(45), fold), k_fold_edge);
    EXPECT_EQ(cuts_of(with_ridges(90), fold), k_fold_edge);
    EXPECT_EQ(cuts_of(with_ridges(90.0001), fold), Edges());
    EXPECT_EQ(cuts_of(with_grooves(0), fold), Edges());
}

TEST(EdgeClassifier, ConcaveFoldIsCutAtGrooveAnglesUpToItsOwn) {
    const fixtures::Mesh fold = fixtures::fold(0, 1);
    EXPECT_EQ(cuts_of(with_grooves(45), fold), k_fold_edge);
    EXPECT_EQ(cuts_of(with_grooves(90), fold), k_fold_edge);
    EXPECT_EQ(cuts_of(with_grooves(90.0001), fold), Edges());
    EXPECT_EQ(cuts_of(with_ridges(0), fold), Edges());
}

TEST(EdgeClassifier, CreasesAreOffUnlessSwitchedOn) {
    UnwrapSettings settings = plain_settings();
    settings.groove_angle = settings.ridge_angle = 0;
    EXPECT_EQ(cuts_of(settings, fixtures::fold(0, 1)), Edges());
    EXPECT_EQ(cuts_of(settings, fixtures::fold(0, -1)), Edges());
}

TEST(EdgeClassifier, GrooveAngleOf0CutsEveryEdgeThatIsNotConvex) {
    // A flat strip of three quads with a fourth bent back: flat, flat, convex.
    fixtures::Mesh strip = fixtures::grid(3, 1);
    strip.points.push_back({3, 0, -1});
    strip.points.push_back({3, 1, -1});
    strip.polygons.push_back({3, 8, 9, 7});
    EXPECT_EQ(cuts_of(with_grooves(0), strip), (Edges{{1, 5}, {2, 6}}));
}

TEST(EdgeClassifier, FlatGridIsNotCut) {
    UnwrapSettings settings = with_grooves(0.5);
    settings.use_ridges = true;
    settings.ridge_angle = 0.5;
    EXPECT_EQ(cuts_of(settings, fixtures::grid(4, 3)), Edges());
}

TEST(EdgeClassifier, BorderEdgesAreNeverCut) {
    UnwrapSettings settings = plain_settings();
    settings.keep_seams = settings.use_grooves = settings.use_ridges = true;
    Collected result;
    collect(settings, make_host_mesh(fixtures::triangle()), result);
    EXPECT_EQ(result.cuts(), Edges());
    EXPECT_EQ(result.seam_pairs.length(), 0u);
    EXPECT_EQ(result.reals().size(), 3u);
}

TEST(EdgeClassifier, EdgeWithThreeFacesIsASeamButNotACrease) {
    UnwrapSettings settings = plain_settings();
    settings.use_grooves = settings.use_ridges = true;
    const fixtures::Mesh fan = fixtures::edge_with_three_faces();
    EXPECT_EQ(cuts_of(settings, fan), Edges());
    settings.keep_seams = true;
    EXPECT_EQ(cuts_of(settings, fan), (Edges{{0, 1}}));
}

TEST(EdgeClassifier, UvBordersCutOnlyWhenSeamsAreKept) {
    const fixtures::Mesh fold = fixtures::fold(1, 0);
    MObject mesh = make_host_mesh(fold, fixtures::shell_per_polygon(fold));
    UnwrapSettings settings = plain_settings();
    Collected loose, kept;
    collect(settings, mesh, loose);
    settings.keep_seams = true;
    collect(settings, mesh, kept);
    EXPECT_EQ(loose.cuts(), Edges());
    EXPECT_EQ(kept.cuts(), k_fold_edge);
    // The list of seams is the same: each edge once per triangle, in that triangle's direction.
    Edges pairs = pairs_of(loose.seam_pairs);
    std::sort(pairs.begin(), pairs.end());
    EXPECT_EQ(pairs, (Edges{{1, 2}, {2, 1}}));
    EXPECT_EQ(values_of(loose.seam_pairs), values_of(kept.seam_pairs));
}

TEST(EdgeClassifier, AdjacencyMethodAndEpsilonChangeNothing) {
    const fixtures::Mesh hills = fixtures::hills(6, 3);
    MObject mesh = make_host_mesh(hills, fixtures::random_shells(hills, 3, 8));
    UnwrapSettings settings = with_grooves(20);
    settings.use_ridges = settings.keep_seams = true;
    settings.ridge_angle = 30;
    Collected first, second;
    collect(settings, mesh, first);
    settings.adjacency_method = 1;
    settings.epsilon = 1000;
    collect(settings, mesh, second);
    EXPECT_EQ(first.cut_edges(), second.cut_edges());
    EXPECT_EQ(first.real_edges(), second.real_edges());
    EXPECT_EQ(first.indices(), second.indices());
}

TEST(EdgeClassifier, CreasesDoNotDependOnTheScaleOfTheMesh) {
    fixtures::Mesh hills = fixtures::hills(6, 4);
    UnwrapSettings settings = with_grooves(40);
    settings.use_ridges = true;
    settings.ridge_angle = 40;
    const Edges cuts = cuts_of(settings, hills);
    EXPECT_FALSE(cuts.empty());
    for (auto& point : hills.points)
        for (double& coordinate : point)
            coordinate *= 1024;
    EXPECT_EQ(cuts_of(settings, hills), cuts);
}

} // namespace
