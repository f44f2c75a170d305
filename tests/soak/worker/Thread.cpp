#include "Thread.h"

namespace quorvex::soak
{

Thread::Thread(Setting setting, const Account& owner, const Account& guest)
    : m_setting(std::move(setting)),
      m_owner(m_setting, owner),
      m_guest(m_setting, guest),
      m_shares(m_setting, m_owner, m_guest),
      m_storage(m_setting, owner),
      m_pictures(m_setting, m_storage),
      m_depot(m_setting, m_storage),
      m_search(m_setting, owner)
{
    m_tasks = {
        {8, [this] { m_owner.Upload(); }},
        {6, [this] { m_owner.UploadLarge(); }},
        {4, [this] { m_owner.AddFolder(); }},
        {8, [this] { m_owner.Download(); }},
        {5, [this] { m_owner.DownloadLarge(); }},
        {6, [this] { m_owner.Change(); }},
        {4, [this] { m_owner.ChangeFolder(); }},
        {4, [this] { m_owner.List(); }},
        {3, [this] { m_shares.Make(); }},
        {6, [this] { m_shares.Use(); }},
        {3, [this] { m_shares.Defer(); }},
        {1, [this] { m_shares.Delete(); }},
        {4, [this] { m_owner.Delete(); }},
        {2, [this] { m_owner.DeleteFolder(); }},
        {5, [this] { m_owner.UseBin(); }},
        {3, [this] { m_owner.AskForCapacity(); }},
        {2, [this] { m_owner.LogIn(); }},
        {1, [this] { m_guest.Upload(); }},
        {2, [this] { m_guest.Download(); }},
        {3, [this] { m_guest.Delete(); }},
        {2, [this] { m_guest.UseBin(); }},
        {1, [this] { m_guest.List(); }},
        {10, [this] { m_pictures.Upload(); }},
        {10, [this] { m_pictures.Download(); }},
        {3, [this] { m_pictures.UploadPhoto(); }},
        {3, [this] { m_pictures.UploadEmoticon(); }},
        {3, [this] { m_pictures.DownloadEmoticon(); }},
        {2, [this] { m_pictures.RemoveEmoticon(); }},
        {4, [this] { m_depot.UploadFirst(); }},
        {4, [this] { m_depot.UploadSecond(); }},
        {4, [this] { m_depot.UploadThird(); }},
        {7, [this] { m_depot.Download(); }},
        {4, [this] { m_depot.LookAt(); }},
        {3, [this] { m_depot.Renew(); }},
        {4, [this] { m_depot.Remove(); }},
        {3, [this] { m_depot.List(); }},
        {4, [this] { m_depot.CheckDigests(); }},
        {2, [this] { m_storage.LogInFirst(); }},
        {2, [this] { m_storage.LogInSecond(); }},
        {2, [this] { m_storage.LogInThird(); }},
        {3, [this] { m_storage.UseBuffer(); }},
        {2, [this] { m_search.LogIn(); }},
        {5, [this] { m_search.Report(); }},
        {6, [this] { m_search.Update(); }},
        {8, [this] { m_search.Query(); }},
        {5, [this] { m_search.Count(); }},
    };
    for (const Task& task : m_tasks)
    {
        m_weights += task.weight;
    }
}

void Thread::Open()
{
    m_owner.Open();
    m_guest.Open();
    m_storage.Open();
    m_search.Open();
}

void Thread::Close()
{
    m_search.Close();
    m_storage.Close();
    m_guest.Close();
    m_owner.Close();
}

void Thread::Work(std::uint64_t operations)
{
    Open();
    if (std::exchange(m_isFirst, false))
    {
        for (const Task& task : m_tasks)
        {
            task.run();
        }
    }
    while (m_setting.tally.Operations() < operations && !m_setting.tally.HasFailed())
    {
        RunByChance();
    }
    Close();
}

void Thread::RunByChance()
{
    std::size_t chance = Below(m_setting.random, m_weights);
    for (const Task& task : m_tasks)
    {
        if (chance < task.weight)
        {
            return task.run();
        }
        chance -= task.weight;
    }
}

void Thread::Verify()
{
    Open();
    m_owner.Verify();
    m_guest.Verify();
    m_shares.Verify();
    m_pictures.Verify();
    m_depot.Verify();
    m_search.Verify();
    Close();
}

} // namespace quorvex::soak
