#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex::soak
{

/// A TCP socket, closed at the end of its scope.
class Socket
{
public:
    explicit Socket(int descriptor = -1) : m_descriptor(descriptor) {}
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket();

    /// Listens on loopback, on a port of the system's choice.
    static Socket Listen();

    /// @return an invalid socket when nobody listens there
    static Socket ConnectTo(int port);

    explicit operator bool() const { return m_descriptor >= 0; }

    int Port() const;
    Socket Accept() const;

    /// Appends what has come.
    /// @return false at the other side's end, in good order or not
    bool Receive(std::string& text) const;

    /// @return false when the other side has gone
    bool Send(std::string_view bytes) const;

    /// Ends what is sent, reads on until the other side has ended too, and so loses nothing that is under way.
    void Finish() const;

    /// Drops the connection, so that the other side sees a reset.
    void Reset();

    /// Ends all waiting on this socket, from another thread too.
    void Interrupt() const;

private:
    void Close();

    int m_descriptor;
};

} // namespace quorvex::soak
