#include "app/batch_page.h"

#include "app/atomic_file.h"
#include "app/command.h"
#include "app/mesh_rows.h"
#include "app/page_source.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

namespace app {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

bool write_file(const std::string& path, const std::string& text, std::string& error) {
    AtomicFile file;
    return file.open(path, error) && file.write(text, error) && file.commit(error);
}

/// JSON that can stand inside a script element: no text in it ends the element.
std::string embedded(const Json& json) {
    std::string out;
    for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace))
        if (c == '<')
            out += "\\u003c";
        else
            out += c;
    return out;
}

/// Replaces each row's settings, which are mostly the same, by their place in a list.
Json share_settings(std::vector<std::vector<Json>>& meshes) {
    Json list = Json::array();
    std::map<std::string, size_t> places;
    for (std::vector<Json>& mesh : meshes)
        for (Json& row : mesh) {
            if (!row.is_object() || !row.contains("settings"))
                continue;
            const auto [known, is_new] = places.try_emplace(row["settings"].dump(), list.size());
            if (is_new)
                list.push_back(row["settings"]);
            row["settings"] = known->second;
        }
    return list;
}

} // namespace

std::string picture_folder(const std::string& folder) {
    return (fs::path(folder) / "pictures").generic_string();
}

bool make_page_folders(const std::string& folder, std::string& error) {
    std::error_code failure;
    fs::create_directories(picture_folder(folder), failure);
    if (failure)
        error = folder + ": the page's folder cannot be made: " + failure.message();
    return !failure;
}

bool write_page(BatchPage page, std::string& error) {
    if (!make_page_folders(page.folder, error))
        return false;
    const fs::path folder(page.folder), pictures(picture_folder(page.folder));
    std::vector<Json> rows;
    for (std::vector<Json>& mesh : page.meshes)
        for (Json& row : mesh) {
            if (row.is_object() && row.contains("picture") &&
                !file_exists((pictures / row["picture"].get<std::string>()).string()))
                row.erase("picture");
            if (row.is_object() && !page.rows_name.empty())
                rows.push_back(row);
        }
    if (!page.rows_name.empty() &&
        !write_file((folder / page.rows_name).string(), rows_text(rows), error))
        return false;
    Json data = {{"program", std::string("tessora ") + version()},
                 {"versions", Json::array()},
                 {"settings", share_settings(page.meshes)},
                 {"not_done", page.not_done}};
    for (const std::string& title : page.titles)
        data["versions"].push_back({{"title", title}});
    data["meshes"] = std::move(page.meshes);
    return write_file((folder / (page.name + ".html")).string(),
                      k_page_head + embedded(data) + k_page_tail, error);
}

void sweep_pictures(const std::string& folder) {
    std::set<std::string> named;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->path().extension() != ".jsonl")
            continue;
        std::ifstream lines(entry->path());
        for (std::string line; std::getline(lines, line);) {
            const Json row = Json::parse(line, nullptr, false);
            if (row.is_object() && row.contains("picture") && row["picture"].is_string())
                named.insert(row["picture"].get<std::string>());
        }
    }
    std::vector<fs::path> unnamed;
    for (fs::directory_iterator entry(picture_folder(folder), failure), end;
         !failure && entry != end; entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        if (is_thumbnails_name(name) && !named.count(name))
            unnamed.push_back(entry->path());
    }
    for (const fs::path& path : unnamed)
        fs::remove(path, failure);
}

} // namespace app
