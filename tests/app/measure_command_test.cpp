#include "app/exit_code.h"
#include "app/measure_command.h"
#include "tests/app/scratch.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Json = nlohmann::json;

namespace {

const char* const k_square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                             "vt 0.25 0.25\nvt 0.75 0.25\nvt 0.75 0.75\nvt 0.25 0.75\n"
                             "f 1/1 2/2 3/3 4/4\n";
/// Two coincident faces of opposite orientation with the same UVs.
const char* const k_stacked = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                              "vt 0.25 0.25\nvt 0.75 0.25\nvt 0.75 0.75\nvt 0.25 0.75\n"
                              "f 1/1 2/2 3/3 4/4\nf 4/1 3/2 2/3 1/4\n";

class MeasureCommand : public testing::Test {
protected:
    int measure(app::Words words) { return captured(app::measure_command, words); }
    int verify(app::Words words) { return captured(app::verify_command, words); }

    test::Scratch dir;
    std::string out, err;

private:
    int captured(int (*command)(const app::Words&), const app::Words& words) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = command(words);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        return code;
    }
};

} // namespace

TEST_F(MeasureCommand, PrintsATable) {
    EXPECT_EQ(0, measure({dir.put("square.obj", k_square)}));
    EXPECT_NE(out.find("L2 stretch"), out.npos) << out;
    EXPECT_NE(out.find("coverage                         0.25"), out.npos) << out;
    EXPECT_NE(out.find("smallest gap                        -  fewer than two charts"), out.npos);
    EXPECT_EQ("", err);
}

TEST_F(MeasureCommand, PrintsJson) {
    EXPECT_EQ(0, measure({dir.put("square.obj", k_square), "--json", "--width", "256", "--height",
                          "256"}));
    const Json m = Json::parse(out)["measures"];
    EXPECT_EQ(1, m["charts"]);
    EXPECT_EQ(1, m["polygons"]);
    EXPECT_EQ(2, m["triangles"]);
    EXPECT_NEAR(1.0, m["l2_stretch"].get<double>(), 1e-12);
    EXPECT_DOUBLE_EQ(0.25, m["coverage"].get<double>());
    EXPECT_DOUBLE_EQ(64.0, m["border_texels"].get<double>());
    EXPECT_TRUE(m["gap_texels"].is_null());
    EXPECT_EQ(0, m["flipped"]);
    EXPECT_FALSE(m.contains("chart_list"));
}

TEST_F(MeasureCommand, ListsChartsOnRequest) {
    EXPECT_EQ(0, measure({dir.put("square.obj", k_square), "--json", "--per_chart"}));
    const Json charts = Json::parse(out)["measures"]["chart_list"];
    ASSERT_EQ(1u, charts.size());
    EXPECT_EQ(2, charts[0]["triangles"]);
}

