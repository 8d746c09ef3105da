# cmake -DPROGRAM=tessora -DOUT=FOLDER -DCOMMANDS=LIST -P print_manual.cmake
function(print file)
    execute_process(COMMAND ${PROGRAM} ${ARGN} OUTPUT_FILE ${OUT}/${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(MAKE_DIRECTORY ${OUT}/man1)
print(man1/tessora.1 manual)
foreach(command IN LISTS COMMANDS)
    print(man1/tessora-${command}.1 manual ${command})
endforeach()
print(tessora.bash completion bash)
print(_tessora completion zsh)
print(tessora.fish completion fish)
