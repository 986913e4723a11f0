#pragma once

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

// What the long runs share: rounds that depend only on the seed and their
// number, on several threads, until one finds a difference.

namespace ZARN::Testing {

struct RoundOptions {
  unsigned threads = std::max(1U, std::thread::hardware_concurrency());
  std::uint64_t seed = 1;
  std::optional<std::uint64_t> round;
  std::string data = ZARN_DATA_DIR "/reference-detector";

  void AddTo(CLI::App& app) {
    app.add_option("--threads", threads)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--seed", seed)->capture_default_str();
    app.add_option("--round", round,
                   "Run only this round, to reproduce a difference");
    app.add_option("--data", data,
                   "Folder with the tables of the reference detector")
        ->capture_default_str();
  }

  std::uint64_t RandomSeedOf(std::uint64_t number) const {
    return seed * 1000003U + number;
  }
};

/// Run rounds and print their progress.
///
/// @tparam Worker  made from @p options on each thread; has Run(round), which
///                 returns the first difference, and Counts()
/// @param tally    the counts of all workers are added to it
/// @return whether a difference was found; it was printed
template <class Worker, class Options, class Tally>
bool AnyRoundDiffers(const Options& options, std::uint64_t rounds,
                     Tally& tally) {
  const RoundOptions& common = options.rounds;
  const std::uint64_t begin = common.round.value_or(0);
  const std::uint64_t end = common.round ? begin + 1 : rounds;
  std::atomic<std::uint64_t> next = begin;
  std::atomic<bool> differs = false;
  std::mutex guard;
  std::uint64_t done = 0;
  const auto report = [&] {
    const std::lock_guard<std::mutex> lock(guard);
    const std::uint64_t percents = 100 * ++done / (end - begin);
    if (percents == 100 * (done - 1) / (end - begin)) return;
    std::fprintf(stderr, "%" PRIu64 " %% of %" PRIu64 " rounds\n", percents,
                 end - begin);
  };
  const auto work = [&] {
    Worker worker(options);
    std::string difference;
    try {
      for (std::uint64_t round = next++; round < end && !differs;
           round = next++) {
        difference = worker.Run(round);
        if (!difference.empty()) {
          difference = "round " + std::to_string(round) + ", " + difference;
          break;
        }
        report();
      }
    } catch (const std::exception& error) {
      difference = error.what();
    }
    const std::lock_guard<std::mutex> lock(guard);
    tally.Add(worker.Counts());
    if (difference.empty()) return;
    differs = true;
    std::printf("DIFFERS with --seed %" PRIu64 ": %s\n", common.seed,
                difference.c_str());
  };
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < common.threads; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  return differs;
}

}  // namespace ZARN::Testing
