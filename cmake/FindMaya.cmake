# Finds the host's development kit in TESSORA_MAYA_DEVKIT: the folder that contains include/maya, either of
# the separate kit or of the installed application.
#
# Defines MAYA_API_VERSION as the headers state it, MAYA_LIBRARIES, the names of the libraries that a plug-in
# for this version needs, and for each of them a target Maya::NAME. Places of the libraries:
#   Windows  lib/OpenMaya.lib
#   Linux    lib/libOpenMaya.so
#   macOS    Maya.app/Contents/MacOS/libOpenMaya.dylib, or MacOS/ or lib/ in kits
find_path(MAYA_INCLUDE_DIR maya/MFnMesh.h
    PATHS ${TESSORA_MAYA_DEVKIT}/include ${TESSORA_MAYA_DEVKIT}/devkit/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
set(MAYA_API_VERSION "")
foreach(header IN ITEMS MTypes.h MApiVersion.h)
    if(NOT MAYA_API_VERSION AND EXISTS "${MAYA_INCLUDE_DIR}/maya/${header}")
        file(STRINGS "${MAYA_INCLUDE_DIR}/maya/${header}" line REGEX "#define[ \t]+MAYA_API_VERSION[ \t]+[0-9]+")
        string(REGEX MATCH "[0-9][0-9][0-9][0-9][0-9][0-9]+" MAYA_API_VERSION "${line}")
    endif()
endforeach()

# What is drawn in the modern viewport is in a library of its own (plugin/kit.h, KIT_HAS_MODERN_DRAWING).
set(MAYA_LIBRARIES OpenMaya OpenMayaUI Foundation)
if(MAYA_API_VERSION GREATER_EQUAL 201600)
    list(APPEND MAYA_LIBRARIES OpenMayaRender)
endif()
foreach(library IN LISTS MAYA_LIBRARIES)
    find_library(MAYA_${library}_LIBRARY NAMES ${library} lib${library}.so lib${library}.dylib ${library}.lib
        PATHS ${TESSORA_MAYA_DEVKIT}/lib ${TESSORA_MAYA_DEVKIT}/MacOS
              ${TESSORA_MAYA_DEVKIT}/Maya.app/Contents/MacOS
              ${TESSORA_MAYA_DEVKIT}/../../Maya.app/Contents/MacOS
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    mark_as_advanced(MAYA_${library}_LIBRARY)
endforeach()
list(TRANSFORM MAYA_LIBRARIES REPLACE "(.+)" "MAYA_\\1_LIBRARY" OUTPUT_VARIABLE variables)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Maya
    REQUIRED_VARS MAYA_INCLUDE_DIR ${variables}
    REASON_FAILURE_MESSAGE "no kit in TESSORA_MAYA_DEVKIT (${TESSORA_MAYA_DEVKIT})")

# Macros by which the kit's headers recognise the system.
set(definitions "")
if(WIN32)
    set(definitions NT_PLUGIN)
elseif(APPLE)
    set(definitions OSMac_ REQUIRE_IOSTREAM)
else()
    set(definitions LINUX _BOOL REQUIRE_IOSTREAM Bits64_)
endif()

if(Maya_FOUND)
    foreach(library IN LISTS MAYA_LIBRARIES)
        if(CMAKE_SCRIPT_MODE_FILE OR TARGET Maya::${library})
            continue() # targets do not exist in script mode (cmake -P)
        endif()
        add_library(Maya::${library} UNKNOWN IMPORTED)
        set_target_properties(Maya::${library} PROPERTIES
            IMPORTED_LOCATION "${MAYA_${library}_LIBRARY}"
            INTERFACE_INCLUDE_DIRECTORIES "${MAYA_INCLUDE_DIR}"
            INTERFACE_COMPILE_DEFINITIONS "${definitions}")
    endforeach()
endif()
mark_as_advanced(MAYA_INCLUDE_DIR)
