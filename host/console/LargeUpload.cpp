#include "LargeUpload.h"

#include "Failure.h"
#include "Interruption.h"
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
    const Outcome outcome = SendRest();
    // The server may have given up an upload that was left alone for long, or may miss blocks of it.
    if (outcome.result == kNotFound || outcome.result == kConflict)
    {
        m_resumedFrom = 0;
        return false;
    }
    ThrowUnlessDone(outcome);
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

Outcome LargeUpload::SendRest()
{
    const Outcome outcome = SendBlocks();
    return outcome.result != 0 || !m_target.finish ? outcome : m_target.finish(Wide(m_record.ids.key));
}

Outcome LargeUpload::SendBlocks()
{
    std::ifstream file(m_local.Whole(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_record.confirmed));
    const std::uint64_t size = m_record.identity.size;
    if (size == 0 && !m_target.finish)
        return SendBlock(nullptr, 0);
    const StoppableWork work;
    Progress progress(m_record.identity.name, size, m_record.confirmed, m_options.quiet);
    std::vector<char> block(static_cast<std::size_t>(std::min(m_options.blockSize, size)));
    while (m_record.confirmed < size)
    {
        if (isAskedToStop)
            throw Failure::Interruption("interrupted the upload of " + m_record.identity.name +
                                        (m_canSave ? ": " + Standing() : ""));
        const auto length =
            static_cast<unsigned long>(std::min<std::uint64_t>(block.size(), size - m_record.confirmed));
        if (!file.read(block.data(), static_cast<std::streamsize>(length)))
            throw Failure("cannot read " + m_record.identity.name, Result::LocalFileFailed);
        if (const Outcome outcome = SendBlock(block.data(), length); outcome.result != 0)
            return outcome;
        progress.Show(m_record.confirmed);
    }
    return Outcome(Result::Ok);
}

Outcome LargeUpload::SendBlock(void* data, unsigned long size)
{
    const std::uint64_t end = m_record.confirmed + size;
    const Outcome outcome =
        m_target.sendBlock(m_local, m_record.ids,
                           {data, size, static_cast<unsigned long>(m_record.confirmed), end == m_record.identity.size});
    if (outcome.result != 0)
        return outcome;
    m_record.confirmed = end;
    Save();
    return Outcome(Result::Ok);
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

std::string LargeUpload::Standing() const
{
    return "the server has confirmed " + SizeText(m_record.confirmed) + " of " + SizeText(m_record.identity.size) +
           ", and the same command goes on from there";
}

void LargeUpload::ThrowUnlessDone(Outcome outcome)
{
    // A refusal of the finished whole would only be repeated from the record.
    const bool isHopeless = outcome.result == kNotFound || outcome.result == kConflict;
    if (outcome.result == 0 || isHopeless)
        m_resumeFile.Remove();
    if (outcome.result != 0)
        throw Failure("cannot upload " + m_record.identity.name, outcome, isHopeless || !m_canSave ? "" : Standing(),
                      m_target.transport);
}

} // namespace quorvex::console
