#pragma once

#include "ResultText.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace quorvex::console
{

/// Why a command could not do its work, as one plain sentence; with the module's result when that is the reason.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const std::string& sentence) : std::runtime_error(sentence) {}

    /// @param what   what could not be done, such as "cannot upload a.txt"
    /// @param result a result of the module other than 0; its meaning completes the sentence
    /// @param advice what else there is to say; may be empty
    Failure(const std::string& what, int result, const std::string& advice = {},
            Transport transport = Transport::Module);

    std::optional<int> Code() const { return m_code; }

    /// What the result means; the whole sentence when there is none.
    std::string Meaning() const { return m_code ? MeaningOf(*m_code, m_transport) : what(); }

private:
    std::optional<int> m_code;
    Transport m_transport = Transport::Module;
};

/// Throws a Failure unless the result is 0.
inline void Check(int result, const std::string& what, Transport transport = Transport::Module)
{
    if (result != 0)
        throw Failure(what, result, {}, transport);
}

} // namespace quorvex::console
