# Install rules, and the packages that cpack makes: a Debian package and a relocatable .tar.gz; on Windows a
# .zip. A build against a development kit has a package of its own (studio_package.cmake).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(share ${CMAKE_INSTALL_DATADIR}/tessora)
if(WIN32)
    # Everything in one folder: Windows looks for the DLLs of a program beside it.
    set(program_dir .)
    set(module_dir .)
    set(share .)
    set(doc_dir doc)
else()
    # Private libraries in a folder of their own, found by a run path relative to the module that needs them.
    set(program_dir ${CMAKE_INSTALL_BINDIR})
    set(module_dir lib/tessora)
    set(doc_dir ${CMAKE_INSTALL_DOCDIR})
endif()
set(modules tessora_plugin)
foreach(module IN ITEMS tessora_host tessora_d3dx9)
    if(TARGET ${module})
        get_target_property(kind ${module} TYPE)
        if(kind STREQUAL SHARED_LIBRARY)
            list(APPEND modules ${module})
        endif()
    endif()
endforeach()
if(NOT WIN32)
    # The run path is the same before and after the installation. CMake would otherwise reserve space for
    # the other one by empty elements, which the loader takes for the current directory.
    set_target_properties(${modules} PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
endif()

if(NOT WIN32)
    set_target_properties(tessora PROPERTIES INSTALL_RPATH "$ORIGIN/../lib/tessora"
        BUILD_WITH_INSTALL_RPATH ON)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    file(CREATE_LINK ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} ${CMAKE_BINARY_DIR}/lib/tessora SYMBOLIC)
endif()
install(TARGETS tessora RUNTIME DESTINATION ${program_dir} COMPONENT product)
install(TARGETS ${modules} RUNTIME DESTINATION ${module_dir} COMPONENT product
    LIBRARY DESTINATION ${module_dir} COMPONENT product NAMELINK_SKIP)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/scripts DESTINATION ${share} COMPONENT product
    FILES_MATCHING PATTERN "*.mel")
install(FILES README.md CHANGELOG.md LICENSE docs/maya.md DESTINATION ${doc_dir} COMPONENT product)
if(NOT WIN32)
    install(FILES packaging/copyright DESTINATION ${doc_dir} COMPONENT product)
    install(PROGRAMS packaging/slurm/unwrap_array.sh packaging/slurm/unwrap_parallel.sh
        DESTINATION ${share}/render_farm COMPONENT product)
    install(FILES packaging/openjd/tessora_unwrap.json DESTINATION ${share}/render_farm COMPONENT product)
endif()

if(NOT CMAKE_CROSSCOMPILING)
    include(cmake/manual.cmake)
endif()

# The bill of materials is written during installation, because it reads what the finished build linked. It
# asks ninja which headers were included, and dpkg which packages they came from.
find_package(Python3 COMPONENTS Interpreter)
find_program(DPKG_QUERY dpkg-query)
if(Python3_FOUND AND DPKG_QUERY AND CMAKE_GENERATOR STREQUAL "Ninja" AND NOT CMAKE_CROSSCOMPILING)
    install(CODE "execute_process(COMMAND \"${Python3_EXECUTABLE}\" \"${PROJECT_SOURCE_DIR}/tools/make_sbom.py\"
        \"${CMAKE_BINARY_DIR}\" COMMAND_ERROR_IS_FATAL ANY)" COMPONENT product)
    install(FILES ${CMAKE_BINARY_DIR}/tessora.spdx.json DESTINATION ${doc_dir} COMPONENT product)
endif()

# The engine as a library for other programs: tessora::atlas (C++17, static) and tessora::atlas_c (C, shared).
install(TARGETS tessora_atlas tessora_atlas_shared EXPORT tessora_atlas
    ARCHIVE DESTINATION lib COMPONENT engine
    LIBRARY DESTINATION lib COMPONENT engine
    RUNTIME DESTINATION ${program_dir} COMPONENT engine)
install(FILES atlas/atlas.h atlas/polygon_mesh.h DESTINATION include/tessora/atlas COMPONENT engine)
install(FILES atlas/c/tessora_atlas.h DESTINATION include/tessora/atlas/c COMPONENT engine)
install(FILES docs/atlas.md docs/atlas-packing.md docs/c.md DESTINATION ${doc_dir}/docs COMPONENT engine)
install(DIRECTORY examples DESTINATION ${doc_dir} COMPONENT engine)
set(config_dir lib/cmake/tessora_atlas)
install(EXPORT tessora_atlas NAMESPACE tessora:: FILE tessora_atlasTargets.cmake
    DESTINATION ${config_dir} COMPONENT engine)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tessora_atlasConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES packaging/tessora_atlasConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tessora_atlasConfigVersion.cmake
    DESTINATION ${config_dir} COMPONENT engine)
set(to_prefix ../..)
configure_file(packaging/tessora_atlas.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tessora_atlas.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tessora_atlas.pc DESTINATION lib/pkgconfig COMPONENT engine)

if(TARGET tessora_python)
    install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-tessora COMPONENT python)
    install(FILES docs/python.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-tessora COMPONENT python)
    install(FILES /usr/share/doc/pybind11-dev/copyright RENAME copyright.pybind11
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-tessora COMPONENT python OPTIONAL)
endif()

set(CPACK_PACKAGE_NAME tessora)
set(CPACK_PACKAGE_VENDOR "Brightfold Labs")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Brightfold Labs <tessora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Automatic UV unwrapping of polygon meshes")
set(CPACK_PACKAGE_DESCRIPTION "A program and a plug-in that give polygon meshes new texture
 coordinates: charts without flips or overlaps under a stretch limit, packed with the gutter asked for.
 The engine is there as a library of its own.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
    set(CPACK_MONOLITHIC_INSTALL ON)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_SYSTEM_NAME windows-x86_64)
else()
    set(CPACK_GENERATOR DEB TGZ)
    # The program with the engine, and the Python package: two Debian packages, one archive without Python.
    set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/cpack_components.cmake)
    set(CPACK_COMPONENTS_ALL product engine)
    set(CPACK_COMPONENT_PRODUCT_GROUP tessora)
    set(CPACK_COMPONENT_ENGINE_GROUP tessora)
    set(CPACK_DEBIAN_TESSORA_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_TESSORA_PACKAGE_NAME tessora)
    if(TARGET tessora_python)
        list(APPEND CPACK_COMPONENTS_ALL python)
        set(CPACK_COMPONENT_PYTHON_GROUP python)
        set(CPACK_DEBIAN_PYTHON_FILE_NAME DEB-DEFAULT)
        set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tessora)
        set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
        set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.11), python3 (<< 3.12), python3-numpy")
        set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Automatic UV unwrapping of polygon meshes, for Python
 Charts without flips or overlaps under a stretch limit, packed with the gutter asked for.")
    endif()
    set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()
include(CPack)
