#include "Output.h"

#include "Text.h"

#include <algorithm>

#include <json/writer.h>
#include <windows.h>

namespace quorvex::console
{
namespace
{

bool IsTerminal(HANDLE handle)
{
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

bool Write(HANDLE handle, std::string_view text)
{
    DWORD written = 0;
    if (IsTerminal(handle))
    {
        const std::wstring wide = Wide(text);
        return WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0;
    }
    return WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0 &&
           written == text.size();
}

} // namespace

void WriteOut(std::string_view text)
{
    if (!Write(GetStdHandle(STD_OUTPUT_HANDLE), text))
        throw Failure("the standard output cannot be written");
}

void WriteError(std::string_view text)
{
    Write(GetStdHandle(STD_ERROR_HANDLE), text);
}

void WriteFailure(const Failure& failure)
{
    WriteError("quorvex: " + Printable(failure.what()) + '\n');
}

std::size_t ErrorColumns()
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const bool isTerminal = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) != 0;
    return isTerminal && info.dwSize.X > 0 ? static_cast<std::size_t>(info.dwSize.X) : 0;
}

void Report::Add(const std::string& name, const Json::Value& value, const std::string& text)
{
    m_object[name] = value;
    m_lines.emplace_back(name, text);
}

std::string Report::ForPeople() const
{
    std::size_t width = 0;
    for (const auto& line : m_lines)
        width = std::max(width, line.first.size());
    std::string text;
    for (const auto& [name, value] : m_lines)
        text += name + std::string(width - name.size() + 2, ' ') + Printable(value) + '\n';
    return text + m_text;
}

std::string Report::ForMachines() const
{
    Json::Value object = m_object;
    object["ok"] = true;
    if (m_failure)
    {
        const Json::Value members = m_failure->Members();
        for (const std::string& name : members.getMemberNames())
            object[name] = members[name];
    }
    return JsonLine(object);
}

std::string JsonLine(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value) + '\n';
}

} // namespace quorvex::console
