# The package of a build against a development kit: an archive to unpack into a folder of MAYA_MODULE_PATH, or
# into one for application packages.
#
#   tessora.mod                         where the module is, for which version and system
#   tessora/PackageContents.xml         the same for a folder of application packages
#   tessora/Contents/plug-ins, scripts  found by their names
#
# A build serves one version of the application on one system, and both files say so.
string(SUBSTRING "${MAYA_API_VERSION}" 0 4 maya_version)
if(WIN32)
    set(maya_platform win64)
elseif(APPLE)
    set(maya_platform mac)
else()
    set(maya_platform linux)
endif()
set(plugin_file $<TARGET_FILE_NAME:tessora_plugin>)
foreach(file IN ITEMS tessora.mod PackageContents.xml)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/${file}.in ${CMAKE_BINARY_DIR}/studio/${file}.in @ONLY)
    file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/studio/${file} INPUT ${CMAKE_BINARY_DIR}/studio/${file}.in)
endforeach()

set(plugins tessora/Contents/plug-ins)
install(TARGETS tessora_plugin LIBRARY DESTINATION ${plugins} RUNTIME DESTINATION ${plugins})
get_target_property(kind tessora_d3dx9 TYPE)
if(kind STREQUAL SHARED_LIBRARY)
    install(TARGETS tessora_d3dx9 LIBRARY DESTINATION ${plugins} NAMELINK_SKIP RUNTIME DESTINATION ${plugins})
endif()
if(NOT WIN32)
    # The atlas library lies beside the plug-in, wherever the archive is unpacked.
    set_target_properties(tessora_plugin PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/scripts DESTINATION tessora/Contents FILES_MATCHING PATTERN "*.mel")
install(FILES ${CMAKE_BINARY_DIR}/studio/tessora.mod DESTINATION .)
install(FILES ${CMAKE_BINARY_DIR}/studio/PackageContents.xml README.md CHANGELOG.md LICENSE docs/maya.md
    DESTINATION tessora)

set(CPACK_GENERATOR TGZ)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
endif()
set(CPACK_PACKAGE_NAME tessora)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME tessora-${PROJECT_VERSION}-maya${maya_version}-${maya_platform})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