TEST_F(MeasureCommand, MeasuresAMeshWithoutUvs) {
    EXPECT_EQ(0, measure({dir.put("bare.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), "--json"}));
    const Json m = Json::parse(out)["measures"];
    EXPECT_EQ(3, m["unmapped_corners"]);
    EXPECT_EQ(0, m["charts"]);
}

TEST_F(MeasureCommand, MeasuresLayoutsWithOverlaps) {
    EXPECT_EQ(0, measure({dir.put("stacked.obj", k_stacked), "--json"}));
    EXPECT_EQ(4, Json::parse(out)["measures"]["overlap_pairs_between"]);
}

TEST_F(MeasureCommand, TriangulatesConcavePolygonsInsideTheirOutline) {
    EXPECT_EQ(0, measure({dir.put("arrow.obj", "v 0 0 0\nv 1 1 0\nv 0 0.2 0\nv -1 1 0\n"
                                               "vt 0.5 0\nvt 1 0.5\nvt 0.5 0.1\nvt 0 0.5\n"
                                               "f 1/1 2/2 3/3 4/4\n"),
                          "--json"}));
    const Json m = Json::parse(out)["measures"];
    EXPECT_EQ(0, m["flipped"]);
    EXPECT_EQ(0, m["overlap_pairs_within"]);
    EXPECT_NEAR(1.0, m["l2_stretch"].get<double>(), 1e-6);
}

TEST_F(MeasureCommand, DrawsEachKindOfPicture) {
    const std::string mesh = dir.put("square.obj", k_square);
    for (const char* kind : {"layout", "checker", "stretch"}) {
        EXPECT_EQ(0, measure({mesh, "--layout", dir.path("p.png"), "--picture", kind})) << err;
        EXPECT_EQ("\x89PNG", dir.get("p.png").substr(0, 4));
    }
}

TEST_F(MeasureCommand, UnwritablePictureIsAnOutputError) {
    EXPECT_EQ(app::exit_output,
              measure({dir.put("square.obj", k_square), "--layout", dir.path("missing/p.png")}));
    EXPECT_NE(err.find("cannot be written"), err.npos) << err;
}

TEST_F(MeasureCommand, RefusesInvalidCommandLines) {
    const std::string mesh = dir.put("square.obj", k_square);
    const std::pair<app::Words, const char*> cases[] = {
        {{}, "which mesh?"},
        {{mesh, mesh}, "one mesh at a time"},
        {{mesh, "--width", "0"}, "1 to 65536 texels"},
        {{mesh, "--texcoord", "9"}, "--texcoord is 0 to 7"},
        {{mesh, "--padding", "-1"}, "--padding must not be negative"},
        {{mesh, "--stretch", "1.5"}, "--stretch must be between 0 and 1"},
        {{mesh, "--picture", "painting"}, "layout, checker or stretch, not 'painting'"},
        {{mesh, "--layout", mesh}, "written over the mesh"},
        {{mesh, "--widht", "5"}, "--widht"}};
    for (const auto& [words, message] : cases) {
        EXPECT_EQ(app::exit_usage, measure(words));
        EXPECT_NE(err.find(message), err.npos) << message << " / " << err;
        EXPECT_NE(err.find("see 'tessora measure --help'"), err.npos) << err;
        EXPECT_EQ("", out);
    }
}

TEST_F(MeasureCommand, MissingOrInvalidInputIsAnErrorThatNamesTheFile) {
    EXPECT_EQ(app::exit_input, measure({dir.path("none.obj")}));
    EXPECT_NE(err.find("none.obj"), err.npos);
    EXPECT_EQ(app::exit_input, measure({dir.put("bad.obj", "v 0 0 zero\n")}));
    EXPECT_NE(err.find("bad.obj:1:"), err.npos) << err;
    EXPECT_EQ(app::exit_input, measure({"mesh.usd"}));
    EXPECT_NE(err.find("cannot be read, only OBJ, GLTF"), err.npos) << err;
}

TEST_F(MeasureCommand, HelpHasExamplesAndEveryOption) {
    EXPECT_EQ(0, measure({"--help"}));
    for (const char* word :
         {"examples:", "--width", "--padding", "--json", "--picture", "exit codes"})
        EXPECT_NE(out.find(word), out.npos) << word;
}

TEST_F(MeasureCommand, VerifyAcceptsALayoutThatKeepsAllGuarantees) {
    EXPECT_EQ(0, verify({dir.put("square.obj", k_square)})) << out;
    EXPECT_NE(out.find("all guarantees hold"), out.npos);
}

TEST_F(MeasureCommand, VerifyPrintsANameWithALineEndInOneLine) {
    EXPECT_EQ(0, verify({dir.put("two\nlines.obj", k_square)})) << out;
    EXPECT_NE(out.find("two?lines.obj: all guarantees hold"), out.npos) << out;
    EXPECT_EQ(6, verify({dir.put("two\nlines.obj", k_stacked)}));
    EXPECT_NE(out.find("two?lines.obj: "), out.npos) << out;
}

TEST_F(MeasureCommand, VerifyReturnsSixAndNamesThePolygonsAtFault) {
    EXPECT_EQ(6, verify({dir.put("stacked.obj", k_stacked)}));
    EXPECT_NE(out.find("overlaps: 4 pairs of triangles overlap"), out.npos) << out;
    EXPECT_NE(out.find("polygons 0, 1"), out.npos) << out;
}

TEST_F(MeasureCommand, VerifyListsBreachesAsJson) {
    EXPECT_EQ(6, verify({dir.put("stacked.obj", k_stacked), "--json"}));
    const Json json = Json::parse(out);
    EXPECT_EQ("broken", json["status"]);
    EXPECT_EQ("overlaps", json["breaches"][0]["name"]);
    EXPECT_EQ(Json({0, 1}), json["breaches"][0]["polygons"]);
}

TEST_F(MeasureCommand, VerifyNumbersPolygonsInFileOrder) {
    EXPECT_EQ(6, verify({dir.put("half.obj", std::string(k_square) + "f 1 2 3\n")}));
    EXPECT_NE(out.find("unmapped: 1 polygon has corners without texture coordinates: polygon 1"),
              out.npos)
        << out;
}
