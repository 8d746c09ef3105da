# Protection against memory errors in what this build makes: canaries on the stack, checked calls of the C
# library, addresses that are chosen at load, and tables of the loader that are read-only from then on. Where
# sanitizers check more than these do, they are left out; Windows has its own.
if(WIN32 OR MSVC OR TESSORA_SANITIZE OR TESSORA_BUILD_FUZZ)
    return()
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX) # with CMAKE_POSITION_INDEPENDENT_CODE, programs are linked with -pie
add_compile_options(-fstack-protector-strong)
# The checked calls need optimisation; with another build type the C library would only warn.
add_compile_options("$<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>")
add_link_options(-Wl,-z,relro,-z,now)
