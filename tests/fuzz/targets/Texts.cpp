#include "Expect.h"
#include "FormReader.h"
#include "Input.h"
#include "platform/Random.h"

#include "BaseUrl.h"
#include "BoundedText.h"
#include "CommonUtil.h"
#include "Multipart.h"
#include "ObjectPath.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

using namespace quorvex;
using namespace quorvex::fuzz;
using Platform::CodePage;

namespace
{

bool IsUtf8(std::string_view text)
{
    return WideToUtf8(Utf8ToWide(text)) == text;
}

bool IsUtf16(std::wstring_view text)
{
    return Utf8ToWide(WideToUtf8(text)) == text;
}

void ExpectBaseUrl(const std::wstring& url)
{
    const BaseUrl split = SplitBaseUrl(url);
    Expect(url.starts_with(split.server), "the server is the URL's start");
    Expect(split.serverEnd <= url.size() && split.serverEnd <= split.server.size(), "the server's end is in it");
    if (!split.server.ends_with(L'/') || split.server.size() == split.serverEnd)
    {
        Expect(split.server == url && split.prefix.empty(), "a URL without a path is all server");
        return;
    }
    Expect(url[split.serverEnd] == L'/' && split.serverEnd + 1 == split.server.size(),
           "the server ends with its slash");
    const std::wstring joined = std::wstring(split.server) + std::wstring(split.prefix);
    Expect(url == joined || url == joined + L'/', "the halves make the URL, less one slash at its end");
    Expect(split.serverEnd >= 8, "the scheme's slashes are no path");
}

std::string PercentDecode(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '%')
        {
            decoded += text[i];
            continue;
        }
        Expect(i + 2 < text.size(), "an escape is whole");
        decoded +=
            static_cast<char>(static_cast<unsigned char>(std::stoul(std::string(text.substr(i + 1, 2)), nullptr, 16)));
        i += 2;
    }
    return decoded;
}

void ExpectPercentEncoding(std::string_view text)
{
    const std::string encoded = PercentEncode(text);
    Expect(std::ranges::all_of(encoded,
                               [](char letter) {
                                   return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                                          (letter >= 'a' && letter <= 'z') || letter == '%';
                               }),
           "an encoded text is letters, digits and percent signs");
    Expect(PercentDecode(encoded) == text, "an encoded text decodes back");
}

/// A text without what would end a value.
std::string Value(std::string_view text)
{
    std::string value(text);
    std::erase(value, '\r');
    return value;
}

void ExpectForms(Input input)
{
    SeedRandom(input.Number32());
    const std::string boundary = BoundaryToken();
    Expect(boundary.size() == 40 && PercentEncode(boundary) == boundary, "a boundary is 40 letters and digits");
    Expect(BoundaryToken() != boundary, "each boundary is another one");
    for (const std::wstring& type : {Multipart::UploadContentType(boundary), Multipart::FormContentType(boundary)})
    {
        Expect(WideToUtf8(type).ends_with("boundary=" + boundary + "\r\n"), "a form's type names its boundary");
    }

    const std::uint32_t first = input.Number32();
    const std::uint32_t second = input.Number32();
    const std::uint64_t large = input.Number64();
    const std::string name = Value(input.Text());
    const std::string key = Value(input.Text());
    const std::string md5 = Value(input.Text());
    const std::string content(input.Rest());
    for (const std::string* const value : {&name, &key, &md5, &content})
    {
        if (value->find(boundary) != std::string::npos)
        {
            return;
        }
    }
    const std::string tail = content + Multipart::Tail(boundary);

    Expect(FormReader(Multipart::UploadHead(boundary, "f") + tail, boundary).Value("upfile") == content,
           "a whole file's content");
    Expect(FormReader(Multipart::UploadHead(boundary, name) + Multipart::Tail(boundary), boundary)
                   .Parts()
                   .front()
                   .head.find("filename=\"" + name + "\"") != std::string_view::npos,
           "a file's name");

    const std::string announcementForm = Multipart::LargeFileForm(boundary, first, md5, name);
    const FormReader announcement(announcementForm, boundary);
    Expect(announcement.Parts().size() == 3 && announcement.Value("totalsize") == std::to_string(first) &&
               announcement.Value("md5") == md5 && announcement.Value("upfile").empty(),
           "a large file's announcement");

    const std::string blockForm = Multipart::BlockHead(boundary, key, first, second) + tail;
    const FormReader block(blockForm, boundary);
    Expect(block.Value("fkey") == key && block.Value("pos") == std::to_string(first) &&
               block.Value("size") == std::to_string(second) && block.Value("upfile") == content,
           "a block's form");

    const std::string chunkForm = Multipart::ChunkHead(boundary, key, first, second) + tail;
    const FormReader chunk(chunkForm, boundary);
    Expect(chunk.Value("k") == key && chunk.Value("rs") == std::to_string(first) &&
               chunk.Value("re") == std::to_string(second) && chunk.Value("chunk") == content,
           "a chunk's form");

    const std::string pictureForm = Multipart::PictureHead(boundary, md5, "p") + tail;
    const FormReader picture(pictureForm, boundary);
    Expect(picture.Parts().size() == 2 && picture.Value("upfile") == content &&
               picture.Parts().front().head.ends_with("\r\n" + md5),
           "a picture's form");

    const std::string photoForm =
        Multipart::PhotoBlockHead(boundary, first, key, static_cast<int>(second % 2), large, md5, "p") + tail;
    const FormReader photo(photoForm, boundary);
    Expect(photo.Value("offset") == std::to_string(first) && photo.Value("ticket") == key &&
               photo.Value("flag") == std::to_string(second % 2) && photo.Value("filesize") == std::to_string(large) &&
               photo.Value("md5") == md5 && photo.Value("photo") == content,
           "a photo block's form");
}

