#include "tests/faults/calls.h"

#include "faultpoint/faultpoint.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <execinfo.h>
#include <link.h>
#include <new>
#include <sys/mman.h>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);
}

namespace faults {

namespace {

constexpr size_t k_max_calls = 1u << 20;
constexpr size_t k_max_blocks = 1u << 18; // a power of two: open addressing
constexpr int k_max_frames = 96;

struct Library {
    const char* file;
    uintptr_t base, start, end;
};
Library g_libraries[] = {{"/tessora.so", 0, 0, 0}, {"/libtessora_d3dx9.so", 0, 0, 0}};

struct Block {
    void* address;
    uint64_t caller;
    uint32_t bytes;
    bool in_platform;
};

struct Tables {
    Call calls[k_max_calls];
    size_t call_count;
};
Tables* g_tables = nullptr; ///< shared with child processes
Block* g_blocks = nullptr;  ///< of this process

bool g_records = false;
bool g_tracks = false;
bool g_counts = false;
bool g_inside = false; ///< the bookkeeping itself is running
bool g_failed = false;
uint32_t g_numbers[2] = {0, 0};
uint32_t g_fail_number = 0;
CallKind g_fail_kind = CallKind::point;
int g_fail_code = 0;

int library_of(uintptr_t address) {
    for (int i = 0; i < 2; ++i)
        if (address >= g_libraries[i].start && address < g_libraries[i].end)
            return i;
    return -1;
}

int find_library(dl_phdr_info* info, size_t, void*) {
    for (Library& library : g_libraries) {
        const size_t length = std::strlen(info->dlpi_name), tail = std::strlen(library.file);
        if (length < tail || std::strcmp(info->dlpi_name + length - tail, library.file) != 0)
            continue;
        library.base = info->dlpi_addr;
        for (int i = 0; i < info->dlpi_phnum; ++i)
            if (info->dlpi_phdr[i].p_type == PT_LOAD && (info->dlpi_phdr[i].p_flags & PF_X) != 0) {
                library.start = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
                library.end = library.start + info->dlpi_phdr[i].p_memsz;
            }
    }
    return 0;
}

template <class T>
T* map_memory(size_t count, int sharing) {
    void* const memory = mmap(nullptr, count * sizeof(T), PROT_READ | PROT_WRITE,
                              sharing | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<T*>(memory);
}

/// Records a call if a frame of plug-in or platform is on the stack. For an allocation that frame
/// must have called the allocator itself or through the standard libraries only.
void record(CallKind kind, const char* point, uint32_t number) {
    void* frames[k_max_frames];
    const int depth = backtrace(frames, k_max_frames);
    uint64_t hash = 1469598103934665603u;
    int innermost = -1;
    for (int i = 0; i < depth; ++i) {
        const auto address = reinterpret_cast<uintptr_t>(frames[i]);
        hash = (hash ^ address) * 1099511628211u;
        if (innermost < 0 && library_of(address) >= 0)
            innermost = i;
    }
    if (innermost < 0 || g_tables->call_count == k_max_calls)
        return;
    Dl_info info;
    if (kind == CallKind::allocation) {
        for (int i = 0; i < innermost; ++i)
            if (dladdr(frames[i], &info) != 0 &&
                std::strstr(info.dli_fname, "libtessora_host") != nullptr)
                return; // the host's own allocation on behalf of the plug-in
    } else {
        // Points of the platform are attributed to the plug-in's function that called it.
        for (int i = depth - 1; i >= 0; --i)
            if (library_of(reinterpret_cast<uintptr_t>(frames[i])) == 0)
                innermost = i;
    }
    const auto caller = reinterpret_cast<uintptr_t>(frames[innermost]);
    const int library = library_of(caller);
    g_tables->calls[g_tables->call_count++] = {
        hash, caller - g_libraries[library].base, number, kind, point, library == 1};
}

/// Counts a call; true if it is the one to fail.
bool count(CallKind kind, const char* point) {
    const uint32_t number = ++g_numbers[static_cast<int>(kind)];
    if (g_records) {
        g_inside = true;
        record(kind, point, number);
        g_inside = false;
    }
    if (kind != g_fail_kind || number != g_fail_number)
        return false;
    g_failed = true;
    return true;
}

int monitor(const char* name) { return g_counts && count(CallKind::point, name) ? g_fail_code : 0; }

size_t first_slot(const void* address) {
    return (reinterpret_cast<uintptr_t>(address) >> 4) * 0x9E3779B97F4A7C15u >> 46;
}

void track(void* address, size_t bytes, void* return_address) {
    const auto caller = reinterpret_cast<uintptr_t>(return_address);
    const int library = library_of(caller);
    if (library < 0)
        return;
    size_t at = first_slot(address);
    while (g_blocks[at].address != nullptr && g_blocks[at].bytes != 0)
        at = (at + 1) % k_max_blocks;
    g_blocks[at] = {address, caller - g_libraries[library].base,
                    static_cast<uint32_t>(bytes == 0 ? 1 : bytes), library == 1};
}

void forget(void* address) {
    // A freed entry keeps its address with 0 bytes, so that later entries are still found.
    for (size_t at = first_slot(address); g_blocks[at].address != nullptr;
         at = (at + 1) % k_max_blocks)
        if (g_blocks[at].address == address && g_blocks[at].bytes != 0) {
            g_blocks[at].bytes = 0;
            return;
        }
}

template <class Allocate>
void* allocate(size_t bytes, void* caller, const Allocate& get) {
    if (g_inside || (!g_counts && !g_tracks))
        return get();
    if (g_counts && count(CallKind::allocation, nullptr)) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const memory = get();
    if (g_tracks && memory != nullptr)
        track(memory, bytes, caller);
    return memory;
}

void release(void* memory) {
    if (g_tracks && memory != nullptr)
        forget(memory);
    __libc_free(memory);
}

} // namespace

void prepare_calls() {
    void* frames[2];
    backtrace(frames, 2); // loads the unwinder, which allocates
    dl_iterate_phdr(find_library, nullptr);
    g_tables = map_memory<Tables>(1, MAP_SHARED);
    g_blocks = map_memory<Block>(k_max_blocks, MAP_PRIVATE);
}

void start_recording() {
    g_tables->call_count = 0;
    g_records = g_counts = true;
    faultpoint::set_monitor(monitor);
}

const Call* recorded_calls(size_t& count) {
    count = g_tables->call_count;
    return g_tables->calls;
}

void start_failing(CallKind kind, uint32_t number, int code) {
    g_fail_kind = kind;
    g_fail_number = number;
    g_fail_code = code;
    g_counts = g_tracks = true;
    faultpoint::set_monitor(monitor);
}

void start_tracking() { g_tracks = true; }

void stop() {
    faultpoint::set_monitor(nullptr);
    g_records = g_counts = false;
}

bool has_failed() { return g_failed; }

size_t live_sites(LiveSite* sites, size_t room) {
    size_t found = 0;
    for (size_t i = 0; i < k_max_blocks; ++i) {
        const Block& block = g_blocks[i];
        if (block.bytes == 0)
            continue;
        size_t at = 0;
        while (at < found &&
               (sites[at].caller != block.caller || sites[at].in_platform != block.in_platform))
            ++at;
        if (at == room)
            continue;
        if (at == found)
            sites[found++] = {block.caller, 0, 0, block.in_platform};
        sites[at].count += 1;
        sites[at].bytes += block.bytes;
    }
    return found;
}

} // namespace faults

#define CALLER __builtin_return_address(0)

extern "C" {

void* malloc(size_t bytes) {
    return faults::allocate(bytes, CALLER, [=] { return __libc_malloc(bytes); });
}
void* calloc(size_t count, size_t bytes) {
    return faults::allocate(count * bytes, CALLER, [=] { return __libc_calloc(count, bytes); });
}
void* aligned_alloc(size_t alignment, size_t bytes) {
    return faults::allocate(bytes, CALLER, [=] { return __libc_memalign(alignment, bytes); });
}
void* realloc(void* old, size_t bytes) {
    void* const memory =
        faults::allocate(bytes, CALLER, [=] { return __libc_realloc(old, bytes); });
    if (memory != nullptr && old != nullptr && faults::g_tracks)
        faults::forget(old); // one of two entries if the block did not move
    return memory;
}
void free(void* memory) { faults::release(memory); }

} // extern "C"

void* operator new(size_t bytes) {
    void* const memory = faults::allocate(bytes, CALLER, [=] { return __libc_malloc(bytes); });
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void* operator new[](size_t bytes) {
    void* const memory = faults::allocate(bytes, CALLER, [=] { return __libc_malloc(bytes); });
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return faults::allocate(bytes, CALLER, [=] { return __libc_malloc(bytes); });
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
    return faults::allocate(bytes, CALLER, [=] { return __libc_malloc(bytes); });
}
void operator delete(void* memory) noexcept { faults::release(memory); }
void operator delete[](void* memory) noexcept { faults::release(memory); }
void operator delete(void* memory, size_t) noexcept { faults::release(memory); }
void operator delete[](void* memory, size_t) noexcept { faults::release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { faults::release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { faults::release(memory); }
