# Compile options of every target: warnings are errors, and no fused multiply-add, so that floating-point
# results do not depend on the compiler.
add_library(tessora_warnings INTERFACE)
if(MSVC)
    target_compile_options(tessora_warnings INTERFACE /W3 /fp:precise /permissive- /EHsc)
    return()
endif()
target_compile_options(tessora_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror -ffp-contract=off)

if(TESSORA_SANITIZE)
    add_compile_options(-fsanitize=${TESSORA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TESSORA_SANITIZE})
endif()
