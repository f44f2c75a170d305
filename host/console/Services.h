#pragma once

namespace quorvex::console
{

/// What a group of commands talks to.
struct Service
{
    const wchar_t* variable;  ///< of the environment, where its address is taken from when none is given
    const char* path;         ///< where it is on a server of all services
    const char* localAddress; ///< its address when there is none in the environment either
    bool takesTickets;
};

inline constexpr Service kNetDisk{L"QUORVEX_SERVER", "/object", "http://127.0.0.1:8080/object", true};
inline constexpr Service kStorage{L"QUORVEX_STORAGE", "/storage", "http://127.0.0.1:8080/storage", false};
inline constexpr Service kSearch{L"QUORVEX_SEARCH", "/search", "http://127.0.0.1:8080/search", true};

} // namespace quorvex::console
