#include "app/fingerprint.h"
#include "app/presets.h"
#include "app/request_json.h"
#include "tests/app/parsed_words.h"
#include "tests/app/scratch.h"

#include <nlohmann/json.hpp>

namespace {

using test::parsed;
using test::refusal;
using test::Words;

TEST(Presets, EachChangesSettingsAndStaysInRange) {
    const auto text = [](const app::UnwrapSettingsRequest& s) {
        return settings_to_json(s).dump();
    };
    for (const app::Preset& preset : app::presets()) {
        app::UnwrapSettingsRequest settings;
        const std::string before = text(settings);
        preset.apply(settings);
        EXPECT_NE(before, text(settings)) << preset.name;
        EXPECT_TRUE(parsed({"m.obj", "--preset", preset.name}).warnings.empty()) << preset.name;
    }
}

TEST(Presets, OptionsCountAfterThePresetWhereverTheyStand) {
    const app::UnwrapRequest r = parsed({"--padding", "3", "m.obj", "--preset", "bake"});
    EXPECT_EQ(3, r.settings.padding);
    EXPECT_EQ(2048, r.settings.width);
    EXPECT_TRUE(r.settings.high_quality);
}

TEST(Presets, FileOfSettings) {
    const test::Scratch dir;
    dir.put("mine.json", R"({"stretch": 0.5, "width": 64, "use_ridges": true})");
    const app::UnwrapRequest r = parsed({"m.obj", "--preset", dir.path("mine.json")});
    EXPECT_EQ(0.5, r.settings.stretch);
    EXPECT_EQ(64, r.settings.width);
    EXPECT_EQ(512, r.settings.height);
    EXPECT_TRUE(r.settings.use_ridges);
}

TEST(Presets, ReportGivesItsSettings) {
    const test::Scratch dir;
    dir.put("report.json", R"({"schema": 1, "settings": {"padding": 7}})");
    EXPECT_EQ(7, parsed({"m.obj", "--preset", dir.path("report.json")}).settings.padding);
}

TEST(Presets, SettingsThatNoUnwrapNodeHasAreNamed) {
    app::UnwrapSettingsRequest settings;
    settings.width = 1024;
    settings.texcoord = 1;
    EXPECT_EQ("", app::settings_without_node(settings));
    settings.align = true;
    settings.max_charts = 5;
    EXPECT_EQ("max_charts, align", app::settings_without_node(settings));
}

TEST(PresetsRefuse, UnknownNames) {
    EXPECT_EQ(
        "there is no preset 'baked'; presets are bake, paint, hard_surface, organic, lightmap "
        "and FILE.json; did you mean bake?",
        refusal({"m.obj", "--preset", "baked"}));
}

TEST(PresetsRefuse, FilesThatAreNoSettings) {
    const test::Scratch dir;
    const auto with = [&](const std::string& text) {
        return refusal({"m.obj", "--preset", dir.put("x.json", text)});
    };
    const std::string start = "--preset " + dir.path("x.json") + ": ";
    EXPECT_EQ(start + "it is not JSON", with("{"));
    EXPECT_EQ(start + "the settings must be an object", with("[1]"));
    EXPECT_EQ(start + "the settings have no 'strech'", with(R"({"strech": 1})"));
    EXPECT_EQ(start + "'stretch' must be a number", with(R"({"stretch": "1"})"));
    EXPECT_EQ(start + "'width' must be a whole number", with(R"({"width": 1.5})"));
    EXPECT_EQ(start + "'width' must be a whole number", with(R"({"width": 1e20})"));
    EXPECT_EQ(start + "'high_quality' must be true or false", with(R"({"high_quality": 1})"));
    EXPECT_EQ(start + "'mapchannel' must be a text", with(R"({"mapchannel": 1})"));
    EXPECT_EQ("--preset: " + dir.path("gone.json") + ": cannot be read: No such file or directory",
              refusal({"m.obj", "--preset", dir.path("gone.json")}));
}

TEST(RequestJson, ReadsBackWhatItWrote) {
    app::UnwrapRequest r;
    r.input = "a \"b\".obj";
    r.output = "c.obj";
    r.report = "c.json";
    r.layout = "c.png";
    r.picture = "stretch";
    r.in_place = true;
    r.threads = 3;
    r.settings.stretch = 0.1;
    r.settings.keep_seams = true;
    app::UnwrapRequest read;
    std::string error;
    ASSERT_TRUE(request_from_json(request_to_json(r), read, error)) << error;
    EXPECT_EQ(request_to_json(r).dump(), request_to_json(read).dump());
    EXPECT_EQ("stretch", read.picture);
    EXPECT_EQ(3, read.threads);
    EXPECT_EQ(0.1, read.settings.stretch);
}

TEST(RequestJson, RefusesWhatIsNoRequest) {
    const auto refused = [](const char* text) {
        app::UnwrapRequest request;
        std::string error;
        EXPECT_FALSE(request_from_json(nlohmann::ordered_json::parse(text), request, error));
        return error;
    };
    EXPECT_EQ("requests must be objects", refused("7"));
    EXPECT_EQ("requests have no 'inputs'", refused(R"({"inputs": "a"})"));
    EXPECT_EQ("'input' must be a text", refused(R"({"input": 1})"));
    EXPECT_EQ("the settings have no 'x'", refused(R"({"settings": {"x": 1}})"));
}

TEST(Fingerprint, OfAFileIsThatOfItsBytes) {
    const test::Scratch dir;
    const std::string bytes(200000, 'x');
    dir.put("a", bytes);
    EXPECT_EQ(app::fingerprint(bytes), app::file_fingerprint(dir.path("a")));
    EXPECT_EQ(32u, app::fingerprint(bytes).size());
    EXPECT_NE(app::fingerprint(bytes), app::fingerprint(bytes + "y"));
    EXPECT_EQ("", app::file_fingerprint(dir.path("gone")));
}

} // namespace
