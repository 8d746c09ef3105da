/// Basic definitions of the public interface: version number, export macros and shared types.
/// Included by all other headers of this folder.
#pragma once

#include <cstddef>

/// Interface version: year and a two-digit update number. Compare with >= only.
#define MAYA_API_VERSION 200800

/// Exports a symbol from the host library; all other symbols are hidden.
#if defined(_WIN32)
#if defined(MHOST_BUILDING)
#define MHOST_EXPORT __declspec(dllexport)
#else
#define MHOST_EXPORT __declspec(dllimport)
#endif
#else
#define MHOST_EXPORT __attribute__((visibility("default")))
#endif

/// Exports a plug-in's entry points, which the host looks up by their C++ names.
#ifndef PLUGIN_EXPORT
#if defined(_WIN32)
#define PLUGIN_EXPORT __declspec(dllexport)
#else
#define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif
#endif

/// Pairs and triples used by mesh methods.
typedef float float2[2];
typedef float float3[3];
typedef double double2[2];
typedef double double3[3];
typedef int int2[2];
typedef int int3[3];
