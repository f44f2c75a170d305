#include <quorvex/OnlineUserSearch.h>

#include "../BoundedText.h"
#include "../NoThrow.h"
#include "../Platform/CodePage.h"
#include "OnlineUserSearchExchange.h"

#include <algorithm>
#include <string_view>

namespace quorvex
{

namespace
{

using RequestPath = WideText<768>;
using FormBody = NarrowText<8192>;

const char* OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

/// Appends names and values by turns.
/// @param illegal the line for an odd number of texts; the number follows
/// @return 0, or 1 for an odd number
int AppendPairs(FormBody& body, const std::vector<std::string>& pairs, const wchar_t* illegal)
{
    if (pairs.size() % 2 != 0)
    {
        LOG_ERROR(illegal << pairs.size());
        return Result::BadAnswer;
    }
    for (std::size_t i = 0; i < pairs.size(); i += 2)
    {
        // A name ends at its first zero byte, as the form does.
        const char* const name = pairs[i].c_str();
        body << std::string("&") + name + "=" + PercentEncode(pairs[i + 1]);
    }
    LOG_TRACE(L"szPostBuffer=\"" << body.c_str() << L"\"");
    return Result::Ok;
}

} // namespace

COnlineUserSearch::COnlineUserSearch(const wchar_t* url)
{
    NoThrow(L"COnlineUserSearch::COnlineUserSearch()", [&]() -> int {
        if (url != nullptr)
        {
            m_pHttpHelper = std::make_unique<CSearchUserOLHttpHelper>(url);
        }
        return Result::Ok;
    });
}

COnlineUserSearch::~COnlineUserSearch() = default;

const wchar_t* COnlineUserSearch::GetLastErrMsg() const
{
    return LastErrMsg();
}

int COnlineUserSearch::ClientLogin(const wchar_t* session)
{
    return NoThrow(L"COnlineUserSearch::ClientLogin()", [&]() -> int {
        if (session == nullptr)
        {
            LOG_ERROR(L"COnlineUserSearch::ClientLogin() session is NULL");
            return Result::SessionMissing;
        }
        LOG_TRACE(L"COnlineUserSearch::ClientLogin(lpszUapSession=" << session << L")");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        m_pszSession = CopyText(session);
        return ClientLoginWithSession(m_pszSession.get());
    });
}

int COnlineUserSearch::ClientLoginWithSession(const wchar_t* session) const
{
    return NoThrow(L"COnlineUserSearch::ClientLoginWithSession()", [&]() -> int {
        if (session == nullptr)
        {
            LOG_ERROR(L"COnlineUserSearch::ClientLoginWithSession() session is not correct");
            return Result::SessionMissing;
        }
        LOG_TRACE(L"COnlineUserSearch::ClientLoginWithSession(lpszUapSession=" << session << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        RequestPath path;
        path << L"check.php?s=" << session;
        return Exchange::RunLogin(
            [&](std::string& reply) { return exchange.Helper().RequestGet(path.c_str(), reply); });
    });
}

int COnlineUserSearch::ClientRelogin() const
{
    return ClientLoginWithSession(m_pszSession.get());
}

int COnlineUserSearch::ClientLogout()
{
    return NoThrow(L"COnlineUserSearch::ClientLogout()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::ClientLogout()");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        return Exchange::RunLogin(
            [&](std::string& reply) { return exchange.Helper().RequestGet(L"logout_rest.php", reply); });
    });
}

int COnlineUserSearch::UserReportStatus(const char* app, int status) const
{
    return NoThrow(L"COnlineUserSearch::UserReportStatus()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::UserReportStatus(\"" << app << L"\"," << status << L")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        RequestPath path;
        path << L"status.php?st=" << status << L"&app=" << Platform::ToWide(OrEmpty(app), Platform::CodePage::Ansi);
        return exchange.Run(
            {.expired = L"session expired when do UserReportStatus, try relogin to server",
             .statusReloginFailed = L"UserReportStatus() relogin error, return ",
             .codeReloginFailed = L"UserReportStatus(), relogin error, return "},
            [&](std::string& reply) { return exchange.Helper().RequestGet(path.c_str(), reply); },
            [](OLUSJsonHelper& helper, const std::string& reply, int& code, const char*& errorinfo) {
                return helper.ParseResult(reply, code, errorinfo);
            },
            [] {});
    });
}

int COnlineUserSearch::UserUpdateAppInfo(const char* app, const std::vector<std::string>& info) const
{
    return NoThrow(L"COnlineUserSearch::UserUpdateAppInfo()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::UserUpdateAppInfo()");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        FormBody body;
        body << "app=" << app;
        const int result = AppendPairs(body, info, L"COnlineUserSearch::UserUpdateAppInfo(), app_info illegal,size()=");
        return result == Result::Ok ? UserUpdateInfo(body.c_str()) : result;
    });
}

