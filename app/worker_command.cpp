#include "app/worker_command.h"

#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/request_json.h"
#include "app/unwrap_run.h"

#include <cstdio>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

Json answer_to(const std::string& line) {
    std::vector<std::string> messages;
    set_talk_listener([&](const std::string& sentence) { messages.push_back(sentence); });
    Json answer;
    UnwrapRequest request;
    UnwrapReport report;
    std::string error;
    const Json json = Json::parse(line, nullptr, false);
    if (json.is_discarded() || !request_from_json(json, request, error)) {
        answer["code"] = int(exit_usage);
        answer["reason"] = error.empty() ? "the request is not JSON" : error;
    } else {
        request.silent = request.quiet = true;
        request.threads = 1; // the processes of a batch already use every processor
        answer["code"] = run_unwrap_request(request, report);
        answer["reason"] = report.reason;
        answer["report"] = Json::parse(to_json(report));
    }
    answer["messages"] = messages;
    set_talk_listener(nullptr);
    return answer;
}

} // namespace

int worker_command(const Words&) {
    end_silently();
    std::string line;
    while (std::getline(std::cin, line)) {
        Json answer;
        try {
            answer = answer_to(line);
        } catch (const std::bad_alloc&) {
            set_talk_listener(nullptr);
            answer = {{"code", int(exit_limit)},
                      {"reason", "not enough memory; no result was written"},
                      {"messages", Json::array()}};
        }
        const std::string text = answer.dump(-1, ' ', false, Json::error_handler_t::replace);
        std::printf("%s\n", text.c_str());
        if (std::fflush(stdout) != 0)
            return exit_output;
    }
    return exit_done;
}

} // namespace app
