#include "support/HandleLedger.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace support
{

HandleLedger::HandleLedger(SystemCalls& calls) : m_calls(calls)
{
    m_calls.watch([this](const SystemCall& call) { book(call); });
}

HandleLedger::~HandleLedger()
{
    m_calls.watch(nullptr);
}

void HandleLedger::book(const SystemCall& call)
{
    struct Role
    {
        std::string_view function;
        Kind kind;
        bool opens;
    };
    static constexpr std::array<Role, 14> roles{{
        {"WinHttpOpen", Kind::WinHttp, true},
        {"WinHttpConnect", Kind::WinHttp, true},
        {"WinHttpOpenRequest", Kind::WinHttp, true},
        {"WinHttpCloseHandle", Kind::WinHttp, false},
        {"CreateFileW", Kind::Kernel, true},
        {"CreateFileMappingW", Kind::Kernel, true},
        {"CloseHandle", Kind::Kernel, false},
        {"MapViewOfFile", Kind::View, true},
        {"UnmapViewOfFile", Kind::View, false},
        {"CreateEventW", Kind::Kernel, true},
        {"frl_http_session_create", Kind::Session, true},
        {"frl_http_session_close", Kind::Session, false},
        {"frl_event_add_win32_event", Kind::Registration, true},
        {"frl_event_remove_win32_event", Kind::Registration, false},
    }};
    const auto role = std::ranges::find(roles, call.function, &Role::function);
    if (role == roles.end())
        return;
    if (role->opens)
    {
        const std::uintptr_t handle = role->kind == Kind::Registration ? call.firstArgument : call.result;
        if (!call.failed && m_open.emplace(std::pair(role->kind, handle), call.function).second)
            ++m_opened;
        return;
    }
    // A failed CreateFileW leaves a value that may be closed, too: that closes nothing.
    // So may a session that there is none of.
    const bool isNoHandle = (role->kind == Kind::Kernel && call.firstArgument == static_cast<std::uintptr_t>(-1)) ||
                            (role->kind == Kind::Session && call.firstArgument == 0);
    if (m_open.erase({role->kind, call.firstArgument}) == 0 && !isNoHandle)
        m_strays.emplace_back(call.function);
}

std::vector<std::string> HandleLedger::defects() const
{
    std::vector<std::string> found;
    for (const auto& [handle, function] : m_open)
        found.push_back("left open: a handle of " + function);
    for (const std::string& function : m_strays)
        found.push_back(function + " of a handle that is not open");
    return found;
}

} // namespace support
