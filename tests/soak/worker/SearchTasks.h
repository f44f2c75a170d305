#pragma once

#include "Setting.h"

#include <array>
#include <optional>

namespace quorvex::soak
{

/// What one user publishes and asks for in the online-user search, and what of it was acknowledged.
class SearchTasks
{
public:
    SearchTasks(Setting& setting, Account account);

    void Open();
    void Close();

    /// @name Tasks
    /// @{
    void LogIn();
    void Report();
    void Update();
    void Query();
    void Count();
    /// @}

    void Verify();

private:
    static constexpr std::size_t kValues = 4;

    std::string Value(std::size_t index) const;
    bool IsFound(std::size_t index, bool& isFound) const;
    void CheckFound(bool isFound, std::size_t index) const;

    Setting& m_setting;
    Account m_account;
    std::string m_app;
    std::optional<bool> m_isOnline; ///< nothing when it is not certain
    std::array<std::optional<std::uint64_t>, kValues> m_values;
    std::uint64_t m_lastValue = 0;
    std::optional<COnlineUserSearch> m_client;
};

} // namespace quorvex::soak
