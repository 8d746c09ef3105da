#include "platform/d3dx9/host_hooks.h"

#include <windows.h>

namespace d3dx9 {
namespace {

/// The system looks functions up per module, so the application's library has to be named.
void* find(const char* name) {
    const HMODULE host = GetModuleHandleA("tessora_host.dll");
    return host != nullptr ? reinterpret_cast<void*>(GetProcAddress(host, name)) : nullptr;
}

} // namespace

StageHook find_stage_hook() { return reinterpret_cast<StageHook>(find("host_report_stage")); }

EffortHook find_effort_hook() { return reinterpret_cast<EffortHook>(find("host_layout_effort")); }

ParallelHook find_parallel_hook() {
    return reinterpret_cast<ParallelHook>(find("host_parallel_for"));
}

} // namespace d3dx9
