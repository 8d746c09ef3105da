#include "window/input_queue.h"

#include <gtest/gtest.h>

namespace {

using namespace window;
using Kind = InputEvent::Kind;

InputEvent press(float x, float y) { return {Kind::button_press, 0, 0, x, y}; }
InputEvent release(float x, float y) { return {Kind::button_release, 0, 0, x, y}; }

constexpr InputQueue::Seen k_in_field{0.0f, 0.0f, true};

/// A key without a character, such as F5.
InputEvent key(int code, int modifiers = 0) { return {Kind::key_press, code, modifiers}; }

void type(InputQueue& queue, const char* text) {
    for (; *text; ++text) {
        InputEvent event = key(*text);
        event.is_text = true;
        queue.add(event);
        queue.add({Kind::character, *text});
    }
}

/// A frame without a text field, the pointer at the origin.
std::vector<InputEvent> next(InputQueue& queue) { return queue.next({}); }

/// The frames that pass with nothing to feed, until one of them gets something.
int quiet_frames(InputQueue& queue, std::vector<InputEvent>& events,
                 const InputQueue::Seen& seen = {}) {
    int count = 0;
    for (events = queue.next(seen); events.empty() && count < 100; ++count)
        events = queue.next(seen);
    return count;
}

std::string text_of(const std::vector<InputEvent>& events) {
    std::string text;
    for (const InputEvent& event : events)
        text += event.kind == Kind::character ? static_cast<char>(event.code) : '?';
    return text;
}

TEST(InputQueue, ClickAfterKeyWaitsForWhatTheKeyOpens) {
    InputQueue queue;
    queue.add(key(90, 2));
    queue.add(press(0.0f, 0.0f));
    queue.add(release(0.0f, 0.0f));
    std::vector<InputEvent> events;
    EXPECT_EQ(0, quiet_frames(queue, events));
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(90, events[0].code);
    EXPECT_EQ(2, events[0].modifiers);
    EXPECT_FALSE(queue.is_down(0));
    EXPECT_EQ(InputQueue::k_settling, quiet_frames(queue, events));
    ASSERT_EQ(1u, events.size());
    EXPECT_TRUE(queue.is_down(0));
    EXPECT_EQ(0, quiet_frames(queue, events));
    EXPECT_FALSE(queue.is_down(0));
}

TEST(InputQueue, TwoClicksBetweenTwoFramesAreTwo) {
    InputQueue queue;
    for (int i = 0; i < 2; ++i) {
        queue.add(press(0.0f, 0.0f));
        queue.add(release(0.0f, 0.0f));
    }
    for (const bool is_down : {true, false, true, false}) {
        EXPECT_EQ(1u, next(queue).size());
        EXPECT_EQ(is_down, queue.is_down(0));
    }
    EXPECT_TRUE(next(queue).empty());
}

TEST(InputQueue, PointerIsSeenWhereAButtonMovesBeforeItMoves) {
    InputQueue queue;
    queue.add(press(10.0f, 20.0f));
    queue.add(release(15.0f, 20.0f));
    InputQueue::Seen seen{3.0f, 4.0f, false};
    for (const auto kind : {Kind::motion, Kind::button_press, Kind::motion, Kind::button_release}) {
        const auto events = queue.next(seen);
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ(kind, events[0].kind);
        EXPECT_EQ(queue.is_down(0) ? (kind == Kind::motion ? 15.0f : 10.0f)
                                   : (kind == Kind::motion ? 10.0f : 15.0f),
                  events[0].x);
        seen = {events[0].x, events[0].y, false};
    }
    EXPECT_FALSE(queue.is_down(0));
}

TEST(InputQueue, MotionsInARowComeInOneFrameBeforeTheButtonThatEndsThem) {
    InputQueue queue;
    queue.add(press(0.0f, 0.0f));
    queue.add({Kind::motion, 0, 0, 1.0f, 2.0f});
    queue.add({Kind::motion, 0, 0, 3.0f, 4.0f});
    queue.add(release(3.0f, 4.0f));
    next(queue);
    const auto motions = next(queue);
    ASSERT_EQ(2u, motions.size());
    EXPECT_EQ(1.0f, motions[0].x);
    EXPECT_EQ(4.0f, motions[1].y);
    EXPECT_TRUE(queue.is_down(0));
    const auto end = queue.next({3.0f, 4.0f, false});
    ASSERT_EQ(1u, end.size());
    EXPECT_EQ(Kind::button_release, end[0].kind);
}

TEST(InputQueue, IsIdleOnceTheKeyHasTakenEffect) {
    InputQueue queue;
    EXPECT_TRUE(queue.is_idle());
    queue.add(key(65));
    EXPECT_TRUE(queue.is_waiting(65));
    EXPECT_FALSE(queue.is_idle());
    next(queue);
    EXPECT_FALSE(queue.is_waiting(65));
    for (int i = 0; i < InputQueue::k_settling; ++i) {
        EXPECT_FALSE(queue.is_idle());
        next(queue);
    }
    EXPECT_TRUE(queue.is_idle());
}

TEST(InputQueue, NextEventCanBeSeenBeforeItIsFed) {
    InputQueue queue;
    EXPECT_EQ(nullptr, queue.waiting());
    queue.add({Kind::button_press, 1, 0, 3.0f, 4.0f});
    ASSERT_NE(nullptr, queue.waiting());
    EXPECT_EQ(3.0f, queue.waiting()->x);
    EXPECT_FALSE(queue.is_down(1));
    EXPECT_TRUE(queue.is_held(1));
    queue.add({Kind::button_release, 1, 0, 3.0f, 4.0f});
    EXPECT_FALSE(queue.is_held(1));
}

TEST(InputQueue, TextForAFieldComesInOneFrameAndTheKeyAfterItInTheNext) {
    InputQueue queue;
    type(queue, "cube");
    queue.add(key(257));
    EXPECT_EQ("cube", text_of(queue.next(k_in_field)));
    const auto enter = queue.next(k_in_field);
    ASSERT_EQ(1u, enter.size());
    EXPECT_EQ(257, enter[0].code);
}

TEST(InputQueue, TextAfterAKeyWaitsForTheFieldThatItOpens) {
    InputQueue queue;
    queue.add(key(294));
    type(queue, "cs");
    std::vector<InputEvent> events;
    quiet_frames(queue, events);
    EXPECT_EQ(InputQueue::k_settling, quiet_frames(queue, events, k_in_field));
    EXPECT_EQ("cs", text_of(events));
}

TEST(InputQueue, TextAfterAClickWaitsForTheFieldThatIsClicked) {
    InputQueue queue;
    queue.add(press(0.0f, 0.0f));
    queue.add(release(0.0f, 0.0f));
    type(queue, "7");
    std::vector<InputEvent> events;
    quiet_frames(queue, events);
    quiet_frames(queue, events);
    EXPECT_EQ(InputQueue::k_settling, quiet_frames(queue, events, k_in_field));
    EXPECT_EQ("7", text_of(events));
}

TEST(InputQueue, KeysThatTypeAreShortcutsWithoutAField) {
    InputQueue queue;
    type(queue, "cs");
    std::vector<InputEvent> events;
    for (const char code : {'c', 's'}) {
        quiet_frames(queue, events);
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ(Kind::key_press, events[0].kind);
        EXPECT_EQ(code, events[0].code);
    }
    // A field that a shortcut opens does not get the character of that key.
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(queue.next(k_in_field).empty());
}

TEST(InputQueue, CharacterWithoutAKeyOfItsOwnIsTyped) {
    InputQueue queue;
    queue.add({Kind::character, 'e'});
    EXPECT_EQ("e", text_of(queue.next(k_in_field)));
}

} // namespace
