#pragma once

#include "support/SystemCalls.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace support
{

/// Books every WinHTTP handle, file handle, file mapping, view and event that the module opens and closes, and its
/// sessions and registrations with the host's library.
class HandleLedger
{
public:
    explicit HandleLedger(SystemCalls& calls);
    ~HandleLedger();

    HandleLedger(const HandleLedger&) = delete;
    HandleLedger& operator=(const HandleLedger&) = delete;

    /// What is wrong with the books: handles still open, and handles closed without having been opened.
    std::vector<std::string> defects() const;

    /// How many handles have been opened in all.
    unsigned opened() const { return m_opened; }

private:
    void book(const SystemCall& call);

    enum class Kind
    {
        WinHttp,
        Kernel,
        View,
        Session,
        Registration
    };
    SystemCalls& m_calls;
    std::map<std::pair<Kind, std::uintptr_t>, std::string> m_open;
    std::vector<std::string> m_strays;
    unsigned m_opened = 0;
};

} // namespace support
