#include "Failure.h"

namespace quorvex::console
{

Failure::Failure(const std::string& what, int result, const std::string& advice, Transport transport)
    : std::runtime_error(what + ": " + MeaningOf(result, transport) + " (result " + std::to_string(result) + ')' +
                         (advice.empty() ? "" : "; " + advice)),
      m_code(result),
      m_transport(transport)
{
}

} // namespace quorvex::console
