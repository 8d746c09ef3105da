/// A temporary directory, removed with its content when the test ends.
#pragma once

#include "tests/fixtures/temporary.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <vector>

namespace test {

class Scratch {
public:
    Scratch() {
        std::string name = fixtures::temporary_template("tessora.");
        root_ = ::mkdtemp(name.data());
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::permissions(root_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(root_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const { return root_ + "/" + name; }
    std::string root() const { return root_; }

    std::string put(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string get(const std::string& name) const {
        std::ostringstream out;
        out << std::ifstream(path(name), std::ios::binary).rdbuf();
        return out.str();
    }
    bool has(const std::string& name) const { return std::filesystem::exists(path(name)); }
    /// File names in the directory, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(root_))
            found.push_back(entry.path().filename());
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::string root_;
};

using Names = std::vector<std::string>;

} // namespace test
