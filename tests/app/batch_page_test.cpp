/// `tessora unwrap --html` and `tessora report`.
#include "tests/app/program_fixture.h"

#include <unistd.h>

namespace {

using test::Ended;
using test::Json;
using test::Words;

class BatchPageProgram : public test::Program {
protected:
    BatchPageProgram() {
        std::filesystem::create_directories(dir.path("in/sub"));
        dir.put("in/cube.obj", test::k_cube);
        dir.put("in/sub/dome.obj", test::dome(4));
    }
    Ended batch(Words words, const std::string& out = "out") {
        words.insert(words.begin(), {"unwrap", dir.path("in"), "--out_dir", dir.path(out)});
        return test::run(words);
    }
    Ended page(Words words = {}) {
        words.insert(words.end(), {"--html", dir.path("page")});
        return batch(words);
    }
    std::vector<Json> rows(const std::string& name) const {
        std::vector<Json> list;
        std::istringstream in(dir.get(name));
        for (std::string line; std::getline(in, line);)
            list.push_back(Json::parse(line));
        return list;
    }
    std::vector<std::string> pictures() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path("page/pictures")))
            names.push_back(entry.path().filename().string());
        return names;
    }
    static void expect_refused(const Words& words, int code, const std::string& reason) {
        const Ended ended = test::run(words);
        EXPECT_EQ(code, ended.code);
        EXPECT_NE(ended.err.npos, ended.err.find(reason)) << ended.err;
    }
};

TEST_F(BatchPageProgram, PageHasARowAndAPictureForEachMesh) {
    const Ended ended = page();
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(ended.err.npos, ended.err.find("page:    " + dir.path("page/index.html")));
    const std::vector<Json> list = rows("page/meshes.jsonl");
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ(dir.path("in/cube.obj"), list[0]["input"]);
    EXPECT_EQ("ok", list[0]["status"]);
    EXPECT_EQ(12, list[0]["triangles"]);
    for (const char* key : {"charts", "stretch", "coverage", "settings", "seconds"})
        EXPECT_TRUE(list[0].contains(key)) << key;
    for (const Json& row : list) {
        const std::string png = dir.get("page/pictures/" + row["picture"].get<std::string>());
        EXPECT_EQ("\x89PNG", png.substr(0, 4));
        EXPECT_LE(png.size(), 24u * 1024u);
    }
    EXPECT_NE(std::string::npos, dir.get("page/index.html").find("default-src 'none'"));
}

TEST_F(BatchPageProgram, NoNameEndsTheScriptThatHoldsTheData) {
    dir.put("rows.jsonl", R"({"input":"</script><script>alert(1)</script>","status":"ok"})"
                          "\n");
    EXPECT_EQ(0, test::run({"report", "merge", dir.path("rows.jsonl"), "--html", dir.path("page"),
                            "-o", "/dev/null"})
                     .code);
    const std::string html = dir.get("page/index.html");
    EXPECT_EQ(html.npos, html.find("alert(1)</script>"));
    EXPECT_NE(html.npos, html.find("\\u003cscript>alert(1)\\u003c/script>"));
}

TEST_F(BatchPageProgram, SkippedMeshesKeepTheirPictures) {
    EXPECT_EQ(0, page().code);
    const auto before = rows("page/meshes.jsonl");
    const Ended again = page({"--skip_existing"});
    EXPECT_NE(again.err.npos, again.err.find("0 done, 2 up to date")) << again.err;
    const auto after = rows("page/meshes.jsonl");
    ASSERT_EQ(2u, after.size());
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ("skipped", after[i]["status"]);
        EXPECT_EQ(before[i]["picture"], after[i]["picture"]);
        EXPECT_EQ(before[i]["charts"], after[i]["charts"]);
    }
}

TEST_F(BatchPageProgram, MeshWithoutItsPictureIsNotUpToDate) {
    EXPECT_EQ(0, batch({}).code);
    const Ended ended = page({"--skip_existing"});
    EXPECT_NE(ended.err.npos, ended.err.find("2 done, 0 up to date")) << ended.err;
    EXPECT_EQ(2u, pictures().size());
}

TEST_F(BatchPageProgram, OtherSettingsReplaceThePictures) {
    EXPECT_EQ(0, page().code);
    const auto before = pictures();
    EXPECT_EQ(0, page({"--padding", "5"}).code);
    const auto after = pictures();
    EXPECT_EQ(2u, after.size());
    for (const std::string& name : before)
        EXPECT_EQ(after.end(), std::find(after.begin(), after.end(), name));
}

