#include "window/input_queue.h"

#include <algorithm>

namespace window {

std::optional<InputEvent> InputQueue::next() {
    if (had_press_ || waiting_.empty()) {
        had_press_ = false;
        return std::nullopt;
    }
    const InputEvent event = waiting_.front();
    waiting_.pop_front();
    had_press_ = event.kind == InputEvent::Kind::key_press;
    if (event.kind == InputEvent::Kind::button_press)
        down_.insert(event.code);
    else if (event.kind == InputEvent::Kind::button_release)
        down_.erase(event.code);
    return event;
}

bool InputQueue::is_waiting(int key) const {
    return std::any_of(waiting_.begin(), waiting_.end(), [key](const InputEvent& event) {
        return event.kind == InputEvent::Kind::key_press && event.code == key;
    });
}

} // namespace window
