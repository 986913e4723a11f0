#include <nanobind/stl/optional.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "du/Smearing.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Calculator.hpp"
#include "python/module/Interruptible.hpp"
#include "scan/RowScan.hpp"
#include "scan/ToleranceCounts.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

/// Arrays that a scan fills in, chunk by chunk: their first index is the event
/// within its chunk, the second the PMT.
struct Chunk {
  std::size_t size;  ///< events in a whole chunk
  DenseOut<std::uint8_t, 2> codes;
  std::optional<DenseOut<std::uint8_t, 2>> reflectedCodes;
  // Last index: positions with a path, and those that are shadowed.
  std::optional<DenseOut<std::uint16_t, 3>> smeared;
  std::optional<DenseOut<std::uint16_t, 3>> smearedReflected;
  // Event, tolerance and number of the verdict.
  std::optional<DenseOut<std::int64_t, 3>> eventCounts;

  void Take(const Scan::RowBlock& block, std::size_t event,
            std::size_t to) const {
    CopyRow(block.direct, codes.data(), block.pmts, event, to);
    if (reflectedCodes.has_value()) {
      CopyRow(block.reflected, reflectedCodes->data(), block.pmts, event, to);
    }
    if (smeared.has_value()) {
      CopyRow(block.smeared, smeared->data(), block.pmts, event, to);
    }
    if (smearedReflected.has_value()) {
      CopyRow(block.smearedReflected, smearedReflected->data(), block.pmts,
              event, to);
    }
  }

 private:
  // A verdict is one element, a count of smeared positions two.
  static_assert(sizeof(DU::eVerdict) == sizeof(std::uint8_t));
  static_assert(sizeof(Scan::SmearedCount) == 2 * sizeof(std::uint16_t));

  template <class From, class To>
  static void CopyRow(const std::vector<From>& rows, To* array,
                      std::size_t length, std::size_t event, std::size_t to) {
    if (rows.empty()) return;
    std::copy_n(rows.data() + event * length, length,
                reinterpret_cast<From*>(array) + to * length);
  }
};

void CopyCounts(const Scan::VerdictCounts* counts, std::size_t number,
                std::int64_t* to) {
  for (std::size_t i = 0; i < number; ++i) {
    for (std::size_t code = 0; code <= DU::kNumberOfComponents; ++code) {
      *to++ = static_cast<std::int64_t>(
          counts[i].Of(static_cast<DU::eShadowingComponent>(code)));
    }
  }
}

/// One scan: what Python asked for, and the state while it runs.
class PythonScan {
 public:
  struct Settings {
    double wavelength;
    std::size_t threads;
    std::optional<DU::Smearing> smearing;
    std::vector<double> tolerances;
  };

  PythonScan(const Calculator& calculator, const DenseIn<double, 2>& events,
             const DenseIn<double, 2>& pmts, const Settings& settings,
             Chunk chunk)
      : light_(calculator.LightPaths(settings.wavelength)),
        events_(VectorsIn(events)),
        pmts_(VectorsIn(pmts)),
        chunk_(std::move(chunk)) {
    Scan::RowScan::Settings ofScan;
    ofScan.threads = settings.threads;
    ofScan.withReflections = chunk_.reflectedCodes.has_value();
    ofScan.smearing = settings.smearing;
    ofScan.checkForStop = [this] { run_.CheckForStop(); };
    if (!settings.tolerances.empty()) {
      Scan::ToleranceCounts::Settings ofCounts;
      ofCounts.tolerances = settings.tolerances;
      ofCounts.slots = Scan::RowScan::SlotsFor(settings.threads);
      ofCounts.withPMTCounts = true;
      ofCounts.checkForStop = ofScan.checkForStop;
      counts_.emplace(calculator.Shadowing(), light_, pmts_, ofCounts);
      ofScan.onBlock = [this](const Scan::RowBlock& block) {
        counts_->Judge(block);
      };
    }
    scan_.emplace(calculator.Shadowing(), light_, DU::PMTArray(pmts_), ofScan);
  }

  /// @param onTick   called with the number of events done, now and then
  /// @param onChunk  called with the first event of a chunk and the number of
  ///                 events in it, when the arrays are filled in
  void Run(const nb::object& onTick, const nb::object& onChunk) {
    run_.Run(
        [&] {
          scan_->Run(events_, [&](const Scan::RowBlock& block) {
            for (std::size_t i = 0; i < block.events.size(); ++i) {
              TakeEvent(block, i, onChunk);
            }
          });
        },
        [&] {
          if (!onTick.is_none()) onTick(done_.load());
        });
  }

