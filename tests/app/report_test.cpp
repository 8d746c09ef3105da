#include "app/report.h"
#include "app/system.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

TEST(Report, ContainsEveryFigureAfterASuccess) {
    app::UnwrapReport report;
    report.input = "a.obj";
    report.output = "b.obj";
    report.layout = "c.png";
    report.view = "d.png";
    report.mesh = app::MeshCounts{6, 12, 8};
    report.result = app::UnwrapResult{3, 0.125, {4, 7}, 5, 9};
    report.settings.padding = 7;
    report.seconds.read = 0.25;
    report.seconds.collect = 0.5;
    report.seconds.generate = 1.0;
    report.seconds.apply = 2.0;
    report.seconds.write = 4.0;
    report.peak_mb = 12.34;
    report.warnings = {"w"};
    const Json json = Json::parse(to_json(report));
    EXPECT_EQ(1, json["schema"]);
    EXPECT_EQ("tessora 2.11", json["program"]);
    EXPECT_EQ("ok", json["status"]);
    EXPECT_EQ(0, json["code"]);
    EXPECT_EQ(0u, json.count("reason"));
    EXPECT_EQ("a.obj", json["input"]);
    EXPECT_EQ("b.obj", json["output"]);
    EXPECT_EQ("c.png", json["layout"]);
    EXPECT_EQ("d.png", json["view"]);
    EXPECT_EQ(6, json["polygons"]);
    EXPECT_EQ(12, json["triangles"]);
    EXPECT_EQ(8, json["vertices"]);
    EXPECT_EQ(3, json["charts"]);
    EXPECT_EQ(0.125, json["stretch"]);
    EXPECT_EQ((Json{4, 7}), json["over_limit"]);
    EXPECT_EQ(5, json["existing_seam_edges"]);
    EXPECT_EQ(9, json["new_seam_edges"]);
    EXPECT_EQ(7, json["settings"]["padding"]);
    EXPECT_EQ(22u, json["settings"].size());
    EXPECT_EQ((Json{{"read", 0.25},
                    {"collect", 0.5},
                    {"generate", 1.0},
                    {"apply", 2.0},
                    {"write", 4.0},
                    {"total", 7.75}}),
              json["seconds"]);
    EXPECT_EQ(12.3, json["peak_mb"]);
    EXPECT_EQ(Json{"w"}, json["warnings"]);
}

TEST(Report, EmptyListsAreJsonArrays) {
    app::UnwrapReport report;
    report.result = app::UnwrapResult{};
    const Json json = Json::parse(to_json(report));
    EXPECT_EQ(Json::array(), json["over_limit"]);
    EXPECT_EQ(Json::array(), json["warnings"]);
}

TEST(Report, FailureContainsAReasonAndNoResult) {
    app::UnwrapReport report;
    report.code = 3;
    report.reason = "no mesh";
    report.output = "b.obj";
    const Json json = Json::parse(to_json(report));
    EXPECT_EQ("failed", json["status"]);
    EXPECT_EQ(3, json["code"]);
    EXPECT_EQ("no mesh", json["reason"]);
    for (const char* key : {"output", "polygons", "charts", "over_limit"})
        EXPECT_EQ(0u, json.count(key)) << key;
}

TEST(Report, MeasuresAreAJsonObject) {
    app::UnwrapReport report;
    report.measures = "{\"flips\": 0}";
    EXPECT_EQ(0, Json::parse(to_json(report))["measures"]["flips"]);
}

TEST(Report, FileNamesWithInvalidUtf8AreReplaced) {
    app::UnwrapReport report;
    report.input = "a\xFF.obj";
    EXPECT_EQ("a\xEF\xBF\xBD.obj", Json::parse(to_json(report))["input"]);
}

TEST(Report, PeakMemoryGrowsWithAllocations) {
    const double before = app::peak_memory_mb();
    EXPECT_GT(before, 0.5);
    const std::vector<char> block(64 << 20, 'x');
    EXPECT_GT(app::peak_memory_mb(), before + 32.0);
    EXPECT_EQ('x', block[1 << 20]);
}

} // namespace
