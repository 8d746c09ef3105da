#include "app/service_request.h"

#include "app/presets.h"
#include "app/request_json.h"
#include "app/unwrap_options.h"

#include <algorithm>
#include <filesystem>

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr int k_deepest = 16; ///< nested arrays and objects; a mesh has 4

bool is_id(const ServiceJson& id) { return id.is_string() || id.is_number_integer(); }

/// The settings of a preset by its name; its files are not read for clients.
bool take_preset(ServiceJson& json, UnwrapSettingsRequest& settings, std::string& error) {
    const auto found = json.find("preset");
    if (found == json.end())
        return true;
    const std::string name = found->is_string() ? found->get<std::string>() : "";
    for (const Preset& preset : presets())
        if (name == preset.name) {
            preset.apply(settings);
            json.erase(found);
            return true;
        }
    error = "'preset' must be the name of a preset";
    return false;
}

/// What a request for files has, and what one with a mesh in it has not.
bool check_files(const UnwrapRequest& request, bool has_mesh, std::string& error) {
    if (has_mesh && (!request.input.empty() || !request.output.empty() || request.in_place))
        error = "a request has a mesh, or an input with its output";
    else if (!has_mesh && request.input.empty())
        error = "which mesh? a request needs an input or a mesh";
    for (const std::string* path :
         {&request.input, &request.output, &request.report, &request.layout})
        if (*path == "-" || path->find('\0') != path->npos)
            error = "'-' and names with a zero byte stand for no file here";
    return error.empty();
}

bool confine_files(const std::string& root, UnwrapRequest& request, std::string& error) {
    for (std::string* path : {&request.input, &request.output, &request.report, &request.layout})
        if (!path->empty() && !root.empty() && !confine_path(root, *path, error))
            return false;
    return true;
}

} // namespace

bool is_nested_deeper(std::string_view json, int limit) {
    int depth = 0;
    bool in_text = false;
    for (size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (in_text) {
            i += c == '\\';
            in_text = c != '"';
        } else if (c == '"') {
            in_text = true;
        } else if (c == '[' || c == '{') {
            if (++depth > limit)
                return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

bool confine_path(const std::string& root, std::string& path, std::string& error) {
    std::error_code failure;
    const fs::path top = fs::canonical(root, failure);
    const fs::path asked = top / path;
    const fs::path real = failure ? fs::path() : fs::weakly_canonical(asked, failure);
    const auto [end, ignored] = std::mismatch(top.begin(), top.end(), real.begin(), real.end());
    // A link to a file that does not exist yet would be written through.
    if (failure || end != top.end() || real == top || fs::is_symlink(real, failure)) {
        error = path + ": leads out of the folder that the service is confined to";
        return false;
    }
    path = real.string();
    return true;
}

namespace {

/// The line as an object, without its id, which `request` receives, and without its mesh.
bool read_object(const std::string& line, ServiceJson& json, ServiceRequest& request,
                 std::string& error) {
    if (is_nested_deeper(line, k_deepest)) {
        error = "the request is nested too deeply";
        return false;
    }
    // The mesh, which can be large, is left to the worker.
    const auto is_wanted = [&](int depth, ServiceJson::parse_event_t event, ServiceJson& parsed) {
        const bool is_mesh =
            depth == 1 && event == ServiceJson::parse_event_t::key && parsed == "mesh";
        request.has_mesh |= is_mesh;
        return !is_mesh;
    };
    json = ServiceJson::parse(line, is_wanted, false);
    if (!json.is_object())
        error = "the request is not a JSON object";
    else if (json.contains("id") && is_id(json["id"]))
        request.id = json["id"];
    else
        error = "a request needs an 'id': a text or a whole number";
    if (error.empty())
        json.erase("id");
    return error.empty();
}

} // namespace

bool read_service_request(const std::string& line, const std::string& root, ServiceRequest& request,
                          std::string& error) {
    ServiceJson json;
    if (!read_object(line, json, request, error))
        return false;
    if (json.contains("cancel")) {
        request.cancel = json["cancel"];
        if (!is_id(request.cancel) || json.size() > 1 || request.has_mesh)
            error = "'cancel' takes the id of a request, and nothing else with it";
        return error.empty();
    }
    if (json.contains("thumbnails"))
        error = "requests have no 'thumbnails'";
    UnwrapRequest unwrap;
    if (!error.empty() || !take_preset(json, unwrap.settings, error) ||
        !request_from_json(json, unwrap, error) || !check_files(unwrap, request.has_mesh, error) ||
        !confine_files(root, unwrap, error))
        return false;
    ServiceJson work = request_to_json(unwrap);
    work["check"] = true;
    if (request.has_mesh)
        work["mesh_follows"] = true;
    request.work = work.dump();
    return true;
}

} // namespace app
