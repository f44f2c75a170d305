// A whole host: logs in to a network disk, uploads one file, and prints the quota.
#include <quorvex/quorvex.h>

#include <iostream>

int wmain(int argc, wchar_t** argv)
{
    if (argc != 5)
    {
        std::wcerr << L"usage: quorvex-example URL SESSION FOLDER FILE\n";
        return 2;
    }
    quorvex::netdisk::CNetDisk disk(argv[1]);
    wchar_t key[34] = {};
    unsigned long long totalSpace = 0;
    unsigned long long usedSpace = 0;
    unsigned long maxFileSize = 0;
    int result = disk.UserLogin(argv[2]);
    if (result == quorvex::Result::Ok)
        result = disk.FileUpload(argv[3], argv[4], key, 17);
    if (result == quorvex::Result::Ok)
        result = disk.CapacityInfo(totalSpace, usedSpace, maxFileSize);
    if (result != quorvex::Result::Ok)
    {
        std::wcerr << L"failed with result " << result << L", see Results.h\n";
        return 1;
    }
    std::wcout << L"stored as " << key << L"; " << usedSpace << L" of " << totalSpace << L" bytes are used\n";
    return 0;
}
