#pragma once

#include "hostile/Stage.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hostile
{

/// An operation of the module, and what its callers are promised.
struct Operation
{
    enum class Class
    {
        NetDisk,
        Storage,
        Storage2,
        Storage3,
        Search
    };

    enum class Kind
    {
        Plain,   ///< of the answer's body nothing is read but its length
        Json,    ///< the body is parsed
        File,    ///< the body becomes a local file
        Memory,  ///< the body is handed out
        HeadOnly ///< only the headers are read
    };

    std::string name;
    Class of;
    Kind kind;
    std::string body; ///< of a good answer
    std::function<int(Stage&)> call;
    int success = 0;
    /// The negative results that there are, and 1.
    std::vector<int> failures;
    int noAnswer; ///< when no whole head of an answer came

    /// Headers that a good answer has beside its length.
    std::string headers() const;

    /// Whether the headers promise this result: success, one of the failures, an HTTP status or the server's code.
    bool isDocumented(int result) const;

    /// What a body may end with that is shorter than announced.
    std::vector<int> cutShort() const;

    bool overSessionService() const { return of == Class::Storage2 || of == Class::Storage3; }
};

/// All operations that reach the server, each class's together.
const std::vector<Operation>& operations();

/// @param name for example "CNetDisk.FolderList"
const Operation& operation(std::string_view name);

/// Those that stand for their likes: every class, kind and way through the transport.
const std::vector<const Operation*>& representatives();

} // namespace hostile
