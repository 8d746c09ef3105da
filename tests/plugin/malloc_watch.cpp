#include "tests/plugin/malloc_watch.h"

namespace {

// Static storage: the recording itself must not allocate.
constexpr size_t k_max_blocks = 4096;
struct {
    bool on = false;
    int fail = MallocWatch::k_none;
    size_t count = 0;
    void* blocks[k_max_blocks];
    size_t sizes[k_max_blocks];
} g_watch;

} // namespace

extern "C" {
void* __real_malloc(size_t size);
void __real_free(void* block);

__attribute__((visibility("default"))) void* __wrap_malloc(size_t size) {
    if (!g_watch.on || g_watch.count == k_max_blocks)
        return __real_malloc(size);
    const size_t number = g_watch.count++;
    g_watch.sizes[number] = size;
    g_watch.blocks[number] =
        static_cast<int>(number) == g_watch.fail ? nullptr : __real_malloc(size);
    return g_watch.blocks[number];
}

__attribute__((visibility("default"))) void __wrap_free(void* block) {
    for (size_t i = 0; i < g_watch.count && block != nullptr; ++i)
        if (g_watch.blocks[i] == block)
            g_watch.blocks[i] = nullptr;
    __real_free(block);
}
}

MallocWatch::MallocWatch(int fail) {
    g_watch.count = 0;
    g_watch.fail = fail;
    g_watch.on = true;
}

MallocWatch::~MallocWatch() {
    g_watch.on = false;
    g_watch.count = 0;
}

std::vector<size_t> MallocWatch::requests() {
    return {g_watch.sizes, g_watch.sizes + g_watch.count};
}

std::vector<size_t> MallocWatch::live() {
    std::vector<size_t> sizes;
    for (size_t i = 0; i < g_watch.count; ++i)
        if (g_watch.blocks[i] != nullptr)
            sizes.push_back(g_watch.sizes[i]);
    return sizes;
}

void MallocWatch::free_live() {
    for (size_t i = 0; i < g_watch.count; ++i)
        if (g_watch.blocks[i] != nullptr)
            __wrap_free(g_watch.blocks[i]);
}
