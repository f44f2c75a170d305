#pragma once

namespace quorvex::Platform
{

/// An auto-reset event, unsignalled at first; closed at the end of its scope.
class Event
{
public:
    Event();
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// @return whether the system gave one; the operations below do nothing otherwise
    explicit operator bool() const { return m_handle != nullptr; }
    void* Handle() const { return m_handle; }

    void Set() const;

    /// Waits until it is set, for as long as that takes.
    void Wait() const;

private:
    void* m_handle;
};

} // namespace quorvex::Platform
