#pragma once

#include "DepotTasks.h"
#include "DiskTasks.h"
#include "PictureTasks.h"
#include "SearchTasks.h"
#include "ShareTasks.h"
#include "StorageClients.h"

#include <functional>
#include <string>
#include <vector>

namespace quorvex::soak
{

/// One thread's clients, accounts and books. The clients live as long as one stretch of work.
class Thread
{
public:
    Thread(Setting setting, const Account& owner, const Account& guest);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Performs tasks until all threads together have done so many operations; the first time every task once.
    void Work(std::uint64_t operations);

    /// Compares everything with the books.
    void Verify();

private:
    struct Task
    {
        std::size_t weight;
        std::function<void()> run;
    };

    void Open();
    void Close();
    void RunByChance();

    Setting m_setting;
    DiskTasks m_owner;
    DiskTasks m_guest;
    ShareTasks m_shares;
    StorageClients m_storage;
    PictureTasks m_pictures;
    DepotTasks m_depot;
    SearchTasks m_search;
    std::vector<Task> m_tasks;
    std::size_t m_weights = 0;
    bool m_isFirst = true;
};

} // namespace quorvex::soak
