#include "PictureTasks.h"

#include <algorithm>

namespace quorvex::soak
{

namespace
{

constexpr int kGenerations = 3;

} // namespace

PictureTasks::PictureTasks(Setting& setting, StorageClients& clients)
    : m_setting(setting), m_clients(clients), m_pictures(setting.mostFiles), m_emoticons(setting.mostFiles)
{
}

/// A picture to upload, not acknowledged yet: mostly a new one, else one that is there, with the same content or
/// another.
Stored* PictureTasks::NewOrHeld(const wchar_t* kind)
{
    Stored* const held = m_pictures.Pick(m_setting.random, State::Live);
    const bool isMany = m_pictures.IsFull() || m_pictures.Count(State::Live) >= kMostLive;
    if (held != nullptr && (isMany || Chance(m_setting.random, 20)))
    {
        held->state = State::Unknown;
        if (Chance(m_setting.random, 50))
        {
            held->content = m_setting.NewContent();
        }
        return held;
    }
    if (isMany)
    {
        return nullptr;
    }
    return &m_pictures.Add(
        {State::Unknown, m_setting.NewContent(), {}, Text<66>(m_setting.NewName(kind, L".png")), {}});
}

void PictureTasks::Upload()
{
    Stored* const picture = NewOrHeld(L"picture");
    if (picture == nullptr)
    {
        return;
    }
    const Setting::LocalFile file(m_setting, picture->name.c_str());
    file.Write(picture->content);
    int result = Result::BadAnswer;
    switch (m_setting.Turn(Op::Storage1PictureUpload, kGenerations))
    {
    case 0:
        result = m_setting.Note(Op::Storage1PictureUpload,
                                m_clients.First().PictureUpload(m_setting.folder.c_str(), picture->name.c_str()));
        break;
    case 1:
        return UploadSecond(*picture);
    default:
        result = UploadThird(*picture);
        break;
    }
    if (result == Result::Ok)
    {
        picture->state = State::Live;
    }
}

/// Its success says nothing after a login in between: the picture counts once it has been seen.
void PictureTasks::UploadSecond(Stored& picture)
{
    if (m_setting.Note(Op::Storage2PictureUpload,
                       m_clients.Second().PictureUpload(m_setting.folder.c_str(), picture.name.c_str())) != Result::Ok)
    {
        return;
    }
    void* buffer = nullptr;
    unsigned long size = 0;
    const int result = m_setting.Note(Op::Storage3PictureDownload,
                                      m_clients.Third().PictureDownload(L"0", picture.name.c_str(), &buffer, &size));
    if (result == Result::Ok && buffer != nullptr &&
        std::string_view(static_cast<const char*>(buffer), size) == picture.content.Bytes())
    {
        picture.state = State::Live;
    }
    m_clients.Third().releaseBuffer(&buffer);
    m_setting.Note(Op::Storage3ReleaseBuffer, Result::Ok);
}

int PictureTasks::UploadThird(const Stored& picture) const
{
    std::string bytes = picture.content.Bytes();
    return m_setting.Note(
        Op::Storage3PictureUpload,
        m_clients.Third().PictureUpload(picture.name.c_str(), bytes.data(), static_cast<unsigned long>(bytes.size())));
}

void PictureTasks::Download()
{
    if (const Stored* const picture = m_pictures.Pick(m_setting.random, State::Live))
    {
        IsDownloaded(*picture, static_cast<int>(m_setting.Turn(Op::Storage1PictureDownload, kGenerations + 1)));
    }
}

/// @param generation 0: as a photo, which is the first generation's too
bool PictureTasks::IsDownloaded(const Stored& picture, int generation) const
{
    if (generation == 3)
    {
        return IsDownloadedThird(picture);
    }
    const std::wstring localName = generation == 0 ? L"photo" : std::wstring(picture.name.c_str());
    const Setting::LocalFile local(m_setting, localName);
    const wchar_t* const folder = m_setting.folder.c_str();
    const wchar_t* const name = picture.name.c_str();
    int result = Result::BadAnswer;
    if (generation == 0)
    {
        result = m_setting.Note(Op::Storage1UserPhotoDownload,
                                m_clients.First().UserPhotoDownload(folder, name, localName.c_str()));
    }
    else if (generation == 1)
    {
        result = m_setting.Note(Op::Storage1PictureDownload, m_clients.First().PictureDownload(folder, name));
    }
    else
    {
        result = m_setting.Note(Op::Storage2PictureDownload, m_clients.Second().PictureDownload(folder, name));
    }
    const std::string come = local.Read();
    // The second generation notices a missing end, unless the answer's head broke off before it told a length.
    return result == Result::Ok &&
           m_setting.Check(come, picture.content, generation != 2 || come.empty(), "a picture's download");
}

bool PictureTasks::IsDownloadedThird(const Stored& picture) const
{
    void* buffer = nullptr;
    unsigned long size = 0;
    const int result = m_setting.Note(Op::Storage3PictureDownload,
                                      m_clients.Third().PictureDownload(L"0", picture.name.c_str(), &buffer, &size));
    // Success without a buffer is an empty picture or a refusal.
    const bool hasCome = result == Result::Ok && (buffer != nullptr || picture.content.size == 0);
    const std::string come(static_cast<const char*>(buffer), buffer != nullptr ? size : 0);
    m_clients.Third().releaseBuffer(&buffer);
    m_setting.Note(Op::Storage3ReleaseBuffer, Result::Ok);
    return hasCome && m_setting.Check(come, picture.content, false, "CFileStorage3::PictureDownload");
}

void PictureTasks::UploadPhoto()
{
    Stored* const photo = NewOrHeld(L"photo");
    if (photo == nullptr)
    {
        return;
    }
    const Setting::LocalFile file(m_setting, L"photo");
    file.Write(photo->content);
    if (m_setting.Note(Op::Storage1UserPhotoUpload,
                       m_clients.First().UserPhotoUpload(m_setting.folder.c_str(), L"photo", photo->name.c_str())) ==
        Result::Ok)
    {
        photo->state = State::Live;
    }
}

void PictureTasks::UploadEmoticon()
{
    if (m_emoticons.IsFull() || m_emoticons.Count(State::Live) >= kMostLive)
    {
        return RemoveEmoticon();
    }
    const Stored emoticon{
        State::Live, m_setting.NewContent(), {}, Text<66>(m_setting.NewName(L"emoticon", L".gif")), {}};
    const Setting::LocalFile file(m_setting, L"emoticon");
    file.Write(emoticon.content);
    if (m_setting.Note(Op::Storage1EmoticonUpload,
                       m_clients.First().EmoticonUpload(m_setting.folder.c_str(), L"emoticon",
                                                        emoticon.name.c_str())) == Result::Ok)
    {
        m_emoticons.Add(emoticon);
    }
    unsigned int count = 0;
    m_setting.Note(Op::Storage1EmoticonGetList, m_clients.First().EmoticonGetList(nullptr, 0, count));
}

bool PictureTasks::IsEmoticon(const Stored& emoticon) const
{
    const Setting::LocalFile local(m_setting, L"emoticon");
    return m_setting.Note(Op::Storage1EmoticonDownload,
                          m_clients.First().EmoticonDownload(m_clients.Uid().c_str(), m_setting.folder.c_str(),
                                                             emoticon.name.c_str(), L"emoticon")) == Result::Ok &&
           m_setting.Check(local.Read(), emoticon.content, true, "CFileStorage::EmoticonDownload");
}

void PictureTasks::DownloadEmoticon()
{
    const Stored* const emoticon = m_emoticons.Pick(m_setting.random, State::Live);
    if (emoticon == nullptr)
    {
        return UploadEmoticon();
    }
    IsEmoticon(*emoticon);
}

void PictureTasks::RemoveEmoticon()
{
    Stored* const emoticon = m_emoticons.Pick(m_setting.random, State::Live);
    if (emoticon == nullptr)
    {
        return UploadEmoticon();
    }
    emoticon->state = State::Unknown;
    if (m_setting.Note(Op::Storage1EmoticonRemove, m_clients.First().EmoticonRemove(emoticon->name.c_str())) ==
        Result::Ok)
    {
        emoticon->state = State::Gone;
    }
}

void PictureTasks::Verify()
{
    int generation = 0;
    for (const Stored& picture : m_pictures.Entries())
    {
        if (picture.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
            continue;
        }
        generation = (generation + 1) % (kGenerations + 1);
        m_setting.VerifyFile(picture.content, IsDownloaded(picture, generation), "the picture " + Narrow(picture.name));
    }
    for (const Stored& emoticon : m_emoticons.Entries())
    {
        const std::string name = "the emoticon " + Narrow(emoticon.name);
        if (emoticon.Is(State::Unknown))
        {
            ++m_setting.verdict.uncertain;
        }
        else if (emoticon.Is(State::Live))
        {
            m_setting.VerifyFile(emoticon.content, IsEmoticon(emoticon), name);
        }
        else
        {
            m_setting.VerifyDeletion(!IsEmoticon(emoticon), name);
        }
    }
}

} // namespace quorvex::soak
