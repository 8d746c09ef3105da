/// Fault points: places where an operation of the host or the platform can be made to fail.
///
/// Every operation that can fail in the field passes a named point ("MFnMesh::setUVs",
/// "D3DXCreateMesh"). A test arms a point, and the operation then fails as it would in reality.
/// Only tests can arm points: the record of armed ones is in a library that tests link
/// (tessora_armed_points) and that no package contains. Without it a pass costs two loads and a
/// predictable branch. Not thread-safe, like everything that calls it.
#pragma once

#if defined(TESSORA_WITHOUT_FAULT_POINTS)

namespace faultpoint {

inline bool is_any_armed() { return false; }
inline int hit(const char*) { return 0; }

} // namespace faultpoint

#else

#if defined(_WIN32)
#define TESSORA_FAULTPOINT_API // the linker exports everything
#else
#define TESSORA_FAULTPOINT_API __attribute__((visibility("default")))
#endif

namespace faultpoint {

/// What all modules of a test's process share.
struct Record {
    int armed_count;               ///< armed points, plus one if there is a monitor
    int (*pass)(const char* name); ///< counts a pass and returns the armed code, or 0
};

/// The record of the process, found by name; one without armed points if it is not a test's.
const Record& find_record();

inline const Record& record() {
    static const Record& found = find_record();
    return found;
}

inline bool is_any_armed() { return record().armed_count != 0; }

/// Passes a point. 0 means continue; any other value means fail with that code: an MStatus code at
/// points of the host, an HRESULT or 1 at points of the platform.
inline int hit(const char* name) { return is_any_armed() ? record().pass(name) : 0; }

// For tests, from here on.

/// Arms `name`: of the passes from now on, `times` (0 = all) starting with the `nth` (1 = the next)
/// fail with `code`. Arming a name again replaces its setting.
TESSORA_FAULTPOINT_API void arm(const char* name, int code, unsigned nth = 1, unsigned times = 1);

/// Disarms one point, or all of them, and forgets pass counts.
TESSORA_FAULTPOINT_API void disarm(const char* name);
TESSORA_FAULTPOINT_API void disarm_all();

/// How often `name` was passed since it was armed (0 if it is not armed).
TESSORA_FAULTPOINT_API unsigned passes(const char* name);

/// Called at every pass of any point, armed or not; a non-zero result makes the operation fail with
/// that code. Used to count and sweep all operations that can fail. NULL removes the monitor.
using Monitor = int (*)(const char* name);
TESSORA_FAULTPOINT_API void set_monitor(Monitor monitor);

/// Arms a point until the end of the scope.
class Scope {
public:
    Scope(const char* name, int code, unsigned nth = 1, unsigned times = 1) : name_(name) {
        arm(name, code, nth, times);
    }
    ~Scope() { disarm(name_); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

private:
    const char* name_;
};

} // namespace faultpoint

#endif
