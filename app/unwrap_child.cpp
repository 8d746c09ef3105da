#include "app/unwrap_child.h"

#include "app/exit_code.h"
#include "app/request_json.h"

#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

UnwrapChild::Answer answer_of(const Json& json) {
    UnwrapChild::Answer answer;
    answer.code = json.value("code", int(exit_bug));
    answer.reason = json.value("reason", "");
    const auto report = json.find("report");
    if (report != json.end() && report->is_object() && answer.code == exit_done) {
        answer.charts = report->value("charts", 0);
        answer.stretch = report->value("stretch", 0.0);
    }
    return answer;
}

} // namespace

bool UnwrapChild::begin(const UnwrapRequest& request, std::string& error) {
    // A child that is idle already has the plug-in loaded.
    if (is_busy_)
        stop();
    if (!child_.is_running() && !child_.start({program_, "worker"}, error))
        return false;
    child_.send(request_to_json(request).dump(-1, ' ', false, Json::error_handler_t::replace));
    is_busy_ = true; // a child that has ended shows when the answer is missing
    return true;
}

void UnwrapChild::stop() {
    child_ = ChildProcess();
    is_busy_ = false;
}

std::optional<UnwrapChild::Answer> UnwrapChild::take_answer(int milliseconds) {
    if (!is_busy_)
        return std::nullopt;
    wait_for_children({&child_}, milliseconds);
    std::string text;
    while (child_.take_line(text)) {
        const Json json = Json::parse(text, nullptr, false);
        if (!json.is_object())
            continue; // something that a library printed
        is_busy_ = false;
        return answer_of(json);
    }
    if (!child_.has_ended(text))
        return std::nullopt;
    is_busy_ = false;
    return Answer{exit_bug, "the process that unwrapped ended " + text, 0, 0.0};
}

} // namespace app
