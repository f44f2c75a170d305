#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvex::test
{

/// A DLL or a program as it lies on disk, of this program's own pointer size.
class ExecutableImage
{
public:
    /// Throws std::runtime_error when the file is none.
    explicit ExecutableImage(const std::filesystem::path& path);

    /// What the file says about itself, as IMAGE_FILE_... bits.
    unsigned Characteristics() const { return m_characteristics; }

    /// What its loader may do with it, as IMAGE_DLLCHARACTERISTICS_... bits.
    unsigned LoaderCharacteristics() const { return m_loaderCharacteristics; }

    /// Since 1970; 0 when it is not told.
    unsigned SecondsOfBuild() const { return m_secondsOfBuild; }

    /// Addresses that the loader mends when it puts the image elsewhere than planned, in bytes of their table.
    std::size_t SizeOfRelocations() const { return m_relocations; }

    /// Names of the sections whose memory is writable and executable at once.
    std::vector<std::string> WritableCode() const;

    /// In the order of the table, which is sorted.
    std::vector<std::string> ExportedNames() const;

    /// Whether these bytes are anywhere in the file.
    bool Contains(const std::string& bytes) const { return m_bytes.find(bytes) != std::string::npos; }

private:
    struct Section
    {
        std::string name;
        std::size_t address;
        std::size_t size;
        std::size_t offset;
        bool isWritableCode;
    };

    template <typename Record>
    Record RecordAt(std::size_t offset) const;

    void ReadSections(std::size_t offset, std::size_t count);

    /// Where in the file lies what is loaded at an address relative to the image's start.
    std::size_t OffsetOf(std::size_t address) const;

    std::string m_bytes;
    unsigned m_characteristics = 0;
    unsigned m_loaderCharacteristics = 0;
    unsigned m_secondsOfBuild = 0;
    std::size_t m_relocations = 0;
    std::size_t m_exports = 0;
    std::vector<Section> m_sections;
};

} // namespace quorvex::test
