/// The page of a batch: a folder with an HTML file that works without a network, its pictures, and
/// its figures for programs.
///
///   index.html      the page (app/page/), for a shard shard-K-of-N.html
///   meshes.jsonl    a row a mesh (mesh_rows.h), for a shard shard-K-of-N.jsonl
///   pictures/       thumbnails, named after what they show
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace app {

struct BatchPage {
    std::string folder;
    std::string name = "index";             ///< of the page, without extension
    std::string rows_name = "meshes.jsonl"; ///< "" for none
    /// What is compared; one title, which is not shown, if nothing is.
    std::vector<std::string> titles = {""};
    /// Per mesh a row for each title; null where there is none.
    std::vector<std::vector<nlohmann::ordered_json>> meshes;
    size_t not_done = 0; ///< meshes that an interrupted batch has not begun or finished
};

/// The folder of a page's pictures.
std::string picture_folder(const std::string& folder);

/// Makes the folders.
/// Errors (here and below): false with a sentence in `error`.
bool make_page_folders(const std::string& folder, std::string& error);

/// Writes the page and its rows. A row's `picture` is left out if there is no such file.
bool write_page(BatchPage page, std::string& error);

/// Removes the pictures that no list of rows in the folder names. Failures are ignored.
void sweep_pictures(const std::string& folder);

} // namespace app
