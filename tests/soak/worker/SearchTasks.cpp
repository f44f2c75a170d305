#include "SearchTasks.h"

#include <algorithm>
#include <span>

namespace quorvex::soak
{

namespace
{

std::string NameOf(std::size_t index)
{
    return "v" + std::to_string(index);
}

} // namespace

SearchTasks::SearchTasks(Setting& setting, Account account)
    : m_setting(setting), m_account(std::move(account)), m_app("app" + std::to_string(setting.number))
{
}

void SearchTasks::Open()
{
    m_client.emplace((m_setting.server + L"/search").c_str());
    m_setting.Note(Op::SearchCreate, Result::Ok);
    m_setting.NoteRight(Op::SearchGetLastErrMsg, *m_client->GetLastErrMsg() == L'\0',
                        "COnlineUserSearch::GetLastErrMsg");
    TryThrice([&] { return m_setting.Note(Op::SearchClientLogin, m_client->ClientLogin(m_account.session.c_str())); });
}

void SearchTasks::Close()
{
    m_client.reset();
    m_setting.Note(Op::SearchDestroy, Result::Ok);
}

void SearchTasks::LogIn()
{
    if (m_setting.Turn(Op::SearchClientLogout))
    {
        m_isOnline.reset();
        if (m_setting.Note(Op::SearchClientLogout, m_client->ClientLogout()) == Result::Ok)
        {
            m_isOnline = false;
        }
    }
    m_setting.Note(Op::SearchClientLogin, m_client->ClientLogin(m_account.session.c_str()));
}

void SearchTasks::Report()
{
    const int status = Chance(m_setting.random, 75) ? 1 : 0;
    m_isOnline.reset();
    if (m_setting.Note(Op::SearchUserReportStatus, m_client->UserReportStatus(m_app.c_str(), status)) == Result::Ok)
    {
        m_isOnline = status != 0;
    }
}

std::string SearchTasks::Value(std::size_t index) const
{
    return m_app + " & " + std::to_string(m_values[index].value_or(0));
}

void SearchTasks::Update()
{
    const std::size_t index = Below(m_setting.random, kValues);
    const std::uint64_t next = ++m_lastValue;
    m_values[index] = next;
    const std::string value = Value(index);
    int result = Result::BadAnswer;
    if (m_setting.Turn(Op::SearchUserUpdateAppInfo))
    {
        result = m_setting.Note(Op::SearchUserUpdateAppInfo,
                                m_client->UserUpdateAppInfo(m_app.c_str(), {NameOf(index), value}));
    }
    else
    {
        const std::string form =
            "app=" + m_app + "&" + NameOf(index) + "=" + m_app + "%20%26%20" + std::to_string(next);
        result = m_setting.Note(Op::SearchUserUpdateInfo, m_client->UserUpdateInfo(form.c_str()));
    }
    if (result != Result::Ok)
    {
        m_values[index].reset();
    }
}

/// @return whether the query succeeded
bool SearchTasks::IsFound(std::size_t index, bool& isFound) const
{
    constexpr unsigned int room = 100;
    std::array<unsigned int, room> ids{};
    unsigned int count = 0;
    int result = Result::BadAnswer;
    if (m_setting.Turn(Op::SearchQueryByAppCondition))
    {
        result = m_setting.Note(
            Op::SearchQueryByAppCondition,
            m_client->QueryByAppCondition(m_app.c_str(), {NameOf(index), Value(index)}, 0, ids.data(), room, count));
    }
    else
    {
        const std::string form = "app=" + m_app + "&skip=0&" + NameOf(index) + "=" + m_app + "%20%26%20" +
                                 std::to_string(m_values[index].value_or(0));
        result = m_setting.Note(Op::SearchQueryByCondition,
                                m_client->QueryByCondition(form.c_str(), ids.data(), room, count));
    }
    const std::span found(ids.data(), std::min(count, room));
    isFound = std::ranges::find(found, std::stoul(m_account.uid)) != found.end();
    return result == Result::Ok;
}

void SearchTasks::CheckFound(bool isFound, std::size_t index) const
{
    m_setting.Require(!m_isOnline || !m_values[index] || isFound == *m_isOnline,
                      isFound ? "a user is found who is offline" : "a user is not found who is online");
}

void SearchTasks::Query()
{
    const std::size_t index = Below(m_setting.random, kValues);
    bool isFound = false;
    if (m_values[index] && IsFound(index, isFound))
    {
        CheckFound(isFound, index);
    }
}

void SearchTasks::Count()
{
    const std::size_t index = Below(m_setting.random, kValues);
    int count = 0;
    int result = Result::BadAnswer;
    if (m_setting.Turn(Op::SearchQueryCountByConditionVector))
    {
        result =
            m_setting.Note(Op::SearchQueryCountByConditionVector,
                           m_client->QueryCountByConditionVector(m_app.c_str(), {NameOf(index), Value(index)}, count));
    }
    else
    {
        const std::string form = "app=" + m_app + "&" + NameOf(index) + "=" + m_app + "%20%26%20" +
                                 std::to_string(m_values[index].value_or(0));
        result = m_setting.Note(Op::SearchQueryCountByConditionString,
                                m_client->QueryCountByConditionString(form.c_str(), count));
    }
    if (result == Result::Ok)
    {
        CheckFound(count == 1, index);
    }
}

void SearchTasks::Verify()
{
    for (std::size_t i = 0; i < kValues; ++i)
    {
        if (!m_isOnline || !m_values[i])
        {
            ++m_setting.verdict.uncertain;
            continue;
        }
        bool isFound = false;
        const bool isAnswered = IsFound(i, isFound);
        m_setting.VerifyOther(isAnswered && isFound == *m_isOnline, "the presence of the user of " + m_app);
    }
}

} // namespace quorvex::soak
