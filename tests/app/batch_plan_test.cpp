#include "app/batch_plan.h"
#include "app/exit_code.h"
#include "tests/app/scratch.h"

namespace {

using Words = std::vector<std::string>;
using test::Names;

/// A folder with meshes: in/a.obj, in/sub/b.obj, other/a.obj.
class BatchPlan : public testing::Test {
protected:
    BatchPlan() {
        for (const char* folder : {"in/sub", "in/.git", "other", "out"})
            std::filesystem::create_directories(dir.path(folder));
        for (const char* name :
             {"in/a.obj", "in/sub/b.obj", "in/readme.txt", "in/.git/c.obj", "other/a.obj"})
            dir.put(name, "");
    }
    /// Plans the batch of a command line; names in `words` that start with @ are below the folder.
    int plan(Words words) {
        for (std::string& word : words)
            if (word[0] == '@')
                word = dir.path(word.substr(1));
        app::UnwrapRequest request;
        items.clear();
        error.clear();
        EXPECT_TRUE(parse_unwrap_request(words, request, error)) << error;
        EXPECT_TRUE(request.batch.is_wanted);
        return plan_batch(request, items, left_out, error);
    }
    std::string short_name(const std::string& path) const {
        return path.compare(0, dir.root().size(), dir.root()) == 0
                   ? path.substr(dir.root().size() + 1)
                   : path;
    }
    /// "input output" of every item.
    Names planned() const {
        Names names;
        for (const app::BatchItem& item : items)
            names.push_back(short_name(item.input) + " " + short_name(item.output));
        return names;
    }
    test::Scratch dir;
    std::vector<app::BatchItem> items;
    std::string left_out, error;
};

TEST_F(BatchPlan, FilesOfFormatsThatAreNotReadAreTold) {
    EXPECT_EQ(0, plan({"@in", "--out_dir", "@out"}));
    EXPECT_EQ("", left_out);
    for (const char* name : {"in/e.abc", "in/c.usd", "in/sub/b.blend", "in/sub/d.MA", "in/.f.usd"})
        dir.put(name, "");
    EXPECT_EQ(0, plan({"@in", "--out_dir", "@out"})) << error;
    EXPECT_EQ(2u, items.size());
    EXPECT_EQ("left out, as their formats are not read: " + dir.path("in/c.usd") + ", " +
                  dir.path("in/e.abc") + ", " + dir.path("in/sub/b.blend") + " and 1 more",
              left_out);
    std::filesystem::create_directories(dir.path("scenes"));
    dir.put("scenes/a.usd", "");
    EXPECT_EQ(3, plan({"@scenes", "--out_dir", "@out"}));
    EXPECT_EQ(dir.path("scenes") +
                  ": the folder holds no mesh file; left out, as their formats "
                  "are not read: " +
                  dir.path("scenes/a.usd"),
              error);
}

TEST_F(BatchPlan, FolderIsSearchedAndMirrored) {
    EXPECT_EQ(0, plan({"@in", "--out_dir", "@out"})) << error;
    EXPECT_EQ((Names{"in/a.obj out/a.obj", "in/sub/b.obj out/sub/b.obj"}), planned());
    EXPECT_EQ("out/sub/b.json", short_name(items[1].report));
    EXPECT_EQ("", items[1].layout);
}

TEST_F(BatchPlan, ResultsLieBesideTheInputsByDefault) {
    EXPECT_EQ(0, plan({"@in", "--beside"}));
    EXPECT_EQ((Names{"in/a.obj in/a_uv.obj", "in/sub/b.obj in/sub/b_uv.obj"}), planned());
    EXPECT_EQ("in/a_uv.json", short_name(items[0].report));
    EXPECT_EQ("in/a_uv.png", short_name(items[0].layout));
}

TEST_F(BatchPlan, EarlierResultsInAFolderAreNotInputs) {
    dir.put("in/a_uv.obj", "");
    EXPECT_EQ(0, plan({"@in"}));
    EXPECT_EQ((Names{"in/a.obj in/a_uv.obj", "in/sub/b.obj in/sub/b_uv.obj"}), planned());
}

TEST_F(BatchPlan, OutputFolderInsideTheInputFolderIsNotSearched) {
    std::filesystem::create_directories(dir.path("in/out"));
    dir.put("in/out/a.obj", "");
    EXPECT_EQ(0, plan({"@in", "--out_dir", "@in/out"}));
    EXPECT_EQ((Names{"in/a.obj in/out/a.obj", "in/sub/b.obj in/out/sub/b.obj"}), planned());
}

TEST_F(BatchPlan, SuffixIsAddedToTheName) {
    EXPECT_EQ(0, plan({"@in/a.obj", "--suffix", "_lm"}));
    EXPECT_EQ(Names{"in/a.obj in/a_lm.obj"}, planned());
    EXPECT_EQ(0, plan({"@in/a.obj", "--suffix", "_lm", "--out_dir", "@out"}));
    EXPECT_EQ(Names{"in/a.obj out/a_lm.obj"}, planned());
}

TEST_F(BatchPlan, InPlaceWritesOverTheInputs) {
    EXPECT_EQ(0, plan({"@in", "--in_place"}));
    EXPECT_EQ((Names{"in/a.obj in/a.obj", "in/sub/b.obj in/sub/b.obj"}), planned());
    EXPECT_EQ("in/a.json", short_name(items[0].report));
}

TEST_F(BatchPlan, PatternsMirrorTheFoldersBelowTheirFixedPart) {
    EXPECT_EQ(0, plan({"@in/**/*.obj", "--out_dir", "@out"})) << error;
    EXPECT_EQ((Names{"in/a.obj out/a.obj", "in/sub/b.obj out/sub/b.obj"}), planned());
}

TEST_F(BatchPlan, ListNamesFilesByLine) {
    dir.put("list.txt", "# meshes\n\n" + dir.path("in/a.obj") + "\r\nrelative/c.obj\n");
    EXPECT_EQ(0, plan({"--list", "@list.txt", "--out_dir", "@out"})) << error;
    EXPECT_EQ((Names{"in/a.obj out/a.obj", "relative/c.obj out/relative/c.obj"}), planned());
}

TEST_F(BatchPlan, ListedNamesAboveTheFolderLoseTheirFolders) {
    dir.put("list.txt", "x/../../../c.obj\n");
    EXPECT_EQ(0, plan({"--list", "@list.txt", "--out_dir", "@out"}));
    EXPECT_EQ(Names{"x/../../../c.obj out/c.obj"}, planned());
}

TEST_F(BatchPlan, OneFileNamedTwiceIsOneItem) {
    EXPECT_EQ(0, plan({"@in", "@in/a.obj", "--out_dir", "@out"}));
    EXPECT_EQ(2u, items.size());
}

TEST_F(BatchPlan, ShardsShareTheMeshesWithoutOverlap) {
    Names all;
    for (const char* shard : {"0/3", "1/3", "2/3"}) {
        EXPECT_EQ(0, plan({"@in", "@other/a.obj", "--suffix", "_x", "--shard", shard}));
        EXPECT_EQ(1u, items.size());
        for (const std::string& name : planned())
            all.push_back(name);
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(
        (Names{"in/a.obj in/a_x.obj", "in/sub/b.obj in/sub/b_x.obj", "other/a.obj other/a_x.obj"}),
        all);
}

TEST_F(BatchPlan, RefusesTwoMeshesWithOneResult) {
    EXPECT_EQ(app::exit_usage, plan({"@in/a.obj", "@other/a.obj", "--out_dir", "@out"}));
    EXPECT_EQ(dir.path("in/a.obj") + " and " + dir.path("other/a.obj") + " would both write " +
                  dir.path("out/a.obj") + "; batches of their own keep them apart",
              error);
    dir.put("in/a.stl", ""); // becomes OBJ, too
    EXPECT_EQ(app::exit_usage, plan({"@in", "--out_dir", "@out"}));
}

TEST_F(BatchPlan, RefusesABackupThatIsALinkToItsMesh) {
    std::filesystem::create_symlink("a.obj", dir.path("in/a.obj.bak"));
    EXPECT_EQ(0, plan({"@in", "--out_dir", "@out"})) << error;
    EXPECT_EQ(app::exit_usage, plan({"@in", "--in_place"}));
    EXPECT_EQ(dir.path("in/a.obj") + " and its backup " + dir.path("in/a.obj.bak") +
                  " are the same file",
              error);
}

TEST_F(BatchPlan, RefusesAResultThatIsALinkToAMesh) {
    std::filesystem::create_directory(dir.path("out"));
    for (const char* result : {"out/a.obj", "out/a.json"}) {
        std::filesystem::create_symlink("../in/sub/b.obj", dir.path(result));
        EXPECT_EQ(app::exit_usage, plan({"@in", "--out_dir", "@out"}));
        EXPECT_EQ(dir.path("in/a.obj") + " would be written over the input " +
                      dir.path("in/sub/b.obj") + "; --suffix or --out_dir keep them apart",
                  error);
        std::filesystem::remove(dir.path(result));
    }
    std::filesystem::create_symlink("a.obj", dir.path("in/link.obj"));
    EXPECT_EQ(app::exit_usage, plan({"@in", "--in_place"}));
    EXPECT_NE(std::string::npos, error.find("in/a.obj would be written over the input ")) << error;
}

TEST_F(BatchPlan, MeshesOfOneNameInSeveralFormatsHaveReportsOfTheirOwn) {
    dir.put("in/a.ply", "");
    dir.put("in/a.glb.gz", "");
    EXPECT_EQ(0, plan({"@in", "--beside", "--out_dir", "@out"})) << error;
    Names reports, pictures;
    for (const app::BatchItem& item : items) {
        reports.push_back(short_name(item.report));
        pictures.push_back(short_name(item.layout));
    }
    EXPECT_EQ((Names{"out/a.glb.gz.json", "out/a.obj.json", "out/a.ply.json", "out/sub/b.json"}),
              reports);
    EXPECT_EQ((Names{"out/a.glb.gz.png", "out/a.obj.png", "out/a.ply.png", "out/sub/b.png"}),
              pictures);
}

TEST_F(BatchPlan, RefusesTwoSpellingsOfOneResult) {
    std::filesystem::create_directory_symlink(dir.path("in"), dir.path("link"));
    EXPECT_EQ(app::exit_usage, plan({"@in/a.obj", "@link/a.obj"}));
}

TEST_F(BatchPlan, RefusesAResultThatIsAnInput) {
    dir.put("in/a_uv.obj", "");
    EXPECT_EQ(app::exit_usage, plan({"@in/a.obj", "@in/a_uv.obj"}));
    EXPECT_EQ(dir.path("in/a.obj") + " would be written over the input " + dir.path("in/a_uv.obj") +
                  "; --suffix or --out_dir keep them apart",
              error);
}

TEST_F(BatchPlan, RefusesWhatIsNotThere) {
    EXPECT_EQ(app::exit_input, plan({"@in", "@gone.obj"}));
    EXPECT_EQ(dir.path("gone.obj") + ": there is no such file or folder; -o names an output",
              error);
    EXPECT_EQ(app::exit_input, plan({"@in", "@in", "@gone.obj"}));
    EXPECT_EQ(dir.path("gone.obj") + ": there is no such file or folder", error);
    EXPECT_EQ(app::exit_input, plan({"@out", "@in"}));
    EXPECT_EQ(dir.path("out") + ": the folder holds no mesh file", error);
    EXPECT_EQ(app::exit_input, plan({"@in/*.ply"}));
    EXPECT_EQ(dir.path("in/*.ply") + ": no mesh file matches", error);
    EXPECT_EQ(app::exit_input, plan({"--list", "@gone.txt"}));
    EXPECT_EQ("--list: " + dir.path("gone.txt") + ": cannot be read: No such file or directory",
              error);
}

} // namespace
