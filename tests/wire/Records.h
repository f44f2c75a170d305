#pragma once

#include "wire/Pattern.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wire
{

/// A vector of records that an operation is given.
class Records
{
public:
    Records() = default;
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;
    virtual ~Records() = default;

    /// @param expected the records as a case writes them: {fkey="k", size=5} 3*{}; null when they must be as before
    /// @return nothing when the vector holds just these
    virtual std::string difference(const std::string* expected, const Variables& variables) const = 0;
};

/// The same, its type known.
template <class Record>
class RecordVector : public Records
{
public:
    virtual std::vector<Record>& records() = 0;
};

/// The words for vectors in a case: files, files-utf8 ...
const std::vector<std::string>& recordsKinds();

/// @param keys one for each record that the vector holds at first
std::unique_ptr<Records> makeRecords(std::string_view kind, const std::vector<std::string>& keys);

} // namespace wire
