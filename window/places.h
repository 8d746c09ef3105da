/// Where things stand in the window, by name: for programs that drive it (tests, screen readers)
/// and have no eyes.
///
/// The file has one line per thing that was on the screen in the last frame: NAME, left, top,
/// width, height in pixels of the window, separated by tabs. It is replaced as a whole, and only
/// when something moved.
#pragma once

#include <string>

namespace window {

class Places {
public:
    /// Empty: nothing is written.
    explicit Places(std::string file = std::string()) : file_(std::move(file)) {}

    void begin_frame() { now_.clear(); }
    void add(const std::string& name, float left, float top, float width, float height);
    /// The item that was drawn last under a name.
    void add_item(const std::string& name);
    void end_frame();

private:
    std::string file_;
    std::string now_, written_;
};

} // namespace window
