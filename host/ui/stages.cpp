#include "host/ui/stages.h"

namespace {

host::StageListener* current_listener = nullptr;
int layout_effort = 4;

} // namespace

namespace host {

void set_stage_listener(StageListener* listener) { current_listener = listener; }

void set_layout_effort(int effort) { layout_effort = effort; }

} // namespace host

int host_report_stage(const char* stage, float fraction) {
    if (current_listener == nullptr)
        return 0;
    return current_listener->reached(stage, fraction) ? 0 : 1;
}

int host_layout_effort() { return layout_effort; }
