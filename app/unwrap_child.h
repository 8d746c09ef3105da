/// Unwraps one mesh after the other in a child process, so that the caller goes on meanwhile and a
/// new mesh can replace the one under way.
#pragma once

#include "app/child_process.h"
#include "app/unwrap_options.h"

#include <optional>
#include <string>

namespace app {

class UnwrapChild {
public:
    /// `program`: the file of the program `tessora`, which has the command `worker`.
    explicit UnwrapChild(std::string program) : program_(std::move(program)) {}

    /// Begins an unwrap. One that is under way is ended at once and gives no answer.
    /// Errors: false with a sentence in `error` if the child cannot be started.
    bool begin(const UnwrapRequest& request, std::string& error);
    /// Ends the child at once.
    void stop();
    bool is_busy() const { return is_busy_; }

    struct Answer {
        int code = 0;       ///< exit code of the unwrap; the result is written if it is 0
        std::string reason; ///< why it failed
        int charts = 0;
        double stretch = 0.0;
    };
    /// The answer to the last `begin`, once; none while it is under way. Waits for it at most so
    /// many milliseconds.
    std::optional<Answer> take_answer(int milliseconds = 0);

private:
    std::string program_;
    ChildProcess child_;
    bool is_busy_ = false;
};

} // namespace app
