#include "window/jobs.h"

namespace window {

bool Jobs::add(const std::string& statements) {
    if (is_running_)
        return false;
    waiting_.push_back(statements);
    return true;
}

bool Jobs::run_all() {
    if (is_running_)
        return false;
    while (!waiting_.empty()) {
        const std::string statements = std::move(waiting_.front());
        waiting_.pop_front();
        is_running_ = true;
        run_(statements);
        is_running_ = false;
    }
    return true;
}

} // namespace window
