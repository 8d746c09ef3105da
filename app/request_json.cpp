#include "app/request_json.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

/// Calls visit(name, member) for every setting, in the order of the reports. `Settings` is
/// UnwrapSettingsRequest, const or not.
template <class Settings, class Visit>
void visit_settings(Settings& s, Visit visit) {
    visit("mapchannel", s.mapchannel);
    visit("charts", s.charts);
    visit("stretch", s.stretch);
    visit("padding", s.padding);
    visit("width", s.width);
    visit("height", s.height);
    visit("high_quality", s.high_quality);
    visit("keep_seams", s.keep_seams);
    visit("use_grooves", s.use_grooves);
    visit("groove_angle", s.groove_angle);
    visit("use_ridges", s.use_ridges);
    visit("ridge_angle", s.ridge_angle);
    visit("adjacency_method", s.adjacency_method);
    visit("epsilon", s.epsilon);
    visit("max_charts", s.max_charts);
    visit("density", s.density);
    visit("align", s.align);
    visit("stack", s.stack);
    visit("effort", s.effort);
    visit("texcoord", s.texcoord);
    visit("ply_uvs", s.ply_uvs);
    visit("each_mesh", s.each_mesh);
}

/// Stores a JSON value in a setting; returns null, or what was expected.
const char* store(const Json& value, bool& target) {
    if (!value.is_boolean())
        return "true or false";
    target = value.get<bool>();
    return nullptr;
}

const char* store(const Json& value, int& target) {
    constexpr double max = std::numeric_limits<int>::max();
    if (!value.is_number_integer() || std::fabs(value.get<double>()) > max)
        return "a whole number";
    target = value.get<int>();
    return nullptr;
}

const char* store(const Json& value, double& target) {
    if (!value.is_number())
        return "a number";
    target = value.get<double>();
    return nullptr;
}

const char* store(const Json& value, std::string& target) {
    if (!value.is_string())
        return "a text";
    target = value.get<std::string>();
    return nullptr;
}

/// The members of a request that travel, besides its settings.
template <class Request, class Visit>
void visit_request(Request& r, Visit visit) {
    visit("input", r.input);
    visit("output", r.output);
    visit("report", r.report);
    visit("layout", r.layout);
    visit("picture", r.picture);
    visit("thumbnails", r.thumbnails);
    visit("in_place", r.in_place);
    visit("threads", r.threads);
    visit("max_input", r.max_input);
}

/// Reads the members that `visit_members` lists from an object that may have no others.
template <class VisitMembers>
bool read_object(const Json& json, const char* what, VisitMembers visit_members,
                 std::string& error) {
    if (!json.is_object()) {
        error = std::string(what) + " must be an object";
        return false;
    }
    for (const auto& [name, value] : json.items()) {
        bool known = false;
        const char* expected = nullptr;
        visit_members([&, &key = name, &given = value](const char* member, auto& target) {
            if (key == member) {
                known = true;
                expected = store(given, target);
            }
        });
        if (!known)
            error = std::string(what) + " have no '" + name + "'";
        else if (expected)
            error = "'" + name + "' must be " + expected;
        if (!error.empty())
            return false;
    }
    return true;
}

} // namespace

Json settings_to_json(const UnwrapSettingsRequest& settings) {
    Json out = Json::object();
    visit_settings(settings, [&](const char* name, const auto& value) { out[name] = value; });
    return out;
}

bool settings_from_json(const Json& json, UnwrapSettingsRequest& settings, std::string& error) {
    return read_object(
        json, "the settings", [&](auto visit) { visit_settings(settings, visit); }, error);
}

Json request_to_json(const UnwrapRequest& request) {
    Json out = Json::object();
    visit_request(request, [&](const char* name, const auto& value) { out[name] = value; });
    out["settings"] = settings_to_json(request.settings);
    return out;
}

bool request_from_json(const Json& json, UnwrapRequest& request, std::string& error) {
    if (!json.is_object()) {
        error = "requests must be objects";
        return false;
    }
    Json files = json;
    const auto settings = files.find("settings");
    if (settings != files.end()) {
        if (!settings_from_json(*settings, request.settings, error))
            return false;
        files.erase(settings);
    }
    return read_object(
        files, "requests", [&](auto visit) { visit_request(request, visit); }, error);
}

} // namespace app
