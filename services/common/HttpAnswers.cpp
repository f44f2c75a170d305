#include "common/HttpAnswers.h"

#include <json/writer.h>

namespace quorvex::services
{

namespace
{

std::string Write(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

bool TakesCompressedAnswers(const httplib::Request& request)
{
    return request.version != "HTTP/1.0" &&
           request.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
}

} // namespace

// Clients compare Content-Length with the size after inflating, so that a compressed answer must not carry one: it
// goes out in chunks, which the library compresses on the way.
void AnswerJson(const httplib::Request& request, httplib::Response& response, const Json::Value& value, int status)
{
    response.status = status;
    std::string body = Write(value);
    if (!TakesCompressedAnswers(request))
    {
        response.set_content(body, "application/json; charset=utf-8");
        return;
    }
    response.set_chunked_content_provider("application/json",
                                          [text = std::move(body)](std::size_t, httplib::DataSink& sink) {
                                              const bool written = sink.write(text.data(), text.size());
                                              sink.done();
                                              return written;
                                          });
}

void AnswerError(const httplib::Request& request, httplib::Response& response, int status, const std::string& message)
{
    Json::Value value(Json::objectValue);
    value["msg"] = message;
    AnswerJson(request, response, value, status);
}

} // namespace quorvex::services
