#include "Pairs.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>

namespace quorvex::bench
{

namespace
{

double Seconds(const std::function<void()>& run)
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

bool IsMet(Target target, double ratio)
{
    return target.bound == Target::Bound::AtLeast ? ratio >= target.ratio : ratio <= target.ratio;
}

struct Run
{
    double first = 0;
    double second = 0;
};

Run RunOnce(const Pair& pair)
{
    Run run;
    for (int i = 0; i < pair.repetitions; ++i)
    {
        run.first += Seconds(pair.first);
        pair.cleanUp();
        run.second += Seconds(pair.second);
        pair.cleanUp();
    }
    return run;
}

void PrintRow(Target target, const Pair& pair, int runs)
{
    std::vector<double> first;
    std::vector<double> second;
    std::vector<double> ratios;
    pair.prepare();
    RunOnce(pair);
    for (int i = 0; i < runs; ++i)
    {
        const Run run = RunOnce(pair);
        first.push_back(run.first);
        second.push_back(run.second);
        ratios.push_back(run.second / run.first);
    }
    const double ratio = Median(ratios);
    const auto [least, most] = std::ranges::minmax(ratios);
    std::cout << "| " << pair.name << " | " << std::setprecision(1) << Median(first) * 1000 << " ms | "
              << Median(second) * 1000 << " ms | " << std::setprecision(3) << least << " | **" << ratio << "** | "
              << most << " | " << (target.bound == Target::Bound::AtLeast ? "at least " : "at most ")
              << std::setprecision(2) << target.ratio << " | " << (IsMet(target, ratio) ? "yes" : "no") << " |"
              << std::endl;
}

} // namespace

void CompareAndPrint(const Columns& columns, Target target, const std::vector<Pair>& pairs, int runs)
{
    std::cout << "| " << columns.subject << " | " << columns.first << ", median | " << columns.second << ", median | "
              << columns.ratio << ", least | median | most | target | met |\n"
              << "|---|---:|---:|---:|---:|---:|---|---|\n"
              << std::fixed;
    for (const Pair& pair : pairs)
    {
        PrintRow(target, pair, runs);
    }
}

} // namespace quorvex::bench
