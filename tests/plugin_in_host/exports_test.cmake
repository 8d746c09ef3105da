# The plug-in exports only its entry points and the version symbol: any other symbol could clash with
# other plug-ins of the same process.
execute_process(COMMAND ${NM} -D --defined-only ${PLUGIN} OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "nm failed on ${PLUGIN}")
endif()
string(REGEX MATCHALL "[^ \n]+\n" symbols "${listing}")
string(REPLACE "\n" "" symbols "${symbols}")
list(SORT symbols)
set(expected MApiVersion _Z16initializePlugin7MObject _Z18uninitializePlugin7MObject)
if(NOT "${symbols}" STREQUAL "${expected}")
    message(FATAL_ERROR "exported: ${symbols}\nexpected: ${expected}")
endif()
