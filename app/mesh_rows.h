/// What pages and merged reports say of each mesh: a line from its report.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace app {

/// The figures, settings and names of one mesh as a flat object, from its report (report.h), which
/// lies in `report_file`.
nlohmann::ordered_json mesh_row(const nlohmann::ordered_json& report,
                                const std::string& report_file);

/// The file name of a mesh's thumbnails. It depends on everything that the pictures do, so that an
/// old picture never stands for a new result. "" if the report is of a failure.
std::string thumbnails_name(const nlohmann::ordered_json& report);

/// True for a name that thumbnails_name can return.
bool is_thumbnails_name(const std::string& name);

/// Whether an object is a report of `tessora unwrap`.
bool is_report(const nlohmann::ordered_json& json);

/// A row a line, in UTF-8.
std::string rows_text(const std::vector<nlohmann::ordered_json>& rows);

/// Reads the rows of meshes from a report, a file of rows or of the lines that --json_lines prints,
/// or a folder: that of a page (its meshes.jsonl), or else every report below it. Where a line
/// of --json_lines names a report that exists, the report counts. Appends them to `rows`.
/// Errors: false with a sentence in `error`.
bool read_rows(const std::string& path, std::vector<nlohmann::ordered_json>& rows,
               std::string& error);

/// Leaves one row for each report file, in byte order of the inputs: a result rather than a
/// failure, and else the last.
void merge_rows(std::vector<nlohmann::ordered_json>& rows);

} // namespace app
