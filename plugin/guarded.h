/// Keeps exceptions out of the host. Neither the plug-in nor the host's interface throws on
/// purpose, but memory can run out in containers of either.
#pragma once

#include <maya/MStatus.h>

#include <new>

/// Runs `body` and returns its status; kInsufficientMemory if memory runs out in it.
template <class Body>
MStatus guarded(Body body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return MS::kInsufficientMemory;
    }
}
