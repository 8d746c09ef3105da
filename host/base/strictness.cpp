#include "host/base/strictness.h"

#include <cstdlib>
#include <string_view>

namespace host {

namespace {

bool& strict_flag() {
    static bool strict = [] {
        const char* const text = std::getenv("TESSORA_HOST_STRICT");
        return text == nullptr || std::string_view(text) != "0";
    }();
    return strict;
}

} // namespace

bool is_strict() { return strict_flag(); }
void set_strict(bool strict) { strict_flag() = strict; }

} // namespace host
