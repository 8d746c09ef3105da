/// Keys, typed characters and mouse buttons in the order in which they happened.
///
/// The user interface looks at the state of keys and buttons once per frame. Fed in small steps,
/// one for each frame, it sees every press, however many happen between two frames, with the
/// modifiers and the pointer's position of that moment.
#pragma once

#include <deque>
#include <set>
#include <vector>

namespace window {

struct InputEvent {
    enum class Kind { key_press, character, motion, button_press, button_release };
    Kind kind = Kind::key_press;
    int code = 0; ///< key or button, as GLFW numbers them, or a Unicode character
    int modifiers = 0;
    float x = 0.0f, y = 0.0f; ///< of the pointer, in pixels; buttons and motion only
    bool is_text = false; ///< a key that types a character, which follows as an event of its own
};

class InputQueue {
public:
    /// Frames after a key or a button before the next key: the focus that it moved, or the dialog
    /// that it opened, takes input by then.
    static constexpr int k_settling = 4;

    void add(const InputEvent& event);
    /// What the last frame saw.
    struct Seen {
        float x = 0.0f, y = 0.0f; ///< of the pointer, in pixels
        /// A text field is active, which takes characters instead of the keys that type them;
        /// otherwise these keys are fed, and not their characters.
        bool takes_text = false;
    };
    /// The events of the next frame: none, one key, one button, or characters typed or motions made
    /// in a row. A button that moves where the pointer was not seen comes after a motion to that
    /// place.
    std::vector<InputEvent> next(const Seen& seen);
    /// The event that a later frame gets; null if none waits.
    const InputEvent* waiting() const { return waiting_.empty() ? nullptr : &waiting_.front(); }
    /// Whether a key press has not been fed yet.
    bool is_waiting(int key) const;
    /// Whether a button is down, as of the last event fed.
    bool is_down(int button) const { return down_.count(button) != 0; }
    bool is_any_down() const { return !down_.empty(); }
    /// Whether a button is down, as of the last event added.
    bool is_held(int button) const { return held_.count(button) != 0; }
    bool is_any_held() const { return !held_.empty(); }
    /// No frame is needed for events that happened.
    bool is_idle() const { return waiting_.empty() && quiet_frames_ >= k_settling; }

private:
    std::vector<InputEvent> take_motions();
    std::vector<InputEvent> take_text(bool takes_text);
    InputEvent take_key();
    InputEvent take_button(const Seen& seen);

    std::deque<InputEvent> waiting_;
    std::set<int> down_, held_;
    int quiet_frames_ = k_settling; ///< since the last key or button, at most k_settling
    bool was_key_ = false;          ///< that was a key
    bool was_shortcut_ = false;     ///< the last key was fed, not the character that it types
};

} // namespace window
