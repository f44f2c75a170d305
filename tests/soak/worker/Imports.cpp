#include "Imports.h"

#include "support/ImportTable.h"

#include <windows.h>

#include <deque>

namespace quorvex::soak
{

void ReplaceImport(const char* function, void* replacement)
{
    // Never destroyed: what was replaced is still called when the process ends.
    static auto& patches = *new std::deque<support::ImportPatch>;
    for (const wchar_t* name : {L"quorvex.dll", L"ferrolink.dll", static_cast<const wchar_t*>(nullptr)})
    {
        if (void** const entry = support::ImportTable(::GetModuleHandleW(name)).entry(function))
        {
            patches.emplace_back(entry, replacement);
        }
    }
}

void* FindFunction(const wchar_t* library, const char* name)
{
    return reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(library), name));
}

} // namespace quorvex::soak
