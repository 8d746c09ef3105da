#include "app/worker_command.h"

#include "app/exit_code.h"
#include "app/inline_mesh.h"
#include "app/interrupt.h"
#include "app/request_json.h"
#include "app/system.h"
#include "app/unwrap_run.h"

#include <cstdio>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

/// Removes a member that is true; a request has it or not.
bool take_flag(Json& json, const char* name) { return json.is_object() && json.erase(name) > 0; }

/// Reads a request with all that belongs to it from standard input's `line` and the next.
bool read_request(const std::string& line, UnwrapRequest& request, host::ObjDocument& mesh,
                  std::string& error) {
    Json json = Json::parse(line, nullptr, false);
    const bool is_checked = !take_flag(json, "check"), has_mesh = take_flag(json, "mesh_follows");
    std::string second;
    if (has_mesh && !std::getline(std::cin, second))
        error = "the mesh is missing";
    else if (json.is_discarded())
        error = "the request is not JSON";
    if (!error.empty() || !request_from_json(json, request, error))
        return false;
    if (has_mesh) {
        const Json whole = Json::parse(second, nullptr, false);
        if (!mesh_from_json(whole.is_object() ? whole.value("mesh", Json()) : whole, mesh, error))
            return false;
        request.mesh = &mesh;
        request.input = mesh.name;
    }
    return is_checked || check_unwrap_request(request, error);
}

/// The answer as a line; `uvs` receives the result of a mesh in the request as JSON.
Json answer_to(const std::string& line, std::string& uvs) {
    std::vector<std::string> messages;
    set_talk_listener([&](const std::string& sentence) { messages.push_back(sentence); });
    Json answer;
    UnwrapRequest request;
    UnwrapReport report;
    host::ObjDocument mesh;
    std::string error;
    if (!read_request(line, request, mesh, error)) {
        answer["code"] = int(exit_usage);
        answer["reason"] = error;
    } else {
        request.silent = request.quiet = true;
        if (request.threads == 0)
            request.threads = 1; // the processes of a batch already use every processor
        answer["code"] = run_unwrap_request(request, report);
        answer["reason"] = report.reason;
        answer["report"] = Json::parse(to_json(report));
        if (request.mesh && report.code == exit_done)
            uvs = uvs_to_json(report.uvs);
    }
    answer["messages"] = messages;
    set_talk_listener(nullptr);
    return answer;
}

} // namespace

int worker_command(const Words&) {
    end_silently();
    keep_freed_memory();
    std::string line;
    while (std::getline(std::cin, line)) {
        Json answer;
        std::string uvs;
        try {
            answer = answer_to(line, uvs);
        } catch (const std::bad_alloc&) {
            set_talk_listener(nullptr);
            answer = {{"code", int(exit_limit)},
                      {"reason", "not enough memory; no result was written"},
                      {"messages", Json::array()}};
        }
        std::string text = answer.dump(-1, ' ', false, Json::error_handler_t::replace);
        if (!uvs.empty())
            text.replace(text.size() - 1, 1, ",\"mesh\":" + uvs + "}");
        std::printf("%s\n", text.c_str());
        if (std::fflush(stdout) != 0)
            return exit_output;
    }
    return exit_done;
}

} // namespace app
