#include "app/DisplayCommand.hpp"

#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/CountsTable.hpp"
#include "app/DisplayOptions.hpp"
#include "app/EventSource.hpp"
#include "app/NameOfTables.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "display/DisplayPage.hpp"
#include "io/Errors.hpp"
#include "io/OutputFile.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::App {
namespace {

void Append(const IO::NamedPosition& item, std::vector<std::string>& names,
            std::vector<TVector3>& positions) {
  names.push_back(item.name);
  positions.push_back(item.position);
}

void ReadPMTs(const DisplayOptions& options, Display::PageContent& content) {
  for (const IO::NamedPosition& pmt :
       IO::ReadPositions(options.input.pmts, "pmt", options.input.names)) {
    Append(pmt, content.pmtNames, content.pmts);
  }
  if (content.pmts.empty()) {
    throw IO::BadInput(options.input.pmts + ": there are no PMTs");
  }
  if (content.pmts.size() > Display::kMostPagePairs) {
    throw IO::BadInput(options.input.pmts +
                       ": a page holds at most 40,000,000 PMTs");
  }
}

void ReadEvents(const DisplayOptions& options, Display::PageContent& content) {
  EventSource source = OpenEvents(options.input);
  constexpr std::size_t kEventsAtOnce = 1024;
  std::vector<IO::NamedPosition> events;
  while (source.Next(events, kEventsAtOnce)) {
    for (const IO::NamedPosition& event : events) {
      Append(event, content.eventNames, content.events);
    }
    if (content.events.size() * content.pmts.size() <= Display::kMostPagePairs)
      continue;
    throw IO::BadInput(
        *options.input.events +
        ": a page holds at most 40,000,000 pairs of event "
        "and PMT, so " +
        std::to_string(Display::kMostPagePairs / content.pmts.size()) +
        " events with these PMTs; show some of the events, or count all of "
        "them with scan --per-pmt");
  }
  if (content.events.empty()) {
    throw IO::BadInput(*options.input.events + ": there are no events");
  }
}

void RequirePages() {
  if (Display::CanMakePages()) return;
  throw IO::BadInput(
      "this build has no display: Node.js was missing. script/setup in the "
      "sources installs it; then run cmake and build again");
}

/// Makes one page.
class DisplayWork {
 public:
  explicit DisplayWork(const DisplayOptions& options) : options_(options) {
    LoadTables(options.run);
    BeginRun(options.run, shadowing_);
    lightPath_.SetWavelength(options.wavelength);
    BeginRun(options.run, lightPath_);
    ReadPMTs(options, content_);
    ReadEvents(options, content_);
    content_.version = ZARN_VERSION;
    content_.title = options.title;
    content_.detector = NameOfTables(options.run.tables);
    content_.fingerprint = OriginOf(options.run, shadowing_).fingerprint;
    content_.run = options.run.run;
    content_.withReflections = options.withReflections;
  }

  /// Judge, write, and print the counts.
  void Run() {
    IO::OutputFile output(options_.output);
    const auto begin = std::chrono::steady_clock::now();
    Display::DisplayPage page;
    {
      ProgressBar progress;
      const ScopedLogOutput logOutput(progress.Messages());
      page = Display::MakePage(content_, shadowing_, lightPath_,
                               SettingsFor(progress));
    }
    const std::chrono::duration<double> elapsed =
        std::chrono::steady_clock::now() - begin;
    ThrowIfInterrupted();
    output.Write(page.html);
    output.Finish();
    ThrowIfInterrupted();
    output.Commit();
    Print(page, elapsed.count());
  }

 private:
  Display::PageSettings SettingsFor(ProgressBar& progress) const {
    Display::PageSettings settings;
    settings.threads = options_.run.threads;
    settings.checkForStop = ThrowIfInterrupted;
    const auto all =
        static_cast<double>(content_.events.size() * content_.pmts.size());
    settings.onProgress = [&progress, all](std::uint64_t pairs) {
      progress.Update(pairs, static_cast<double>(pairs) / all);
    };
    return settings;
  }

  void Print(const Display::DisplayPage& page, double seconds) const {
    if (!page.hasPaths) {
      std::cerr << "zarn-shadow: the page holds no light paths, only verdicts: "
                   "with paths it would be larger than 20 MB\n";
    }
    PrintCount(std::cerr, "pairs", page.direct.All());
    PrintCount(std::cerr, "no path", page.direct.WithoutPath());
    Scan::VerdictCounts paths = page.direct.paths;
    paths += page.reflected;
    PrintCounts(std::cerr, paths, shadowing_, seconds);
  }

  const DisplayOptions& options_;
  DU::ShadowingCalculator shadowing_;
  DU::LightPathCalculator lightPath_;
  Display::PageContent content_;
};

void WriteDisplay(const DisplayOptions& options) {
  DisplayWork work(options);
  const DeferredSignals deferredSignals;
  work.Run();
}

}  // namespace

void AddDisplayCommand(CLI::App& app) {
  const auto options = std::make_shared<DisplayOptions>();
  CLI::App& command =
      AddCommand(app, "display",
                 "Write a page that shows the detector and what blocks the "
                 "light",
                 [options] {
                   RequirePages();
                   RequireConsistent(*options);
                   WriteDisplay(*options);
                 });
  AddDisplayOptions(command, *options);
}

}  // namespace ZARN::App
