#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvex::services
{

struct FormPart
{
    std::string name;
    std::optional<std::string> fileName;
};

// Receives a form as it arrives. What it throws passes through MultipartReader::Feed.
class FormReceiver
{
public:
    virtual ~FormReceiver() = default;
    virtual void OnPart(const FormPart& part) = 0;
    virtual void OnData(std::string_view bytes) = 0;
    virtual void OnPartEnd() = 0;
};

// Reads multipart/form-data in pieces of any size and holds back no more than one boundary's length, so that a file
// of any size passes through in flat memory. Accepts the spellings of older clients: no blank before "filename",
// parts without a content type, quotation marks inside a file name, and a part whose head is the one line
// "Content_disposition: form-data: name=...", behind which its data begin without an empty line.
class MultipartReader
{
public:
    MultipartReader(std::string_view boundary, FormReceiver& receiver);

    // False once the form is broken; further bytes are then ignored.
    bool Feed(std::string_view bytes);

    // The closing boundary has been seen.
    bool IsComplete() const { return state_ == State::Complete; }

private:
    enum class State
    {
        Preamble,
        AfterBoundary,
        Headers,
        Data,
        Complete,
        Broken,
    };

    bool Step();
    bool FindBoundary();
    bool ReadBoundaryEnd();
    bool ReadHeaders();

    std::string delimiter_;
    FormReceiver& receiver_;
    std::string pending_;
    State state_ = State::Preamble;
};

// The boundary named by a Content-Type value, nothing when it is not multipart/form-data or names none.
std::optional<std::string> MultipartBoundary(std::string_view contentType);

} // namespace quorvex::services
