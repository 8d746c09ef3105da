#include "host/commands/session.h"
#include "window/layout.h"
#include "window/preferences.h"
#include "window/settings.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace window;
using host::script::Session;

/// Keeps the preferences of these tests in memory, out of the user's own file.
const int k_no_file = [] {
#if defined(_WIN32)
    return ::_putenv("TESSORA_PREFERENCES=");
#else
    return ::setenv("TESSORA_PREFERENCES", "", 1);
#endif
}();

class SettingsTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        Session::current().interpreter().script_path().push_back(TESSORA_SCRIPTS);
    }
};

TEST_F(SettingsTest, EverySettingOfTheDialogHasItsLabelAndHelp) {
    const auto settings = read_settings();
    ASSERT_EQ(14u, settings.size());
    EXPECT_EQ("Keep seams", settings.at("Keep_Borders").label);
    EXPECT_EQ("Width", settings.at("Texture_Width").label);
    for (const auto& [attribute, setting] : settings) {
        EXPECT_FALSE(setting.label.empty()) << attribute;
        EXPECT_NE(std::string::npos, setting.help.find("Default: ")) << attribute;
    }
}

TEST_F(SettingsTest, HelpNamesUnitAndDefault) {
    const auto settings = read_settings();
    EXPECT_EQ("Gutter between charts, in texels, 0 to 32. Default: 2.",
              settings.at("Padding").help);
    EXPECT_NE(std::string::npos, settings.at("Groove_Angle").help.find("in degrees"));
    EXPECT_NE(std::string::npos, settings.at("High_Quality").help.find("Default: off."));
}

TEST_F(SettingsTest, SettingsWithoutEffectAreMarkedAndComeLast) {
    const auto settings = read_settings();
    for (const auto& [attribute, setting] : settings) {
        const bool is_idle =
            attribute == "Charts" || attribute == "Adjacency_Method" || attribute == "Epsilon";
        EXPECT_EQ(!is_idle, setting.has_effect) << attribute;
        EXPECT_EQ(is_idle, setting.row >= 11) << attribute;
        EXPECT_EQ(is_idle, setting.help.find("Without effect") == 0) << attribute;
    }
}

TEST(Preferences, NumbersAreKept) {
    EXPECT_EQ(0.5, preference("tessora_window_test", 0.5));
    set_preference("tessora_window_test", 0.25);
    EXPECT_EQ(0.25, preference("tessora_window_test", 0.5));
    Session::current().run("optionVar -rm tessora_window_test;", "test");
}

TEST(Preferences, RecentFilesAreTheNewestTenEachOnce) {
    Session::current().run("optionVar -rm tessora_window_recent_files;", "test");
    EXPECT_TRUE(recent_files().empty());
    for (int i = 0; i < 12; ++i)
        add_recent_file("/meshes/" + std::to_string(i) + " \"a\".obj");
    add_recent_file("/meshes/5 \"a\".obj");
    const auto files = recent_files();
    ASSERT_EQ(10u, files.size());
    EXPECT_EQ("/meshes/5 \"a\".obj", files[0]);
    EXPECT_EQ("/meshes/11 \"a\".obj", files[1]);
    EXPECT_EQ(1, std::count(files.begin(), files.end(), files[0]));
    Session::current().run("optionVar -rm tessora_window_recent_files;", "test");
}

TEST(Preferences, PreferencesMakeNoUndoEntry) {
    Session::current().run("polyCube -n kept; undoInfo -state on;", "test");
    const auto name = [] {
        return Session::current().run("undoInfo -q -undoName;", "test").value.to_string();
    };
    const std::string before = name();
    set_preference("tessora_window_test", 1.0);
    EXPECT_EQ(before, name());
    Session::current().run("optionVar -rm tessora_window_test; file -new -f;", "test");
}

TEST(AreaShares, NoAreaVanishes) {
    AreaShares shares;
    shares.right = -1.0f;
    shares.console = 9.0f;
    shares.texture = 0.8f;
    shares.results = 0.6f;
    shares.limit();
    EXPECT_GT(shares.right, 0.1f);
    EXPECT_LT(shares.console, 0.8f);
    EXPECT_LT(shares.texture + shares.results, 1.0f);
}

TEST(AreaShares, AreRemembered) {
    AreaShares shares;
    shares.right = 0.5f;
    shares.console = 0.3f;
    remember_shares(shares);
    EXPECT_EQ(0.5f, remembered_shares().right);
    EXPECT_EQ(0.3f, remembered_shares().console);
    remember_shares(AreaShares());
}

} // namespace
