#pragma once

#include "Setting.h"

#include <optional>

namespace quorvex::soak
{

/// One account's clients of the shared file storage, one of each generation.
class StorageClients
{
public:
    StorageClients(Setting& setting, Account account) : m_setting(setting), m_account(std::move(account)) {}

    void Open();
    void Close();

    /// @name Tasks
    /// @{
    void LogInFirst();
    void LogInSecond();
    void LogInThird();
    void UseBuffer() const;
    /// @}

    CFileStorage& First() { return *m_first; }
    CFileStorage2& Second() { return *m_second; }
    CFileStorage3& Third() { return *m_third; }
    const std::wstring& Uid() const { return m_account.uid; }

private:
    void OpenSecond();
    void OpenThird();

    Setting& m_setting;
    Account m_account;
    std::optional<CFileStorage> m_first;
    std::optional<CFileStorage2> m_second;
    std::optional<CFileStorage3> m_third;
};

} // namespace quorvex::soak
