/// Basic definitions of the host's interface: the version number, the export marks and the types
/// that several classes share. Every other header of this folder includes this one.
#pragma once

#include <cstddef>

/// Version of the interface, six digits: year, then two digits of update. Compare with >= only.
#define MAYA_API_VERSION 200800

/// Marks what the host library offers to plug-ins. Everything else in it stays hidden.
#if defined(_WIN32)
#if defined(MHOST_BUILDING)
#define MHOST_EXPORT __declspec(dllexport)
#else
#define MHOST_EXPORT __declspec(dllimport)
#endif
#else
#define MHOST_EXPORT __attribute__((visibility("default")))
#endif

/// Marks a plug-in's entry points, which the host looks up by their C++ names.
#ifndef PLUGIN_EXPORT
#if defined(_WIN32)
#define PLUGIN_EXPORT __declspec(dllexport)
#else
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif
#endif

/// Pair and triple shorthands used by mesh methods.
typedef float float2[2];
typedef float float3[3];
typedef double double2[2];
typedef double double3[3];
typedef int int2[2];
typedef int int3[3];
