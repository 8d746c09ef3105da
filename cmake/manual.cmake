# Manual pages and completion scripts, printed by the program that they are about.
set(manual ${CMAKE_BINARY_DIR}/manual)
set(commands unwrap pack measure verify report serve view script shell)
set(pages man1/tessora.1)
foreach(command IN LISTS commands)
    list(APPEND pages man1/tessora-${command}.1)
endforeach()
list(TRANSFORM pages PREPEND ${manual}/)
set(completions ${manual}/tessora.bash ${manual}/_tessora ${manual}/tessora.fish)
add_custom_command(OUTPUT ${pages} ${completions}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:tessora> -DOUT=${manual} "-DCOMMANDS=${commands}"
        -P ${PROJECT_SOURCE_DIR}/cmake/print_manual.cmake
    DEPENDS tessora ${PROJECT_SOURCE_DIR}/cmake/print_manual.cmake
    COMMENT "Printing the manual" VERBATIM)
add_custom_target(tessora_manual ALL DEPENDS ${pages} ${completions})

install(DIRECTORY ${manual}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT product)
install(FILES ${manual}/tessora.bash RENAME tessora
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT product)
install(FILES ${manual}/_tessora DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT product)
install(FILES ${manual}/tessora.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
    COMPONENT product)
