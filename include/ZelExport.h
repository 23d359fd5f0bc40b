// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ZEL_EXPORT_H
#define ZELCONFUTILS_ZEL_EXPORT_H

/// Marks what the library exports. Users need to define nothing: a static build passes
/// ZELCONFUTILS_STATIC to them by way of the CMake target and the pkg-config file.
#if defined(ZELCONFUTILS_STATIC)
#define ZELCONFUTILS_API
#elif !defined(_WIN32)
#define ZELCONFUTILS_API __attribute__((visibility("default")))
#elif defined(ZELCONFUTILS_BUILDING)
#define ZELCONFUTILS_API __declspec(dllexport)
#else
#define ZELCONFUTILS_API __declspec(dllimport)
#endif

#endif
