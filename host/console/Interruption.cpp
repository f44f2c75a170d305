#include "Interruption.h"

#include "ExitStatus.h"
#include "Output.h"

#include <exception>
#include <utility>

#include <windows.h>

namespace quorvex::console
{
namespace
{

std::atomic<int> worksInHand{0};
std::function<void()> tellEnd;

BOOL WINAPI OnControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    if (worksInHand > 0 && !isAskedToStop.exchange(true))
    {
        WriteError("\nstopping behind what is under way; Ctrl+C once more stops at once\n");
        return TRUE;
    }
    try
    {
        tellEnd();
    }
    catch (const std::exception&)
    {
        // Where nothing can be told, the end alone has to do.
    }
    // The main thread may stand in the middle of a request, where no orderly end can reach it.
    TerminateProcess(GetCurrentProcess(), ExitStatus::kInterrupted);
    return TRUE;
}

} // namespace

StoppableWork::StoppableWork()
{
    ++worksInHand;
}

StoppableWork::~StoppableWork()
{
    --worksInHand;
}

void TakeInterruptions(std::function<void()> tell)
{
    tellEnd = std::move(tell);
    // A program that a shell has started in the background ignores Ctrl+C until it says otherwise.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(OnControl, TRUE);
}

} // namespace quorvex::console
