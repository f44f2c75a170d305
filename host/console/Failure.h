#pragma once

#include "ExitStatus.h"
#include "ResultText.h"

#include <optional>
#include <stdexcept>
#include <string>

#include <json/value.h>

namespace quorvex::console
{

/// What an operation of the module has returned, and which one it was.
struct Outcome
{
    explicit Outcome(int value) : result(value), operation("") {}
    Outcome(int value, const char* name) : result(value), operation(name) {}

    int result;
    const char* operation; ///< its name in the module; empty when the result is the console's own
};

/// Why a command could not do its work, as one plain sentence; with the module's result when that is the reason.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const std::string& sentence) : std::runtime_error(sentence) {}

    /// @param what    what could not be done, such as "cannot upload a.txt"
    /// @param outcome a result of the module other than 0; its meaning completes the sentence
    /// @param advice  what else there is to say; may be empty
    Failure(const std::string& what, Outcome outcome, const std::string& advice = {},
            Transport transport = Transport::Module);

    /// The same with a result that is the console's own.
    Failure(const std::string& what, int result) : Failure(what, Outcome(result)) {}

    /// That the user has wanted it.
    static Failure Interruption(const std::string& sentence);

    std::optional<int> Code() const { return m_code; }

    /// The module's operation; empty when there is none.
    const std::string& Operation() const { return m_operation; }

    /// What the result means; the whole sentence when there is none.
    std::string Meaning() const { return m_code ? MeaningOf(*m_code, m_transport) : what(); }

    int Status() const { return m_status; }

    /// The same failure told by another sentence.
    Failure Told(const std::string& sentence) const;

    /// The members of a JSON object that every failure has.
    Json::Value Members() const;

private:
    std::optional<int> m_code;
    std::string m_operation;
    Transport m_transport = Transport::Module;
    int m_status = ExitStatus::kFailed;
};

/// Throws a Failure unless the result is 0.
inline void Check(Outcome outcome, const std::string& what, Transport transport = Transport::Module)
{
    if (outcome.result != 0)
        throw Failure(what, outcome, {}, transport);
}

} // namespace quorvex::console
