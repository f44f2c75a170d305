#pragma once

#include "Platform/CodePage.h"

#include <json/value.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <utility>

/// What the services' reply parsers share. Like the JSON library itself, the readers throw for a value of the wrong
/// type; a parser turns that into its own failure.
namespace quorvex
{

/// @return whether the body is JSON, and of a size that the host's memory is safe with
bool ParseJson(const std::string& body, Json::Value& root);

/// What ends the parse of a reply; its line is in the log already.
struct UnusableReply
{
};

/// A key that a reply must have: missing or null, it ends the parse.
/// @param message goes into the log then
const Json::Value& Require(const Json::Value& root, const char* key, const wchar_t* message);

/// Reads a text into an array of a record. The text may run on into the fields behind the array, up to twice the
/// array's length, but never out of the record; the keys read after it overwrite what it left there. Null leaves the
/// array as it is.
template <class Record, std::size_t Size>
void ReadText(const Json::Value& value, Platform::CodePage codePage, Record& record, wchar_t (Record::*field)[Size])
{
    if (value.isNull())
    {
        return;
    }
    std::array<wchar_t, 2 * Size> text;
    const auto* const recordStart = reinterpret_cast<const std::byte*>(&record);
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const std::byte*>(record.*field) - recordStart);
    const std::size_t room = (sizeof(Record) - offset) / sizeof(wchar_t);

    const std::size_t length =
        Platform::ToWide(value.asCString(), codePage, std::span(text).first(std::min(text.size(), room) - 1));
    text[length] = L'\0';
    std::memcpy(reinterpret_cast<std::byte*>(&record) + offset, text.data(), (length + 1) * sizeof(wchar_t));
}

/// A number that may exceed 32 bits. It is read as a double and truncated toward zero; beyond 64 bits it becomes
/// the nearest value that there is.
std::int64_t ReadInt64(const Json::Value& value);

/// @name Coded replies
/// The shared file storage and the online search answer with a "result" in every reply. A failure to read one has a
/// text of its own.
/// @{

/// What the code is while a reply has not told it.
inline constexpr int kNoCode = 505;

inline constexpr int kCodeOk = 200;
/// The session has expired, for HTTP as for the services themselves.
inline constexpr int kForbidden = 403;

/// Logs a code that is no success, with the server's text for it.
/// @return the code
int RefusedBy(int code, const char* errorinfo);

/// What the readers below throw.
struct ReplyFailure
{
    const char* text;
};

/// @param failure the text to fail with when the value is missing or null
const Json::Value& RequirePresent(const Json::Value& value, const char* failure);
/// @param failure the text to fail with when the value is no string
const char* RequireString(const Json::Value& value, const char* failure);

/// Where a service's replies have their code.
struct CodeKey
{
    const char* key = "result";
    const char* failure = "get result error";
};

/// Parses a body, reads its code, and lets `read` do the rest.
/// @param root receives the document
/// @param code receives the code once the body has been parsed; kNoCode when it has none
/// @return null, or the failure's text
template <class Read>
const char* ReadCodedReply(const std::string& body, Json::Value& root, int& code, Read read, CodeKey codeKey = {})
{
    static constexpr char kUnreadable[] = "parse json error";

    try
    {
        if (!ParseJson(body, root))
        {
            return kUnreadable;
        }
        const Json::Value& reply = root;
        code = kNoCode;
        code = RequirePresent(reply[codeKey.key], codeKey.failure).asInt();
        read(reply);
        return nullptr;
    }
    catch (const ReplyFailure& failure)
    {
        return failure.text;
    }
    catch (const Json::Exception&)
    {
        // Nested too deeply, or a value of the wrong type.
        return kUnreadable;
    }
}
/// @}

} // namespace quorvex
