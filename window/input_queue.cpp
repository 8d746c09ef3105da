#include "window/input_queue.h"

#include <algorithm>

namespace window {
namespace {

using Kind = InputEvent::Kind;

bool is_by_mouse(const InputEvent& event) {
    return event.kind != Kind::key_press && event.kind != Kind::character;
}

} // namespace

void InputQueue::add(const InputEvent& event) {
    waiting_.push_back(event);
    if (event.kind == Kind::button_press)
        held_.insert(event.code);
    else if (event.kind == Kind::button_release)
        held_.erase(event.code);
}

std::vector<InputEvent> InputQueue::next(const Seen& seen) {
    const bool is_settled = quiet_frames_ >= k_settling;
    quiet_frames_ = std::min(quiet_frames_ + 1, k_settling);
    if (waiting_.empty())
        return {};
    // Buttons follow each other at once, or two clicks would not be a double click.
    if (!is_settled && (was_key_ || !is_by_mouse(waiting_.front())))
        return {};
    if (waiting_.front().kind == Kind::motion)
        return take_motions();
    if (is_by_mouse(waiting_.front()))
        return {take_button(seen)};
    std::vector<InputEvent> typed = take_text(seen.takes_text);
    if (typed.empty() && !waiting_.empty() && waiting_.front().kind == Kind::key_press)
        return {take_key()};
    return typed;
}

std::vector<InputEvent> InputQueue::take_motions() {
    std::vector<InputEvent> motions;
    for (; !waiting_.empty() && waiting_.front().kind == Kind::motion; waiting_.pop_front())
        motions.push_back(waiting_.front());
    return motions;
}

std::vector<InputEvent> InputQueue::take_text(bool takes_text) {
    std::vector<InputEvent> typed;
    for (; !waiting_.empty(); waiting_.pop_front()) {
        const InputEvent& event = waiting_.front();
        if (event.kind == Kind::character) {
            if (!was_shortcut_)
                typed.push_back(event);
        } else if (takes_text && event.is_text) {
            was_shortcut_ = false;
        } else {
            break;
        }
    }
    return typed;
}

InputEvent InputQueue::take_key() {
    const InputEvent event = waiting_.front();
    waiting_.pop_front();
    quiet_frames_ = 0;
    was_key_ = true;
    was_shortcut_ = event.is_text;
    return event;
}

InputEvent InputQueue::take_button(const Seen& seen) {
    InputEvent event = waiting_.front();
    quiet_frames_ = 0;
    was_key_ = false;
    if (event.x != seen.x || event.y != seen.y) {
        event.kind = Kind::motion;
        return event;
    }
    waiting_.pop_front();
    if (event.kind == Kind::button_press)
        down_.insert(event.code);
    else
        down_.erase(event.code);
    return event;
}

bool InputQueue::is_waiting(int key) const {
    return std::any_of(waiting_.begin(), waiting_.end(), [key](const InputEvent& event) {
        return event.kind == Kind::key_press && event.code == key;
    });
}

} // namespace window