/// Pieces go into a text of fixed size; `whole` is what it would be without a limit.
template <std::size_t Size, CodePage WidePieces>
void ExpectNarrow(Input input)
{
    const auto text = std::make_unique<NarrowText<Size, WidePieces>>();
    std::string whole;
    bool isUtf8 = true;
    std::size_t losses = 0;
    while (!input.IsEmpty())
    {
        const std::size_t before = text->view().size();
        std::string piece;
        switch (input.Byte() % 5)
        {
        case 0:
            piece = input.Text();
            *text << std::string_view(piece);
            break;
        case 1:
        {
            const std::wstring wide = Utf8ToWide(input.Text());
            piece = Platform::ToNarrow(wide, WidePieces);
            *text << std::wstring_view(wide);
            break;
        }
        case 2:
        {
            const auto number = static_cast<int>(input.Number32());
            piece = std::to_string(number);
            *text << number;
            break;
        }
        case 3:
        {
            const auto number = static_cast<unsigned long>(input.Number64());
            piece = std::to_string(number);
            *text << number;
            break;
        }
        default:
            *text << static_cast<const char*>(nullptr) << static_cast<const wchar_t*>(nullptr);
        }
        const std::string_view now = text->view();
        const std::string_view added = now.substr(before);
        Expect(piece.starts_with(added), "what is added is a piece's start");
        const bool isCut = added.size() < piece.size();
        Expect(!isCut || now.size() + 4 > Size - 1, "nothing is cut while there is room for a character");
        losses += isCut ? 1 : 0;
        whole += piece;
        isUtf8 = isUtf8 && IsUtf8(piece);
        Expect(now.size() < Size && text->c_str()[now.size()] == '\0', "a text ends with a zero, in its buffer");
        Expect(!isUtf8 || IsUtf8(now), "a cut never halves a character");
    }
    Expect(losses != 0 || text->view() == whole, "what fits is kept whole");
}

template <std::size_t Size>
void ExpectWide(Input input)
{
    const auto text = std::make_unique<WideText<Size>>();
    std::wstring whole;
    while (!input.IsEmpty())
    {
        switch (input.Byte() % 3)
        {
        case 0:
        {
            const std::wstring piece = Utf8ToWide(input.Text());
            *text << std::wstring_view(piece);
            whole += piece;
            break;
        }
        case 1:
        {
            const auto number = static_cast<int>(input.Number32());
            *text << number;
            whole += std::to_wstring(number);
            break;
        }
        default:
            *text << static_cast<const wchar_t*>(nullptr);
        }
        const std::wstring_view now = text->view();
        Expect(now.size() < Size && text->c_str()[now.size()] == L'\0', "a text ends with a zero, in its buffer");
        Expect(IsUtf16(now), "a cut never halves a character");
    }
    Expect(text->IsCut() || text->view() == whole, "what is not cut is kept whole");
    Expect(!text->IsCut() || text->view().size() < whole.size(), "a cut loses something");
}

