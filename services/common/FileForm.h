#pragma once

#include "common/MultipartReader.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <httplib.h>

namespace quorvex::services
{

// A multipart form whose last field is a file: the fields before it are kept, the file's bytes pass through.
class FileForm : public FormReceiver
{
public:
    void OnPart(const FormPart& part) override;
    void OnData(std::string_view bytes) override;
    void OnPartEnd() override;

    // Reads the request's form to its end. Ends the request as a bad one unless the form is whole and has its file.
    void Receive(const httplib::Request& request, const httplib::ContentReader& read);

protected:
    explicit FileForm(std::string fileField);

    virtual void OnFile(const std::string& fileName) = 0;
    virtual void OnFileBytes(std::string_view bytes) = 0;

    bool HasField(std::string_view name) const { return fields_.contains(name); }

    // A missing field, or one that is not a number, ends the request as a bad one.
    const std::string& Field(const std::string& name) const;
    std::uint64_t NumberField(const std::string& name) const;

private:
    void Flush();

    std::string fileField_;
    std::map<std::string, std::string, std::less<>> fields_;
    std::string* field_ = nullptr;
    bool hasFile_ = false;
    // Pieces arrive small; they are passed on in larger ones.
    std::string buffer_;
};

} // namespace quorvex::services
