#include "app/report_command.h"

#include "app/atomic_file.h"
#include "app/batch_page.h"
#include "app/command.h"
#include "app/exit_code.h"
#include "app/mesh_rows.h"
#include "app/options.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

namespace app {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Rows = std::vector<Json>;

constexpr const char* k_usage =
    R"(usage: tessora report merge REPORTS... [-o FILE.jsonl] [--html DIR]
       tessora report compare A B [--html DIR]

merge    one line of JSON a mesh, in byte order of the inputs, and the failures
         on standard error. A mesh that several runs or shards tell of counts
         once: its result rather than a failure, and else the last.
compare  what is different between two batches: a line for each mesh with other
         figures, then the sums.
REPORTS, A and B are folders of results (every report below them counts), pages
(folders that --html wrote), files that --json_lines printed, or single reports.

examples:
  tessora report merge out
      all reports below out
  tessora report merge logs/shard-*.jsonl -o all.jsonl --html page
      what the shards of a farm printed, as one list and one page
  tessora report compare out_before out_after --html difference
      a page with both results of each mesh
)";

constexpr const char* k_notes = R"(
In option names - and _ are the same.

exit codes: 0 done, 1 a mesh of the merged ones has failed, 2 usage, 3 reports
missing or not readable, 7 the result cannot be written.
)";

struct Request {
    std::string verb;
    std::vector<std::string> sources;
    std::string output = "-", html;
    bool quiet = false, help = false;
};

OptionTable make_table(Request& request) {
    OptionTable table;
    table.heading("options (defaults in parentheses):");
    table.add("output", &request.output, "FILE.jsonl", "merge: the list of meshes");
    table.alias("-o");
    table.add("html", &request.html, "DIR",
              "write a page with the pictures that the sources' pages have: DIR/index.html");
    table.add("quiet", &request.quiet, "", "say nothing unless something fails");
    table.add("help", &request.help, "", "show this text");
    return table;
}

bool parse(const Words& words, Request& request, std::string& error) {
    if (!make_table(request).parse(words, request.sources, error) || request.help)
        return request.help;
    if (!request.sources.empty()) {
        request.verb = request.sources.front();
        request.sources.erase(request.sources.begin());
    }
    if (request.verb != "merge" && request.verb != "compare")
        error = request.verb.empty() ? "merge or compare?"
                                     : "'" + request.verb + "' is neither merge nor compare";
    else if (request.verb == "merge" && request.sources.empty())
        error = "merge needs reports: folders or files";
    else if (request.verb == "compare" && request.sources.size() != 2)
        error = "compare takes two batches";
    else if (request.verb == "compare" && request.output != "-")
        error = "-o is for merge; compare prints";
    return error.empty();
}

int fail(int code, const std::string& reason) {
    say(reason);
    return code;
}

/// Copies the pictures that the rows name from a source's page to the new one; a row whose picture
/// is not there loses it when the page is written.
void copy_pictures(const std::string& source, const Rows& rows, const std::string& html) {
    std::error_code ignored;
    const fs::path folder =
        fs::is_directory(source, ignored) ? fs::path(source) : fs::path(source).parent_path();
    for (const Json& row : rows) {
        const std::string picture = row.value("picture", "");
        if (picture.empty())
            continue;
        const fs::path to = fs::path(picture_folder(html)) / picture;
        if (!fs::exists(to, ignored))
            fs::copy_file(fs::path(picture_folder(folder.string())) / picture, to, ignored);
    }
}

bool has_failed(const Json& row) { return row.is_object() && row.value("status", "") == "failed"; }

int write_merged(const Request& request, Rows rows) {
    const auto count = [&](const char* status) {
        return std::count_if(rows.begin(), rows.end(),
                             [&](const Json& row) { return row.value("status", "") == status; });
    };
    const auto done = count("ok"), skipped = count("skipped"), failed = count("failed");
    const Json summary = {
        {"summary", true}, {"done", done + skipped}, {"failed", failed}, {"meshes", rows.size()}};
    AtomicFile file;
    std::string error;
    const std::string text = rows_text(rows) + summary.dump() + "\n";
    if (!file.open(request.output, error) || !file.write(text, error) || !file.commit(error))
        return fail(exit_output, error);
    for (const Json& row : rows)
        if (has_failed(row))
            say("code " + row.value("code", Json()).dump() + ": " +
                row.value("reason", row.value("input", "")));
    if (!request.html.empty()) {
        BatchPage page;
        page.folder = request.html;
        for (Json& row : rows)
            page.meshes.push_back({std::move(row)});
        if (!write_page(std::move(page), error))
            return fail(exit_output, error);
    }
    if (!request.quiet)
        say(std::to_string(done + skipped) + " done, " + std::to_string(failed) + " failed");
    return failed > 0 ? exit_unexpected : exit_done;
}