TEST_F(BatchPageProgram, OtherFilesAmongThePicturesStay) {
    EXPECT_EQ(0, page().code);
    dir.put("page/pictures/logo.png", "x");
    EXPECT_EQ(0, page().code);
    EXPECT_TRUE(dir.has("page/pictures/logo.png"));
}

TEST_F(BatchPageProgram, ShardsShareAFolderOfPictures) {
    EXPECT_EQ(0, page({"--shard", "0/2"}).code);
    EXPECT_EQ(0, page({"--shard", "1/2"}).code);
    EXPECT_EQ(1u, rows("page/shard-0-of-2.jsonl").size());
    EXPECT_EQ(1u, rows("page/shard-1-of-2.jsonl").size());
    EXPECT_TRUE(dir.has("page/shard-1-of-2.html"));
    EXPECT_EQ(2u, pictures().size());
}

TEST_F(BatchPageProgram, FailedMeshHasARowWithItsReason) {
    dir.put("in/bad.obj", "f 1 2 3\n");
    EXPECT_EQ(1, page().code);
    const Json row = rows("page/meshes.jsonl")[0];
    EXPECT_EQ("failed", row["status"]);
    EXPECT_EQ(3, row["code"]);
    EXPECT_FALSE(row.contains("picture"));
}

TEST_F(BatchPageProgram, FolderThatCannotBeMadeEndsTheCallBeforeTheWork) {
    dir.put("file", "");
    const Ended ended = batch({"--html", dir.path("file/page")});
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("the page's folder cannot be made")) << ended.err;
    EXPECT_FALSE(dir.has("out/cube.obj"));
}

TEST_F(BatchPageProgram, PageThatCannotBeWrittenIsAFailure) {
    std::filesystem::create_directories(dir.path("page/index.html"));
    const Ended ended = page();
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("index.html: cannot be written")) << ended.err;
    EXPECT_TRUE(dir.has("out/cube.obj"));
}

TEST_F(BatchPageProgram, MergeHasOneLineAMeshOverShards) {
    for (const char* shard : {"0/2", "1/2", "0/2"}) {
        const Ended ended = batch({"--shard", shard, "--json_lines"});
        dir.put(std::string("s") + shard[0] + ".jsonl",
                (dir.has(std::string("s") + shard[0] + ".jsonl")
                     ? dir.get(std::string("s") + shard[0] + ".jsonl")
                     : "") +
                    ended.out);
    }
    const Ended merged = test::run({"report", "merge", dir.path("s0.jsonl"), dir.path("s1.jsonl"),
                                    "--output", dir.path("all.jsonl")});
    EXPECT_EQ(0, merged.code) << merged.err;
    const auto list = rows("all.jsonl");
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ(dir.path("in/cube.obj"), list[0]["input"]);
    EXPECT_TRUE(list[0].contains("coverage")) << "from the report beside the result";
    EXPECT_EQ(dir.path("in/sub/dome.obj"), list[1]["input"]);
    EXPECT_EQ(true, list[2]["summary"]);
    EXPECT_EQ(2, list[2]["done"]);
}

TEST_F(BatchPageProgram, MergeOfAFolderReadsEveryReportBelow) {
    dir.put("in/bad.obj", "f 1 2 3\n");
    EXPECT_EQ(1, batch({}).code);
    dir.put("out/other.json", "{\"schema\": 1}");
    const Ended merged = test::run({"report", "merge", dir.path("out")});
    EXPECT_EQ(1, merged.code);
    EXPECT_EQ(4, std::count(merged.out.begin(), merged.out.end(), '\n'));
    EXPECT_NE(merged.err.npos, merged.err.find("code 3: ")) << merged.err;
    EXPECT_NE(merged.err.npos, merged.err.find("2 done, 1 failed")) << merged.err;
}

TEST_F(BatchPageProgram, MergeKeepsAResultRatherThanAFailure) {
    dir.put("a.jsonl", R"({"input":"x.obj","report":"o/x.json","status":"ok","charts":3})"
                       "\n"
                       R"({"input":"x.obj","report":"./o/x.json","status":"failed","code":4})"
                       "\n");
    const Ended merged = test::run({"report", "merge", dir.path("a.jsonl"), "--quiet"});
    EXPECT_EQ(0, merged.code) << merged.err;
    EXPECT_NE(merged.out.npos, merged.out.find("\"charts\":3"));
    EXPECT_EQ(merged.out.npos, merged.out.find("failed\","));
}

