/// OpenGL 1.x, wherever the system keeps its header.
#pragma once

#if defined(__APPLE__)
#define GL_SILENCE_DEPRECATION
#include <OpenGL/gl.h>
#else
#if defined(_WIN32)
// <GL/gl.h> of that system uses its calling conventions without including them.
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#endif
#include <GL/gl.h>
#endif
