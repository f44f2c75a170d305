#include "FaultProxy.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <string_view>
#include <utility>

namespace quorvex::soak
{

namespace
{

constexpr std::chrono::milliseconds kLongestHold{40};
constexpr std::size_t kLongestTask = 12; // milliseconds that the services take for most requests at the most
constexpr std::string_view kHeadEnd = "\r\n\r\n";

std::size_t BodyLength(std::string_view head)
{
    std::string lower(head);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    constexpr std::string_view name = "\r\ncontent-length:";
    const std::size_t at = lower.find(name);
    return at == std::string::npos ? 0 : std::stoul(lower.substr(at + name.size()));
}

std::size_t HeadLength(std::string_view answer)
{
    const std::size_t at = answer.find(kHeadEnd);
    return at == std::string_view::npos ? answer.size() : at + kHeadEnd.size();
}

/// @return false when the client ended before its request did, or has sent none
bool ReadRequest(const Socket& client, std::string& request, bool isHeadEnough)
{
    std::size_t headEnd = 0;
    while ((headEnd = request.find(kHeadEnd)) == std::string::npos)
    {
        if (!client.Receive(request))
        {
            return false;
        }
    }
    const std::size_t length = headEnd + kHeadEnd.size() + BodyLength(request.substr(0, headEnd));
    while (!isHeadEnough && request.size() < length)
    {
        if (!client.Receive(request))
        {
            return false;
        }
    }
    return true;
}

std::string AnswerOf(int status)
{
    const std::string body = "{\"msg\":\"put in between\"}";
    return "HTTP/1.1 " + std::to_string(status) +
           " Put in between\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace

FaultProxy::FaultProxy(RestartableServices& services, Faults& faults)
    : m_services(services), m_faults(faults), m_acceptor([this] { AcceptAll(); })
{
}

FaultProxy::~FaultProxy()
{
    m_listener.Interrupt();
    m_acceptor.join();
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_active == 0; });
}

void FaultProxy::AcceptAll()
{
    while (Socket client = m_listener.Accept())
    {
        {
            const std::lock_guard lock(m_mutex);
            ++m_accepted;
            ++m_active;
        }
        m_changed.notify_all();
        std::thread([this, connection = std::move(client)]() mutable {
            Serve(std::move(connection));
            const std::lock_guard lock(m_mutex);
            --m_active;
            m_changed.notify_all();
        }).detach();
    }
}

void FaultProxy::Serve(Socket client)
{
    try
    {
        Answer(client);
    }
    catch (const std::exception& error)
    {
        m_hasFailed = true;
        std::cout << "FAILED: " << error.what() << std::endl;
        client.Reset();
    }
}

void FaultProxy::Answer(Socket& client)
{
    std::string request;
    if (!ReadRequest(client, request, true))
    {
        return;
    }
    const Fault fault = m_faults.Choose();
    switch (fault)
    {
    case Fault::ResetInRequest:
        return client.Reset();
    case Fault::Forbidden:
        return AnswerInstead(client, 403);
    case Fault::NotFound:
        return AnswerInstead(client, 404);
    case Fault::ServerError:
        return AnswerInstead(client, 500);
    case Fault::Delayed:
        HoldForAnother(kLongestHold);
        break;
    default:
        break;
    }
    if (!ReadRequest(client, request, false))
    {
        return;
    }
    if (fault == Fault::ResetBefore)
    {
        return client.Reset();
    }
    Exchange(client, request, fault);
}

/// Without waiting for the rest of the request, as a server does that knows enough.
void FaultProxy::AnswerInstead(const Socket& client, int status) const
{
    client.Send(AnswerOf(status));
    client.Finish();
}

void FaultProxy::Exchange(Socket& client, const std::string& request, Fault fault)
{
    std::string answer = Forward(request, fault);
    if (fault == Fault::ServerErrorAfter)
    {
        answer = AnswerOf(500);
    }
    if (fault == Fault::ResetAfter || answer.empty())
    {
        return client.Reset();
    }
    if (fault == Fault::ResetInAnswer)
    {
        // Not within the head: Wine 8 takes that for a good answer, and reads its body from memory behind its buffer.
        const std::size_t head = HeadLength(answer);
        client.Send(std::string_view(answer).substr(0, head + m_faults.Below(answer.size() - head + 1)));
        return client.Reset();
    }
    if (fault == Fault::CutAnswer)
    {
        answer.resize(m_faults.Below(answer.size()));
    }
    client.Send(answer);
    client.Finish();
}

/// @return everything that the services answer, nothing when they are gone
std::string FaultProxy::Forward(const std::string& request, Fault fault)
{
    std::string answer;
    const Socket services = Socket::ConnectTo(m_services.Port());
    if (!services || !services.Send(request))
    {
        return answer;
    }
    if (fault == Fault::Kill || fault == Fault::Restart)
    {
        // They may have done nothing, something or everything by then.
        HoldForAnother(std::chrono::milliseconds(m_faults.Below(kLongestTask)));
        m_services.Restart(fault == Fault::Kill ? SIGKILL : SIGTERM);
    }
    while (services.Receive(answer))
    {
    }
    return answer;
}

void FaultProxy::HoldForAnother(std::chrono::milliseconds longest)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, longest, [this, before = m_accepted] { return m_accepted != before; });
}

} // namespace quorvex::soak
