#include "FileName.h"

#include <gtest/gtest.h>

using quorvex::StaysInFolder;

TEST(FileName, OrdinaryNamesStay)
{
    for (const wchar_t* const name : {L"a", L"report.pdf", L".profile", L"..a", L"a..", L"\u4E2D\u6587.txt", L"CONSOLE",
                                      L"NULL.txt", L"COM", L"COM10", L"LPTA", L"xCON", L"a CON", L"COM 1", L""})
    {
        EXPECT_TRUE(StaysInFolder(name)) << std::wstring(name).size();
    }
}

TEST(FileName, PathsLeave)
{
    for (const wchar_t* const name :
         {L".", L"..", L"...", L".. ", L" .", L"a\\b", L"a/b", L"\\a", L"..\\a", L"C:a", L"a:stream", L"\\\\?\\C:\\a"})
    {
        EXPECT_FALSE(StaysInFolder(name)) << std::wstring(name).size();
    }
}

TEST(FileName, WhatOnlyResemblesADeviceStays)
{
    for (const wchar_t* const name : {L"{on", L"@ux", L"n\u00FAl", L"com1\u0660", L"CONIN_", L"COMX", L"LP1"})
    {
        EXPECT_TRUE(StaysInFolder(name)) << std::wstring(name).size();
    }
}

TEST(FileName, DevicesLeave)
{
    for (const wchar_t* const name :
         {L"CON", L"con", L"Prn", L"AUX", L"nul", L"NUL.txt", L"nul .txt", L"NUL ", L"CONIN$", L"conout$.log", L"COM0",
          L"com1", L"COM9.tar.gz", L"LPT1", L"lpt0", L"COM\u00B9", L"lpt\u00B2.txt", L"COM\u00B3"})
    {
        EXPECT_FALSE(StaysInFolder(name)) << std::wstring(name).size();
    }
}
