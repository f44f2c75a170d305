#pragma once

#include "common/Crypto.h"
#include "common/Database.h"
#include "common/FileHandle.h"
#include "common/SteadyWriter.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::services
{

struct BlobContent
{
    std::string md5;
    std::uint64_t size = 0;

    bool operator==(const BlobContent&) const = default;
};

// Files of content that the services' rows refer to. Equal content is held once and counted: the last reference that
// goes takes the file with it. A file is complete and on the disk before a row names it.
class BlobStore
{
public:
    // A complete file of the store that no row names yet; removed again unless Reference adopts it.
    class Staged
    {
    public:
        Staged(std::filesystem::path file, BlobContent content);
        Staged(Staged&& other) noexcept;
        Staged& operator=(Staged&&) = delete;
        Staged(const Staged&) = delete;
        Staged& operator=(const Staged&) = delete;
        ~Staged();

        const BlobContent& Content() const { return content_; }

    private:
        friend class BlobStore;

        std::filesystem::path file_;
        BlobContent content_;
    };

    // Content that is still arriving, in a temporary file.
    class Incoming
    {
    public:
        explicit Incoming(const std::filesystem::path& folder);
        Incoming(const Incoming&) = delete;
        Incoming& operator=(const Incoming&) = delete;
        ~Incoming();

        void Append(std::string_view bytes);
        std::uint64_t Size() const { return writer_.Position(); }

        // What has arrived; nothing is appended after that.
        BlobContent Finish();
        FileHandle Read() const { return {path_, FileHandle::Mode::Read}; }

    private:
        friend class BlobStore;

        std::filesystem::path path_;
        SteadyWriter writer_;
        Md5 md5_;
    };

    BlobStore(Database& database, const std::filesystem::path& root);

    // Removes what a killed process left behind: temporary files, and content that no row names.
    void Recover();

    const std::filesystem::path& TemporaryFolder() const { return temporary_; }

    Staged Stage(Incoming& incoming);

    // Stages a file that keeps its own name as well, until its owner removes it.
    Staged StageLink(const std::filesystem::path& source, BlobContent content);

    // One more reference to this content, when it is held.
    std::optional<std::int64_t> ReferenceExisting(Transaction& transaction, const BlobContent& content);

    // One more reference to the content, which is held from now on. The staged file must outlive the transaction.
    std::int64_t Reference(Transaction& transaction, Staged& staged);

    void Release(Transaction& transaction, std::int64_t blob);

    FileHandle Open(Transaction& transaction, std::int64_t blob) const;

private:
    std::filesystem::path PathOf(const std::string& name) const;
    std::filesystem::path NewPath();

    Database& database_;
    std::filesystem::path root_;
    std::filesystem::path temporary_;
    std::mutex newFolder_;
};

} // namespace quorvex::services
