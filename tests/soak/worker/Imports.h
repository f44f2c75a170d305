#pragma once

namespace quorvex::soak
{

/// Lets the module, the host library and this program call something else in a system function's place, for good.
void ReplaceImport(const char* function, void* replacement);

/// The function itself, past the import tables that are changed.
void* FindFunction(const wchar_t* library, const char* name);

template <class Function>
void Replace(const wchar_t* library, const char* name, Function& original, Function replacement)
{
    original = reinterpret_cast<Function>(FindFunction(library, name));
    ReplaceImport(name, reinterpret_cast<void*>(replacement));
}

} // namespace quorvex::soak
