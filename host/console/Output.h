#pragma once

#include "Failure.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <json/value.h>

namespace quorvex::console
{

/// Writes UTF-8 to the standard output; to a console as wide text, so that every script is shown.
/// @throws Failure when it cannot be written
void WriteOut(std::string_view text);

/// The same for the standard error stream, where a failure has nowhere to be told.
void WriteError(std::string_view text);

/// Tells people of a failure there, in one line.
void WriteFailure(const Failure& failure);

/// How many columns the standard error stream's terminal has; 0 when it is none.
std::size_t ErrorColumns();

/// What a command has to tell, for people and for machines.
class Report
{
public:
    /// @param name  the JSON member, and the label
    /// @param value the JSON value; a text serves people as well
    void Add(const std::string& name, const std::string& value) { Add(name, value, value); }

    /// @param text the value as people want to read it
    void Add(const std::string& name, const Json::Value& value, const std::string& text);

    /// What machines read only: people find it in a text that AddText gives them.
    void AddData(const std::string& name, const Json::Value& value) { m_object[name] = value; }

    const Json::Value& Data() const { return m_object; }

    /// What people read below the values: whole lines.
    void AddText(const std::string& lines) { m_text += lines; }

    /// Has the command count as failed, although there is something to tell.
    void SetFailure(const Failure& failure) { m_failure = failure; }
    const std::optional<Failure>& WhyFailed() const { return m_failure; }

    /// One line for each value, the values below each other. What is in a value does not steer the terminal.
    std::string ForPeople() const;

    /// One line with one object; "ok" is true, unless there is a failure, whose members it then has too.
    std::string ForMachines() const;

private:
    Json::Value m_object{Json::objectValue};
    std::vector<std::pair<std::string, std::string>> m_lines;
    std::string m_text;
    std::optional<Failure> m_failure;
};

/// One line of JSON in UTF-8.
std::string JsonLine(const Json::Value& value);

} // namespace quorvex::console