  /// For each PMT, tolerance and number of the verdict.
  void CopyPMTCounts(const DenseOut<std::int64_t, 3>& to) const {
    const std::size_t tolerances = counts_->Tolerances().size();
    for (std::size_t pmt = 0; pmt < pmts_.size(); ++pmt) {
      CopyCounts(counts_->OfPMT(pmt), tolerances,
                 to.data() + pmt * tolerances * kCounts);
    }
  }

 private:
  static constexpr std::size_t kCounts = DU::kNumberOfComponents + 1;

  void TakeEvent(const Scan::RowBlock& block, std::size_t event,
                 const nb::object& onChunk) {
    const std::size_t to = inChunk_;
    chunk_.Take(block, event, to);
    if (chunk_.eventCounts.has_value()) {
      const std::size_t tolerances = counts_->Tolerances().size();
      CopyCounts(counts_->OfEvent(block, event), tolerances,
                 chunk_.eventCounts->data() + to * tolerances * kCounts);
    }
    ++inChunk_;
    const std::size_t done = done_ + 1;
    if (inChunk_ == chunk_.size || done == events_.size()) {
      const std::size_t first = done - inChunk_;
      if (!onChunk.is_none()) {
        run_.DoOnCaller([&] { onChunk(first, inChunk_); });
      }
      inChunk_ = 0;
    }
    done_ = done;
  }

  DU::LightPathCalculator light_;
  std::vector<TVector3> events_;
  std::vector<TVector3> pmts_;
  Chunk chunk_;
  Interruptible run_;
  std::optional<Scan::ToleranceCounts> counts_;
  std::optional<Scan::RowScan> scan_;
  std::atomic<std::size_t> done_ = 0;
  std::size_t inChunk_ = 0;
};

std::optional<DU::Smearing> SmearingOf(std::optional<double> sigma,
                                       std::size_t samples, std::int64_t seed) {
  if (!sigma.has_value()) return std::nullopt;
  DU::Smearing smearing;
  smearing.sigma = *sigma;
  smearing.samples = samples;
  smearing.seed = seed;
  return smearing;
}

}  // namespace

void BindScan(nb::class_<Calculator>& calculator) {
  calculator.def(
      "scan",
      [](const Calculator& self, const DenseIn<double, 2>& events,
         const DenseIn<double, 2>& pmts, double wavelength, std::size_t threads,
         std::optional<double> smear, std::size_t samples, std::int64_t seed,
         const std::vector<double>& tolerances,
         const DenseOut<std::uint8_t, 2>& codes,
         const std::optional<DenseOut<std::uint8_t, 2>>& reflectedCodes,
         const std::optional<DenseOut<std::uint16_t, 3>>& smeared,
         const std::optional<DenseOut<std::uint16_t, 3>>& smearedReflected,
         const std::optional<DenseOut<std::int64_t, 3>>& eventCounts,
         const std::optional<DenseOut<std::int64_t, 3>>& pmtCounts,
         const nb::object& onTick, const nb::object& onChunk) {
        PythonScan scan(
            self, events, pmts,
            {wavelength, threads, SmearingOf(smear, samples, seed), tolerances},
            {codes.shape(0), codes, reflectedCodes, smeared, smearedReflected,
             eventCounts});
        scan.Run(onTick, onChunk);
        if (pmtCounts.has_value()) scan.CopyPMTCounts(*pmtCounts);
      },
      nb::arg("events").noconvert(), nb::arg("pmts").noconvert(),
      nb::arg("wavelength"), nb::arg("threads"), nb::arg("smear").none(),
      nb::arg("samples"), nb::arg("seed"), nb::arg("tolerances"),
      nb::arg("codes").noconvert(),
      nb::arg("reflected_codes").noconvert().none(),
      nb::arg("smeared").noconvert().none(),
      nb::arg("smeared_reflected").noconvert().none(),
      nb::arg("event_counts").noconvert().none(),
      nb::arg("pmt_counts").noconvert().none(), nb::arg("on_tick").none(),
      nb::arg("on_chunk").none());
}

}  // namespace ZARN::Python
