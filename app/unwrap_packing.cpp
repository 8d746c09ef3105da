#include "app/unwrap_packing.h"

#include "app/chart_packing.h"
#include "app/exit_code.h"
#include "app/pack_options.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace app {
namespace {

namespace atlas = tessora::atlas;

/// The packing's settings, from those of an unwrap.
atlas::PackSettings pack_settings(const UnwrapSettingsRequest& s) {
    atlas::PackSettings out;
    std::string ignored; // values were checked before
    out.width = static_cast<uint32_t>(s.width);
    out.height = static_cast<uint32_t>(s.height);
    out.gutter = static_cast<float>(s.padding);
    out.align = s.align;
    out.effort = s.effort;
    out.quality = s.high_quality ? atlas::Quality::quality : atlas::Quality::fast;
    read_stack(s.stack, out, ignored);
    out.density = s.density > 0.0 ? atlas::Density::fixed : atlas::Density::as_is;
    out.texels_per_unit = s.density;
    return out;
}

int explain(const ChartList& list, const atlas::PackSettings& settings,
            const atlas::Failure& failure, std::string& reason) {
    if (failure.status == atlas::Status::out_of_memory) {
        reason = "not enough memory to pack the charts";
        return exit_limit;
    }
    if (failure.status != atlas::Status::does_not_fit) {
        reason = atlas::describe(failure.status);
        return exit_unexpected;
    }
    char text[160];
    std::snprintf(text, sizeof text,
                  "--density %g needs a texture of at least %.0f texels a side; 8192 is the most",
                  settings.texels_per_unit,
                  std::max(8193.0, std::ceil(least_side(list, settings))));
    reason = settings.density == atlas::Density::fixed
                 ? text
                 : "the texture is too small for the charts with this padding between them";
    return exit_unwrap;
}

} // namespace

bool wants_packing(const UnwrapSettingsRequest& s) {
    return s.density > 0.0 || s.align || s.stack != "none";
}

int pack_again(const host::ObjDocument& document, UnwrapOutcome& outcome, ProgressDisplay& progress,
               std::string& reason) {
    progress.begin_stage("packing");
    ChartList list;
    PackSource source;
    source.document = &document;
    source.uvs = &outcome.uvs;
    if (!list_charts({source}, list, reason))
        return exit_limit;
    atlas::PackSettings settings = pack_settings(outcome.settings);
    settings.user = &progress;
    settings.stage_progress = [](atlas::Stage stage, float fraction, void* user) {
        if (stage == atlas::Stage::packing)
            static_cast<ProgressDisplay*>(user)->set_percent(static_cast<int>(fraction * 100.0f));
        return 0;
    };
    atlas::PackResult result;
    const bool fixed = settings.density == atlas::Density::fixed;
    const atlas::Failure failure = fixed ? pack_to_density(list, true, settings, result)
                                         : atlas::pack(list.mesh(), settings, result);
    if (failure.status != atlas::Status::ok)
        return explain(list, settings, failure, reason);
    outcome.uvs = packed_uvs(list, result)[0];
    outcome.settings.width = static_cast<int>(settings.width);
    outcome.settings.height = static_cast<int>(settings.height);
    if (settings.stack != atlas::Stack::none)
        outcome.stack_breaches = check_packing(list, settings, result).breaches;
    return exit_done;
}

} // namespace app
