/// Key presses and mouse buttons in the order in which they happened.
///
/// The user interface looks at the state of keys and buttons once per frame. Fed one event per
/// frame, it sees every press, however many happen between two frames, with the modifiers and the
/// pointer's position of that moment.
#pragma once

#include <deque>
#include <optional>
#include <set>

namespace window {

struct InputEvent {
    enum class Kind { key_press, button_press, button_release };
    Kind kind = Kind::key_press;
    int code = 0; ///< key or button, as GLFW numbers them
    int modifiers = 0;
    double x = 0.0, y = 0.0; ///< of the pointer, in pixels; buttons only
};

class InputQueue {
public:
    void add(const InputEvent& event) { waiting_.push_back(event); }
    /// The event of the next frame. None if nothing happened, and in the frame after a key press,
    /// which must see the key released.
    std::optional<InputEvent> next();
    /// The event that the frame after this one may get; null if none waits.
    const InputEvent* waiting() const { return waiting_.empty() ? nullptr : &waiting_.front(); }
    /// Whether a key press has not been fed yet.
    bool is_waiting(int key) const;
    /// Whether a button is down, as of the last event fed.
    bool is_down(int button) const { return down_.count(button) != 0; }
    /// No frame is needed for events that happened.
    bool is_idle() const { return waiting_.empty() && !had_press_; }

private:
    std::deque<InputEvent> waiting_;
    std::set<int> down_;
    bool had_press_ = false;
};

} // namespace window
