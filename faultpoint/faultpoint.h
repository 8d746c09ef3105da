/// Fault points: places where an operation of the host or the platform can be made to fail.
///
/// Every operation that can fail in the field passes a named point ("MFnMesh::setUVs",
/// "D3DXCreateMesh"). A test arms a point and the code under test meets the failure where it would
/// meet it in reality. An unarmed program pays one load and one predictable branch per point.
/// The library is single-threaded, like everything that calls it.
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

/// Number of armed points. Read by `hit` only; zero in every ordinary run.
extern TESSORA_FAULTPOINT_API int armed_count;

/// Arms `name`: the `nth` pass from now (1 = the next) fails with `code`, and so do the passes
/// after it, `times` in all (0 = for ever). Arming a name again replaces its setting.
TESSORA_FAULTPOINT_API void arm(const char* name, int code, unsigned nth = 1, unsigned times = 1);

/// Disarms one point, or all of them, and forgets pass counts.
TESSORA_FAULTPOINT_API void disarm(const char* name);
TESSORA_FAULTPOINT_API void disarm_all();

/// How often `name` was passed since it was armed (0 when it is not armed).
TESSORA_FAULTPOINT_API unsigned passes(const char* name);

/// The slow half of `hit`: counts a pass and gives the armed code, or 0.
TESSORA_FAULTPOINT_API int pass(const char* name);

/// Passes a point. 0: go on. Anything else: fail with that code (an MStatus code for host points,
/// an HRESULT or 1 for platform points).
inline int hit(const char* name) { return armed_count == 0 ? 0 : pass(name); }

/// Arms for the length of a scope; tests use nothing else.
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
