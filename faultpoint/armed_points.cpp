#include "faultpoint/faultpoint.h"

#include <map>
#include <string>

namespace faultpoint {
namespace {

struct Setting {
    int code;
    unsigned first;
    unsigned times;
    unsigned passes;
};

std::map<std::string, Setting>& settings() {
    static std::map<std::string, Setting> map;
    return map;
}

Monitor g_monitor = nullptr;

int pass(const char* name) {
    if (g_monitor != nullptr) {
        const int code = g_monitor(name);
        if (code != 0 || settings().empty())
            return code;
    }
    const auto found = settings().find(name);
    if (found == settings().end())
        return 0;
    Setting& setting = found->second;
    setting.passes += 1;
    if (setting.passes < setting.first)
        return 0;
    if (setting.times != 0 && setting.passes >= setting.first + setting.times)
        return 0;
    return setting.code;
}

} // namespace

/// find_record() looks for this name.
extern "C" {
TESSORA_FAULTPOINT_API Record tessora_fault_record = {0, pass};
}

namespace {

void update_count() {
    tessora_fault_record.armed_count =
        static_cast<int>(settings().size()) + (g_monitor != nullptr ? 1 : 0);
}

} // namespace

void arm(const char* name, int code, unsigned nth, unsigned times) {
    settings()[name] = Setting{code, nth == 0 ? 1 : nth, times, 0};
    update_count();
}

void disarm(const char* name) {
    settings().erase(name);
    update_count();
}

void disarm_all() {
    settings().clear();
    update_count();
}

void set_monitor(Monitor monitor) {
    g_monitor = monitor;
    update_count();
}

unsigned passes(const char* name) {
    const auto found = settings().find(name);
    return found == settings().end() ? 0 : found->second.passes;
}

} // namespace faultpoint
