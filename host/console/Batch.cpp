#include "Batch.h"

#include "Failure.h"
#include "Interruption.h"
#include "Text.h"

#include <optional>

namespace quorvex::console
{
namespace
{

class Batch
{
public:
    Batch(const std::vector<std::string>& things, const Options& options) : m_things(things), m_options(options) {}

    Report Run(const std::string& list, const std::function<Report(const std::string&)>& act)
    {
        const StoppableWork work;
        for (const std::string& thing : m_things)
        {
            if (isAskedToStop)
                Note(thing, Failure::Interruption("interrupted before " + thing));
            else
                Do(thing, act);
        }
        m_report.AddData(list, m_list);
        if (m_first)
            m_report.SetFailure(m_first->Told(Summary()));
        return m_report;
    }

private:
    void Do(const std::string& thing, const std::function<Report(const std::string&)>& act)
    {
        try
        {
            const Report done = act(thing);
            const std::string text = done.ForPeople();
            const bool isOneLine = text.find('\n') + 1 == text.size();
            m_report.AddText((m_list.empty() || isOneLine ? "" : "\n") + text);
            Append(thing, done.Data(), true);
            ++m_done;
        }
        catch (const Failure& failure)
        {
            Note(thing, failure);
        }
        catch (const std::exception& error)
        {
            Note(thing, Failure(FromSystem(error.what())));
        }
    }

    void Note(const std::string& thing, const Failure& failure)
    {
        if (!m_options.json)
            WriteFailure(failure);
        Append(thing, failure.Members(), false);
        // An interruption ends all, and so it is what there is to tell.
        if (!m_first || (IsInterruption(failure) && !IsInterruption(*m_first)))
            m_first = failure;
    }

    static bool IsInterruption(const Failure& failure) { return failure.Status() == ExitStatus::kInterrupted; }

    void Append(const std::string& thing, Json::Value object, bool isDone)
    {
        object["given"] = thing;
        object["ok"] = isDone;
        m_list.append(object);
    }

    std::string Summary() const
    {
        return std::to_string(m_done) + " of " + std::to_string(m_things.size()) + " done; " + m_first->what();
    }

    const std::vector<std::string>& m_things;
    const Options& m_options;
    Report m_report;
    Json::Value m_list{Json::arrayValue};
    std::size_t m_done = 0;
    std::optional<Failure> m_first;
};

Report OfOne(const std::string& list, const std::string& thing, Report report)
{
    Json::Value object = report.Data();
    object["given"] = thing;
    object["ok"] = true;
    Json::Value array(Json::arrayValue);
    array.append(object);
    report.AddData(list, array);
    return report;
}

} // namespace

Report ForEach(const std::string& list, const std::vector<std::string>& things, const Options& options,
               const std::function<Report(const std::string& thing)>& act)
{
    return things.size() == 1 ? OfOne(list, things.front(), act(things.front()))
                              : Batch(things, options).Run(list, act);
}

} // namespace quorvex::console
