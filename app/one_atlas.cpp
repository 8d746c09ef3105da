#include "app/one_atlas.h"

#include "app/batch_command.h"
#include "app/batch_plan.h"
#include "app/command.h"
#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/pack_command.h"
#include "app/pack_options.h"
#include "app/unwrap_driver.h"
#include "host/io/temporary_file_calls.h"

#include <cstdlib>
#include <filesystem>

namespace app {
namespace {

namespace fs = std::filesystem;
namespace atlas = tessora::atlas;

constexpr const char* k_folder_start = ".tessora-atlas.";

/// A folder for the unwrapped meshes until they are packed, in the folder of the results. It is
/// removed at the end; what a killed process left is removed by the next.
class WorkFolder {
public:
    bool make(const fs::path& results, std::string& error) {
        std::error_code failure;
        fs::create_directories(results, failure);
        for (fs::directory_iterator entry(results, failure), end; !failure && entry != end;
             entry.increment(failure))
            remove_if_abandoned(entry->path());
        path_ = results / (k_folder_start + std::to_string(host::file_calls::process_id()));
        failure.clear();
        fs::create_directory(path_, failure);
        if (failure)
            error = path_.string() + ": cannot be made: " + failure.message();
        return !failure;
    }
    ~WorkFolder() {
        std::error_code ignored;
        if (!path_.empty())
            fs::remove_all(path_, ignored);
    }
    const fs::path& path() const { return path_; }

private:
    static void remove_if_abandoned(const fs::path& path) {
        const std::string name = path.filename().string(), start = k_folder_start;
        std::error_code ignored;
        const long process =
            name.rfind(start, 0) == 0 ? std::strtol(name.c_str() + start.size(), nullptr, 10) : 0;
        if (process > 0 && !host::file_calls::is_running(process))
            fs::remove_all(path, ignored);
    }

    fs::path path_;
};

/// The request that packs what the batch has written.
PackRequest pack_request(const UnwrapRequest& request, const std::vector<BatchItem>& items,
                         const std::vector<BatchItem>& unwrapped) {
    PackRequest pack;
    for (size_t i = 0; i < items.size(); ++i) {
        pack.inputs.push_back(unwrapped[i].output);
        pack.names.push_back(items[i].input);
        pack.outputs.push_back(items[i].output);
    }
    const UnwrapSettingsRequest settings = in_range(request.settings);
    std::string ignored; // the value was checked before
    read_stack(settings.stack, pack.settings, ignored);
    pack.settings.width = uint32_t(settings.width);
    pack.settings.height = uint32_t(settings.height);
    pack.settings.gutter = float(settings.padding);
    pack.settings.effort = settings.effort;
    pack.settings.align = settings.align;
    pack.settings.tiles = uint32_t(request.batch.tiles);
    pack.settings.density =
        settings.density > 0.0 ? atlas::Density::fixed : atlas::Density::uniform;
    pack.settings.texels_per_unit = settings.density;
    pack.texture_follows = request.batch.tiles == 1;
    pack.report = (fs::path(request.batch.out_dir) / "atlas.json").generic_string();
    if (request.beside)
        pack.layout = (fs::path(request.batch.out_dir) / "atlas.png").generic_string();
    pack.picture = request.picture;
    pack.quiet = request.quiet;
    return pack;
}

} // namespace

int run_one_atlas(const UnwrapRequest& request) {
    std::vector<BatchItem> items;
    std::string left_out, error;
    if (const int code = plan_batch(request, items, left_out, error)) {
        say(error + (code == exit_usage ? "; nothing was done" : ""));
        return code;
    }
    if (!left_out.empty() && !request.quiet)
        say("warning: " + left_out);
    if (request.batch.dry_run)
        return run_batch(request, items);
    WorkFolder work;
    if (!work.make(request.batch.out_dir, error)) {
        say(error);
        return exit_output;
    }
    std::vector<BatchItem> unwrapped = items;
    for (BatchItem& item : unwrapped) {
        const fs::path place = fs::path(item.output).lexically_relative(request.batch.out_dir);
        item.output = (work.path() / place).generic_string();
        item.report = item.output + ".json";
        item.layout.clear();
    }
    UnwrapRequest apart = request; // packing acts on all together
    apart.settings.density = 0.0;
    apart.settings.align = false;
    apart.settings.stack = "none";
    if (const int code = run_batch(apart, unwrapped)) {
        say("no atlas was made, because it would not hold every mesh");
        return code;
    }
    stop_deferring_signals();
    return run_pack(pack_request(request, items, unwrapped));
}

} // namespace app
