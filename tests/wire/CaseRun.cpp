#include "wire/CaseRun.h"

#include "support/HandleLedger.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "support/SystemCalls.h"
#include "support/TempFolder.h"
#include "support/Text.h"
#include "wire/Client.h"
#include "wire/Comparison.h"

#include <ferrolink/log.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace wire
{
namespace
{
namespace fs = std::filesystem;

/// Carries out the steps of a case in their order.
class StepRunner
{
public:
    StepRunner(const Variables& variables, fs::path folder, Logging logging)
        : m_variables(variables), m_folder(std::move(folder)), m_logging(logging)
    {
        if (m_logging == Logging::Off)
            frl_log_set_level(0);
    }

    void operator()(const ClientStep& step) { m_client = makeClient(step.kind, Arguments(step.arguments)); }

    void operator()(const FailStep& step) { m_calls.fail(step.function, step.call, step.error, step.howMany); }

    void operator()(const LevelsStep& step) const
    {
        if (m_logging == Logging::AsInCase)
            frl_log_set_level(step.levels);
    }

    void operator()(const FileStep& step) const
    {
        support::writeFile(m_folder / support::toWide(step.name), step.content);
    }

    void operator()(const SparseStep& step) const
    {
        const fs::path path = m_folder / support::toWide(step.name);
        support::writeFile(path, "");
        fs::resize_file(path, step.size);
    }

    void operator()(const FolderStep& step) const { fs::create_directories(m_folder / support::toWide(step.name)); }

    void operator()(const CallStep& step)
    {
        if (!m_client)
            throw CaseError("a call before there is a client");
        Arguments arguments(step.arguments);
        const std::string result = m_client->call(step.operation, arguments);
        const std::string where = "line " + std::to_string(step.line) + ": " + step.operation;
        EXPECT_TRUE(Pattern(step.result, m_variables).match(result).matched)
            << where << " returns " << result << " instead of " << step.result;
        for (const std::string& difference : arguments.differences(step.outs, m_variables))
            ADD_FAILURE() << where << ": " << difference;
    }

    void destroyClient() { m_client.reset(); }

    std::vector<std::string> handleDefects() const { return m_ledger.defects(); }

private:
    const Variables& m_variables;
    fs::path m_folder;
    Logging m_logging;
    support::SystemCalls m_calls;
    support::HandleLedger m_ledger{m_calls};
    std::unique_ptr<Client> m_client;
};

void checkFiles(const CaseFile& file, const fs::path& folder)
{
    for (const auto& [name, expected] : file.filesAfterwards)
    {
        const fs::path path = folder / support::toWide(name);
        if (!fs::exists(path))
            ADD_FAILURE() << "there is no file " << name;
        else if (const std::string actual = support::readFile(path); actual != expected)
            ADD_FAILURE() << "the file " << name << " differs\n" << sideBySide(expected, actual);
    }
    for (const std::string& name : file.absentAfterwards)
        EXPECT_FALSE(fs::exists(folder / support::toWide(name))) << "there is a file " << name;
}

void checkLog(const CaseFile& file, const std::vector<support::LogLine>& lines, Logging logging)
{
    if (logging == Logging::Off)
    {
        EXPECT_EQ(lines.size(), 0u) << "lines of the log although every level is off";
        return;
    }
    if (const std::string differences = compareLog(file, lines); !differences.empty())
        ADD_FAILURE() << differences;
}

void runParsed(const CaseFile& file, support::ScriptedServer& server, const Variables& variables,
               const fs::path& folder, Logging logging)
{
    const support::LogCapture log;
    StepRunner runner(variables, folder, logging);
    server.play(file.replies);
    for (const Step& step : file.steps)
        std::visit(runner, step);
    runner.destroyClient();
    server.stop();

    if (const std::string differences = compareRequests(file.requests, server.requests()); !differences.empty())
        ADD_FAILURE() << differences;
    EXPECT_EQ(server.unexpectedConnections(), 0u) << "requests beyond the listed ones";
    checkLog(file, log.lines(), logging);
    for (const std::string& defect : runner.handleDefects())
        ADD_FAILURE() << defect;
    checkFiles(file, folder);
}

} // namespace

void runCase(const fs::path& path, const HeadTemplates& heads, Logging logging)
{
    const support::TempFolder folder;
    const support::RefusingPort refusing;
    support::ScriptedServer server;
    const Variables variables{
        {"host", "127.0.0.1"},
        {"port", std::to_string(server.port())},
        {"refused-port", std::to_string(refusing.port())},
        {"dir", support::toUtf8(folder.path().wstring())},
    };
    try
    {
        runParsed(parseCase(support::readFile(path), heads, variables), server, variables, folder.path(), logging);
    }
    catch (const CaseError& error)
    {
        ADD_FAILURE() << path.filename().string() << ": " << error.what();
    }
}

} // namespace wire
