#include "app/batch_plan.h"

#include "app/exit_code.h"
#include "app/file_formats.h"
#include "app/glob.h"
#include "host/io/obj_reader.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

namespace app {
namespace {

namespace fs = std::filesystem;

/// A file to read, and its path below the output folder.
struct Source {
    std::string input;
    std::string place;
    bool was_found = false; ///< by searching a folder or a pattern, not named by the user
};

/// The file's path without links and dots, equal for all spellings.
class Identities {
public:
    std::string operator()(const fs::path& path) {
        const fs::path folder = path.parent_path();
        auto [known, is_new] = folders_.try_emplace(folder.string());
        std::error_code failure;
        if (is_new)
            known->second = fs::weakly_canonical(folder.empty() ? "." : folder, failure);
        const fs::path file = known->second / path.filename();
        const bool is_link = fs::is_symlink(file, failure);
        return (is_link ? fs::weakly_canonical(file, failure) : file).generic_string();
    }

private:
    std::map<std::string, fs::path> folders_;
};

class Planner {
public:
    Planner(const UnwrapRequest& request, std::string& error)
        : request_(request), batch_(request.batch), error_(error) {}

    int plan(std::vector<BatchItem>& items);
    /// A sentence, or empty.
    std::string left_out();

private:
    bool add_operand(const std::string& operand);
    bool add_folder(const fs::path& folder);
    bool add_list();
    void drop_results();
    BatchItem item_of(const Source& source) const;
    static void separate_reports(std::vector<BatchItem>& items);
    bool check_names(const std::vector<BatchItem>& items);
    void keep_shard(std::vector<BatchItem>& items) const;
    bool refuse(const std::string& reason) {
        error_ = reason;
        return false;
    }

    const UnwrapRequest& request_;
    const BatchRequest& batch_;
    std::string& error_;
    std::vector<Source> sources_;
    std::vector<std::string> left_out_; ///< found files of formats that are not read
    Identities identity_;
};

bool Planner::add_folder(const fs::path& folder) {
    std::error_code failure;
    const std::string results =
        batch_.out_dir.empty() ? "" : identity_(fs::path(batch_.out_dir) / "x");
    fs::recursive_directory_iterator entry(folder, failure), end;
    size_t meshes = 0;
    for (; !failure && entry != end; entry.increment(failure)) {
        const fs::path& path = entry->path();
        const bool hidden = path.filename().string()[0] == '.';
        if (entry->is_directory(failure)) {
            if (hidden || identity_(path / "x") == results)
                entry.disable_recursion_pending();
        } else if (!hidden && is_mesh_file(path.string())) {
            sources_.push_back({path.lexically_normal().generic_string(),
                                path.lexically_relative(folder).generic_string(), true});
            ++meshes;
        } else if (!hidden && !input_refusal(path.string()).empty()) {
            left_out_.push_back(path.lexically_normal().generic_string());
        }
    }
    if (failure)
        return refuse(folder.string() + ": cannot be searched: " + failure.message());
    return meshes > 0 || refuse(folder.string() + ": the folder holds no mesh file" +
                                (left_out_.empty() ? "" : "; " + left_out()));
}

bool Planner::add_operand(const std::string& operand) {
    std::error_code failure;
    if (fs::is_directory(operand, failure))
        return add_folder(operand);
    if (fs::exists(operand, failure)) {
        sources_.push_back({operand, fs::path(operand).filename().generic_string(), false});
        return true;
    }
    if (!is_glob(operand))
        return refuse(operand + ": there is no such file or folder" +
                      (batch_.operands.size() == 2 && operand == batch_.operands[1]
                           ? "; -o names an output"
                           : ""));
    const std::vector<std::string> files = expand_glob(operand);
    const fs::path base = glob_base(operand);
    for (const std::string& file : files)
        if (is_mesh_file(file))
            sources_.push_back(
                {file,
                 base.empty() ? file : fs::path(file).lexically_relative(base).generic_string(),
                 true});
    return (!files.empty() && sources_.back().was_found) ||
           refuse(operand + ": no mesh file matches");
}

/// One file name a line; lines that are empty or start with # do not count. A file that is missing
/// fails by itself later, because lists are often made by programs.
bool Planner::add_list() {
    std::string text;
    host::IoError failure;
    if (!host::read_text(batch_.list, text, failure))
        return refuse("--list: " + failure.message);
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == '#')
            continue;
        const fs::path path = fs::path(line).lexically_normal();
        const bool can_mirror = path.is_relative() && *path.begin() != "..";
        sources_.push_back({line, (can_mirror ? path : path.filename()).generic_string(), false});
    }
    return true;
}

