#pragma once

#include "CommonUtil.h"

#include <quorvex/Results.h>

#include <exception>

namespace quorvex
{

/// Runs an exported operation. Whatever it throws, memory exhaustion included, becomes one ERROR line and 1: the
/// host must never meet an exception of the module's.
/// @param operation name for the log
template <class Operation>
int NoThrow(const wchar_t* operationName, Operation operation) noexcept
{
    try
    {
        return operation();
    }
    catch (const std::exception& exception)
    {
        LOG_ERROR(operationName << L" ended by an exception: " << exception.what());
    }
    catch (...)
    {
        LOG_ERROR(operationName << L" ended by an unknown exception");
    }
    return Result::BadAnswer;
}

} // namespace quorvex