int COnlineUserSearch::UserUpdateInfo(const char* body) const
{
    return NoThrow(L"COnlineUserSearch::UserUpdateInfo()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::UserUpdateInfo(\"" << body << L"\")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        return exchange.Run(
            {.expired = L"session expired when do UserUpdateInfo, try relogin to server",
             .statusReloginFailed = L"UserUpdateInfo() relogin error, return ",
             .codeReloginFailed = L"UserUpdateInfo(), relogin error, return "},
            [&](std::string& reply) { return exchange.Helper().RequestPost(L"update.php", OrEmpty(body), reply); },
            [](OLUSJsonHelper& helper, const std::string& reply, int& code, const char*& errorinfo) {
                return helper.ParseResult(reply, code, errorinfo);
            },
            [] {
                // The other update's name is what the log has always said here.
                LOG_TRACE(L"COnlineUserSearch::UserUpdateAppInfo success");
            });
    });
}

int COnlineUserSearch::QueryByCondition(const char* condition, unsigned int* ids, const unsigned int& capacity,
                                        unsigned int& count) const
{
    return NoThrow(L"COnlineUserSearch::QueryByCondition()", [&]() -> int {
        // Capacity and count may be one variable.
        const std::size_t room = ids != nullptr ? capacity : 0;
        count = 0;
        LOG_TRACE(L"COnlineUserSearch::QueryByCondition(\"" << condition << L"\")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        std::vector<unsigned int> found;
        return exchange.Run(
            {.expired = L"session expired when do QueryByCondition, try relogin to server",
             .statusReloginFailed = L"QueryByCondition() relogin error, return ",
             .codeReloginFailed = L"QueryByCondition() relogin error, return "},
            [&](std::string& reply) { return exchange.Helper().RequestPost(L"search.php", OrEmpty(condition), reply); },
            [&](OLUSJsonHelper& helper, const std::string& reply, int& code, const char*& errorinfo) {
                found.clear();
                return helper.ParseUserIdList(reply, code, errorinfo, found);
            },
            [&] {
                const std::size_t kept = std::min(found.size(), room);
                std::copy_n(found.begin(), kept, ids);
                count = static_cast<unsigned int>(kept);
                LOG_TRACE(L"QueryByCondition success, vecUserId.size()=" << found.size());
            });
    });
}

int COnlineUserSearch::QueryByAppCondition(const char* app, const std::vector<std::string>& conditions, int skip,
                                           unsigned int* ids, const unsigned int& capacity, unsigned int& count) const
{
    return NoThrow(L"COnlineUserSearch::QueryByAppCondition()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::QueryByAppCondition()");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        FormBody body;
        body << "app=" << app << "&skip=" << skip;
        const int result =
            AppendPairs(body, conditions, L"COnlineUserSearch::QueryByAppCondition(), query_condition illegal,size()=");
        return result == Result::Ok ? QueryByCondition(body.c_str(), ids, capacity, count) : result;
    });
}

int COnlineUserSearch::QueryCountByConditionString(const char* condition, int& count) const
{
    return NoThrow(L"COnlineUserSearch::QueryCountByConditionString()", [&]() -> int {
        count = 0;
        LOG_TRACE(L"COnlineUserSearch::QueryCountByConditionString(\"" << condition << L"\")");
        const Exchange exchange{*this};
        if (const int result = exchange.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        int total = 0;
        return exchange.Run(
            {.expired = L"session expired when do QueryCountByConditionString, try relogin to server",
             .statusReloginFailed = L"QueryCountByConditionString() relogin error, return ",
             .codeReloginFailed = L"QueryCountByConditionString() relogin error, return "},
            [&](std::string& reply) { return exchange.Helper().RequestPost(L"count.php", OrEmpty(condition), reply); },
            [&](OLUSJsonHelper& helper, const std::string& reply, int& code, const char*& errorinfo) {
                return helper.ParseTotalCount(reply, code, errorinfo, total);
            },
            [&] {
                count = total;
                // The other query's name is what the log has always said here.
                LOG_TRACE(L"QueryByCondition success, nCount=" << count);
            });
    });
}

int COnlineUserSearch::QueryCountByConditionVector(const char* app, const std::vector<std::string>& conditions,
                                                   int& count) const
{
    return NoThrow(L"COnlineUserSearch::QueryCountByConditionVector()", [&]() -> int {
        LOG_TRACE(L"COnlineUserSearch::QueryCountByConditionVector()");
        if (const int result = Exchange{*this}.CheckConnection(); result != Result::Ok)
        {
            return result;
        }
        FormBody body;
        body << "app=" << app;
        const int result = AppendPairs(
            body, conditions, L"COnlineUserSearch::QueryCountByConditionVector(), query_condition illegal,size()=");
        return result == Result::Ok ? QueryCountByConditionString(body.c_str(), count) : result;
    });
}

} // namespace quorvex
