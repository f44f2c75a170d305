#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// What the generations of the shared file storage make of the server's replies.
namespace quorvex
{

/// @return 0, 1, or the server's code
int ReadResult(const std::string& reply);

/// What a client knows of its login.
struct LoginState
{
    std::unique_ptr<char[]>& uid;
    std::unique_ptr<char[]>& sid;
    bool& needLogin;
};

/// @param state taken from the reply on success, and left as it was otherwise
/// @return 0, 1, or the server's code
int ReadLogin(const std::string& reply, LoginState state);

/// Reads the answer to a logout. One that names another user or session than the login did is noted in the log only.
/// @param state a login is needed again after success
/// @return 0, 1, or the server's code
int ReadLogout(const std::string& reply, LoginState state);

/// What a picture's upload ends with: its key on the server must be its file name.
/// @param result what uploading ended with
/// @param key    the server's key; empty when it gave none
/// @return the result, or -103
int CheckPictureName(int result, std::wstring_view key, const wchar_t* fileName);

/// Reads the answer to a whole-file upload, for which a file that is there already is as good as a new one.
/// @param keyOut    receives the file's key
/// @param keyOutLen room of keyOut, the final zero included
/// @return 0, 1, or the server's code
int ReadUpload(const std::string& reply, wchar_t* keyOut, unsigned long keyOutLen);

/// Room for a key of the server's, the final zero included.
inline constexpr std::size_t kKeySize = 65;

} // namespace quorvex
