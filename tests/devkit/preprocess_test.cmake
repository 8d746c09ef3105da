# Preprocesses a header of the plug-in as the compiler of another system would, with stand-ins for the
# system's headers, and checks the text that is left.
file(REMOVE_RECURSE ${WORK})
foreach(header IN ITEMS maya/MTypes.h OpenGL/gl.h GL/gl.h windows.h)
    string(MAKE_C_IDENTIFIER ${header} marker)
    file(WRITE ${WORK}/${header} "included_${marker}\n")
endforeach()

function(preprocess result)
    file(WRITE ${WORK}/source.cpp "#include \"plugin/${HEADER}\"\nPLUGIN_EXPORT marked\n")
    execute_process(COMMAND ${COMPILER} -E -P -nostdinc ${ARGN} -I${WORK} -I${ROOT} ${WORK}/source.cpp
        OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "[ \r\n]+" " " text "${text}")
    string(STRIP "${text}" text)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(expect text wanted)
    if(NOT "${text}" STREQUAL "${wanted}")
        message(FATAL_ERROR "expected: ${wanted}\nfound:    ${text}")
    endif()
endfunction()

set(HEADER kit.h)
preprocess(msvc -U__GNUC__ -D_MSC_VER=1938)
expect("${msvc}" "included_maya_MTypes_h marked")
preprocess(gcc)
expect("${gcc}" "included_maya_MTypes_h __attribute__((visibility(\"default\"))) marked")

set(HEADER opengl.h)
preprocess(macos -D__APPLE__ -U_WIN32)
expect("${macos}" "included_OpenGL_gl_h PLUGIN_EXPORT marked")
preprocess(windows -D_WIN32 -U__APPLE__)
expect("${windows}" "included_windows_h included_GL_gl_h PLUGIN_EXPORT marked")
preprocess(linux -U_WIN32 -U__APPLE__)
expect("${linux}" "included_GL_gl_h PLUGIN_EXPORT marked")
