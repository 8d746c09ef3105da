#include "window/input_queue.h"

#include <gtest/gtest.h>

namespace {

using namespace window;
using Kind = InputEvent::Kind;

TEST(InputQueue, KeyAndClickBetweenTwoFramesComeOneAfterTheOther) {
    InputQueue queue;
    queue.add({Kind::key_press, 90, 2, 0.0, 0.0});
    queue.add({Kind::button_press, 0, 0, 10.0, 20.0});
    queue.add({Kind::button_release, 0, 0, 11.0, 21.0});
    const auto key = queue.next();
    ASSERT_TRUE(key);
    EXPECT_EQ(90, key->code);
    EXPECT_EQ(2, key->modifiers);
    EXPECT_FALSE(queue.is_down(0));
    EXPECT_FALSE(queue.next()) << "the frame in which the key is released";
    const auto press = queue.next();
    ASSERT_TRUE(press);
    EXPECT_EQ(10.0, press->x);
    EXPECT_EQ(0, press->modifiers);
    EXPECT_TRUE(queue.is_down(0));
    const auto release = queue.next();
    ASSERT_TRUE(release);
    EXPECT_EQ(21.0, release->y);
    EXPECT_FALSE(queue.is_down(0));
}

TEST(InputQueue, TwoClicksBetweenTwoFramesAreTwo) {
    InputQueue queue;
    for (int i = 0; i < 2; ++i) {
        queue.add({Kind::button_press, 0, 0, 0.0, 0.0});
        queue.add({Kind::button_release, 0, 0, 0.0, 0.0});
    }
    for (const bool is_down : {true, false, true, false}) {
        EXPECT_TRUE(queue.next());
        EXPECT_EQ(is_down, queue.is_down(0));
    }
    EXPECT_FALSE(queue.next());
}

TEST(InputQueue, IsIdleOnceTheKeyWasReleased) {
    InputQueue queue;
    EXPECT_TRUE(queue.is_idle());
    queue.add({Kind::key_press, 65, 0, 0.0, 0.0});
    EXPECT_TRUE(queue.is_waiting(65));
    EXPECT_FALSE(queue.is_idle());
    queue.next();
    EXPECT_FALSE(queue.is_waiting(65));
    EXPECT_FALSE(queue.is_idle());
    queue.next();
    EXPECT_TRUE(queue.is_idle());
}

TEST(InputQueue, NextEventCanBeSeenBeforeItIsFed) {
    InputQueue queue;
    EXPECT_EQ(nullptr, queue.waiting());
    queue.add({Kind::button_press, 1, 0, 3.0, 4.0});
    ASSERT_NE(nullptr, queue.waiting());
    EXPECT_EQ(3.0, queue.waiting()->x);
    EXPECT_FALSE(queue.is_down(1));
}

} // namespace
