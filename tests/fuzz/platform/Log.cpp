#include "Log.h"

#include "Expect.h"

#include <ferrolink/log.h>

#include <string_view>

namespace
{

constexpr unsigned kAllLevels = FRL_LOG_TRACE | FRL_LOG_DEBUG | FRL_LOG_ERROR;

thread_local std::size_t errorLines = 0;

} // namespace

std::size_t quorvex::fuzz::ErrorLines()
{
    return errorLines;
}

// Everything is logged, so that what the lines are made of is watched, too.
unsigned frl_log_get_level()
{
    return kAllLevels;
}

void frl_log_write(unsigned level, const wchar_t* line, size_t length)
{
    const std::wstring_view text(line, length);
    const bool isError = level == FRL_LOG_ERROR;
    Expect(isError == text.starts_with(L"[ERROR] "), "an ERROR line says so");
    Expect(isError || text.starts_with(level == FRL_LOG_TRACE ? L"[TRACE] " : L"[DEBUG] "),
           "a line begins with its level");
    const std::size_t tag = text.rfind(L"\t[.\\src\\");
    Expect(tag != std::wstring_view::npos && text.ends_with(L"]\n"), "a line ends with its place");
    errorLines += isError ? 1 : 0;
}
