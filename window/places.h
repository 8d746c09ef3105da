/// Widget positions by name, written to a file for programs that operate the window (UI tests).
///
/// The file has one line per widget drawn in the last frame: NAME, left, top, width, height in
/// window pixels, separated by tabs. It is replaced atomically, and only when a line changed.
#pragma once

#include <string>

namespace window {

class Places {
public:
    /// `file`: where to write; empty disables writing.
    explicit Places(std::string file = std::string()) : file_(std::move(file)) {}

    bool is_kept() const { return !file_.empty(); }
    void begin_frame() { now_.clear(); }
    void add(const std::string& name, float left, float top, float width, float height);
    /// Adds the ImGui item drawn last; also NAME/active and NAME/focused if it is.
    void add_item(const std::string& name);
    void end_frame();
    /// Adds "settled" until the next frame: nothing moves until something happens.
    void mark_settled();

private:
    void write();
    std::string file_;
    std::string now_, written_;
};

} // namespace window
