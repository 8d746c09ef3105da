#include "host/ui/stages.h"

namespace {

host::StageListener* current_listener = nullptr;

} // namespace

namespace host {

void set_stage_listener(StageListener* listener) { current_listener = listener; }

} // namespace host

int host_report_stage(const char* stage, float fraction) {
    if (current_listener == nullptr)
        return 0;
    return current_listener->reached(stage, fraction) ? 0 : 1;
}
