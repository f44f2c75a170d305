#pragma once

#include "hostile/HostileServer.h"
#include "hostile/Stage.h"
#include "hostile/Subjects.h"
#include "support/HandleLedger.h"
#include "support/SystemCalls.h"

#include <optional>
#include <set>
#include <string>

namespace hostile
{

/// Plays attacks against one set of clients, and holds each against what must be so whatever a server sends.
class Player
{
public:
    Player();

    void play(const Attack& attack);

private:
    void begin();
    void logIn();
    void warmUp(const Operation& operation);
    int run(const Attack& attack);
    void checkResult(const Attack& attack, int result);
    int succeed(const Operation& operation);
    void checkFiles();

    HostileServer m_server;
    support::SystemCalls m_calls;
    support::HandleLedger m_ledger{m_calls};
    std::optional<Stage> m_stage;
    std::set<std::string> m_warm; ///< the operations that have succeeded once
};

} // namespace hostile