/// Without a folder of their own, an earlier run's results lie among the meshes: NAME_uv.obj beside
/// NAME.obj is not searched for again.
void Planner::drop_results() {
    if (!batch_.out_dir.empty() || request_.in_place)
        return;
    std::set<std::string> results;
    for (const Source& source : sources_)
        results.insert(item_of(source).output);
    const auto is_result = [&](const Source& s) { return s.was_found && results.count(s.input); };
    sources_.erase(std::remove_if(sources_.begin(), sources_.end(), is_result), sources_.end());
}

BatchItem Planner::item_of(const Source& source) const {
    BatchItem item;
    item.input = source.input;
    const fs::path folder = batch_.out_dir.empty()
                                ? fs::path(source.input).parent_path()
                                : fs::path(batch_.out_dir) / fs::path(source.place).parent_path();
    const fs::path name = fs::path(source.input).filename();
    const std::string suffix = !batch_.suffix.empty()   ? batch_.suffix
                               : batch_.out_dir.empty() ? "_uv"
                                                        : "";
    const auto [bare, extension] = split_name(name.string());
    const std::string stem = bare + (request_.in_place ? "" : suffix);
    item.output = (folder / (stem + output_extension(request_, extension))).generic_string();
    if (request_.in_place)
        item.output = item.input;
    item.report = (folder / (stem + ".json")).generic_string();
    if (request_.beside)
        item.layout = (folder / (stem + ".png")).generic_string();
    return item;
}

/// Meshes of one name in several formats have results of their own. Their reports and pictures get
/// the result's whole name: tree.glb.json and tree.ply.json.
void Planner::separate_reports(std::vector<BatchItem>& items) {
    std::map<std::string, std::set<std::string>> results; // by report
    for (const BatchItem& item : items)
        results[item.report].insert(item.output);
    for (BatchItem& item : items)
        if (results[item.report].size() > 1) {
            item.report = item.output + ".json";
            if (!item.layout.empty())
                item.layout = item.output + ".png";
        }
}

/// No result may be another's, nor an input; a backup that is a link to its mesh is none.
bool Planner::check_names(const std::vector<BatchItem>& items) {
    std::map<std::string, const BatchItem*> inputs, results;
    for (const BatchItem& item : items) {
        const std::string input = identity_(item.input);
        if (request_.in_place && identity_(backup_name(item.input)) == input)
            return refuse(item.input + " and its backup " + backup_name(item.input) +
                          " are the same file");
        inputs[input] = &item;
    }
    for (const BatchItem& item : items)
        for (const std::string& path : {item.output, item.report, item.layout}) {
            if (path.empty())
                continue;
            const std::string name = identity_(path);
            const auto [other, is_new] = results.try_emplace(name, &item);
            if (!is_new)
                return refuse(other->second->input + " and " + item.input + " would both write " +
                              path + "; batches of their own keep them apart");
            const auto input = inputs.find(name);
            if (input != inputs.end() && !(request_.in_place && input->second == &item))
                return refuse(item.input + " would be written over the input " +
                              input->second->input + "; --suffix or --out_dir keep them apart");
        }
    return true;
}

void Planner::keep_shard(std::vector<BatchItem>& items) const {
    std::vector<BatchItem> kept;
    for (size_t i = 0; i < items.size(); ++i)
        if (int(i % size_t(batch_.shard_count)) == batch_.shard_index)
            kept.push_back(std::move(items[i]));
    items = std::move(kept);
}

std::string Planner::left_out() {
    constexpr size_t k_named = 3;
    std::sort(left_out_.begin(), left_out_.end());
    std::string names;
    for (size_t i = 0; i < std::min(k_named, left_out_.size()); ++i)
        names += (i > 0 ? ", " : "") + left_out_[i];
    if (left_out_.size() > k_named)
        names += " and " + std::to_string(left_out_.size() - k_named) + " more";
    return names.empty() ? names : "left out, as their formats are not read: " + names;
}

int Planner::plan(std::vector<BatchItem>& items) {
    for (const std::string& operand : batch_.operands)
        if (!add_operand(operand))
            return exit_input;
    if (!batch_.list.empty() && !add_list())
        return exit_input;
    drop_results();
    for (const Source& source : sources_)
        items.push_back(item_of(source));
    std::vector<Source>().swap(sources_); // lists may have a million names
    const auto key = [](const BatchItem& item) { return std::tie(item.input, item.output); };
    std::sort(items.begin(), items.end(),
              [&](const BatchItem& a, const BatchItem& b) { return key(a) < key(b); });
    items.erase(
        std::unique(items.begin(), items.end(),
                    [&](const BatchItem& a, const BatchItem& b) { return key(a) == key(b); }),
        items.end());
    separate_reports(items);
    if (!check_names(items))
        return exit_usage;
    keep_shard(items);
    return exit_done;
}

} // namespace

int plan_batch(const UnwrapRequest& request, std::vector<BatchItem>& items, std::string& left_out,
               std::string& error) {
    items.clear();
    Planner planner(request, error);
    const int code = planner.plan(items);
    left_out = planner.left_out();
    return code;
}

} // namespace app
