# Finds the headers of CLHEP: target CLHEP::Units. (Debian's package has no
# CMake configuration; the library is not linked.)
find_path(CLHEP_INCLUDE_DIR CLHEP/Units/SystemOfUnits.h)
mark_as_advanced(CLHEP_INCLUDE_DIR)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CLHEP REQUIRED_VARS CLHEP_INCLUDE_DIR)
if(CLHEP_FOUND AND NOT TARGET CLHEP::Units)
  add_library(CLHEP::Units INTERFACE IMPORTED)
  set_target_properties(CLHEP::Units PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${CLHEP_INCLUDE_DIR}")
endif()
