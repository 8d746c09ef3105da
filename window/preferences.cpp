#include "window/preferences.h"

#include "host/commands/session.h"

#include <algorithm>
#include <cstdio>

namespace window {
namespace {

using host::script::quoted;
using host::script::Session;

constexpr const char* k_recent = "tessora_window_recent_files";
constexpr size_t k_max_recent = 10;

/// Runs statements that make no undo entry; returns no value if the variable does not exist.
host::script::Value run(const std::string& statements) {
    return Session::current().run(statements, "window", false).value;
}

bool exists(const char* name) { return run("optionVar -exists " + quoted(name) + ";").truth(); }

} // namespace

double preference(const char* name, double absent) {
    return exists(name) ? run("optionVar -q " + quoted(name) + ";").to_real() : absent;
}

void set_preference(const char* name, double value) {
    char number[40];
    std::snprintf(number, sizeof number, "%.6f", value);
    run("optionVar -fv " + quoted(name) + " " + number + ";");
}

std::vector<std::string> recent_files() {
    if (!exists(k_recent))
        return {};
    return run(std::string("optionVar -q ") + k_recent + ";").flattened();
}

void add_recent_file(const std::string& path) {
    std::vector<std::string> files = recent_files();
    files.erase(std::remove(files.begin(), files.end(), path), files.end());
    files.insert(files.begin(), path);
    files.resize(std::min(files.size(), k_max_recent));
    std::string statement = std::string("optionVar -rm ") + k_recent;
    for (const std::string& file : files)
        statement += std::string(" -sva ") + k_recent + " " + quoted(file);
    run(statement + ";");
}

} // namespace window
