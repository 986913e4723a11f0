#pragma once

#include <string>
#include <vector>

#include "TVector3.h"

namespace ZARN::Display {

/// What a page is about.
struct PageContent {
  std::string version;  ///< of the program
  std::string title;    ///< empty: the usual one
  std::string detector;
  std::string fingerprint;  ///< of the tables
  int run = 0;
  std::vector<std::string> pmtNames;
  std::vector<TVector3> pmts;  ///< mm
  std::vector<std::string> eventNames;
  std::vector<TVector3> events;  ///< mm
  bool withReflections = false;
};

}  // namespace ZARN::Display
