#include "wire/Client.h"

#include <quorvex/FileStorage3.h>

#include <cstring>
#include <functional>
#include <map>

namespace wire
{
namespace
{

using Ulong = unsigned long;
using quorvex::CFileStorage3;

using Operation = std::function<std::string(CFileStorage3&, Arguments&)>;
using Operations = std::map<std::string, Operation>;

/// What stands where a buffer's pointer is to go.
char untouched;

/// PictureDownload(folder, name, bytes picture[6], out size): the picture and the zero behind it are copied to the
/// third argument, and the module's buffer is given back.
std::string pictureDownload(const CFileStorage3& storage, Arguments& a)
{
    char* const copy = static_cast<char*>(a.buffer(2));
    Ulong* const size = a.isNull(3) ? nullptr : &a.out<Ulong>(3);
    void* buffer = &untouched;
    const int result = storage.PictureDownload(a.text(0), a.text(1), copy == nullptr ? nullptr : &buffer, size);
    if (buffer == &untouched)
        return shown(result);
    if (size == nullptr || *size + std::size_t{1} > a.room(2))
        return "a picture that does not fit";
    std::memcpy(copy, buffer, *size + std::size_t{1});
    storage.releaseBuffer(&buffer);
    return shown(result);
}

/// getBuffer(bytes behind[1], 100): fills and releases it; what stands behind it is copied to the first argument.
std::string getBuffer(const CFileStorage3& storage, Arguments& a)
{
    const auto size = a.number<Ulong>(1);
    void* buffer = &untouched;
    const int result = storage.getBuffer(&buffer, size);
    if (buffer == &untouched)
        return shown(result);
    std::memcpy(a.buffer(0), static_cast<char*>(buffer) + size, 1);
    std::memset(buffer, 'x', size);
    void* const before = buffer;
    storage.releaseBuffer(&buffer);
    return buffer == before ? shown(result) : "another pointer";
}

/// releaseBuffer(null), or releaseBuffer(0) for a place with a null pointer.
std::string releaseBuffer(const CFileStorage3& storage, Arguments& a)
{
    void* none = nullptr;
    storage.releaseBuffer(a.isNull(0) ? nullptr : &none);
    return none == nullptr ? "void" : "another pointer";
}

const Operations& operations()
{
    static const Operations all{
        {"exit",
         [](auto& storage, auto&) {
             storage.exit();
             return std::string("void");
         }},
        {"UserLogin", [](auto& storage, auto& a) { return shown(storage.UserLogin(a.text(0))); }},
        {"UserLogout", [](auto& storage, auto&) { return shown(storage.UserLogout()); }},
        {"PictureUpload",
         [](auto& storage, auto& a) {
             return shown(storage.PictureUpload(a.text(0), a.buffer(1), a.template number<Ulong>(2)));
         }},
        {"PictureDownload", pictureDownload},
        {"BufferUpload",
         [](auto& storage, auto& a) {
             return shown(storage.BufferUpload(a.wide(0), a.buffer(1), a.template number<Ulong>(2),
                                               a.template number<Ulong>(3), a.text(4), a.wide(5),
                                               a.template number<int>(6)));
         }},
        {"Bufferdownload",
         [](auto& storage, auto& a) {
             return shown(storage.Bufferdownload(a.text(0), a.text(1), a.template number<Ulong>(2), a.buffer(3),
                                                 a.template out<Ulong>(4)));
         }},
        {"getBuffer", getBuffer},
        {"releaseBuffer", releaseBuffer},
    };
    return all;
}

class Storage3Client : public Client
{
public:
    explicit Storage3Client(const Arguments& a)
        : m_storage(a.text(0), a.text(1), timeout(a, 2), timeout(a, 3), timeout(a, 4), timeout(a, 5))
    {
    }

    std::string call(const std::string& operation, Arguments& arguments) override
    {
        const auto found = operations().find(operation);
        if (found == operations().end())
            throw CaseError("unknown operation " + operation);
        return found->second(m_storage, arguments);
    }

private:
    CFileStorage3 m_storage;
};

} // namespace

std::unique_ptr<Client> makeStorage3(const Arguments& arguments)
{
    return std::make_unique<Storage3Client>(arguments);
}

} // namespace wire
