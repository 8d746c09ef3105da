/// What differs between the kits that the plug-in is built with, by their version number.
#pragma once

#include <maya/MTypes.h>

/// Kits from 2016 on ask a node how its evaluation may be scheduled.
#define KIT_HAS_SCHEDULING (MAYA_API_VERSION >= 201600)

/// Kits from 2012 on know the modern viewport, in which OpenGL 1.x calls draw nothing or raise
/// errors.
#define KIT_HAS_MODERN_VIEWPORT (MAYA_API_VERSION >= 201200)

/// The calls by which a plug-in draws in the modern viewport have the form used here in kits from
/// 2016 on; earlier ones lack some.
#define KIT_HAS_MODERN_DRAWING (MAYA_API_VERSION >= 201600)

/// From 2023 on the host alone decides how long the data of a drawing lives.
#define KIT_OWNS_DRAW_DATA (MAYA_API_VERSION >= 20230000)

/// Marks the entry points for export. Newer kits define it; with compilers other than GCC and Clang
/// the build exports them by linker options.
#ifndef PLUGIN_EXPORT
#if defined(__GNUC__)
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#else
#define PLUGIN_EXPORT
#endif
#endif

/// Between these two, calls that newer kits mark as deprecated compile without a warning. They are
/// still the only way to draw into a panel of the legacy viewport.
#if defined(__GNUC__)
#define KIT_DEPRECATED_BEGIN                                                                       \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wdeprecated-declarations\"")
#define KIT_DEPRECATED_END _Pragma("GCC diagnostic pop")
#elif defined(_MSC_VER)
#define KIT_DEPRECATED_BEGIN __pragma(warning(push)) __pragma(warning(disable : 4996))
#define KIT_DEPRECATED_END __pragma(warning(pop))
#else
#define KIT_DEPRECATED_BEGIN
#define KIT_DEPRECATED_END
#endif
