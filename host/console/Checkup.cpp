#include "Checkup.h"

#include "Text.h"

#include <algorithm>
#include <exception>

namespace quorvex::console
{
namespace
{

const char* WordOf(CheckState state)
{
    switch (state)
    {
    case CheckState::Ok:
        return "ok";
    case CheckState::Failed:
        return "failed";
    case CheckState::Skipped:
        break;
    }
    return "skipped";
}

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

} // namespace

void ServiceCheck::Try(const std::string& name, const std::function<std::string()>& step)
{
    if (m_brokenBy.empty())
        TryAnyway(name, step);
    else
        Skip(name, "needs " + m_brokenBy);
}

void ServiceCheck::TryAnyway(const std::string& name, const std::function<std::string()>& step)
{
    try
    {
        m_results.push_back({name, CheckState::Ok, step(), {}});
    }
    catch (const Failure& failure)
    {
        Note(name, failure);
    }
    catch (const std::exception& error)
    {
        Note(name, Failure(error.what()));
    }
}

void ServiceCheck::Note(const std::string& name, const Failure& failure)
{
    m_results.push_back({name, CheckState::Failed, failure.what(), failure});
    if (m_brokenBy.empty())
        m_brokenBy = name;
}

void ServiceCheck::Skip(const std::string& name, const std::string& reason)
{
    m_results.push_back({name, CheckState::Skipped, reason, {}});
}

std::size_t ServiceCheck::Failures() const
{
    return static_cast<std::size_t>(std::count_if(
        m_results.begin(), m_results.end(), [](const CheckResult& each) { return each.state == CheckState::Failed; }));
}

std::string ServiceCheck::Text() const
{
    std::string text = m_service + "  " + m_server + '\n';
    for (const CheckResult& each : m_results)
        text += "  " + Padded(WordOf(each.state), 9) + Padded(each.step, 20) + Printable(each.detail) + '\n';
    return text;
}

Json::Value ServiceCheck::ToJson() const
{
    Json::Value steps(Json::arrayValue);
    for (const CheckResult& each : m_results)
    {
        Json::Value object;
        object["step"] = each.step;
        object["state"] = WordOf(each.state);
        object["detail"] = each.detail;
        object["code"] = each.failure && each.failure->Code() ? Json::Value(*each.failure->Code()) : Json::Value();
        object["operation"] =
            each.failure && !each.failure->Operation().empty() ? Json::Value(each.failure->Operation()) : Json::Value();
        steps.append(object);
    }
    Json::Value object;
    object["service"] = m_service;
    object["server"] = m_server;
    object["steps"] = steps;
    return object;
}

std::optional<Failure> FailureOf(const std::vector<ServiceCheck>& checks)
{
    std::size_t steps = 0;
    std::size_t failures = 0;
    std::string where;
    std::optional<Failure> first;
    for (const ServiceCheck& check : checks)
    {
        steps += check.Results().size();
        failures += check.Failures();
        for (const CheckResult& each : check.Results())
        {
            if (!first && each.failure)
            {
                first = each.failure;
                where = check.Service() + ", " + each.step + ": ";
            }
        }
    }
    if (first)
        first = first->Told(std::to_string(failures) + " of " + std::to_string(steps) + " steps failed; the first is " +
                            where + first->what());
    return first;
}

} // namespace quorvex::console
