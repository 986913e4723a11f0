#pragma once

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TError.h"
#include "log/Log.hpp"
#include "tests/property/TextSink.hpp"

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

/// Keeps warnings away during its lifetime. The formulas make ROOT warn about
/// zero vectors; this drops the warnings before ROOT takes a lock.
class Silence {
 public:
  Silence() : previous_(std::exchange(gErrorIgnoreLevel, kFatal)) {
    nowhere_.Switch(false);
    warn.SetOutput(&nowhere_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    warn.SetOutput(nullptr);
    gErrorIgnoreLevel = previous_;
  }

 private:
  int previous_;
  TextSink nowhere_;
};

inline double Percent(std::uint64_t part, std::uint64_t all) {
  return all == 0
             ? 0.0
             : 100.0 * static_cast<double>(part) / static_cast<double>(all);
}

/// Run rounds and print their progress.
///
/// @tparam Worker  made from @p options on each thread; has Run(round), which
///                 returns the first difference, and Counts()
/// @param rounds   rounded up
/// @param tally    the counts of all workers are added to it
/// @return whether a difference was found; it was printed
template <class Worker, class Options, class Tally>
bool AnyRoundDiffers(const Options& options, double rounds, Tally& tally) {
  const Silence silence;
  const RoundOptions& common = options.rounds;
  const std::uint64_t begin = common.round.value_or(0);
  const std::uint64_t end =
      common.round ? begin + 1 : static_cast<std::uint64_t>(std::ceil(rounds));
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
