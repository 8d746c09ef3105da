/// The program knows the atlas library's functions by name and type alone; here both are compared
/// with the library's own declarations.
#include "app/atlas_library.h"
#include "app/system.h"
#include "platform/d3dx9/inspect.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace {

/// Types with the same size and sign, whatever their names are on this system.
template <class A, class B>
constexpr bool is_same_integer =
    sizeof(A) == sizeof(B) && std::is_integral_v<A>&& std::is_integral_v<B>&& std::is_signed_v<A> ==
                                  std::is_signed_v<B>;

static_assert(is_same_integer<HRESULT, std::invoke_result_t<app::LastResult>>);
static_assert(is_same_integer<DWORD, uint32_t>);
static_assert(std::is_same_v<decltype(d3dx9_last_reason), app::LastReason>);
static_assert(std::is_invocable_r_v<unsigned, decltype(d3dx9_over_limit), const DWORD**>);

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

TEST(AtlasLibrary, ExportsEveryFunctionThatTheProgramLooksUp) {
    using app::k_atlas_library, app::loaded_function;
    EXPECT_EQ(address(d3dx9_last_result),
              loaded_function(k_atlas_library, app::k_last_result_name));
    EXPECT_EQ(address(d3dx9_last_reason),
              loaded_function(k_atlas_library, app::k_last_reason_name));
    EXPECT_EQ(address(d3dx9_over_limit), loaded_function(k_atlas_library, app::k_over_limit_name));
}

TEST(AtlasLibrary, UnknownFunctionsAndLibrariesAreNull) {
    EXPECT_EQ(nullptr, app::loaded_function(app::k_atlas_library, "d3dx9_no_such_function"));
    EXPECT_EQ(nullptr, app::loaded_function("no_such_library", app::k_last_result_name));
}

} // namespace
