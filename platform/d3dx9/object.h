/// What the objects behind the interfaces have in common: one block of the ordinary allocator,
/// counted references, and a count of the objects alive.
///
/// Allocation is spelled out in functions named after the object ("allocate_device"), kept out of
/// line: a leak checker sees the name in the stack of a block. An object that callers may lose on a
/// failure gets a second function ("allocate_abandoned_device"), used while a fault point is armed
/// and never in an ordinary run, so that excusing the one does not excuse the other.
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

/// Objects alive: devices, meshes and buffers. IDirect3D9 objects are not counted, because a caller
/// may hand one to free() behind our back.
extern unsigned live_objects;

/// Last statement before the return of a named allocation function: the call before it is then no
/// tail call, and the function keeps its frame. `variant` tells functions apart whose bodies are
/// otherwise equal, lest the compiler fold them into one.
template <int variant = 0>
void keep_frame() {
    asm volatile("" : : "i"(variant) : "memory");
}

/// Whether somebody may be lost to a failure in this run.
inline bool failures_are_planned() { return faultpoint::armed_count != 0; }

/// One zeroed block with a T at its start and `extra` bytes behind it; null when memory is out.
template <class T, class... Arguments>
T* construct(size_t extra, Arguments&&... arguments) {
    static_assert(std::is_trivially_destructible_v<T>,
                  "free() alone must be able to end an object");
    if (extra > SIZE_MAX - sizeof(T))
        return nullptr;
    void* const block = std::calloc(1, sizeof(T) + extra);
    return block == nullptr ? nullptr : new (block) T(std::forward<Arguments>(arguments)...);
}

/// References of `Interface`; the object starts with one, its maker's.
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
    /// Gives back what the object refers to; its own block follows.
    virtual void release_parts() = 0;

    /// The common half of QueryInterface.
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
