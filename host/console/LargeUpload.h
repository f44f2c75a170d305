#pragma once

#include "Options.h"
#include "Paths.h"
#include "Progress.h"
#include "ResumeRecord.h"
#include "UploadTarget.h"

#include <cstdint>
#include <string>

namespace quorvex::console
{

/// One upload in blocks, from its creation or its resumption to its end.
class LargeUpload
{
public:
    LargeUpload(const UploadTarget& target, const Options& options, const LocalPath& local, std::uint64_t size,
                const std::string& md5);

    /// @throws Failure
    void Run();

    const std::string& Key() const { return m_record.ids.key; }
    std::uint64_t ResumedFrom() const { return m_resumedFrom; }
    bool WasInstant() const { return m_wasInstant; }

private:
    /// Goes on with an interrupted upload.
    /// @return whether that has brought it to its end
    bool Resume();

    /// @return whether the server wants the file's bytes
    bool Create();

    /// Sends what is not confirmed yet, and finishes.
    /// @return the first result other than 0
    Outcome SendRest();
    Outcome SendBlocks();
    Outcome SendBlock(void* data, unsigned long size);

    void Save();
    void ThrowUnlessDone(Outcome outcome);

    /// How far it has come, and that it can go on.
    std::string Standing() const;

    const UploadTarget& m_target;
    const Options& m_options;
    LocalPath m_local;
    ResumeFile m_resumeFile;
    ResumeRecord m_record;
    std::uint64_t m_resumedFrom = 0;
    bool m_wasInstant = false;
    bool m_canSave = true;
};

} // namespace quorvex::console
