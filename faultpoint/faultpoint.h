/// Fault points: places where an operation of the host or the platform can be made to fail.
///
/// Every operation that can fail in the field passes a named point ("MFnMesh::setUVs",
/// "D3DXCreateMesh"). A test arms a point, and the operation then fails as it would in reality.
/// Without armed points a pass costs one load and one predictable branch. Not thread-safe, like
/// everything that calls it.
#pragma once

#include <cstddef>

#if defined(TESSORA_WITHOUT_FAULT_POINTS)

namespace faultpoint {

inline constexpr int armed_count = 0;
inline int hit(const char*) { return 0; }

} // namespace faultpoint

#else

#if defined(_WIN32)
#define TESSORA_FAULTPOINT_API // the linker exports everything
#else
#define TESSORA_FAULTPOINT_API __attribute__((visibility("default")))
#endif

namespace faultpoint {

/// Number of armed points, plus one if there is a monitor; zero outside tests.
extern TESSORA_FAULTPOINT_API int armed_count;

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

/// The slow part of `hit`: counts a pass and returns the armed code, or 0.
TESSORA_FAULTPOINT_API int pass(const char* name);

/// Passes a point. 0 means continue; any other value means fail with that code: an MStatus code at
/// points of the host, an HRESULT or 1 at points of the platform.
inline int hit(const char* name) { return armed_count == 0 ? 0 : pass(name); }

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