void ExpectBounded(std::uint8_t choice, Input input)
{
    switch (choice % 8)
    {
    case 0:
        ExpectNarrow<1, CodePage::Utf8>(input);
        break;
    case 1:
        ExpectNarrow<2, CodePage::Oem>(input);
        break;
    case 2:
        ExpectNarrow<5, CodePage::Utf8>(input);
        break;
    case 3:
        ExpectNarrow<33, CodePage::Utf8>(input);
        break;
    case 4:
        ExpectNarrow<256, CodePage::Oem>(input);
        break;
    case 5:
        ExpectWide<1>(input);
        break;
    case 6:
        ExpectWide<3>(input);
        break;
    default:
        ExpectWide<100>(input);
    }
}

void ExpectWholeUtf8(std::string_view text, std::uint8_t wanted)
{
    const std::size_t count = std::min<std::size_t>(wanted, text.size());
    const std::size_t cut = WholeUtf8(text, count);
    Expect(cut <= count && count - cut <= 3, "a cut goes back by less than a character");
    Expect(!IsUtf8(text) || IsUtf8(text.substr(0, cut)), "a cut never halves a character");
}

/// Texts that are handed to the caller, each into a buffer of exactly the capacity that is stated.
void ExpectCopies(std::string_view text, std::uint8_t capacity)
{
    const auto wideRoom = std::make_unique<wchar_t[]>(capacity);
    const auto narrowRoom = std::make_unique<char[]>(capacity);
    const std::wstring wide = Utf8ToWide(text);
    const auto expectWide = [&](std::wstring_view source) {
        const std::size_t length = std::char_traits<wchar_t>::length(wideRoom.get());
        Expect(length < capacity && source.starts_with(wideRoom.get()), "a copy is the text's start");
        Expect(source.size() >= capacity || length == source.size(), "what fits is copied whole");
        Expect(length == source.size() || length + 2 >= capacity, "a copy fills its room");
        Expect(IsUtf16(wideRoom.get()), "a cut never halves a character");
    };

    CopyToWide(text, wideRoom.get(), capacity);
    CopyToWide(text, nullptr, capacity);
    CopyToUtf8(wide, narrowRoom.get(), capacity);
    CopyToUtf8(wide, nullptr, capacity);
    if (capacity != 0)
    {
        // A text with a zero in it ends there for its reader.
        const std::wstring read = wide.substr(0, wide.find(L'\0'));
        if (read.size() == wide.size())
        {
            expectWide(wide);
            CopyWide(wide, wideRoom.get(), capacity);
            expectWide(wide);
            const std::string_view copied = narrowRoom.get();
            Expect(copied.size() < capacity && WideToUtf8(wide).starts_with(copied), "a copy is the text's start");
            Expect(IsUtf8(copied), "a cut never halves a character");
        }
    }
    CopyWide(wide, wideRoom.get(), capacity);
    CopyWide(wide, nullptr, capacity);

    const std::string owned(text);
    const auto copy = CopyText(owned.c_str());
    Expect(std::string_view(copy.get()) == owned.c_str(), "a copied text is the same");
    Expect(CopyText(static_cast<const wchar_t*>(nullptr)) == nullptr, "the copy of null is null");
}

void ExpectObjectPath(const std::wstring& format, const std::wstring& value)
{
    const ObjectPath path = FormatObjectPath(format.c_str(), value.c_str());
    const std::wstring text = format.c_str();
    const std::size_t place = text.rfind(L"%s");
    const std::wstring expected =
        place == std::wstring::npos ? text : text.substr(0, place) + value.c_str() + text.substr(place + 2);
    Expect(path.IsCut() || path.view() == expected, "a value goes to its place");
    Expect(path.view().size() <= 255, "a path ends within its buffer");
    FormatObjectPath(nullptr, value.c_str());
    FormatObjectPath(format.c_str(), nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    switch (input.Byte())
    {
    case 'U':
        ExpectBaseUrl(Utf8ToWide(input.Rest()));
        break;
    case 'P':
        ExpectPercentEncoding(input.Rest());
        break;
    case 'F':
        ExpectForms(input);
        break;
    case 'B':
    {
        const std::uint8_t choice = input.Byte();
        ExpectBounded(choice, input);
        break;
    }
    case 'W':
    {
        const std::uint8_t count = input.Byte();
        ExpectWholeUtf8(input.Rest(), count);
        break;
    }
    case 'C':
    {
        const std::uint8_t capacity = input.Byte();
        ExpectCopies(input.Rest(), capacity);
        break;
    }
    case 'O':
    {
        const std::wstring format = Utf8ToWide(input.Text());
        ExpectObjectPath(format, Utf8ToWide(input.Rest()));
        break;
    }
    default:
        return 0;
    }
    return 0;
}
