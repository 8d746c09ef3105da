# Targets: tessora::atlas (C++17, static) and tessora::atlas_c (C, shared).
include(${CMAKE_CURRENT_LIST_DIR}/tessora_atlasTargets.cmake)
if(NOT TARGET tessora::tessora_atlas) # the target's name before 2.11
    add_library(tessora::tessora_atlas ALIAS tessora::atlas)
endif()
