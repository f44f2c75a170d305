#pragma once

#include "LocalFile.h"
#include "Platform/WinHttp.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quorvex
{

struct ResponseAttributes;

/// The connection of one service client to its server, and the two plain requests over it. It serves one thread at
/// a time.
class CHttpHelper
{
public:
    /// Splits the base URL and connects. With a URL that cannot be used the object stays unconnected.
    explicit CHttpHelper(const wchar_t* serverUrl);
    CHttpHelper(const CHttpHelper&) = delete;
    CHttpHelper& operator=(const CHttpHelper&) = delete;

    /// Connects to the host of a URL, dropping the connection that there was.
    /// @return 0, -104, -105 or -106
    int InitialConnection(const wchar_t* url);

    /// @return 0 always
    int CloseConnection();

    /// What the clients' operations begin with.
    /// @param helper null stands for one that could not be made
    /// @return 0, or -100 with its line in the log
    static int CheckConnection(const CHttpHelper* helper);

    bool IsConnected() const { return static_cast<bool>(m_connection); }

    /// @param objectPath path below the base URL, with its query
    /// @param response   receives the body, inflated
    /// @return 0, a negative code, or what GetResponse returned
    int RequestGet(const wchar_t* objectPath, std::string& response);

    /// @param objectPath path below the base URL
    /// @param body       the body, as it goes out
    /// @param response   receives the body of the answer, inflated
    /// @return 0, a negative code, or what GetResponse returned
    int RequestPost(const wchar_t* objectPath, const char* body, std::string& response);

    /// Reads a received response.
    /// @param response cleared, then filled with the body; what was read before a failure stays in it, unless it was
    ///                 too long
    /// @return 0, a negative code, or the status of a refused request
    virtual int GetResponse(Platform::Request& request, std::string& response) = 0;

protected:
    // The clients own their helper by its own type.
    ~CHttpHelper();

    /// Opens a request for a path below the base URL and adds the standard headers.
    /// @param failure the line for a request that cannot be opened
    /// @return 0, -108, or -115 to -119
    int OpenRequest(Platform::Request& request, const wchar_t* verb, const wchar_t* objectPath, const wchar_t* failure);

    /// Adds the five standard headers.
    /// @return 0, or -115 to -119 for the header that failed
    int SetRequestHeader(Platform::Request& request);

    /// What the log says of a multipart form.
    struct FormMessages
    {
        const wchar_t* openFailed;
        const wchar_t* headerFailed;
        const wchar_t* sendFailed;
        const wchar_t* receiveFailed;
        const wchar_t* received;
    };

    /// Where the uploads of the services differ.
    struct UploadRules
    {
        enum class Closing
        {
            BeforeReceiving,
            AfterReceiving
        };

        std::wstring (*contentType)(const std::string& boundary);
        Platform::File::Share share;
        Closing closing;
        const wchar_t* openedFile; ///< the beginning of the line for a file that is open
    };

    /// Posts a local file as the form field "upfile".
    /// @param objectPath    path below the base URL
    /// @param announcedName the name to send for it, in the service's code page
    /// @param response      receives the body of the answer, inflated
    /// @return 0, -108, -109, -111, -113, -115 to -119, -120, or what GetResponse returned
    int UploadFile(const wchar_t* objectPath, const UploadPath& path, std::string_view announcedName,
                   const UploadRules& rules, const FormMessages& messages, std::string& response);

    /// Posts a multipart form from memory.
    /// @param objectPath path below the base URL
    /// @param pieces     the body, written piece by piece as it lies there
    /// @param response   receives the body of the answer, inflated
    /// @return 0, -108, -109, -111, -113, -115 to -119, or what GetResponse returned
    int PostForm(const wchar_t* objectPath, const std::string& boundary, std::initializer_list<std::string_view> pieces,
                 const FormMessages& messages, std::string& response);

    /// What the log says of a download.
    struct DownloadMessages
    {
        const wchar_t* openFailed;
        const wchar_t* sent;
        const wchar_t* sendFailed;
        const wchar_t* receiveFailed;
    };

    /// Sends a GET for a whole file, and reads the answer's head.
    /// @param objectPath path below the base URL
    /// @return 0, -108, -111, -115 to -119, -130 or -132
    int GetDownload(Platform::Request& request, const wchar_t* objectPath, const DownloadMessages& messages,
                    ResponseAttributes& attributes);

    /// What the log says of a ranged request.
    struct RangeMessages
    {
        const wchar_t* openFailed;
        const wchar_t* headerFailed;
        const wchar_t* sent = nullptr; ///< null for no line
        const wchar_t* sendFailed;
        const wchar_t* receiveFailed;
    };

    /// What ends a ranged request with which code.
    struct RangeFailures
    {
        int send; ///< 0 goes on to receiving all the same
        int receive;
    };

    /// Sends a GET for a range and receives the answer's head.
    /// @param objectPath  path below the base URL
    /// @param rangeHeader the whole header
    /// @return 0, -108, -114, -115 to -119, or one of the codes given
    int GetRange(Platform::Request& request, const wchar_t* objectPath, std::wstring_view rangeHeader,
                 const RangeMessages& messages, RangeFailures failures);

private:
    int ReadAnswer(Platform::Request& request, const FormMessages& messages, std::string& response);

    std::wstring m_serverPrefix;
    Platform::Session m_session;
    Platform::Connection m_connection;
    // Noted from the URL's scheme; requests are opened without it.
    std::uint32_t m_requestFlags = 0;
};

} // namespace quorvex