TEST_F(BatchPageProgram, MergeIgnoresMembersOfOtherKinds) {
    dir.put("a.jsonl",
            R"({"input":"x","status":"ok","charts":"<b>","picture":"../../x","reason":7,)"
            R"("warnings":[1,"w"],"settings":3,"report":[]})"
            "\n");
    const Ended merged = test::run({"report", "merge", dir.path("a.jsonl")});
    EXPECT_EQ(0, merged.code) << merged.err;
    EXPECT_EQ(R"({"input":"x","status":"ok","warnings":["w"]})",
              merged.out.substr(0, merged.out.find('\n')));
}

TEST_F(BatchPageProgram, MergedPageHasThePicturesOfItsSources) {
    EXPECT_EQ(0, page().code);
    const Ended merged = test::run(
        {"report", "merge", dir.path("page"), "--html", dir.path("both"), "-o", "/dev/null"});
    EXPECT_EQ(0, merged.code) << merged.err;
    const auto list = rows("both/meshes.jsonl");
    ASSERT_EQ(2u, list.size());
    EXPECT_TRUE(dir.has("both/pictures/" + list[0]["picture"].get<std::string>()));
}

TEST_F(BatchPageProgram, CompareTellsWhatIsDifferent) {
    EXPECT_EQ(0, batch({}).code);
    std::filesystem::remove(dir.path("in/cube.obj"));
    dir.put("in/new.obj", test::k_cube);
    EXPECT_EQ(0, batch({"--width", "256", "--padding", "9"}, "other").code);
    const Ended ended = test::run({"report", "compare", dir.path("out"), dir.path("other")});
    EXPECT_EQ(0, ended.code) << ended.err;
    for (const std::string& line :
         {dir.path("in/cube.obj") + ": only in A\n", dir.path("in/new.obj") + ": only in B\n",
          std::string(" -> "), std::string("3 of 3 meshes differ\n"),
          std::string("of the 1 with results in both: charts ")})
        EXPECT_NE(ended.out.npos, ended.out.find(line)) << line << ended.out;
}

TEST_F(BatchPageProgram, ComparePairsResultsOfOtherInputsByTheirPlaces) {
    EXPECT_EQ(0, batch({}).code);
    std::filesystem::rename(dir.path("in"), dir.path("moved"));
    EXPECT_EQ(0, test::run({"unwrap", dir.path("moved"), "--out_dir", dir.path("other")}).code);
    const Ended ended = test::run({"report", "compare", dir.path("out"), dir.path("other")});
    EXPECT_NE(ended.out.npos, ended.out.find("0 of 2 meshes differ")) << ended.out;
}

TEST_F(BatchPageProgram, ComparedPageShowsBothSides) {
    EXPECT_EQ(0, page().code);
    EXPECT_EQ(0, batch({"--padding", "9", "--html", dir.path("page2")}).code);
    const Ended ended = test::run({"report", "compare", dir.path("page"), dir.path("page2"),
                                   "--html", dir.path("difference")});
    EXPECT_EQ(0, ended.code) << ended.err;
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path("difference/pictures")))
        count += entry.path().extension() == ".png";
    EXPECT_EQ(4u, count);
    EXPECT_NE(std::string::npos,
              dir.get("difference/index.html").find("{\"title\":\"" + dir.path("page2") + "\"}"));
}

TEST_F(BatchPageProgram, ReportRefusesWhatItCannotDo) {
    expect_refused({"report"}, 2, "merge or compare?");
    expect_refused({"report", "mix"}, 2, "'mix' is neither merge nor compare");
    expect_refused({"report", "merge"}, 2, "merge needs reports");
    expect_refused({"report", "compare", "a"}, 2, "compare takes two batches");
    expect_refused({"report", "compare", "a", "b", "-o", "x"}, 2, "-o is for merge");
    expect_refused({"report", "merge", dir.path("gone")}, 3, "gone");
    std::filesystem::create_directories(dir.path("empty"));
    expect_refused({"report", "merge", dir.path("empty")}, 3, "the folder holds no report");
    dir.put("x.jsonl", "{}\n");
    expect_refused({"report", "merge", dir.path("x.jsonl")}, 3,
                   "x.jsonl:1: not a line about a mesh");
    dir.put("y.jsonl", R"({"input":"x","status":"ok"})");
    expect_refused({"report", "merge", dir.path("y.jsonl"), "-o", dir.path("no/y")}, 7,
                   "cannot be written");
}

} // namespace
