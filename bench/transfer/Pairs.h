#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quorvex::bench
{

/// Two ways of doing one thing.
struct Pair
{
    std::string name;
    std::function<void()> first;
    std::function<void()> second;
    /// How often each is done in one run, by turns: what slows the machine down for a while then slows both.
    int repetitions = 1;
    /// Runs after each of the two, outside the measured time.
    std::function<void()> cleanUp = [] {};
    /// Runs once before the first run.
    std::function<void()> prepare = [] {};
};

/// What the ratios of a table shall be. A ratio is the second's time over the first's, taken pair by pair.
struct Target
{
    enum class Bound
    {
        AtLeast,
        AtMost
    };
    Bound bound;
    double ratio;
};

/// The table's texts.
struct Columns
{
    const char* subject;
    const char* first;
    const char* second;
    const char* ratio;
};

/// Runs each pair once to warm up and then as often as told, always by turns, and prints the medians and ratios as a
/// Markdown table.
/// @param runs how many runs of each pair are counted
void CompareAndPrint(const Columns& columns, Target target, const std::vector<Pair>& pairs, int runs);

} // namespace quorvex::bench
