#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "window/findings.h"

#include <gtest/gtest.h>

namespace {

using namespace window;

/// Two squares whose UVs lie on each other, 0.3 of the texture wide.
Subject overlapping_squares() {
    Subject subject;
    host::graph::Scene& scene = host::graph::Scene::current();
    subject.shape = scene.make_node(scene.find_type("mesh"), "squaresShape");
    EXPECT_TRUE(host::Mesh::make(
        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {5, 0, 0}, {6, 0, 0}, {6, 1, 0}, {5, 1, 0}},
        {4, 4}, {0, 1, 2, 3, 4, 5, 6, 7}, subject.mesh));
    host::UvSet& set = subject.mesh.edit_uv_set(subject.mesh.add_uv_set("map1"));
    set.u = {0.1f, 0.4f, 0.4f, 0.1f, 0.2f, 0.5f, 0.5f, 0.2f};
    set.v = {0.1f, 0.1f, 0.4f, 0.4f, 0.2f, 0.2f, 0.5f, 0.5f};
    set.corner_uvs = {0, 1, 2, 3, 4, 5, 6, 7};
    subject.uv_set = 0;
    return subject;
}

TEST(Findings, OverlapNamesBothPolygons) {
    const auto breaches = find_breaches(overlapping_squares());
    bool has_overlap = false;
    for (const measure::Breach& breach : breaches)
        if (breach.polygons == std::vector<uint32_t>{0, 1})
            has_overlap = true;
    EXPECT_TRUE(has_overlap) << breaches.size();
}

TEST(Findings, GoodUvsBreakNothing) {
    Subject subject = overlapping_squares();
    host::UvSet& set = subject.mesh.edit_uv_set(0);
    for (size_t i = 4; i < 8; ++i) {
        set.u[i] += 0.3f;
        set.v[i] += 0.3f;
    }
    EXPECT_TRUE(find_breaches(subject).empty());
}

TEST(Findings, MeshWithoutUvsIsNotJudged) {
    Subject subject = overlapping_squares();
    subject.uv_set = -1;
    EXPECT_TRUE(find_breaches(subject).empty());
    EXPECT_TRUE(find_breaches(Subject()).empty());
}

TEST(Findings, RunsOfPolygonsAreSelectedAsRanges) {
    EXPECT_EQ("select \"a|b.f[3]\" \"a|b.f[5:7]\" \"a|b.f[9]\";",
              statement_selecting("a|b", {3, 5, 6, 7, 9}, 'f'));
    EXPECT_EQ("select -add \"a.e[4]\";", statement_selecting("a", {4}, 'e', true));
}

} // namespace
