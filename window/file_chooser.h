/// Asks for a file: a folder's content to walk through, and a field for the path. Mouse or keys.
#pragma once

#include "window/state.h"

#include <functional>
#include <string>
#include <vector>

namespace window {

class FileChooser {
public:
    /// `path`: where to begin. `extensions`: lower case, with dots; folders are always shown.
    /// `done` gets the path that was chosen.
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
