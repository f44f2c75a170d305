#include "ChildProcess.h"

#include "Handle.h"

#include <windows.h>

#include <array>
#include <stdexcept>

namespace quorvex::bench
{

namespace
{

std::wstring OwnPath()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::string ReadToEnd(HANDLE pipe)
{
    std::string text;
    std::array<char, 256> chunk;
    DWORD count = 0;
    while (::ReadFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr) != FALSE && count != 0)
    {
        text.append(chunk.data(), count);
    }
    return text;
}

/// A pipe of which only the writing end is inherited.
struct Pipe
{
    Handle reading;
    Handle writing;

    Pipe()
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE read = nullptr;
        HANDLE write = nullptr;
        Check(::CreatePipe(&read, &write, &inherited, 0), "CreatePipe");
        reading.reset(read);
        writing.reset(write);
        Check(::SetHandleInformation(read, HANDLE_FLAG_INHERIT, 0), "SetHandleInformation");
    }
};

Handle Start(const std::wstring& arguments, HANDLE output)
{
    std::wstring commandLine = L"\"" + OwnPath() + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    Check(
        ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process),
        "CreateProcessW");
    const Handle thread(process.hThread);
    return Handle(process.hProcess);
}

} // namespace

std::string RunSelf(const std::wstring& arguments)
{
    Pipe pipe;
    const Handle process = Start(arguments, pipe.writing.get());
    // With this end open, the reading below would not see the child's end.
    pipe.writing.reset();
    std::string output = ReadToEnd(pipe.reading.get());

    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD status = 1;
    Check(::GetExitCodeProcess(process.get(), &status), "GetExitCodeProcess");
    if (status != 0)
    {
        throw std::runtime_error("a process started to be measured ended with status " + std::to_string(status));
    }
    return output;
}

} // namespace quorvex::bench
