#include "Failure.h"

#include "ResultText.h"

namespace quorvex::console
{

Failure::Failure(const std::string& what, int result, const std::string& advice)
    : std::runtime_error(what + ": " + MeaningOf(result) + " (result " + std::to_string(result) + ')' +
                         (advice.empty() ? "" : "; " + advice)),
      m_code(result)
{
}

} // namespace quorvex::console
