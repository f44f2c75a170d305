#ifndef QUORVEX_EXPORT_H
#define QUORVEX_EXPORT_H

/// @file
/// How a name is taken from quorvex.dll. The module's own build defines QUORVEX_BUILDING.

/// @def QUORVEX_API
/// Marks what quorvex.dll exports.

#if !defined(_WIN32)
#define QUORVEX_API
#elif defined(QUORVEX_BUILDING)
#define QUORVEX_API __declspec(dllexport)
#else
#define QUORVEX_API __declspec(dllimport)
#endif

#endif
