/// Requests of `tessora serve` (docs/serve.md): checked, and made into lines for a worker.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace app {

using ServiceJson = nlohmann::ordered_json;

struct ServiceRequest {
    ServiceJson id;        ///< text or whole number; null if the line has none
    ServiceJson cancel;    ///< the id of the request to cancel; null for an unwrap
    std::string work;      ///< the line for the worker
    bool has_mesh = false; ///< the worker gets the client's line too, for the mesh in it
};

/// Reads a line. `root` is the folder that paths begin in and may not leave; "" for no bounds.
/// Errors: false with a sentence in `error`; `id` is set if it could be read.
bool read_service_request(const std::string& line, const std::string& root, ServiceRequest& request,
                          std::string& error);

/// The path below `root`, with links followed; an absolute path must lead there itself. Errors:
/// false with a sentence in `error` if it leads elsewhere.
bool confine_path(const std::string& root, std::string& path, std::string& error);

/// True if arrays and objects are nested deeper than `limit`. Needs no memory.
bool is_nested_deeper(std::string_view json, int limit);

} // namespace app
