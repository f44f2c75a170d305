#include "Failure.h"

namespace quorvex::console
{

Failure::Failure(const std::string& what, Outcome outcome, const std::string& advice, Transport transport)
    : std::runtime_error(what + ": " + MeaningOf(outcome.result, transport) + " (result " +
                         std::to_string(outcome.result) + ')' + (advice.empty() ? "" : "; " + advice)),
      m_code(outcome.result),
      m_operation(outcome.operation),
      m_transport(transport)
{
}

Failure Failure::Interruption(const std::string& sentence)
{
    Failure failure(sentence);
    failure.m_status = ExitStatus::kInterrupted;
    return failure;
}

Failure Failure::Told(const std::string& sentence) const
{
    Failure failure(sentence);
    failure.m_code = m_code;
    failure.m_operation = m_operation;
    failure.m_transport = m_transport;
    failure.m_status = m_status;
    return failure;
}

Json::Value Failure::Members() const
{
    Json::Value object;
    object["ok"] = false;
    object["code"] = m_code ? Json::Value(*m_code) : Json::Value();
    object["operation"] = m_operation.empty() ? Json::Value() : Json::Value(m_operation);
    object["meaning"] = Meaning();
    object["message"] = what();
    return object;
}

} // namespace quorvex::console
