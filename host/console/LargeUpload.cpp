#include "LargeUpload.h"

#include "Failure.h"
#include "LocalFile.h"
#include "Output.h"
#include "Text.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace quorvex::console
{
namespace
{

constexpr int kNotFound = 404;
constexpr int kConflict = 409;

} // namespace

LargeUpload::LargeUpload(const UploadTarget& target, const Options& options, const LocalPath& local, std::uint64_t size,
                         const std::string& md5)
    : m_target(target), m_options(options), m_local(local), m_resumeFile(WithEnding(local.Whole(), L".quorvex-resume"))
{
    const auto modified = std::filesystem::last_write_time(local.Whole()).time_since_epoch().count();
    m_record.identity = {options.server, ToUtf8(local.name), size, modified, md5};
}

void LargeUpload::Run()
{
    if (Resume())
        return;
    if (Create())
        ThrowUnlessDone(SendRest());
}

bool LargeUpload::Resume()
{
    const auto earlier = m_resumeFile.Load(m_record.identity);
    // Where an upload is announced, it has no ticket; otherwise its blocks need one.
    if (!earlier || earlier->ids.ticket.empty() != static_cast<bool>(m_target.create))
        return false;
    m_record = *earlier;
    m_resumedFrom = m_record.confirmed;
    const int result = SendRest();
    // The server may have given up an upload that was left alone for long, or may miss blocks of it.
    if (result == kNotFound || result == kConflict)
    {
        m_resumedFrom = 0;
        return false;
    }
    ThrowUnlessDone(result);
    return true;
}

bool LargeUpload::Create()
{
    m_record.ids = {};
    m_record.confirmed = 0;
    if (!m_target.create)
        return true;
    Check(m_target.create(m_local, m_record.ids.key, m_wasInstant),
          "cannot start the upload of " + m_record.identity.name, m_target.transport);
    if (m_wasInstant)
        m_resumeFile.Remove();
    else
        Save();
    return !m_wasInstant;
}

int LargeUpload::SendRest()
{
    const int result = SendBlocks();
    return result != 0 || !m_target.finish ? result : m_target.finish(Wide(m_record.ids.key));
}

int LargeUpload::SendBlocks()
{
    std::ifstream file(m_local.Whole(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_record.confirmed));
    const std::uint64_t size = m_record.identity.size;
    if (size == 0 && !m_target.finish)
        return SendBlock(nullptr, 0);
    Progress progress(m_record.identity.name, size, m_record.confirmed, m_options.quiet);
    std::vector<char> block(static_cast<std::size_t>(std::min(m_options.blockSize, size)));
    while (m_record.confirmed < size)
    {
        const auto length =
            static_cast<unsigned long>(std::min<std::uint64_t>(block.size(), size - m_record.confirmed));
        if (!file.read(block.data(), static_cast<std::streamsize>(length)))
            throw Failure("cannot read " + m_record.identity.name, Result::LocalFileFailed);
        if (const int result = SendBlock(block.data(), length); result != 0)
            return result;
        progress.Show(m_record.confirmed);
    }
    return 0;
}

int LargeUpload::SendBlock(void* data, unsigned long size)
{
    const std::uint64_t end = m_record.confirmed + size;
    const int result =
        m_target.sendBlock(m_local, m_record.ids,
                           {data, size, static_cast<unsigned long>(m_record.confirmed), end == m_record.identity.size});
    if (result != 0)
        return result;
    m_record.confirmed = end;
    Save();
    return 0;
}

void LargeUpload::Save()
{
    if (!m_canSave)
        return;
    m_canSave = m_resumeFile.Save(m_record);
    if (!m_canSave)
        WriteError("note: no record can be kept beside " + m_record.identity.name +
                   ", so an interrupted upload would start over\n");
}

void LargeUpload::ThrowUnlessDone(int result)
{
    const ResumeRecord& record = m_record;
    // A refusal of the finished whole would only be repeated from the record.
    const bool isHopeless = result == kNotFound || result == kConflict;
    if (result == 0 || isHopeless)
        m_resumeFile.Remove();
    if (result == 0)
        return;
    const std::string progress =
        "the server has confirmed " + SizeText(record.confirmed) + " of " + SizeText(record.identity.size);
    throw Failure("cannot upload " + record.identity.name, result,
                  isHopeless || !m_canSave ? "" : progress + ", and the same command goes on from there",
                  m_target.transport);
}

} // namespace quorvex::console
