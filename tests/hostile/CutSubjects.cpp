// Answers that end too early: at every byte of the status line, of the headers and of the body.

#include "hostile/Subjects.h"

namespace hostile
{
namespace
{

/// Some systems take a head for a whole one that ends behind its status line: what comes of that is an answer without
/// some of its headers, and without a body.
std::vector<int> cutInHeaders(const Operation& operation)
{
    switch (operation.kind)
    {
    case Operation::Kind::Json:
        return {operation.noAnswer, 1};
    case Operation::Kind::HeadOnly:
        return {operation.noAnswer, operation.success, -112};
    case Operation::Kind::Memory:
        return {operation.noAnswer, operation.success, 1};
    default:
        return {operation.noAnswer, operation.success};
    }
}

std::vector<Attack> cutsOf(const Operation& operation, const std::string& whole)
{
    std::vector<Attack> attacks;
    const std::size_t statusLine = whole.find("\r\n") + 2;
    const std::size_t head = whole.find("\r\n\r\n") + 4;
    for (std::size_t size = 0; size <= whole.size(); ++size)
    {
        const auto expected = size < statusLine     ? std::vector<int>{operation.noAnswer}
                              : size < head         ? cutInHeaders(operation)
                              : size < whole.size() ? operation.cutShort()
                                                    : std::vector<int>{operation.success};
        attacks.push_back({"cut at " + std::to_string(size), &operation, reply(whole.substr(0, size)), expected});
    }
    return attacks;
}

std::vector<Attack> announced(bool isOverSessionService)
{
    std::vector<Attack> all;
    for (const Operation* each : representatives())
    {
        if (each->overSessionService() != isOverSessionService)
            continue;
        const auto attacks = cutsOf(*each, answer(each->body, each->headers()));
        all.insert(all.end(), attacks.begin(), attacks.end());
    }
    return all;
}

/// Whether a body is whole shows by its last chunk, which not every system asks for.
std::vector<Attack> inChunks()
{
    std::vector<Attack> all;
    for (const char* const name : {"CNetDisk.CapacityInfo", "CNetDisk.FileDownload", "CFileStorage.LargeFileDownload",
                                   "CFileStorage2.PictureUpload", "COnlineUserSearch.QueryByCondition"})
    {
        const Operation& each = operation(name);
        const std::string whole = chunked(each.body, each.headers());
        const std::size_t headSize = whole.find("\r\n\r\n") + 4;
        for (std::size_t size = headSize; size <= whole.size(); ++size)
        {
            std::vector<int> expected{each.success};
            if (size < whole.size())
                expected.insert(expected.end(), {1, each.overSessionService() ? -1 : -107});
            all.push_back({"chunks cut at " + std::to_string(size), &each, reply(whole.substr(0, size)), expected});
        }
    }
    return all;
}

} // namespace

std::vector<Subject> cutSubjects()
{
    return {{"CutAnswers", [] { return announced(false); }},
            {"CutAnswersOfTheSessionService", [] { return announced(true); }},
            {"CutChunks", inChunks}};
}

} // namespace hostile