int merge(const Request& request) {
    Rows rows;
    std::string error;
    if (!request.html.empty() && !make_page_folders(request.html, error))
        return fail(exit_output, error);
    for (const std::string& source : request.sources) {
        Rows more;
        if (!read_rows(source, more, error))
            return fail(exit_input, error);
        if (!request.html.empty())
            copy_pictures(source, more, request.html);
        rows.insert(rows.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
    }
    merge_rows(rows);
    return write_merged(request, std::move(rows));
}

/// The reports' paths below the deepest folder that holds them all: equal for the same mesh in two
/// folders of results.
std::vector<std::string> places(const Rows& rows) {
    std::vector<fs::path> paths;
    for (const Json& row : rows)
        paths.push_back(fs::path(row.value("report", row.value("input", ""))).lexically_normal());
    fs::path common = paths.empty() ? fs::path() : paths.front().parent_path();
    for (const fs::path& path : paths) {
        const auto [end, ignored] =
            std::mismatch(common.begin(), common.end(), path.begin(), path.end());
        fs::path shared;
        for (auto part = common.begin(); part != end; ++part)
            shared /= *part;
        common = shared;
    }
    std::vector<std::string> names;
    for (const fs::path& path : paths)
        names.push_back(common.empty() ? path.generic_string()
                                       : path.lexically_relative(common).generic_string());
    return names;
}

/// Pairs the rows of two batches by the inputs, or else by the reports' places; null where one has
/// no such mesh.
std::vector<Rows> pair_up(const Rows& a, const Rows& b) {
    std::vector<std::string> names_a = places(a), names_b = places(b);
    std::map<std::string, size_t> by_input, by_place;
    for (size_t i = 0; i < b.size(); ++i) {
        by_input[b[i].value("input", "")] = i;
        by_place[names_b[i]] = i;
    }
    std::vector<char> taken(b.size(), 0);
    std::vector<Rows> pairs;
    for (size_t i = 0; i < a.size(); ++i) {
        auto found = by_input.find(a[i].value("input", ""));
        if (found == by_input.end()) {
            found = by_place.find(names_a[i]);
            if (found == by_place.end())
                found = by_input.end();
        }
        const bool has_other = found != by_input.end() && !taken[found->second];
        pairs.push_back({a[i], has_other ? b[found->second] : Json()});
        if (has_other)
            taken[found->second] = 1;
    }
    for (size_t i = 0; i < b.size(); ++i)
        if (!taken[i])
            pairs.push_back({Json(), b[i]});
    return pairs;
}

struct Figure {
    const char* name;
    const char* format;
};
constexpr Figure k_figures[] = {
    {"charts", "%.0f"}, {"stretch", "%.4f"}, {"coverage", "%.4f"}, {"seam_length", "%.5g"}};

double number_of(const Json& row, const char* name) {
    return row.contains(name) && row[name].is_number() ? row[name].get<double>() : -1.0;
}

std::string written(const Figure& figure, double value) {
    char text[48];
    std::snprintf(text, sizeof text, figure.format, value);
    return value < 0.0 ? "-" : text;
}

/// "charts 12 -> 9, stretch ..." for the figures that are different; "" if none is.
std::string difference(const Rows& pair) {
    for (int side = 0; side < 2; ++side)
        if (pair[size_t(side)].is_null())
            return std::string("only in ") + (side == 0 ? "B" : "A");
    const std::string states[] = {pair[0].value("status", ""), pair[1].value("status", "")};
    std::string text;
    if ((states[0] == "failed") != (states[1] == "failed"))
        text = states[0] + " -> " + states[1];
    for (const Figure& figure : k_figures) {
        const std::string before = written(figure, number_of(pair[0], figure.name));
        const std::string after = written(figure, number_of(pair[1], figure.name));
        if (before != after)
            text += (text.empty() ? "" : ", ") + std::string(figure.name) + " " + before + " -> " +
                    after;
    }
    return text;
}

void print_comparison(const std::vector<Rows>& pairs) {
    size_t different = 0;
    double charts[2] = {0, 0}, coverage[2] = {0, 0};
    size_t both = 0;
    for (const Rows& pair : pairs) {
        const std::string text = difference(pair);
        const Json& known = pair[0].is_null() ? pair[1] : pair[0];
        if (!text.empty())
            std::printf("%s: %s\n", one_line(known.value("input", "")).c_str(), text.c_str());
        different += !text.empty();
        if (pair[0].is_null() || pair[1].is_null() || number_of(pair[0], "charts") < 0.0 ||
            number_of(pair[1], "charts") < 0.0)
            continue;
        ++both;
        for (size_t side = 0; side < 2; ++side) {
            charts[side] += number_of(pair[side], "charts");
            coverage[side] += std::max(0.0, number_of(pair[side], "coverage"));
        }
    }
    std::printf("%zu of %zu meshes differ\n", different, pairs.size());
    if (both > 0)
        std::printf("of the %zu with results in both: charts %.0f -> %.0f, mean coverage "
                    "%.4f -> %.4f\n",
                    both, charts[0], charts[1], coverage[0] / double(both),
                    coverage[1] / double(both));
}

int compare(const Request& request) {
    std::string error;
    Rows rows[2];
    if (!request.html.empty() && !make_page_folders(request.html, error))
        return fail(exit_output, error);
    for (size_t side = 0; side < 2; ++side) {
        if (!read_rows(request.sources[side], rows[side], error))
            return fail(exit_input, error);
        merge_rows(rows[side]);
        if (!request.html.empty())
            copy_pictures(request.sources[side], rows[side], request.html);
    }
    std::vector<Rows> pairs = pair_up(rows[0], rows[1]);
    print_comparison(pairs);
    if (request.html.empty())
        return exit_done;
    BatchPage page;
    page.folder = request.html;
    page.rows_name.clear();
    page.titles = request.sources;
    page.meshes = std::move(pairs);
    return write_page(std::move(page), error) ? exit_done : fail(exit_output, error);
}

} // namespace

CommandHelp report_help() {
    Request defaults;
    return {k_usage, make_table(defaults), k_notes, {"merge", "compare"}};
}

int report_command(const Words& words) {
    Request request;
    std::string error;
    if (!parse(words, request, error)) {
        say(error + "\nsee 'tessora report --help'");
        return exit_usage;
    }
    if (request.help) {
        std::fputs(report_help().text().c_str(), stdout);
        return exit_done;
    }
    return request.verb == "merge" ? merge(request) : compare(request);
}

} // namespace app
