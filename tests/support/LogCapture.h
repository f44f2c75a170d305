#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// One line that the module has logged, taken apart.
struct LogLine
{
    std::string level;   ///< "TRACE", "DEBUG", "INFO" or "ERROR", from the line's prefix
    std::string message; ///< UTF-8, without prefix and tail
    std::string tag;     ///< for example ".\src\HttpHelper.cpp"
    unsigned number = 0; ///< line number of the source
    std::string defect;  ///< what is wrong with the line's form; empty for a good line
};

inline constexpr unsigned AllLevels = 1 | 2 | 8;

/// Receives every log line of the process while it lives; the level is 0 again afterwards.
class LogCapture
{
public:
    explicit LogCapture(unsigned levels = AllLevels);
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<LogLine>& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

    /// The messages of one level in their order.
    std::vector<std::string> messages(std::string_view level) const;

private:
    static void receive(void* context, unsigned level, const wchar_t* line, std::size_t length);

    std::vector<LogLine> m_lines;
};

/// Takes a line apart: prefix, message, tab, "[", tag, ":", number, "]", newline.
LogLine parseLogLine(unsigned level, std::string_view line);

/// Whether a text is a source-file tag: ".\src\", folders, the file's name.
bool isSourceTag(std::string_view tag);

} // namespace support
