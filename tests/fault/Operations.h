#pragma once

#include "support/PageGuards.h"
#include "support/ScriptedServer.h"

#include <quorvex/FileStorage.h>
#include <quorvex/FileStorage2.h>
#include <quorvex/FileStorage3.h>
#include <quorvex/NetDisk.h>
#include <quorvex/OnlineUserSearch.h>

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Every operation of the five classes, with the answers that let it end well.
namespace operations
{

/// The caller's rooms, as small as each may be; behind each is a protected page.
struct Rooms
{
    support::AtPageEnd<wchar_t> key{40};
    support::AtPageEnd<wchar_t> name{20};
    support::AtPageEnd<wchar_t> second{20};
    support::AtPageEnd<wchar_t> third{20};
    support::AtPageEnd<wchar_t> md5{33};
    support::AtPageEnd<wchar_t> sha1{41};
    support::AtPageEnd<char> block{5};
    support::AtPageEnd<unsigned> ids{2};
    support::AtPageEnd<wchar_t> longKey{65};
    support::AtPageEnd<wchar_t> ticket{65};
    support::AtPageEnd<char> input{5};
    mutable std::string values{}; ///< what else an operation has handed out

    /// Empties the rooms, and fills the input.
    void prepare() const;

    /// Notes what a call has handed out beside the rooms: numbers, and vectors of records.
    /// @return the call's result
    template <typename... Values>
    int handed(int result, const Values&... each) const
    {
        (note(each), ...);
        return result;
    }

    /// Everything that has been handed out.
    std::string contents() const;

private:
    template <typename Value>
    void note(const Value& value) const
    {
        values.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    template <typename Record>
    void note(const std::vector<Record>& records) const
    {
        values.append(reinterpret_cast<const char*>(records.data()), records.size() * sizeof(Record));
    }
};

/// What an operation returned, and what it returned when the same client was asked again.
struct Results
{
    int first;
    int again;
};

/// Called between the stages of a client's life.
struct Stages
{
    std::function<void()> made;
    std::function<void()> calledOnce;
};

/// A client is made, does one thing, does it again, and is destroyed.
struct Operation
{
    using OfNetDisk = std::function<int(quorvex::netdisk::CNetDisk&, const wchar_t* folder, const Rooms&)>;
    using OfStorage = std::function<int(quorvex::CFileStorage&, const wchar_t* folder, const Rooms&)>;
    using OfStorage2 = std::function<int(quorvex::CFileStorage2&, const wchar_t* folder, const Rooms&)>;
    using OfStorage3 = std::function<int(const quorvex::CFileStorage3&, const Rooms&)>;
    using OfSearch = std::function<int(quorvex::COnlineUserSearch&, const Rooms&)>;

    Operation(const char* operation, const char* body, OfNetDisk call);
    /// Without credentials: a login that fails before a transfer is no failure of the transfer.
    Operation(const char* operation, const char* body, OfStorage call);
    Operation(const char* operation, const char* body, OfStorage2 call);
    Operation(const char* operation, const char* body, OfStorage3 call, int success = 0);
    Operation(const char* operation, const char* body, OfSearch call);

    std::string name;
    std::string content; ///< of the good answer
    support::Exchange answer;
    int good = 0;                               ///< the result when nothing fails
    std::string login{};                        ///< the content that answers a login; empty: there is none
    std::optional<support::Exchange> refusal{}; ///< of the first request that is no login
    bool isCompressed = false;
    bool readsForTheLog = false;     ///< a body that cannot be read changes nothing
    std::string lineWithoutMemory{}; ///< shows when some allocation fails
    std::function<Results(const wchar_t* url, const wchar_t* folder, const Rooms&, const Stages&)> run;
};

void PrintTo(const Operation& operation, std::ostream* out);

/// Answers every request of one run.
std::function<support::Exchange(const std::string& head)> answersOf(const Operation& operation);

const std::vector<Operation>& netDiskOperations();
const std::vector<Operation>& storageOperations();
const std::vector<Operation>& storage2Operations();
const std::vector<Operation>& storage3Operations();
const std::vector<Operation>& searchOperations();

/// Some of them with compressed answers.
const std::vector<Operation>& compressedOperations();
/// Some of them with a server that refuses, and says why in a compressed body.
const std::vector<Operation>& refusedOperations();
/// Some of them with a session that has expired: they log in again.
const std::vector<Operation>& expiredOperations();

} // namespace operations
