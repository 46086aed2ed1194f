/// \file
/// Runs what is measured and its peers in random order, and prints how many times a peer's time each of ours took.
///
/// Every case counts with its shortest time, so that a busy machine is hard on none of them alone. Options are those of
/// Google Benchmark; more --benchmark_repetitions make the figures steadier.

#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

struct Case
{
  std::string table; // the table that it stands in: as a row if it is ours, else as a column
  std::string name;
  bool ours;
  int iterations;              // in a row
  std::function<double()> run; // once; returns the seconds that count
  double best = 1e9;
};

/// The largest ratio wanted of one of ours to one of its peers.
struct Aim
{
  std::string table, ours, peer;
  double ratio;
};

/// How long one call of \p timed takes.
template <class Timed>
double seconds(Timed timed)
{
  const auto start = std::chrono::steady_clock::now();
  timed();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline void printTable(const std::string& table, const std::vector<Case>& cases, const std::vector<Aim>& aims)
{
  std::vector<const Case*> rows, columns;
  for (const Case& each : cases)
  {
    if (each.table == table && each.best < 1e9)
      (each.ours ? rows : columns).push_back(&each);
  }
  if (rows.empty())
    return;
  std::printf("\n%-24s%10s", table.c_str(), "ms");
  for (const Case* peer : columns)
    std::printf("%18s", peer->name.c_str());
  std::printf("\n%34s", "");
  for (const Case* peer : columns)
    std::printf("%18.2f", peer->best * 1e3);
  for (const Case* row : rows)
  {
    std::printf("\n  %-22s%10.2f", row->name.c_str(), row->best * 1e3);
    for (const Case* peer : columns)
    {
      const double ratio = row->best / peer->best;
      const auto aim = std::find_if(aims.begin(), aims.end(), [&](const Aim& one) {
        return one.table == table && one.ours == row->name && one.peer == peer->name;
      });
      char mark[32] = "";
      if (aim != aims.end())
        std::snprintf(mark, sizeof mark, "%s %.3g:", ratio <= aim->ratio ? "meets" : "MISSES", aim->ratio);
      std::printf("%11s%7.2f", mark, ratio);
    }
  }
  std::printf("\n");
}

/// Runs \p cases as the command line says and prints a table for each of theirs. What main returns.
inline int runRatios(int argc, char** argv, std::vector<Case>& cases, const std::vector<Aim>& aims)
{
  // The tables take the place of a list of runs.
  struct Silence : benchmark::BenchmarkReporter
  {
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
  };

  char interleaved[] = "--benchmark_enable_random_interleaving=true";
  char repetitions[] = "--benchmark_repetitions=9";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, {interleaved, repetitions}); // what the user gives comes later and wins
  int count = int(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
    return 1;
  for (Case& each : cases)
  {
    const auto run = [&each](benchmark::State& state) {
      for ([[maybe_unused]] auto _ : state)
      {
        const double time = each.run();
        state.SetIterationTime(time);
        each.best = std::min(each.best, time);
      }
    };
    const std::string name = each.table + (each.ours ? "/ours/" : "/peer/") + each.name;
    benchmark::RegisterBenchmark(name.c_str(), run)->Iterations(each.iterations)->UseManualTime();
  }
  Silence silence;
  benchmark::RunSpecifiedBenchmarks(&silence);
  std::vector<std::string> tables;
  for (const Case& each : cases)
  {
    if (std::find(tables.begin(), tables.end(), each.table) == tables.end())
      tables.push_back(each.table);
  }
  for (const std::string& table : tables)
    printTable(table, cases, aims);
  return 0;
}
