#include "tests/platform/d3dx9/failing_new.h"

#include <cstdlib>
#include <new>

namespace {
unsigned requests_left = 0;
bool failed = false;
} // namespace

FailingNew::FailingNew(unsigned nth) {
    failed = false;
    requests_left = nth;
}
FailingNew::~FailingNew() { requests_left = 0; }
bool FailingNew::happened() { return failed; }

void* operator new(std::size_t size) {
    if (requests_left != 0 && --requests_left == 0) {
        failed = true;
        throw std::bad_alloc();
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

// The standard library's other forms call the ones above. A sanitizer brings its own, and would
// report a block of theirs that these free.
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { operator delete(block); }

// Makes the sanitizer's allocator return null for too large requests instead of ending the program.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
