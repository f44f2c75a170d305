#pragma once

#include "ConsoleProcess.h"

#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::e2e
{

constexpr std::size_t kMebibyte = 1048576;

struct Account
{
    const char* name;
    const char* password;
};

constexpr Account kAnn{"ann", "secret"};
constexpr Account kBob{"bob", "hidden"};

/// Bytes without a pattern that a transfer could hide behind; another seed gives others.
std::string Pattern(std::size_t size, std::uint64_t seed = 88172645463325252ULL);

std::string ReadFile(const std::filesystem::path& path);

/// The services with two accounts and empty disks, and the console as their user.
class DiskFixture : public ::testing::Test
{
protected:
    void SetUp() override { StartServices(); }

    void StartServices(int wantedPort = 0);

    std::string Server() const;

    /// A command of an account, with its options.
    virtual std::vector<std::string> Command(std::vector<std::string> arguments, const Account& account = kAnn) const;

    ConsoleRun Run(const std::vector<std::string>& arguments, const Account& account = kAnn) const;

    /// Runs what has to succeed and returns what the console says.
    Json::Value Done(const std::vector<std::string>& arguments, const Account& account = kAnn) const;

    /// Runs what has to fail and returns the result that the console tells.
    int Refused(const std::vector<std::string>& arguments, const Account& account = kAnn) const;

    /// What people see of what has to succeed.
    std::string Shown(const std::vector<std::string>& arguments) const;

    std::string Write(const std::string& name, const std::string& content) const;

    /// Makes a folder for downloads.
    std::filesystem::path MakeFolder(const std::string& name) const;

    /// Uploads a file and returns what the console says of it.
    Json::Value Put(const std::string& path, const std::vector<std::string>& options = {}) const;

    /// Writes a file, uploads it and returns its key.
    std::string PutContent(const std::string& name, const std::string& content,
                           const std::vector<std::string>& options = {}) const;

    /// Downloads into a file and returns its content.
    std::string Get(const std::string& key, const std::vector<std::string>& options = {},
                    const Account& account = kAnn) const;

    std::uint64_t Used(const Account& account = kAnn) const;

    services::test::TemporaryFolder folder;
    std::optional<services::test::ServiceProcess> services;
    int port = 0;
};

} // namespace quorvex::e2e
