#ifndef FERROLINK_EXPORT_H
#define FERROLINK_EXPORT_H

#if !defined(_WIN32)
#define FERROLINK_API
#elif defined(FERROLINK_BUILDING)
#define FERROLINK_API __declspec(dllexport)
#else
#define FERROLINK_API __declspec(dllimport)
#endif

#endif
