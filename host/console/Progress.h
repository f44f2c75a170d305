#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::console
{

/// "0 bytes", "999 bytes", "1.0 KiB", "64.0 MiB" ...
std::string SizeText(std::uint64_t bytes);

/// A size for people and, from 1 KiB on, in bytes as well: "64.0 MiB (67108864 bytes)".
std::string ExactSizeText(std::uint64_t bytes);

/// "8 s", "2:05 min", "1:02:05 h"
std::string DurationText(std::uint64_t seconds);

/// How far a transfer is: "43 %  27.5 MiB of 64.0 MiB  12.3 MiB/s  3 s left".
/// @param bytesPerSecond 0 while it is unknown; then rate and time left are not told
std::string ProgressText(std::uint64_t done, std::uint64_t total, double bytesPerSecond);

/// The same of a transfer whose end is not known: "27.5 MiB  12.3 MiB/s".
std::string ProgressText(std::uint64_t done, double bytesPerSecond);

/// A bar of 20 characters.
std::string BarText(std::uint64_t done, std::uint64_t total);

/// Title, bar and text side by side in one line of exactly this many columns. What does not fit is left out, the
/// title first.
std::string BarLine(const std::string& title, const std::string& bar, const std::string& text, std::size_t columns);

/// Shows a transfer on the standard error stream: a bar on a terminal, otherwise a line at each tenth, or, where
/// the end is not known, whenever the mebibytes have doubled.
class Progress
{
public:
    /// @param total       nothing when the end is not known
    /// @param alreadyDone bytes that an earlier run has transferred
    Progress(std::string title, std::optional<std::uint64_t> total, std::uint64_t alreadyDone, bool quiet);
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @param done bytes transferred in all
    void Show(std::uint64_t done);

private:
    using Clock = std::chrono::steady_clock;

    void ShowBar(std::uint64_t done);
    void ShowLine(std::uint64_t done);
    std::string TextAt(std::uint64_t done) const;

    /// Changes whenever a line is due.
    std::uint64_t StepAt(std::uint64_t done) const;

    std::string m_title;
    std::optional<std::uint64_t> m_total;
    std::uint64_t m_alreadyDone;
    bool m_quiet;
    std::size_t m_columns;
    bool m_barIsShown = false;
    std::uint64_t m_stepShown;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastShown{};
};

} // namespace quorvex::console
