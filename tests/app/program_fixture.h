/// Fixture for tests that run the built program.
#pragma once

#include "host/io/obj_reader.h"
#include "tests/app/meshes.h"
#include "tests/app/process.h"
#include "tests/app/scratch.h"

#include <nlohmann/json.hpp>

namespace test {

using Words = std::vector<std::string>;
using Json = nlohmann::json;

class Program : public testing::Test {
protected:
    /// Writes `text` as NAME and runs `tessora unwrap` on it with `words`; the report is NAME.json.
    Ended unwrap(const std::string& name, const std::string& text, Words words = {},
                 const Process::Setup& setup = {}) {
        words.insert(words.begin(),
                     {"unwrap", dir.put(name, text), "--report", dir.path(name + ".json")});
        return run(words, setup);
    }
    Json report(const std::string& name) const { return Json::parse(dir.get(name + ".json")); }

    /// Parses an OBJ file that the program wrote.
    host::ObjDocument read(const std::string& name) const {
        host::ObjDocument document;
        host::IoError error;
        EXPECT_TRUE(host::parse_obj(name, dir.get(name), document, error)) << error.message;
        return document;
    }
    /// Expects that every corner has a UV inside the unit square.
    void expect_unwrapped(const std::string& name) const {
        const host::ObjDocument document = read(name);
        for (const uint32_t id : document.corner_texture)
            ASSERT_NE(host::k_obj_none, id) << name;
        for (const float value : document.texture_coords) {
            ASSERT_GE(value, 0.0f) << name;
            ASSERT_LE(value, 1.0f) << name;
        }
    }
    /// Number of charts after unwrapping `text` with `words`.
    int charts(const std::string& text, const Words& words) {
        const Ended ended = unwrap("charts.obj", text, words);
        EXPECT_EQ(0, ended.code) << ended.err;
        return ended.code == 0 ? report("charts.obj")["charts"].get<int>() : -1;
    }
    /// The output file's content after unwrapping `text` with `words`.
    std::string result(const std::string& text, Words words = {}) {
        words.insert(words.end(), {"-o", dir.path("result.obj")});
        const Ended ended = unwrap("source.obj", text, words);
        EXPECT_EQ(0, ended.code) << ended.err;
        return dir.get("result.obj");
    }

    Scratch dir;
};

/// `text` without its `vt` lines and without the texture indices of its face corners.
inline std::string without_texture(const std::string& text) {
    std::istringstream in(text);
    std::string line, out;
    while (std::getline(in, line)) {
        if (line.compare(0, 3, "vt ") == 0)
            continue;
        if (line.compare(0, 2, "f ") == 0) {
            std::istringstream words(line);
            std::string word;
            line.clear();
            while (words >> word) {
                const size_t first = word.find('/'), second = word.find('/', first + 1);
                line += (line.empty() ? "" : " ") + word.substr(0, first);
                if (first != word.npos && second != word.npos)
                    line += "//" + word.substr(second + 1);
            }
        }
        out += line + "\n";
    }
    return out;
}

} // namespace test
