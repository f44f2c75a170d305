#pragma once

#include <stdexcept>
#include <string>

#include <httplib.h>
#include <json/value.h>

namespace quorvex::services
{

namespace Status
{
constexpr int Ok = 200;
constexpr int Created = 201;
constexpr int PartialContent = 206;
constexpr int BadRequest = 400;
constexpr int Unauthorized = 401;
constexpr int Forbidden = 403;
constexpr int NotFound = 404;
constexpr int Conflict = 409;
constexpr int PayloadTooLarge = 413;
constexpr int UnsupportedMediaType = 415;
constexpr int RangeNotSatisfiable = 416;
constexpr int Locked = 423;
constexpr int TooManyRequests = 429;
constexpr int InternalError = 500;
constexpr int InsufficientStorage = 507;
} // namespace Status

// Ends a request with this status; the message goes to the client as "msg".
class HttpError : public std::runtime_error
{
public:
    HttpError(int status, const std::string& message) : std::runtime_error(message), status_(status) {}

    int GetStatus() const { return status_; }

private:
    int status_;
};

void AnswerJson(const httplib::Request& request, httplib::Response& response, const Json::Value& value,
                int status = Status::Ok);

void AnswerError(const httplib::Request& request, httplib::Response& response, int status, const std::string& message);

} // namespace quorvex::services
