// Uses a function, a class and the host library, and fails when one of them is not what its header says.
#include <ferrolink/log.h>
#include <quorvex/quorvex.h>

#include <cstring>
#include <iostream>
#include <string>

namespace
{

bool DigestIsRight()
{
    static const unsigned char kOfAbc[16] = {0x90, 0x01, 0x50, 0x98, 0x3c, 0xd2, 0x4f, 0xb0,
                                             0xd6, 0x96, 0x3f, 0x7d, 0x28, 0xe1, 0x7f, 0x72};
    const unsigned char abc[] = {'a', 'b', 'c'};
    unsigned char digest[16];
    md5_state_t state;
    md5_init(&state);
    md5_append(&state, abc, 3);
    md5_finish(&state, digest);
    return std::memcmp(digest, kOfAbc, sizeof(digest)) == 0;
}

void AppendLine(void* lines, unsigned /*level*/, const wchar_t* line, size_t length)
{
    static_cast<std::wstring*>(lines)->append(line, length);
}

bool UnconnectedDiskSaysSo()
{
    quorvex::netdisk::CNetDisk disk;
    return !disk.IsConnected() && disk.UserLogin(L"session") == quorvex::Result::NotConnected;
}

/// Port 1 is no server's.
bool DiskWithoutServerFailsAndLogsIt()
{
    std::wstring lines;
    frl_log_set_level(FRL_LOG_ERROR);
    frl_log_set_callback(AppendLine, &lines);
    quorvex::netdisk::CNetDisk disk(L"http://127.0.0.1:1/object");
    const bool isConnected = disk.IsConnected();
    const int result = disk.UserLogin(L"session");
    frl_log_set_stderr();
    return isConnected && result == quorvex::Result::PostSendFailed && !lines.empty();
}

bool Check(const char* what, bool isRight)
{
    std::cout << what << (isRight ? ": yes\n" : ": no\n");
    return isRight;
}

} // namespace

int main()
{
    const bool digest = Check("digests as RFC 1321 does", DigestIsRight());
    const bool unconnected = Check("refuses to work without a server's address", UnconnectedDiskSaysSo());
    const bool noServer = Check("tells and logs that no server answers", DiskWithoutServerFailsAndLogsIt());
    return digest && unconnected && noServer ? 0 : 1;
}
