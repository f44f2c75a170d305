#pragma once

#include "Failure.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

namespace quorvex::console
{

enum class CheckState
{
    Ok,
    Failed,
    Skipped
};

/// One thing that was tried.
struct CheckResult
{
    std::string step;
    CheckState state = CheckState::Ok;
    std::string detail; ///< what was found, or why it was not tried
    std::optional<Failure> failure;
};

/// What was tried of one service, in its order. A step that needs what has failed before is not tried.
class ServiceCheck
{
public:
    ServiceCheck(std::string service, std::string server) : m_service(std::move(service)), m_server(std::move(server))
    {
    }

    /// @param step does it and returns what was found; a failure that it throws is that of the step
    void Try(const std::string& name, const std::function<std::string()>& step);

    /// The same, whatever has failed before.
    void TryAnyway(const std::string& name, const std::function<std::string()>& step);

    void Skip(const std::string& name, const std::string& reason);

    const std::string& Service() const { return m_service; }
    const std::vector<CheckResult>& Results() const { return m_results; }
    std::size_t Failures() const;

    /// Lines for people.
    std::string Text() const;
    Json::Value ToJson() const;

private:
    void Note(const std::string& name, const Failure& failure);

    std::string m_service;
    std::string m_server;
    std::string m_brokenBy; ///< the first step that has failed
    std::vector<CheckResult> m_results;
};

/// The failure of all checks together, by their first one; nothing when all is well.
std::optional<Failure> FailureOf(const std::vector<ServiceCheck>& checks);

} // namespace quorvex::console
