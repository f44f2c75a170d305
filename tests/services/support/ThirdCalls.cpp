#include "support/ThirdCalls.h"

#include "support/RawHttp.h"

namespace quorvex::services::test
{

namespace
{

const std::string Delimiter = "--" + std::string(Boundary);

Reply Send(int port, const std::string& requestLine, const std::string& headers, std::string_view body)
{
    const RawAnswer answer = Exchange(port, requestLine + " HTTP/1.1\r\n" + headers +
                                                "Host: h\r\nConnection: Keep-Alive\r\n\r\n" + std::string(body));
    Reply reply{answer.status, {}, answer.body};
    for (const char* name : {"Content-Range", "Content-Length", "Content-Disposition", "Connection", "Set-Cookie"})
    {
        reply.headers.emplace(name, answer.Header(name));
    }
    return reply;
}

} // namespace

std::string ThirdPictureForm(std::string_view name, std::string_view content, std::string_view md5)
{
    return Delimiter + "\r\nContent_disposition: form-data: name=\"md5\"\r\n" + std::string(md5) + "\r\n" + Delimiter +
           "\r\nContent-Disposition: form-data; name=\"upfile\";filename=\"" + std::string(name) +
           "\"\r\nContent-type: image/jpeg\r\n\r\n" + std::string(content) + "\r\n" + Delimiter + "--\r\n";
}

FormFields FieldsOf(const ThirdBlock& block)
{
    return {{"offset", std::to_string(block.offset)},
            {"ticket", block.ticket},
            {"flag", block.isLast ? "1" : "0"},
            {"filesize", std::to_string(block.offset + block.content.size())},
            {"md5", Md5Of(block.content)}};
}

std::string ThirdBlockForm(const FormFields& fields, std::string_view name, std::string_view content)
{
    std::string form;
    for (const auto& [field, value] : fields)
    {
        form.append(Delimiter).append("\r\nContent-Disposition: form-data; name=\"").append(field);
        form.append("\"\r\n\r\n").append(value).append("\r\n");
    }
    return form + Delimiter + "\r\nContent-Disposition: form-data; name=\"photo\"; filename=\"" + std::string(name) +
           "\"\r\nContent-Type: image/jpeg\r\n\r\n" + std::string(content) + "\r\n" + Delimiter + "--\r\n";
}

Reply ThirdClient::PutPicture(std::string_view name, std::string_view content) const
{
    return PutPicture(ThirdPictureForm(name, content, Md5Of(content)));
}

Reply ThirdClient::PutPicture(const std::string& form) const
{
    return Post("ops/upload", form);
}

Reply ThirdClient::GetPicture(const std::string& folder, const std::string& name) const
{
    return Get("ops/images/" + folder + "/" + name);
}

Reply ThirdClient::PutBlock(const ThirdBlock& block) const
{
    return PutBlock(ThirdBlockForm(FieldsOf(block), block.name, block.content));
}

Reply ThirdClient::PutBlock(const std::string& form) const
{
    return Post("ofs/upload", form);
}

Reply ThirdClient::GetFile(const std::string& owner, const std::string& key, const std::string& range) const
{
    return Get("ofs/down/" + owner + "/" + key, range.empty() ? "" : "Range: " + range + "\r\n");
}

std::string ThirdClient::PutFile(const std::string& name, const std::string& content, std::size_t blockSize) const
{
    ThirdBlock block;
    block.name = name;
    std::string key;
    do
    {
        block.content = content.substr(block.offset, blockSize);
        const std::uint64_t past = block.offset + block.content.size();
        block.isLast = past == content.size();
        const Reply reply = PutBlock(block);
        EXPECT_EQ(CodeOf(reply), 200) << reply.body;
        key = reply.Text("fkey");
        block.ticket = reply.Text("ticket");
        block.offset = past;
    } while (!block.isLast);
    return key;
}

Reply ThirdClient::Post(const std::string& path, const std::string& form) const
{
    return Send(port_, "POST /storage/api/" + path,
                "Content-Type:multipart/form-data; boundary=" + std::string(Boundary) +
                    "\r\nContent-Length: " + std::to_string(form.size()) + "\r\nCookie: " + cookie_ + "\r\n",
                form);
}

Reply ThirdClient::Get(const std::string& path, const std::string& headers) const
{
    return Send(port_, "GET /storage/api/" + path, headers + "Cookie: " + cookie_ + "\r\n", {});
}

int CodeOf(const Reply& reply)
{
    return reply.Json()["code"].asInt();
}

} // namespace quorvex::services::test
