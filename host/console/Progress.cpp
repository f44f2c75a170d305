#include "Progress.h"

#include "Output.h"
#include "Text.h"

#include <array>
#include <bit>
#include <cstdio>

namespace quorvex::console
{
namespace
{

std::uint64_t PartOf(std::uint64_t parts, std::uint64_t done, std::uint64_t total)
{
    return total == 0 ? parts : parts * done / total;
}

std::string TwoDigits(std::uint64_t number)
{
    return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

std::string RateText(double bytesPerSecond)
{
    return "  " + SizeText(static_cast<std::uint64_t>(bytesPerSecond)) + "/s";
}

} // namespace

std::string SizeText(std::uint64_t bytes)
{
    if (bytes < 1024)
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    constexpr std::array kUnits{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    double amount = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    // 1023.95 and more would be printed as 1024.0.
    while (amount >= 1023.95 && unit + 1 < kUnits.size())
    {
        amount /= 1024;
        ++unit;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits[unit]);
    return text.data();
}

std::string ExactSizeText(std::uint64_t bytes)
{
    return bytes < 1024 ? SizeText(bytes) : SizeText(bytes) + " (" + std::to_string(bytes) + " bytes)";
}

std::string DurationText(std::uint64_t seconds)
{
    const std::uint64_t minutes = seconds / 60;
    if (minutes == 0)
        return std::to_string(seconds) + " s";
    if (minutes < 60)
        return std::to_string(minutes) + ':' + TwoDigits(seconds % 60) + " min";
    return std::to_string(minutes / 60) + ':' + TwoDigits(minutes % 60) + ':' + TwoDigits(seconds % 60) + " h";
}

std::string ProgressText(std::uint64_t done, std::uint64_t total, double bytesPerSecond)
{
    std::string text = std::to_string(PartOf(100, done, total)) + " %  " + SizeText(done) + " of " + SizeText(total);
    if (bytesPerSecond < 1)
        return text;
    text += RateText(bytesPerSecond);
    if (done < total)
        text += "  " +
                DurationText(static_cast<std::uint64_t>(static_cast<double>(total - done) / bytesPerSecond) + 1) +
                " left";
    return text;
}

std::string ProgressText(std::uint64_t done, double bytesPerSecond)
{
    return bytesPerSecond < 1 ? SizeText(done) : SizeText(done) + RateText(bytesPerSecond);
}

std::string BarText(std::uint64_t done, std::uint64_t total)
{
    constexpr std::size_t kWidth = 20;
    const auto filled = static_cast<std::size_t>(PartOf(kWidth, done, total));
    return '[' + std::string(filled, '#') + std::string(kWidth - filled, '.') + ']';
}

std::string BarLine(const std::string& title, const std::string& bar, const std::string& text, std::size_t columns)
{
    for (const std::string& line : {title + ' ' + bar + ' ' + text, bar + ' ' + text, text})
    {
        const std::size_t width = WidthOf(line);
        if (width <= columns)
            return line + std::string(columns - width, ' ');
    }
    return std::string(columns, ' ');
}

Progress::Progress(std::string title, std::optional<std::uint64_t> total, std::uint64_t alreadyDone, bool quiet)
    : m_title(std::move(title)),
      m_total(total),
      m_alreadyDone(alreadyDone),
      m_quiet(quiet),
      m_columns(ErrorColumns()),
      m_stepShown(StepAt(alreadyDone))
{
}

Progress::~Progress()
{
    if (m_barIsShown)
        WriteError("\n");
}

void Progress::Show(std::uint64_t done)
{
    if (m_quiet)
        return;
    if (m_columns != 0)
        ShowBar(done);
    else
        ShowLine(done);
}

void Progress::ShowBar(std::uint64_t done)
{
    const auto now = Clock::now();
    if (done != m_total && now - m_lastShown < std::chrono::milliseconds(100))
        return;
    m_lastShown = now;
    m_barIsShown = true;
    // A line of all columns would wrap.
    WriteError('\r' + BarLine(m_title, m_total ? BarText(done, *m_total) : "", TextAt(done), m_columns - 1));
}

void Progress::ShowLine(std::uint64_t done)
{
    const std::uint64_t step = StepAt(done);
    if (step == m_stepShown)
        return;
    m_stepShown = step;
    WriteError(m_title + "  " + TextAt(done) + '\n');
}

std::string Progress::TextAt(std::uint64_t done) const
{
    const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    const auto bytes = static_cast<double>(done - m_alreadyDone);
    const double bytesPerSecond = seconds > 0 ? bytes / seconds : 0;
    return m_total ? ProgressText(done, *m_total, bytesPerSecond) : ProgressText(done, bytesPerSecond);
}

std::uint64_t Progress::StepAt(std::uint64_t done) const
{
    constexpr std::uint64_t kMebibyte = 1048576;
    return m_total ? PartOf(10, done, *m_total) : static_cast<std::uint64_t>(std::bit_width(done / kMebibyte));
}

} // namespace quorvex::console
