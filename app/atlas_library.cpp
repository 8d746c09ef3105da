#include "app/atlas_library.h"

#include "app/system.h"

namespace app {
namespace {

constexpr int32_t k_no_room = static_cast<int32_t>(0x88760867u);       // D3DERR_MOREDATA
constexpr int32_t k_out_of_memory = static_cast<int32_t>(0x8007000Eu); // E_OUTOFMEMORY

template <class Function>
Function* find(const char* name) {
    return reinterpret_cast<Function*>(loaded_function(k_atlas_library, name));
}

} // namespace

int32_t last_atlas_result() {
    const auto function = find<LastResult>(k_last_result_name);
    return function ? function() : 0;
}

bool atlas_had_no_room() { return last_atlas_result() == k_no_room; }

bool atlas_ran_out_of_memory() { return last_atlas_result() == k_out_of_memory; }

std::string last_atlas_reason() {
    const auto function = find<LastReason>(k_last_reason_name);
    return function ? function() : "";
}

std::vector<uint32_t> triangles_over_limit() {
    const auto function = find<OverLimit>(k_over_limit_name);
    const uint32_t* triangles = nullptr;
    const unsigned count = function ? function(&triangles) : 0;
    return {triangles, triangles + count};
}

} // namespace app
