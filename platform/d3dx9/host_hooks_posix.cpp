#include "platform/d3dx9/host_hooks.h"

#include <dlfcn.h>

namespace d3dx9 {

StageHook find_stage_hook() {
    return reinterpret_cast<StageHook>(dlsym(RTLD_DEFAULT, "host_report_stage"));
}

EffortHook find_effort_hook() {
    return reinterpret_cast<EffortHook>(dlsym(RTLD_DEFAULT, "host_layout_effort"));
}

ParallelHook find_parallel_hook() {
    return reinterpret_cast<ParallelHook>(dlsym(RTLD_DEFAULT, "host_parallel_for"));
}

} // namespace d3dx9
