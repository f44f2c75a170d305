#pragma once

#include "Book.h"
#include "Operations.h"

#include <quorvex/quorvex.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace quorvex::soak
{

struct Account
{
    std::wstring name;
    std::wstring password;
    std::wstring uid;
    std::wstring session;
    std::wstring blowfish;
    std::wstring ticket;
};

/// What was acknowledged, and how much of it was found at the end.
struct Verdict
{
    std::atomic<std::uint64_t> files = 0;
    std::atomic<std::uint64_t> filesVerified = 0;
    std::atomic<std::uint64_t> bytesVerified = 0;
    std::atomic<std::uint64_t> deletions = 0;
    std::atomic<std::uint64_t> deletionsVerified = 0;
    std::atomic<std::uint64_t> others = 0; ///< folders, items of the bin, share codes, values, presence
    std::atomic<std::uint64_t> othersVerified = 0;
    std::atomic<std::uint64_t> uncertain = 0;
};

/// What the tasks of one thread share.
struct Setting
{
    int number;
    std::wstring server;
    std::filesystem::path folder;
    std::size_t mostFiles; ///< how many entries each book can have
    Tally& tally;
    Verdict& verdict;
    Random random;
    std::uint64_t names = 0;
    std::array<std::size_t, static_cast<std::size_t>(Op::Count)> turns{};

    int Note(Op operation, int result) const { return tally.Note(operation, result); }

    /// Counts an operation that has no result; what it gave has to be right.
    void NoteRight(Op operation, bool isRight, const char* what) const
    {
        Note(operation, Result::Ok);
        Require(isRight, what);
    }

    void Require(bool isRight, const std::string& what) const
    {
        if (!isRight)
        {
            tally.Fail(what + " (thread " + std::to_string(number) + ")");
        }
    }

    /// A name that no other file of the run has.
    std::wstring NewName(const wchar_t* kind, const wchar_t* ending);

    /// Takes the ways to do something by turns, so that each of them occurs; threads begin with different ones.
    /// @param operation one of the operations, to tell the places apart
    std::size_t Turn(Op operation, std::size_t ways);
    bool Turn(Op operation) { return Turn(operation, 2) == 0; }

    /// Mostly small; now and then of several MiB.
    Content NewContent();

    /// A local file for one operation, removed at its end.
    class LocalFile
    {
    public:
        LocalFile(const Setting& setting, const std::wstring& name) : m_path(setting.folder / name) {}
        LocalFile(const LocalFile&) = delete;
        LocalFile& operator=(const LocalFile&) = delete;
        ~LocalFile()
        {
            std::error_code ignored;
            std::filesystem::remove(m_path, ignored);
        }

        void Write(const Content& content) const { WriteFile(m_path, content.Bytes()); }
        std::string Read() const { return ReadFile(m_path); }

    private:
        std::filesystem::path m_path;
    };

    /// Compares what a successful download gave.
    /// @param mayEndEarly whether the operation leaves it to its caller to notice a missing end
    /// @return whether all has come
    bool Check(const std::string& come, const Content& stored, bool mayEndEarly, const std::string& what) const;

    /// At the end: something acknowledged was looked for.
    void Verify(std::atomic<std::uint64_t>& all, std::atomic<std::uint64_t>& found, bool isFound,
                const std::string& what) const;
    void VerifyFile(const Content& content, bool isFound, const std::string& what) const;
    void VerifyDeletion(bool isFound, const std::string& what) const;
    void VerifyOther(bool isFound, const std::string& what) const;
};

/// How many files of one kind are kept; above that, tasks that add one do nothing.
inline constexpr std::size_t kMostLive = 64;

/// Whether the names of headers survive the system, which reads those in its ANSI code page.
bool IsAscii(std::wstring_view text);

std::string Narrow(std::wstring_view text);

/// Tries an operation again that failed, as a host does that knows it to be repeatable.
template <class Operation>
int TryThrice(Operation operation)
{
    int result = operation();
    for (int i = 0; i < 2 && result != Result::Ok; ++i)
    {
        result = operation();
    }
    return result;
}

} // namespace quorvex::soak
