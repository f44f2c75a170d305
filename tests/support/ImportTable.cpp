#include "support/ImportTable.h"

#include <stdexcept>

namespace support
{
namespace
{

bool writeEntry(void** entry, void* value) noexcept
{
    DWORD protection = 0;
    if (VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection) == FALSE)
        return false;
    *entry = value;
    return VirtualProtect(entry, sizeof *entry, protection, &protection) != FALSE;
}

} // namespace

void ImportTable::forEach(const std::function<void(std::string_view, void**)>& action) const
{
    auto* const base = reinterpret_cast<unsigned char*>(m_module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.Size == 0)
        return;

    for (auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         import->Name != 0; ++import)
    {
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* address = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address)
        {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
                continue;
            const auto* const byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            action(reinterpret_cast<const char*>(byName->Name), reinterpret_cast<void**>(&address->u1.Function));
        }
    }
}

void** ImportTable::entry(std::string_view function) const
{
    void** found = nullptr;
    forEach([&](std::string_view name, void** entry) {
        if (name == function)
            found = entry;
    });
    return found;
}

std::vector<std::string> ImportTable::functions() const
{
    std::vector<std::string> names;
    forEach([&](std::string_view name, void**) { names.emplace_back(name); });
    return names;
}

ImportPatch::ImportPatch(void** entry, void* replacement) : m_entry(entry), m_original(*entry)
{
    if (!writeEntry(entry, replacement))
        throw std::runtime_error("the import table cannot be written");
}

ImportPatch::~ImportPatch()
{
    writeEntry(m_entry, m_original);
}

} // namespace support
