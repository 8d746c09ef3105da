#include "app/mesh_rows.h"

#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/fingerprint.h"
#include "host/io/obj_reader.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

namespace app {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Rows = std::vector<Json>;

std::string dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool read_json(const std::string& path, Json& json) {
    std::string text;
    host::IoError failure;
    if (!host::read_text(path, text, failure))
        return false;
    json = Json::parse(text, nullptr, false);
    return !json.is_discarded();
}

/// A string member, or "".
std::string text_of(const Json& json, const char* key) {
    const auto found = json.find(key);
    return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// True if a line has what every row has.
bool is_row(const Json& json) {
    return json.is_object() && !text_of(json, "input").empty() && !text_of(json, "status").empty();
}

/// The members of a row that are what rows have: files can hold anything.
Json cleaned(const Json& row) {
    static const std::map<std::string, Json::value_t> kinds = [] {
        std::map<std::string, Json::value_t> list;
        for (const char* key : {"input", "output", "report", "status", "reason"})
            list[key] = Json::value_t::string;
        for (const char* key : {"code", "polygons", "triangles", "vertices", "charts", "stretch",
                                "coverage", "gap_texels", "seam_length", "density_mean",
                                "angle_error_mean", "area_distortion_mean", "seconds", "peak_mb"})
            list[key] = Json::value_t::number_float;
        list["settings"] = Json::value_t::object;
        return list;
    }();
    Json out = Json::object();
    for (const auto& [key, value] : row.items()) {
        const auto kind = kinds.find(key);
        if (kind != kinds.end() &&
            (value.type() == kind->second ||
             (kind->second == Json::value_t::number_float && value.is_number())))
            out[key] = value;
    }
    if (is_thumbnails_name(text_of(row, "picture")))
        out["picture"] = row["picture"];
    for (const Json& warning : row.value("warnings", Json::array()))
        if (warning.is_string())
            out["warnings"].push_back(warning);
    return out;
}

bool read_lines(const std::string& path, const std::string& text, Rows& rows, std::string& error) {
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        Json json = Json::parse(line, nullptr, false), report;
        if (json.is_object() && json.contains("summary"))
            continue;
        if (!is_row(json)) {
            error = path + ":" + std::to_string(number) + ": not a line about a mesh";
            return false;
        }
        const std::string file = text_of(json, "report");
        const bool is_complete = json.contains("settings"); // else a line of --json_lines
        if (!is_complete && !file.empty() && file_exists(file) && read_json(file, report) &&
            is_report(report))
            rows.push_back(cleaned(mesh_row(report, file)));
        else
            rows.push_back(cleaned(json));
    }
    return true;
}

bool read_folder(const fs::path& folder, Rows& rows, std::string& error) {
    const std::string list = (folder / "meshes.jsonl").string();
    if (file_exists(list))
        return read_rows(list, rows, error);
    std::error_code failure;
    std::vector<std::string> files;
    fs::recursive_directory_iterator entry(folder, failure), end;
    for (; !failure && entry != end; entry.increment(failure))
        if (lower_extension(entry->path().string()) == ".json")
            files.push_back(entry->path().generic_string());
    if (failure) {
        error = folder.string() + ": cannot be searched: " + failure.message();
        return false;
    }
    std::sort(files.begin(), files.end());
    const size_t before = rows.size();
    Json json;
    for (const std::string& file : files)
        if (read_json(file, json) && is_report(json))
            rows.push_back(cleaned(mesh_row(json, file)));
    if (rows.size() == before)
        error = folder.string() + ": the folder holds no report";
    return error.empty();
}

} // namespace

bool is_thumbnails_name(const std::string& name) {
    return name.size() == 36 && name.find_first_not_of("0123456789abcdef") == 32 &&
           name.substr(32) == ".png";
}

bool is_report(const Json& json) {
    return is_row(json) && json.contains("schema") &&
           text_of(json, "program").rfind("tessora", 0) == 0 && json.contains("settings");
}

std::string thumbnails_name(const Json& report) {
    const auto hashes = report.find("hashes");
    if (text_of(report, "status") != "ok" || hashes == report.end())
        return std::string();
    const std::string all = text_of(report, "program") + dumped(*hashes) +
                            dumped(report.value("settings", Json::object()));
    return fingerprint(all) + ".png";
}

Json mesh_row(const Json& report, const std::string& report_file) {
    Json row = Json::object();
    const auto copy = [&](const Json& from, const char* key) {
        const auto found = from.find(key);
        if (found != from.end() && !found->is_null())
            row[key] = *found;
    };
    for (const char* key : {"input", "output"})
        copy(report, key);
    row["report"] = report_file;
    for (const char* key :
         {"status", "code", "reason", "polygons", "triangles", "vertices", "charts", "stretch"})
        copy(report, key);
    const Json measures = report.value("measures", Json::object());
    for (const char* key : {"coverage", "gap_texels", "seam_length", "density_mean",
                            "angle_error_mean", "area_distortion_mean"})
        copy(measures, key);
    const Json seconds = report.value("seconds", Json::object());
    if (seconds.contains("total"))
        row["seconds"] = seconds["total"];
    for (const char* key : {"peak_mb", "warnings", "settings"})
        copy(report, key);
    if (const std::string picture = thumbnails_name(report); !picture.empty())
        row["picture"] = picture;
    return row;
}

std::string rows_text(const Rows& rows) {
    std::string text;
    for (const Json& row : rows)
        text += dumped(row) + "\n";
    return text;
}

bool read_rows(const std::string& path, Rows& rows, std::string& error) {
    std::error_code failure;
    if (fs::is_directory(path, failure))
        return read_folder(path, rows, error);
    std::string text;
    host::IoError unreadable;
    if (!host::read_text(path, text, unreadable)) {
        error = unreadable.message;
        return false;
    }
    const Json whole = Json::parse(text, nullptr, false);
    if (!is_report(whole))
        return read_lines(path, text, rows, error);
    rows.push_back(cleaned(mesh_row(whole, path)));
    return true;
}

void merge_rows(Rows& rows) {
    std::map<std::string, size_t> place;
    Rows merged;
    for (Json& row : rows) {
        const std::string name =
            text_of(row, "report").empty() ? text_of(row, "input") : text_of(row, "report");
        const std::string key = fs::path(name).lexically_normal().generic_string();
        const auto [known, is_new] = place.try_emplace(key, merged.size());
        if (is_new)
            merged.push_back(std::move(row));
        else if (text_of(row, "status") != "failed" ||
                 text_of(merged[known->second], "status") == "failed")
            merged[known->second] = std::move(row);
    }
    rows = std::move(merged);
    std::stable_sort(rows.begin(), rows.end(), [](const Json& a, const Json& b) {
        return text_of(a, "input") < text_of(b, "input");
    });
}

} // namespace app
