/// A progress window listener that records every change.
#pragma once

#include "host/ui/progress_window.h"

#include <string>
#include <vector>

class ProgressRecord : public host::ProgressListener {
public:
    ProgressRecord() { host::set_progress_listener(this); }
    virtual ~ProgressRecord() { stop(); }
    ProgressRecord(const ProgressRecord&) = delete;
    ProgressRecord& operator=(const ProgressRecord&) = delete;

    /// Unregisters the listener: the host then has no progress window.
    void stop() { host::set_progress_listener(nullptr); }

    void changed(const host::ProgressState& state) override { states.push_back(state); }
    bool is_cancelled() override { return false; }

    /// The bar's value after every change.
    std::vector<int> values() const {
        std::vector<int> list;
        for (const auto& state : states)
            list.push_back(state.value);
        return list;
    }
    /// The status lines in order, without consecutive duplicates.
    std::vector<std::string> stages() const {
        std::vector<std::string> list;
        for (const auto& state : states)
            if (list.empty() || list.back() != state.status.asChar())
                list.emplace_back(state.status.asChar());
        return list;
    }

    std::vector<host::ProgressState> states;
};
