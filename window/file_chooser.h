/// A modal file dialog: a folder listing and a path field, usable by mouse or keyboard.
#pragma once

#include "window/state.h"

#include <functional>
#include <string>
#include <vector>

namespace window {

class FileChooser {
public:
    /// Opens the dialog at `path`. `extensions`: lower case with dot; only these files and folders
    /// are listed. Calls `done` with the chosen path; not called on cancel.
    void ask(const std::string& title, const std::string& button, const std::string& path,
             std::vector<std::string> extensions, std::function<void(const std::string&)> done);
    void draw(State& state);
    bool is_open() const { return is_open_; }

private:
    struct Entry {
        std::string name;
        bool is_folder;
    };
    void list();
    void draw_entries(State& state);
    void choose();

    bool is_open_ = false, wants_open_ = false;
    std::string title_, button_, path_, folder_;
    std::vector<std::string> extensions_;
    std::vector<Entry> entries_;
    std::function<void(const std::string&)> done_;
};

} // namespace window
