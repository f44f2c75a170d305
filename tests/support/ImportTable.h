#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// The import address table of a loaded module: what it calls outside of itself.
class ImportTable
{
public:
    explicit ImportTable(HMODULE module) : m_module(module) {}

    /// @return the entry through which the module calls the function, or null when it does not import it
    void** entry(std::string_view function) const;

    /// Every function that the module imports by its name.
    std::vector<std::string> functions() const;

private:
    void forEach(const std::function<void(std::string_view function, void** entry)>& action) const;

    HMODULE m_module;
};

/// Points one entry elsewhere as long as it lives.
class ImportPatch
{
public:
    ImportPatch(void** entry, void* replacement);
    ~ImportPatch();

    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    void* original() const { return m_original; }

private:
    void** m_entry;
    void* m_original;
};

} // namespace support
