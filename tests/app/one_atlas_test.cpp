/// `tessora unwrap --one_atlas`, and packing files of other formats.
#include "tests/app/program_fixture.h"

#include <unistd.h>

namespace {

using test::Ended;
using test::Json;
using test::Words;

constexpr const char* k_ply = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty "
                              "float y\nproperty float z\n"
                              "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                              "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n";

class OneAtlas : public test::Program {
protected:
    OneAtlas() {
        std::filesystem::create_directories(dir.path("in/sub"));
        dir.put("in/small.obj", square(1));
        dir.put("in/sub/large.obj", square(2));
    }
    static std::string square(int side) {
        const std::string s = std::to_string(side);
        return "v 0 0 0\nv " + s + " 0 0\nv " + s + " " + s + " 0\nv 0 " + s + " 0\nf 1 2 3 4\n";
    }
    Ended atlas(Words words = {}) {
        words.insert(words.begin(),
                     {"unwrap", dir.path("in"), "--out_dir", dir.path("out"), "--one_atlas"});
        return test::run(words);
    }
    /// The area of a written mesh's one polygon in the texture.
    double area(const std::string& name) const {
        const host::ObjDocument document = read(name);
        const size_t count = document.corner_texture.size();
        double twice = 0.0;
        for (size_t c = 0; c < count; ++c) {
            const float* a = &document.texture_coords[2 * document.corner_texture[c]];
            const float* b = &document.texture_coords[2 * document.corner_texture[(c + 1) % count]];
            twice += double(a[0]) * double(b[1]) - double(a[1]) * double(b[0]);
        }
        return 0.5 * twice;
    }
    /// Names of everything in the folder of results.
    std::vector<std::string> results() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path("out")))
            names.push_back(entry.path().lexically_relative(dir.path("out")).generic_string());
        std::sort(names.begin(), names.end());
        return names;
    }
    void expect_refused(const Words& words, const std::string& reason) {
        const Ended ended = atlas(words);
        EXPECT_EQ(2, ended.code);
        EXPECT_NE(ended.err.npos, ended.err.find(reason)) << ended.err;
    }
};

TEST_F(OneAtlas, MeshesShareATextureWithOneDensity) {
    const Ended ended = atlas();
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ((std::vector<std::string>{"atlas.json", "small.obj", "sub", "sub/large.obj"}),
              results());
    EXPECT_NEAR(4.0, area("out/sub/large.obj") / area("out/small.obj"), 1e-3);
    EXPECT_LT(area("out/sub/large.obj"), 0.75); // alone it would fill the texture
    const Json report = Json::parse(dir.get("out/atlas.json"));
    EXPECT_EQ((Json{dir.path("in/small.obj"), dir.path("in/sub/large.obj")}), report["inputs"]);
    EXPECT_EQ(2, report["charts"]);
}

TEST_F(OneAtlas, DensityAndPictureAreAsAskedFor) {
    ASSERT_EQ(0, atlas({"--density", "64", "--width", "256", "--height", "256", "--beside"}).code);
    EXPECT_NEAR(0.25, area("out/sub/large.obj"), 1e-3);              // 128 of 256 texels a side
    EXPECT_EQ(256, Json::parse(dir.get("out/atlas.json"))["width"]); // it grows if it is too small
    EXPECT_EQ("\x89PNG", dir.get("out/atlas.png").substr(0, 4));
}

TEST_F(OneAtlas, TilesAreFilled) {
    const Ended ended =
        atlas({"--tiles", "2", "--density", "100", "--width", "256", "--height", "256"});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(2u, Json::parse(dir.get("out/atlas.json"))["tiles"].size());
}

TEST_F(OneAtlas, NothingIsWrittenUnlessEveryMeshSucceeds) {
    dir.put("in/bad.obj", "f 1 2 3\n");
    const Ended ended = atlas();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("no atlas was made")) << ended.err;
    EXPECT_TRUE(results().empty());
}

TEST_F(OneAtlas, FolderThatAKilledCallLeftIsRemoved) {
    const std::string dead = ".tessora-atlas.99999999",
                      own = ".tessora-atlas." + std::to_string(::getpid());
    std::filesystem::create_directories(dir.path("out/" + dead));
    std::filesystem::create_directories(dir.path("out/" + own));
    EXPECT_EQ(0, atlas().code);
    EXPECT_FALSE(dir.has("out/" + dead));
    EXPECT_TRUE(dir.has("out/" + own)) << "its process still runs";
}

