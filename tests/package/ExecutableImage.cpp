#include "ExecutableImage.h"
#include "support/TempFolder.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <windows.h>

namespace quorvex::test
{
namespace
{

void Require(bool isSo, const char* why)
{
    if (!isSo)
        throw std::runtime_error(why);
}

} // namespace

ExecutableImage::ExecutableImage(const std::filesystem::path& path) : m_bytes(support::readFile(path))
{
    const auto dos = RecordAt<IMAGE_DOS_HEADER>(0);
    Require(dos.e_magic == IMAGE_DOS_SIGNATURE, "the file is no program");
    const auto start = static_cast<std::size_t>(dos.e_lfanew);
    const auto headers = RecordAt<IMAGE_NT_HEADERS>(start);
    Require(headers.Signature == IMAGE_NT_SIGNATURE, "the file is no Windows program");
    Require(headers.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR_MAGIC, "the file is of another pointer size");

    m_characteristics = headers.FileHeader.Characteristics;
    m_loaderCharacteristics = headers.OptionalHeader.DllCharacteristics;
    m_secondsOfBuild = headers.FileHeader.TimeDateStamp;
    m_relocations = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size;
    m_exports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    ReadSections(start + offsetof(IMAGE_NT_HEADERS, OptionalHeader) + headers.FileHeader.SizeOfOptionalHeader,
                 headers.FileHeader.NumberOfSections);
}

template <typename Record>
Record ExecutableImage::RecordAt(std::size_t offset) const
{
    Require(offset <= m_bytes.size() && sizeof(Record) <= m_bytes.size() - offset, "the file ends too early");
    Record record;
    std::memcpy(&record, m_bytes.data() + offset, sizeof(record));
    return record;
}

void ExecutableImage::ReadSections(std::size_t offset, std::size_t count)
{
    constexpr DWORD writableCode = IMAGE_SCN_MEM_EXECUTE | IMAGE_SCN_MEM_WRITE;
    for (std::size_t i = 0; i != count; ++i)
    {
        const auto header = RecordAt<IMAGE_SECTION_HEADER>(offset + i * sizeof(IMAGE_SECTION_HEADER));
        const auto* const name = reinterpret_cast<const char*>(header.Name);
        m_sections.push_back({std::string(name, strnlen(name, sizeof(header.Name))), header.VirtualAddress,
                              header.SizeOfRawData, header.PointerToRawData,
                              (header.Characteristics & writableCode) == writableCode});
    }
}

std::vector<std::string> ExecutableImage::WritableCode() const
{
    std::vector<std::string> names;
    for (const auto& section : m_sections)
    {
        if (section.isWritableCode)
            names.push_back(section.name);
    }
    return names;
}

std::size_t ExecutableImage::OffsetOf(std::size_t address) const
{
    for (const auto& section : m_sections)
    {
        if (address >= section.address && address - section.address < section.size)
            return section.offset + (address - section.address);
    }
    throw std::runtime_error("an address is in no section");
}

std::vector<std::string> ExecutableImage::ExportedNames() const
{
    std::vector<std::string> names;
    if (m_exports == 0)
        return names;
    const auto table = RecordAt<IMAGE_EXPORT_DIRECTORY>(OffsetOf(m_exports));
    for (DWORD i = 0; i != table.NumberOfNames; ++i)
    {
        const auto name = RecordAt<std::uint32_t>(OffsetOf(table.AddressOfNames) + i * sizeof(std::uint32_t));
        const std::size_t offset = OffsetOf(name);
        names.push_back(m_bytes.substr(offset, m_bytes.find('\0', offset) - offset));
    }
    return names;
}

} // namespace quorvex::test
