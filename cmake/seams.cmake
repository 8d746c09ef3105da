# Chooses which implementation of the host API (<maya/...>) and of the platform API (<d3dx9.h>) a build uses:
# ours, or that of a development kit or of Windows. Each is an include directory plus a link target, so that
# sources need no #ifdef. No other file makes this choice.
set(TESSORA_MAYA_DEVKIT "" CACHE PATH "devkit to build the plug-in against; empty: the embedded host")
set(TESSORA_UVATLAS platform CACHE STRING "platform | portable (Windows only)")

add_library(tessora_seam_host INTERFACE)
add_library(tessora::host_api ALIAS tessora_seam_host)
add_library(tessora_seam_d3dx INTERFACE)
add_library(tessora::d3dx_api ALIAS tessora_seam_d3dx)

if(NOT TESSORA_MAYA_DEVKIT)
    add_subdirectory(host)
    target_link_libraries(tessora_seam_host INTERFACE tessora_host)
else()
    find_package(Maya REQUIRED)
    list(TRANSFORM MAYA_LIBRARIES PREPEND Maya:: OUTPUT_VARIABLE libraries)
    target_link_libraries(tessora_seam_host INTERFACE ${libraries})
endif()

if(NOT TESSORA_UVATLAS MATCHES "^(platform|portable)$")
    message(FATAL_ERROR "TESSORA_UVATLAS is ${TESSORA_UVATLAS}; it can be platform or portable")
endif()
if(NOT WIN32)
    add_subdirectory(platform)
    target_link_libraries(tessora_seam_d3dx INTERFACE tessora_platform)
else()
    # The linker takes a function from the first library that defines it: the two atlas functions from ours,
    # all others from the system's.
    if(TESSORA_UVATLAS STREQUAL portable)
        add_subdirectory(platform/d3dx9)
        target_link_libraries(tessora_seam_d3dx INTERFACE tessora_d3dx9)
    endif()
    target_link_libraries(tessora_seam_d3dx INTERFACE d3dx9_43 d3d9)
endif()
