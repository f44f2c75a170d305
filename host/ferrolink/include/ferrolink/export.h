#ifndef FERROLINK_EXPORT_H
#define FERROLINK_EXPORT_H

/// @file
/// How a name is taken from ferrolink.dll. The library's own build defines FERROLINK_BUILDING.

/// @def FERROLINK_API
/// Marks what ferrolink.dll exports.

#if !defined(_WIN32)
#define FERROLINK_API
#elif defined(FERROLINK_BUILDING)
#define FERROLINK_API __declspec(dllexport)
#else
#define FERROLINK_API __declspec(dllimport)
#endif

#endif