TEST_F(OneAtlas, DryRunWritesNothing) {
    const Ended ended = atlas({"--dry_run"});
    EXPECT_EQ(0, ended.code);
    EXPECT_NE(ended.out.npos, ended.out.find(" -> " + dir.path("out/small.obj")));
    EXPECT_FALSE(dir.has("out"));
}

TEST_F(OneAtlas, OtherFormatsAreKept) {
    dir.put("in/p.ply", k_ply);
    const Ended ended = atlas();
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ("ply\n", dir.get("out/p.ply").substr(0, 4));
}

TEST_F(OneAtlas, WhatIsForOneMeshOrManyResultsIsRefused) {
    expect_refused({"--skip_existing"}, "--one_atlas makes one result");
    expect_refused({"--shard", "0/2"}, "--one_atlas makes one result");
    expect_refused({"--html", dir.path("page")}, "--one_atlas makes one result");
    expect_refused({"--json_lines"}, "--one_atlas makes one result");
    expect_refused({"--tiles", "0"}, "--tiles is 1 to 100");
    const Ended alone = test::run({"unwrap", dir.path("in"), "--one_atlas"});
    EXPECT_EQ(2, alone.code);
    EXPECT_NE(alone.err.npos, alone.err.find("--one_atlas needs --out_dir")) << alone.err;
    const Ended tiles = test::run({"unwrap", dir.path("in"), "--tiles", "2"});
    EXPECT_EQ(2, tiles.code);
    EXPECT_NE(tiles.err.npos, tiles.err.find("--tiles needs --one_atlas")) << tiles.err;
}

TEST_F(OneAtlas, TwoMeshesWithOneResultAreRefused) {
    dir.put("in/small.stl", "");
    const Ended ended = atlas();
    EXPECT_EQ(2, ended.code);
    EXPECT_NE(
        ended.err.npos,
        ended.err.find("out/small.obj; batches of their own keep them apart; nothing was done"))
        << ended.err;
    EXPECT_FALSE(dir.has("out"));
}

TEST_F(OneAtlas, HoldsMoreMeshesThanFilesMayBeOpenAtFirst) {
    for (int i = 0; i < 70; ++i)
        dir.put("in/s" + std::to_string(i) + ".obj", square(1));
    const std::string command = "ulimit -Sn 64; exec " TESSORA_PROGRAM " unwrap " + dir.path("in") +
                                " --out_dir " + dir.path("out") + " --one_atlas --quiet";
    EXPECT_EQ(0, std::system(command.c_str()));
    for (int i = 0; i < 70; ++i)
        EXPECT_TRUE(dir.has("out/s" + std::to_string(i) + ".obj")) << i;
}

TEST_F(OneAtlas, FolderThatCannotBeMadeIsAnOutputError) {
    dir.put("file", "");
    const Ended ended =
        test::run({"unwrap", dir.path("in"), "--out_dir", dir.path("file/x"), "--one_atlas"});
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("cannot be made")) << ended.err;
}

TEST_F(OneAtlas, PackReadsAndWritesOtherFormats) {
    ASSERT_EQ(0, test::run({"unwrap", dir.put("a.ply", k_ply), "-o", dir.path("b.ply")}).code);
    ASSERT_EQ(0,
              test::run({"unwrap", dir.put("c.obj", square(1)), "-o", dir.path("d.obj.gz")}).code);
    const Ended ended = test::run({"pack", dir.path("b.ply"), "--width", "64"});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ("ply\n", dir.get("b_packed.ply").substr(0, 4));
    const Ended zipped = test::run({"pack", dir.path("d.obj.gz")});
    EXPECT_EQ(0, zipped.code) << zipped.err;
    EXPECT_EQ("\x1f\x8b", dir.get("d_packed.obj.gz").substr(0, 2));
}

TEST_F(OneAtlas, PackRefusesAFormatWithoutCoordinates) {
    ASSERT_EQ(0, test::run({"unwrap", dir.put("c.obj", square(1)), "-o", dir.path("d.obj")}).code);
    const Ended ended = test::run({"pack", dir.path("d.obj"), "-o", dir.path("e.stl")});
    EXPECT_EQ(2, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("STL files cannot hold texture coordinates"))
        << ended.err;
}

} // namespace
