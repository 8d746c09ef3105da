/// Common base of the objects behind the interfaces: one block of the ordinary allocator, a
/// reference count, and a global count of live objects.
///
/// Each kind of object is allocated by a function named after it ("allocate_device") that is never
/// inlined, so that the name appears in the stacks of a leak checker. Objects that callers leak on
/// purpose after a failure get a second function ("allocate_abandoned_device"), used only while a
/// fault point is armed: suppressing its leaks does not hide leaks of an ordinary run.
#pragma once

#include "faultpoint/faultpoint.h"

#include <d3d9.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#define D3DX9_NAMED_ALLOCATION __attribute__((noinline))

namespace d3dx9 {

/// Number of live devices, meshes and buffers. IDirect3D9 objects are not counted, because a caller
/// may end one with free().
extern unsigned live_objects;

/// The last statement of a named allocation function: prevents a tail call, which would remove the
/// function's stack frame. `variant` makes otherwise equal functions differ, so that the compiler
/// does not fold them into one.
template <int variant = 0>
void keep_frame() {
    asm volatile("" : : "i"(variant) : "memory");
}

/// Whether a fault point is armed, so that callers may leak objects on purpose.
inline bool failures_are_planned() { return faultpoint::is_any_armed(); }

/// Allocates a zeroed block with a T at its start and `extra` bytes behind it; null if memory runs
/// out.
template <class T, class... Arguments>
T* construct(size_t extra, Arguments&&... arguments) {
    static_assert(std::is_trivially_destructible_v<T>,
                  "free() alone must be able to end an object");
    if (extra > SIZE_MAX - sizeof(T))
        return nullptr;
    void* const block = std::calloc(1, sizeof(T) + extra);
    return block == nullptr ? nullptr : new (block) T(std::forward<Arguments>(arguments)...);
}

/// Adds the reference count to `Interface`; a new object has one reference.
template <class Interface>
class Counted : public Interface {
public:
    ULONG STDMETHODCALLTYPE AddRef() final { return ++references_; }

    ULONG STDMETHODCALLTYPE Release() final {
        const ULONG left = --references_;
        if (left == 0) {
            release_parts();
            std::free(this);
        }
        return left;
    }

protected:
    /// Releases the objects this one refers to, before its own memory is freed.
    virtual void release_parts() = 0;

    /// The common part of QueryInterface.
    HRESULT answer(bool known, void** object) {
        if (object == nullptr)
            return E_POINTER;
        *object = known ? this : nullptr;
        if (!known)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

private:
    ULONG references_ = 1;
};

} // namespace d3dx9
