/// Captures message boxes and the error stream during an unwrap.
#pragma once

#include "app/line_buffer.h"
#include "host/ui/notices.h"

#include <string>

namespace app {

/// Part of every message of the plug-in about memory, with a capital letter or without.
constexpr const char* k_memory_words[] = {"ut of memory", "E_OUTOFMEMORY"};

/// While it lives, prints message boxes and writes to std::cerr as lines of the program's own, so
/// that a box does not wait for a click and no line runs into the progress bar. Keeps the last
/// line.
class MessageListener : public host::NoticeListener {
public:
    /// `is_silent`: only keeps lines.
    explicit MessageListener(bool is_silent = false);
    ~MessageListener();
    MessageListener(const MessageListener&) = delete;
    MessageListener& operator=(const MessageListener&) = delete;

    bool show(const char* caption, const char* text) override;

    /// True if a captured line says that memory ran out. The host's interface has no status for it
    /// on this way, so the plug-in's messages decide; all of them contain these words.
    bool ran_out_of_memory() const { return ran_out_of_memory_; }
    /// The last line captured, or "".
    const std::string& last() const { return last_; }

private:
    void print(const std::string& line);

    LineBuffer lines_;
    std::streambuf* error_stream_; ///< std::cerr's own buffer, restored at the end
    std::string last_;
    bool ran_out_of_memory_ = false;
    bool is_silent_ = false;
};

} // namespace app
