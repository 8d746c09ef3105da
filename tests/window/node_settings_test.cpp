#include "window/node_settings.h"

#include <gtest/gtest.h>

namespace {

using app::UnwrapSettingsRequest;
using window::statement_changing;

TEST(NodeSettings, SettingsThatAreThereAlreadyNeedNoStatement) {
    EXPECT_EQ("", statement_changing("unwrap1", UnwrapSettingsRequest(), UnwrapSettingsRequest()));
}

TEST(NodeSettings, EveryChangeIsInOneBlockAsOneStepOfUndo) {
    UnwrapSettingsRequest wanted;
    wanted.stretch = 0.25;
    wanted.high_quality = true;
    wanted.width = 2048;
    EXPECT_EQ("{ setAttr \"unwrap1.Stretch\" 0.25; setAttr \"unwrap1.Texture_Width\" 2048; "
              "setAttr \"unwrap1.High_Quality\" 1; }",
              statement_changing("unwrap1", UnwrapSettingsRequest(), wanted));
}

TEST(NodeSettings, NumbersThatTheNodeKeepsInSinglePrecisionAreNoChange) {
    UnwrapSettingsRequest now, wanted;
    now.stretch = static_cast<double>(0.1f);
    wanted.stretch = 0.1;
    EXPECT_EQ("", statement_changing("unwrap1", now, wanted));
}

TEST(NodeSettings, UvSetOfTheMeshStays) {
    UnwrapSettingsRequest wanted;
    wanted.mapchannel = "lightmap";
    EXPECT_EQ("", statement_changing("unwrap1", UnwrapSettingsRequest(), wanted));
}

} // namespace
