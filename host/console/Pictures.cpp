#include "Pictures.h"

#include "LocalFile.h"
#include "StorageNames.h"
#include "Text.h"

#include <quorvex/Results.h>

#include <fstream>
#include <new>

namespace quorvex::console
{
namespace
{

/// The third generation's folder of the pictures that anybody has uploaded.
constexpr const wchar_t* kEverybodysPictures = L"0";

/// Memory that the module makes and takes back.
class ModuleBuffer
{
public:
    explicit ModuleBuffer(const CFileStorage3& module) : m_module(module) {}
    ~ModuleBuffer() { m_module.releaseBuffer(&m_data); }

    ModuleBuffer(const ModuleBuffer&) = delete;
    ModuleBuffer& operator=(const ModuleBuffer&) = delete;

    void Make(unsigned long size)
    {
        if (m_module.getBuffer(&m_data, size) != 0)
            throw std::bad_alloc();
        m_size = size;
    }

    /// @name Where the module puts a buffer that it has made
    /// @{
    void** DataPlace() { return &m_data; }
    unsigned long* SizePlace() { return &m_size; }
    /// @}

    char* Data() const { return static_cast<char*>(m_data); }
    unsigned long Size() const { return m_size; }

private:
    const CFileStorage3& m_module;
    void* m_data = nullptr;
    unsigned long m_size = 0;
};

void Read(const LocalPath& local, ModuleBuffer& buffer)
{
    buffer.Make(static_cast<unsigned long>(TransferableSize(local.Whole())));
    std::ifstream file(local.Whole(), std::ios::binary);
    if (!file.read(buffer.Data(), static_cast<std::streamsize>(buffer.Size())))
        throw Failure("cannot read " + ToUtf8(local.name), Result::LocalFileFailed);
}

int Write(const ModuleBuffer& buffer, const LocalPath& local)
{
    std::ofstream file(local.Whole(), std::ios::binary);
    if (!file)
        return Result::LocalFileFailed;
    file.write(buffer.Data(), static_cast<std::streamsize>(buffer.Size()));
    file.close();
    return file ? Result::Ok : Result::TransferFailed;
}

} // namespace

Outcome SendPicture(Storage& storage, const LocalPath& local)
{
    return {storage->PictureUpload(local.folder.c_str(), local.name.c_str()), "PictureUpload"};
}

Outcome SendPicture(Storage2& storage, const LocalPath& local)
{
    return {storage->PictureUpload(local.folder.c_str(), local.name.c_str()), "PictureUpload"};
}

Outcome SendPicture(Storage3& storage, const LocalPath& local)
{
    // This generation does not tell under which name the picture is kept.
    CheckThatNameIsSent(local.name, "give the file another name");
    ModuleBuffer picture(*storage.operator->());
    Read(local, picture);
    const int result = storage.Run([&](const CFileStorage3& client) {
        return client.PictureUpload(local.name.c_str(), picture.Data(), picture.Size());
    });
    return {result, "PictureUpload"};
}

Outcome FetchPicture(Storage& storage, const std::string& name, const LocalPath& local)
{
    // A picture's own operation gives the file its key as a name, and asks for the key as it is.
    if (Wide(name) == local.name && local.name.find_first_of(L"%#&+") == std::wstring::npos)
        return {storage->PictureDownload(local.folder.c_str(), local.name.c_str()), "PictureDownload"};
    const std::wstring escaped = QueryEscaped(name);
    return {storage->UserPhotoDownload(local.folder.c_str(), escaped.c_str(), local.name.c_str()), "UserPhotoDownload"};
}

Outcome FetchPicture(Storage2& storage, const std::string& name, const LocalPath& local)
{
    // The file gets the key as it is asked for as a name.
    const std::wstring key = QueryEscaped(name);
    if (SafeName(key, {}) != key)
        throw Failure("cannot download " + name + ": this generation writes a picture to a file of the same name, " +
                      "which the system does not allow; another generation can fetch it");
    const int result = storage->PictureDownload(local.folder.c_str(), key.c_str());
    if (result == Result::Ok && key != local.name)
        PutInPlace(LocalPath{local.folder, key}.Whole(), local.Whole());
    return {result, "PictureDownload"};
}

Outcome FetchPicture(Storage3& storage, const std::string& name, const LocalPath& local)
{
    ModuleBuffer picture(*storage.operator->());
    const int result = storage->PictureDownload(kEverybodysPictures, QueryEscaped(name).c_str(), picture.DataPlace(),
                                                picture.SizePlace());
    if (result == Result::Ok && picture.Data() == nullptr)
        throw Failure("cannot download " + name + ": there is no such picture, it is empty, or the server does not " +
                      "accept the session; this generation does not tell which");
    return result == Result::Ok ? Outcome(Write(picture, local)) : Outcome(result, "PictureDownload");
}

} // namespace quorvex::console
