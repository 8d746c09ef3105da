#include "app/presets.h"

#include "app/options.h"
#include "app/request_json.h"
#include "host/io/obj_reader.h"

#include <nlohmann/json.hpp>

namespace app {
namespace {

void bake(UnwrapSettingsRequest& s) {
    s.width = s.height = 2048;
    s.padding = 8; // four levels of mip maps without bleeding
    s.high_quality = true;
}

void paint(UnwrapSettingsRequest& s) {
    s.width = s.height = 2048;
    s.padding = 4;
    s.stretch = 0.25; // fewer seams to paint across
    s.high_quality = true;
}

void hard_surface(UnwrapSettingsRequest& s) {
    s.stretch = 0.1;
    s.use_grooves = s.use_ridges = true;
    s.groove_angle = s.ridge_angle = 60.0;
}

void organic(UnwrapSettingsRequest& s) {
    s.stretch = 0.25;
    s.high_quality = true;
}

void lightmap(UnwrapSettingsRequest& s) {
    s.width = s.height = 256;
    s.padding = 4;
    s.stretch = 0.3; // light varies slowly; gaps cost more than stretch
}

bool ends_with(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.npos, end) == 0;
}

bool apply_file(const std::string& path, UnwrapSettingsRequest& settings, std::string& error) {
    std::string text;
    host::IoError failure;
    if (!host::read_text(path, text, failure)) {
        error = "--preset: " + failure.message;
        return false;
    }
    const auto json = nlohmann::ordered_json::parse(text, nullptr, false);
    if (json.is_discarded())
        error = "it is not JSON";
    else
        settings_from_json(json.is_object() && json.contains("settings") ? json["settings"] : json,
                           settings, error);
    if (!error.empty())
        error = "--preset " + path + ": " + error;
    return error.empty();
}

} // namespace

const std::vector<Preset>& presets() {
    static const std::vector<Preset> list = {
        {"bake", "2048 texels, 8 apart, best quality: maps baked from a finer mesh", bake},
        {"paint", "2048 texels, 4 apart, few seams: textures painted by hand", paint},
        {"hard_surface", "cuts along edges bent by 60 degrees, little stretch", hard_surface},
        {"organic", "few charts on smooth shapes, more stretch allowed", organic},
        {"lightmap", "256 texels, 4 apart, few charts: light", lightmap},
    };
    return list;
}

bool apply_preset(const std::string& name, UnwrapSettingsRequest& settings, std::string& error) {
    std::vector<std::string> names;
    for (const Preset& preset : presets()) {
        if (name == preset.name) {
            preset.apply(settings);
            return true;
        }
        names.push_back(preset.name);
    }
    if (ends_with(name, ".json"))
        return apply_file(name, settings, error);
    const std::string guess = nearest(name, names);
    error = "there is no preset '" + name + "'";
    for (const std::string& known : names)
        error += (known == names.front() ? "; presets are " : ", ") + known;
    error += " and FILE.json";
    if (!guess.empty())
        error += "; did you mean " + guess + "?";
    return false;
}

std::string settings_without_node(const UnwrapSettingsRequest& settings) {
    const auto given = settings_to_json(settings), usual = settings_to_json({});
    std::string names;
    for (const char* name : {"max_charts", "density", "align", "stack", "effort"})
        if (given[name] != usual[name])
            names += (names.empty() ? "" : ", ") + std::string(name);
    return names;
}

} // namespace app
