/// `tessora pack`, run as a user would run it.
#include "tests/app/program_fixture.h"

#include <cmath>
#include <set>

namespace {

using namespace test;

class PackProgram : public Program {
protected:
    /// Writes a mesh, unwraps it in place and returns its path.
    std::string unwrapped(const std::string& name, const std::string& text) {
        const std::string path = dir.put(name, text);
        const Ended ended = run({"unwrap", path, "-o", path + ".tmp.obj", "--quiet"});
        EXPECT_EQ(0, ended.code) << ended.err;
        std::filesystem::rename(path + ".tmp.obj", path);
        return path;
    }
    Ended pack(Words words) {
        words.insert(words.begin(), "pack");
        words.insert(words.end(), {"--report", dir.path("pack.json")});
        return run(words);
    }
    Json packed() const { return Json::parse(dir.get("pack.json")); }

    /// All these files as one mesh, far from each other, so that `verify` sees every gap.
    std::string together(const std::vector<std::string>& names) {
        std::ostringstream out;
        uint32_t vertices = 0, coords = 0;
        for (size_t i = 0; i < names.size(); ++i) {
            const host::ObjDocument d = read(names[i]);
            for (size_t v = 0; v < d.vertex_count(); ++v)
                out << "v " << d.positions[3 * v] + 10.0 * double(i) << " "
                    << d.positions[3 * v + 1] << " " << d.positions[3 * v + 2] << "\n";
            for (size_t t = 0; t < d.texture_count(); ++t) {
                out.precision(9);
                out << "vt " << d.texture_coords[2 * t] << " " << d.texture_coords[2 * t + 1]
                    << "\n";
            }
            for (size_t p = 0; p < d.polygon_count(); ++p) {
                out << "f";
                for (uint32_t c = d.corner_begin[p]; c < d.corner_begin[p + 1]; ++c)
                    out << " " << vertices + d.corner_vertex[c] + 1 << "/"
                        << coords + d.corner_texture[c] + 1;
                out << "\n";
            }
            vertices += uint32_t(d.vertex_count());
            coords += uint32_t(d.texture_count());
        }
        return dir.put("together.obj", out.str());
    }
    /// Length in the texture of the first edge of a polygon.
    double first_edge(const std::string& name, size_t polygon = 0) const {
        const host::ObjDocument d = read(name);
        const uint32_t c = d.corner_begin[polygon];
        const float* a = &d.texture_coords[2 * size_t(d.corner_texture[c])];
        const float* b = &d.texture_coords[2 * size_t(d.corner_texture[c + 1])];
        return std::hypot(double(a[0]) - b[0], double(a[1]) - b[1]);
    }
};

TEST_F(PackProgram, PacksTenMeshesIntoOneTexture) {
    Words words;
    std::vector<std::string> results;
    for (int i = 0; i < 10; ++i) {
        const std::string name = "mesh" + std::to_string(i) + ".obj";
        words.push_back(unwrapped(name, i % 2 == 0 ? dome(4 + i, 1 + 0.1 * i) : cube_grid(2)));
        results.push_back("out/" + name);
    }
    words.insert(words.end(), {"-o", dir.path("out"), "--padding", "3"});
    const Ended ended = pack(words);
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_GE(packed()["gap_texels"].get<double>(), 3 - 0.01);
    const Ended verdict = run({"verify", together(results), "--padding", "3"});
    EXPECT_EQ(0, verdict.code) << verdict.out;
    for (const std::string& name : results)
        EXPECT_EQ(without_texture(dir.get(name)), without_texture(dir.get(name.substr(4))));
}

TEST_F(PackProgram, WritesBesideTheMeshByDefault) {
    const std::string file = unwrapped("dome.obj", dome(6));
    const Ended ended = run({"pack", file});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ((Names{"dome.obj", "dome_packed.obj"}), dir.names());
    EXPECT_EQ(0, run({"verify", dir.path("dome_packed.obj")}).code);
}

TEST_F(PackProgram, InPlaceKeepsABackup) {
    const std::string file = unwrapped("dome.obj", dome(6));
    const std::string before = dir.get("dome.obj");
    ASSERT_EQ(0, run({"pack", file, "--in_place", "--width", "256", "--height", "256"}).code);
    EXPECT_EQ(before, dir.get("dome.obj.bak"));
    EXPECT_NE(before, dir.get("dome.obj"));
    const Ended again = run({"pack", file, "--in_place"});
    EXPECT_EQ(0, again.code);
    EXPECT_EQ(before, dir.get("dome.obj.bak"));
    EXPECT_NE(std::string::npos, again.err.find("exists and is kept"));
}

TEST_F(PackProgram, FillsThreeTiles) {
    Words words;
    std::vector<std::string> results;
    for (int i = 0; i < 6; ++i) {
        const std::string name = "mesh" + std::to_string(i) + ".obj";
        words.push_back(unwrapped(name, cube_grid(2 + i)));
        results.push_back("out/" + name);
    }
    words.insert(words.end(), {"-o", dir.path("out"), "--tiles", "3", "--width", "128", "--height",
                               "128", "--layout", dir.path("tiles.png")});
    const Ended ended = pack(words);
    ASSERT_EQ(0, ended.code) << ended.err;
    const Json tiles = packed()["tiles"];
    ASSERT_EQ(3u, tiles.size());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(1001 + i, tiles[i]["number"]);
        EXPECT_GT(tiles[i]["charts"], 0);
        EXPECT_TRUE(dir.has("tiles." + std::to_string(1001 + i) + ".png"));
    }
    const Words verify = {"verify", together(results), "--width", "128", "--height", "128"};
    EXPECT_EQ(6, run(verify).code);
    Words with_tiles = verify;
    with_tiles.insert(with_tiles.end(), {"--tiles", "3"});
    const Ended verdict = run(with_tiles);
    EXPECT_EQ(0, verdict.code) << verdict.out;
    with_tiles.back() = "2";
    EXPECT_EQ(6, run(with_tiles).code);
}

