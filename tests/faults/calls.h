/// Counts and fails the two kinds of calls that can fail: fault points, and allocations of the
/// plug-in and the platform library. The program's malloc and operator new are replaced for this.
///
/// Calls are numbered in order. A process forked from the same state makes the same calls, so a
/// number from a recording identifies the call to fail. All tables lie in shared memory: recording
/// does not allocate, and a parent process reads what its children wrote.
#pragma once

#include <cstddef>
#include <cstdint>

namespace faults {

enum class CallKind : uint32_t { point, allocation };

struct Call {
    uint64_t stack;  ///< hash of all return addresses
    uint64_t caller; ///< offset of the innermost return address in plug-in or platform
    uint32_t number; ///< among calls of its kind
    CallKind kind;
    const char* point; ///< name of the fault point; NULL for allocations
    bool in_platform;  ///< which of the two libraries `caller` is an offset in
};

struct LiveSite {
    uint64_t caller;
    uint32_t count;
    uint32_t bytes;
    bool in_platform;
};

/// Finds the loaded plug-in and platform library, and allocates the tables. Called once, after the
/// plug-in was loaded and before forking.
void prepare_calls();

/// Records all calls made from the plug-in or the platform library until `stop`. To be called in a
/// child process; `recorded_calls` can then be read in the parent.
void start_recording();
const Call* recorded_calls(size_t& count);

/// Makes call number `number` of a kind fail, with `code` if it is a fault point, and tracks the
/// memory allocated directly by the two libraries.
void start_failing(CallKind kind, uint32_t number, int code);
/// Only tracks memory.
void start_tracking();
/// Ends recording and failing; tracked memory is tracked on until the process ends.
void stop();
bool has_failed();

/// Allocation sites with memory that was not freed, at most `room`. Returns their number.
size_t live_sites(LiveSite* sites, size_t room);

} // namespace faults
