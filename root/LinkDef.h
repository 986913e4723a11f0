// The classes and enumerations of Headers.hpp in ROOT's dictionary. Light paths can
// also be stored in a tree (+), the others cannot (-). Functions and variables need no
// entry; for a variable's, ROOT would try to load the library again.
#ifdef __CLING__

#pragma link off all globals;
#pragma link off all classes;
#pragma link off all functions;

#pragma link C++ namespace ZARN;
#pragma link C++ namespace ZARN::DU;
#pragma link C++ namespace ZARN::IO;
#pragma link C++ namespace ZARN::RDF;
#pragma link C++ namespace ZARN::Scan;

// Messages
#pragma link C++ class otext-;

// Tables
#pragma link C++ class ZARN::DB-;
#pragma link C++ class ZARN::TableSet-;
#pragma link C++ class ZARN::TableEntry-;
#pragma link C++ class ZARN::DBLink-;
#pragma link C++ class ZARN::DBNotFoundError-;
#pragma link C++ class ZARN::DBValueError-;
#pragma link C++ class ZARN::TableFileError-;
#pragma link C++ struct ZARN::RunRange-;
#pragma link C++ enum ZARN::DU::eSeverity;
#pragma link C++ struct ZARN::DU::TableFinding-;

// Light paths
#pragma link C++ enum ZARN::DU::eLight;
#pragma link C++ enum ZARN::DU::eLightPathType;
#pragma link C++ enum ZARN::DU::eMedium;
#pragma link C++ struct ZARN::DU::ConcentricMedia-;
#pragma link C++ struct ZARN::DU::LightPath+;
#pragma link C++ struct ZARN::DU::LightPathArrays-;
#pragma link C++ struct ZARN::DU::LightPathRow-;
#pragma link C++ struct ZARN::DU::VectorArrays-;
#pragma link C++ struct ZARN::DU::VectorColumns-;
#pragma link C++ class ZARN::DU::Column<double>-;
#pragma link C++ class ZARN::DU::Column<int>-;
#pragma link C++ class ZARN::DU::LightPathCalculator-;
#pragma link C++ class ZARN::DU::OpticalMedium-;
#pragma link C++ class ZARN::DU::PMTArray-;
#pragma link C++ class std::vector<ZARN::DU::LightPath>+;

// Hardware
#pragma link C++ enum ZARN::DU::eShadowingComponent;
#pragma link C++ enum ZARN::DU::eAVHDRopePart;
#pragma link C++ struct ZARN::DU::Hardware-;
#pragma link C++ struct ZARN::DU::AVHDRopeModel-;
#pragma link C++ struct ZARN::DU::AVPipeModel-;
#pragma link C++ struct ZARN::DU::BellyPlateModel-;
#pragma link C++ struct ZARN::DU::NCDAnchorModel-;
#pragma link C++ struct ZARN::DU::NeckBossModel-;
#pragma link C++ struct ZARN::DU::SupportRopeModel-;

// Verdicts
#pragma link C++ enum ZARN::DU::eVerdict;
#pragma link C++ enum ZARN::DU::eShadowingRule;
#pragma link C++ struct ZARN::DU::VerdictRows-;
#pragma link C++ struct ZARN::DU::CriticalTolerances-;
#pragma link C++ struct ZARN::DU::ToleranceRange-;
#pragma link C++ struct ZARN::DU::ShadowingExplanation-;
#pragma link C++ struct ZARN::DU::ComponentExplanation-;
#pragma link C++ struct ZARN::DU::ShadowingFinding-;
#pragma link C++ struct ZARN::DU::ShadowingTest-;
#pragma link C++ struct ZARN::DU::HardwareItem-;
#pragma link C++ struct ZARN::DU::WaterSegment-;
#pragma link C++ class ZARN::DU::ShadowingCalculator-;

// Events x PMTs
#pragma link C++ struct ZARN::DU::Smearing-;
#pragma link C++ struct ZARN::Scan::RowBlock-;
#pragma link C++ class ZARN::Scan::RowScan-;
#pragma link C++ struct ZARN::Scan::RowScan::Settings-;
#pragma link C++ class ZARN::Scan::VerdictCounts-;
#pragma link C++ struct ZARN::Scan::SmearedCount-;
#pragma link C++ class ZARN::Scan::PMTCounts-;
#pragma link C++ class ZARN::Scan::ToleranceCounts-;
#pragma link C++ struct ZARN::Scan::ToleranceCounts::Settings-;

// Data frames
#pragma link C++ class ZARN::IO::BadInput-;
#pragma link C++ struct ZARN::RDF::PathColumns-;
#pragma link C++ struct ZARN::RDF::PairColumns-;

#endif
