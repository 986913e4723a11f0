#pragma once

// What ROOT's interpreter and PyROOT know of the library.
#include "db/DB.hpp"
#include "db/Fingerprint.hpp"
#include "db/JsonTables.hpp"
#include "du/CheckTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "io/Errors.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "log/Log.hpp"
#include "rdf/DataFrame.hpp"
#include "scan/RowScan.hpp"
#include "scan/ToleranceCounts.hpp"