TEST_F(PackProgram, KeepsChartsOfNamedGroups) {
    // Two squares in the same place of the texture; the first is to stay there.
    const std::string text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 5\nv 1 0 5\nv 1 1 5\nv 0 1 "
                             "5\nvt .2 .2\nvt .6 .2\nvt .6 .6\nvt .2 .6\ng stays\n"
                             "f 1/1 2/2 3/3 4/4\ng moves\nf 5/1 6/2 7/3 8/4\n";
    const std::string file = dir.put("two.obj", text);
    const Ended ended = pack({file, "--keep", "stays", "--output", dir.path("out.obj")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(1, packed()["kept"]);
    const host::ObjDocument d = read("out.obj");
    for (uint32_t c = 0; c < 4; ++c)
        for (uint32_t k = 0; k < 2; ++k)
            EXPECT_EQ(read("two.obj").texture_coords[2 * c + k],
                      d.texture_coords[2 * d.corner_texture[c] + k]);
    EXPECT_EQ(0, run({"verify", dir.path("out.obj")}).code);
}

TEST_F(PackProgram, KeepsWholeMeshes) {
    const std::string a = unwrapped("a.obj", cube_grid(2));
    const std::string b = unwrapped("b.obj", cube_grid(3, 0.1));
    const std::string small = dir.path("small");
    // Beside the charts of a, which fill the texture, there is room on a second tile.
    const Ended ended = pack({a, b, "--keep", a, "--tiles", "2", "-o", small});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(dir.get("a.obj"), dir.get("small/a.obj"));
    EXPECT_EQ(0, run({"verify", together({"small/a.obj", "small/b.obj"}), "--tiles", "2"}).code);
}

TEST_F(PackProgram, RefusesKeptChartsThatCollide) {
    const std::string a = unwrapped("a.obj", cube_grid(2)), b = unwrapped("b.obj", cube_grid(2));
    const Ended ended = pack({a, b, "--keep", a + "," + b, "-o", dir.path("out")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("kept charts collide")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("b.obj: polygon")) << ended.err;
    EXPECT_FALSE(dir.has("out"));
    EXPECT_EQ("failed", packed()["status"]);
}

TEST_F(PackProgram, RefusesKeptChartsOutsideTheTexture) {
    const std::string file =
        dir.put("far.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 2 2\nvt 3 2\nvt 3 3\nf 1/1 2/2 3/3\n");
    const Ended ended = pack({file, "--keep", file});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("outside the texture")) << ended.err;
}

TEST_F(PackProgram, RefusesToKeepWhatIsNotThere) {
    const Ended ended = pack({unwrapped("a.obj", cube_grid(2)), "--keep", "head"});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("is named 'head'")) << ended.err;
}

TEST_F(PackProgram, KeepsRelativeSizesUnlessTheDensityIsUniform) {
    const std::string a = unwrapped("a.obj", cube_grid(2)), b = unwrapped("b.obj", cube_grid(2, 2));
    ASSERT_EQ(0, pack({a, b, "-o", dir.path("as_is")}).code);
    EXPECT_NEAR(first_edge("as_is/a.obj"), first_edge("as_is/b.obj"), 1e-3);
    ASSERT_EQ(0, pack({a, b, "-o", dir.path("even"), "--density", "uniform"}).code);
    EXPECT_NEAR(2 * first_edge("even/a.obj"), first_edge("even/b.obj"), 1e-3);
}

TEST_F(PackProgram, TextureGrowsUntilAFixedDensityFits) {
    const std::string file = unwrapped("a.obj", cube_grid(1));
    const Ended ended = pack({file, "--density", "200", "-o", dir.path("out.obj")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(1024, packed()["width"]); // a cross of six squares of 200 x 200 texels
    EXPECT_NEAR(200, first_edge("out.obj") * 1024, 0.1);
    EXPECT_NEAR(200, packed()["texels_per_unit"].get<double>(), 0.01);
}

TEST_F(PackProgram, TilesAreAddedUntilAFixedDensityFits) {
    Words words;
    std::vector<std::string> results;
    for (int i = 0; i < 6; ++i) {
        const std::string name = "mesh" + std::to_string(i) + ".obj";
        words.push_back(unwrapped(name, cube_grid(1)));
        results.push_back("out/" + name);
    }
    words.insert(words.end(), {"--density", "100", "-o", dir.path("out"), "--tiles", "8"});
    const Ended ended = pack(words);
    ASSERT_EQ(0, ended.code) << ended.err;
    const size_t tiles = packed()["tiles"].size();
    EXPECT_GE(tiles, 2u);
    EXPECT_LE(tiles, 6u);
    EXPECT_NEAR(100, first_edge(results[5]) * 512, 0.1);
    EXPECT_EQ(0, run({"verify", together(results), "--tiles", std::to_string(tiles)}).code);
    words.back() = std::to_string(tiles - 1);
    words[7] = "250"; // each cross is larger than a tile
    const Ended few = pack(words);
    EXPECT_EQ(5, few.code);
    EXPECT_NE(std::string::npos, few.err.find("too small")) << few.err;
}

TEST_F(PackProgram, RefusesADensityThatNeedsMoreThanTheLargestTexture) {
    const std::string file = unwrapped("a.obj", cube_grid(1));
    const Ended ended = pack({file, "--density", "9000", "-o", dir.path("out.obj")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("at least 22046 texels a side")) << ended.err;
    EXPECT_FALSE(dir.has("out.obj"));
}

TEST_F(PackProgram, RefusesWhatDoesNotFit) {
    const std::string file = unwrapped("a.obj", cube_grid(2));
    const Ended ended =
        pack({file, "--width", "16", "--height", "16", "--padding", "16", "-o", dir.path("o.obj")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("the texture is too small")) << ended.err;
    EXPECT_FALSE(dir.has("o.obj"));
}

TEST_F(PackProgram, StacksChartsOfOneShape) {
    const std::string file = unwrapped("cube.obj", cube_grid(1));
    // The cube's own chart twice: the same mesh under another name.
    dir.put("twin.obj", dir.get("cube.obj"));
    const Ended ended =
        pack({file, dir.path("twin.obj"), "--stack", "congruent", "-o", dir.path("out")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_GE(packed()["stacked"].get<int>(), 1);
    EXPECT_NEAR(first_edge("out/cube.obj"), first_edge("out/twin.obj"), 1e-6);
}

TEST_F(PackProgram, TurnsOnlyAsAllowed) {
    const std::string file = unwrapped("a.obj", cube_grid(3));
    ASSERT_EQ(0, pack({file, "--turns", "none", "-o", dir.path("none.obj")}).code);
    const host::ObjDocument before = read("a.obj"), after = read("none.obj");
    const auto direction = [](const host::ObjDocument& d) {
        const float* a = &d.texture_coords[2 * size_t(d.corner_texture[0])];
        const float* b = &d.texture_coords[2 * size_t(d.corner_texture[1])];
        return std::atan2(b[1] - a[1], b[0] - a[0]);
    };
    EXPECT_NEAR(direction(before), direction(after), 1e-3);
}

TEST_F(PackProgram, TakesCoordinatesOfAnotherTexture) {
    const std::string file = unwrapped("a.obj", cube_grid(2));
    const Words to = {"--width", "1024", "--height", "256", "-o", dir.path("out.obj")};
    Words plain = {file}, from = {file, "--from", "512x512"};
    plain.insert(plain.end(), to.begin(), to.end());
    from.insert(from.end(), to.begin(), to.end());
    ASSERT_EQ(0, pack(plain).code);
    EXPECT_EQ(6, run({"verify", dir.path("out.obj"), "--width", "1024", "--height", "256"}).code);
    ASSERT_EQ(0, pack(from).code);
    EXPECT_EQ(0, run({"verify", dir.path("out.obj"), "--width", "1024", "--height", "256"}).code);
}

TEST_F(PackProgram, NamesChartsThatAreMirroredOrOverlapThemselves) {
    const std::string file =
        dir.put("bad.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 0 0\nv 6 0 0\nv 6 1 0\n"
                           "vt 0 0\nvt 1 0\nvt 1 1\nvt .9 .1\nvt 0 1\n"
                           "f 1/1 2/2 3/3\nf 1/1 3/3 4/4\nf 5/1 6/5 7/2\n");
    const Ended ended = pack({file, "-o", dir.path("out.obj")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("are flipped against the rest of their chart: " +
                                                file + ": polygon 1"))
        << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("overlap themselves: " + file + ": polygons 0, 1"))
        << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("are mirrored: " + file + ": polygon 2"))
        << ended.err;
    EXPECT_EQ(3u, packed()["warnings"].size());
}

TEST_F(PackProgram, RefusesAMeshWithoutCoordinates) {
    const std::string good = unwrapped("a.obj", cube_grid(2)), bare = dir.put("bare.obj", k_cube);
    const Ended ended = pack({good, bare, "-o", dir.path("out")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find(bare + ": the mesh has no texture coordinates"))
        << ended.err;
    EXPECT_FALSE(dir.has("out"));
}

TEST_F(PackProgram, RefusesMeshesThatCannotBeRead) {
    EXPECT_EQ(3, pack({dir.path("missing.obj")}).code);
    EXPECT_EQ(3, pack({dir.put("broken.obj", "v 0 0\nf 1 2 3\n")}).code);
    EXPECT_EQ(3, pack({dir.put("mesh.usd", "x")}).code);
    const Ended ended = pack({dir.put("mesh.glb", "x")});
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("mesh.glb: ")) << ended.err;
}

TEST_F(PackProgram, PacksEveryFormatThatCanBeWritten) {
    for (const char* extension : {"glb", "ply", "obj.gz"}) {
        const std::string mesh = dir.path(std::string("m.") + extension);
        ASSERT_EQ(0, run({"unwrap", dir.put("m.obj", cube_grid(2)), "-o", mesh}).code);
        const std::string packed = dir.path(std::string("p.") + extension);
        const Ended ended = pack({mesh, "-o", packed});
        EXPECT_EQ(0, ended.code) << ended.err;
        EXPECT_EQ(0, run({"verify", packed}).code);
    }
}

TEST_F(PackProgram, LeavesPolygonsWithoutCoordinatesAsTheyAre) {
    const std::string file = dir.put("part.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 "
                                                 "0\nvt 1 1\nf 1/1 2/2 3/3\nf 1 3 4\n");
    const Ended ended = pack({file, "-o", dir.path("out.obj")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("3 polygon corners have no texture coordinates"));
    EXPECT_EQ(host::k_obj_none, read("out.obj").corner_texture[4]);
}

TEST_F(PackProgram, RefusesAnOutputThatCannotBeWritten) {
    const std::string file = unwrapped("a.obj", cube_grid(2));
    EXPECT_EQ(7, pack({file, "-o", dir.path("no/such/folder/out.obj")}).code);
}

TEST_F(PackProgram, RefusesWrongOptions) {
    const std::string a = dir.put("a.obj", k_cube_with_uvs), b = dir.put("b.obj", k_cube_with_uvs);
    const std::vector<std::pair<Words, std::string>> cases = {
        {{}, "pack needs at least one"},
        {{a, "--turns", "half"}, "--turns: 'half' is not any, quarter or none"},
        {{a, "--stack", "all"}, "--stack: 'all' is not none, congruent or mirrored"},
        {{a, "--density", "much"}, "--density: 'much' is not as_is, uniform or a number"},
        {{a, "--density", "-1"}, "--density: '-1' is not as_is, uniform or a number"},
        {{a, "--picture", "oil"}, "--picture: 'oil' is not layout, checker or stretch"},
        {{a, "--from", "10"}, "--from: '10' is not a size"},
        {{a, "--tiles", "0"}, "--tiles 0 is not 1 to 100"},
        {{a, "--padding", "300"}, "--padding must be 0 to 256"},
        {{a, "--width", "4"}, "--width 4 is not 8 to 8192"},
        {{a, "--effort", "11"}, "--effort 11 is not 0 to 10"},
        {{a, "--in_place", "-o", "x.obj"}, "--in_place and -o exclude each other"},
        {{a, b, "-o", a}, "is no folder, and several meshes need one"},
        {{a, "-o", a}, "would be read or written twice"},
        {{a, "--gutter", "3"}, "unknown option --gutter"},
        {{a, "--keep", ""}, "--keep: '' is not a name"},
        {{a, "--keep", ",,,"}, "--keep: ',,,' has an empty name"},
        {{a, "--keep", ",head"}, "--keep: ',head' has an empty name"},
        {{a, "--keep", "head,"}, "--keep: 'head,' has an empty name"},
        {{a, "--keep", "head,,hands"}, "--keep: 'head,,hands' has an empty name"},
    };
    for (const auto& [words, message] : cases) {
        Words all = {"pack"};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = run(all);
        EXPECT_EQ(2, ended.code) << message;
        EXPECT_NE(std::string::npos, ended.err.find(message)) << ended.err;
    }
}

TEST_F(PackProgram, BackupIsReplacedByNoOtherFile) {
    const std::string mesh = dir.put("a.obj", k_cube_with_uvs);
    for (const char* option : {"--report", "--layout"}) {
        const Ended ended = run({"pack", mesh, "--in_place", option, mesh + ".bak"});
        EXPECT_EQ(2, ended.code) << option;
        EXPECT_NE(std::string::npos, ended.err.find("a.obj.bak would be read or written twice"))
            << ended.err;
    }
    EXPECT_EQ(k_cube_with_uvs, dir.get("a.obj"));
    EXPECT_EQ(Names{"a.obj"}, dir.names());
    std::filesystem::create_symlink("a.obj", mesh + ".bak");
    EXPECT_EQ(2, run({"pack", mesh, "--in_place"}).code);
    EXPECT_EQ(k_cube_with_uvs, dir.get("a.obj"));
}

TEST_F(PackProgram, VerifyChecksEveryTileByItself) {
    const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 5\nv 1 0 5\nv 1 1 5\nv 0 "
                               "1 5\nvt .2 .2\nvt .6 .2\nvt .6 .6\nvt .2 .6\n"
                               "f 1/1 2/2 3/3 4/4\n";
    const std::string apart = dir.put(
        "apart.obj", square + "vt 1.2 .2\nvt 1.6 .2\nvt 1.6 .6\nvt 1.2 .6\nf 5/5 6/6 7/7 8/8\n");
    const std::string across = dir.put(
        "across.obj", square + "vt .7 .2\nvt 1.1 .2\nvt 1.1 .6\nvt .7 .6\nf 5/5 6/6 7/7 8/8\n");
    EXPECT_EQ(0, run({"verify", apart, "--tiles", "2"}).code);
    const Ended ended = run({"verify", across, "--tiles", "2"});
    EXPECT_EQ(6, ended.code);
    EXPECT_NE(std::string::npos, ended.out.find("1001: outside")) << ended.out;
    const Ended json = run({"verify", across, "--tiles", "2", "--json"});
    EXPECT_EQ(1001, Json::parse(json.out)["breaches"][0]["tile"]);
    EXPECT_EQ(2, run({"verify", apart, "--tiles", "101"}).code);
    EXPECT_EQ(2, run({"verify", apart, "--tiles", "2", "--layout", dir.path("x.png")}).code);
}

TEST_F(PackProgram, MeshWithoutCoordinatesIsSentToUnwrap) {
    const Ended ended = run({"pack", dir.put("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos,
              ended.err.find("m.obj: the mesh has no texture coordinates to pack; 'tessora "
                             "unwrap' makes some"))
        << ended.err;
}

TEST_F(PackProgram, TilesThatCannotHoldTheDensityAreTold) {
    const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\n"
                               "vt 0 1\nf 1/1 2/2 3/3 4/4\n";
    const Words words = {"pack",     dir.put("m.obj", square),
                         "-o",       dir.path("o.obj"),
                         "--width",  "64",
                         "--height", "64",
                         "--tiles",  "2",
                         "--density"};
    Words much = words, little = words;
    much.push_back("100");
    little.push_back("50");
    const Ended ended = run(much);
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos,
              ended.err.find("2 tiles are too small for the charts at this density"));
    EXPECT_EQ(0, run(little).code);
}

TEST_F(PackProgram, HelpTellsTheOptions) {
    const Ended ended = run({"pack", "--help"});
    EXPECT_EQ(0, ended.code);
    for (const char* word : {"usage: tessora pack", "examples:", "--density", "--keep", "--tiles"})
        EXPECT_NE(std::string::npos, ended.out.find(word)) << word;
}

/// `tessora unwrap` with what acts on the finished charts.
class UnwrapCharts : public Program {
protected:
    Json figures(const Words& words) {
        Words all = {"measure", dir.path("result.obj"), "--json"};
        all.insert(all.end(), words.begin(), words.end());
        return Json::parse(run(all).out)["measures"];
    }
};

TEST_F(UnwrapCharts, MaxChartsTakesTheStretchItNeeds) {
    const std::string mesh = dome(16);
    const int usual = charts(mesh, {});
    ASSERT_GT(usual, 2);
    EXPECT_LE(charts(mesh, {"--max_charts", "1"}), 1);
    EXPECT_LT(report("charts.obj")["stretch"].get<double>(), 0.9);
    EXPECT_LE(charts(mesh, {"--max_charts", "2", "--stretch", "0.5"}), 2);
    EXPECT_LE(report("charts.obj")["stretch"].get<double>(), 0.5 + 1e-3);
}

TEST_F(UnwrapCharts, MaxChartsSaysWhatIsTheLeast) {
    const std::string mesh = dome(16);
    const int least = charts(mesh, {"--stretch", "0.02"});
    const Ended ended = unwrap("dome.obj", mesh, {"--max_charts", "1", "--stretch", "0.02"});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("1 charts cannot be had with stretch up to 0.02; "
                                                "the least found is " +
                                                std::to_string(least)))
        << ended.err;
    EXPECT_NE(std::string::npos,
              ended.err.find("stretch 0.02 gives " + std::to_string(least) + " charts\n"))
        << ended.err;
    EXPECT_FALSE(dir.has("dome_uv.obj"));
}

TEST_F(UnwrapCharts, DensitySetsTheTextureSize) {
    result(cube_grid(2), {"--density", "200"});
    EXPECT_EQ(1024, report("source.obj")["settings"]["width"]);
    const Json m = figures({"--width", "1024", "--height", "1024"});
    EXPECT_NEAR(200, m["density_mean"].get<double>(), 0.1);
    const Ended ended = unwrap("a.obj", cube_grid(2), {"--density", "9000"});
    EXPECT_EQ(5, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("at least 22046 texels a side")) << ended.err;
}

TEST_F(UnwrapCharts, AlignTurnsEveryChartByQuartersOnly) {
    result(l_shape(), {"--align", "--use_ridges", "--use_grooves"});
    const Json m = figures({});
    EXPECT_GT(m["straight_texels_best"].get<double>(), 500);
    EXPECT_GT(m["straight_texels"].get<double>(), 0.99 * m["straight_texels_best"].get<double>());
}

TEST_F(UnwrapCharts, StacksChartsOfOneShape) {
    // All edges of a cube are ridges: six squares, stacked into one.
    const std::string out =
        result(cube_grid(2), {"--use_ridges", "--ridge_angle", "80", "--stack", "congruent"});
    EXPECT_EQ(6, figures({})["charts"]);
    const Json m = figures({});
    EXPECT_GT(m["overlap_pairs_between"].get<int>(), 0);
    EXPECT_GT(m["coverage"].get<double>(), 5.0); // six squares that fill the texture each
}

TEST_F(UnwrapCharts, MoreEffortFillsTheTextureBetter) {
    const auto coverage = [&](const char* effort) {
        result(dome(20), {"--stretch", "0.03", "--high_quality", "--effort", effort});
        return figures({})["coverage"].get<double>();
    };
    EXPECT_GT(coverage("7"), coverage("0") + 0.01);
}

TEST_F(UnwrapCharts, RefusesAnUnknownStack) {
    const Ended ended = unwrap("cube.obj", k_cube, {"--stack", "all"});
    EXPECT_EQ(2, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("--stack: 'all' is not none"));
}

} // namespace
