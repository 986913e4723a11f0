# Finds SOCI with its SQLite and PostgreSQL backends: targets SOCI::core, SOCI::sqlite3
# and SOCI::postgresql, whose headers include those of the engines' clients. (Debian's
# package has no CMake configuration.)
find_path(SOCI_INCLUDE_DIR soci/soci.h)
find_library(SOCI_CORE_LIBRARY soci_core)
find_library(SOCI_SQLITE3_LIBRARY soci_sqlite3)
find_library(SOCI_POSTGRESQL_LIBRARY soci_postgresql)
mark_as_advanced(SOCI_INCLUDE_DIR SOCI_CORE_LIBRARY SOCI_SQLITE3_LIBRARY
  SOCI_POSTGRESQL_LIBRARY)
find_package(SQLite3 QUIET)
find_package(PostgreSQL QUIET)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SOCI REQUIRED_VARS SOCI_CORE_LIBRARY
  SOCI_SQLITE3_LIBRARY SOCI_POSTGRESQL_LIBRARY SOCI_INCLUDE_DIR SQLite3_FOUND
  PostgreSQL_FOUND)
if(SOCI_FOUND AND NOT TARGET SOCI::core)
  foreach(part IN ITEMS core sqlite3 postgresql)
    string(TOUPPER ${part} PART)
    add_library(SOCI::${part} UNKNOWN IMPORTED)
    set_target_properties(SOCI::${part} PROPERTIES
      IMPORTED_LOCATION "${SOCI_${PART}_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${SOCI_INCLUDE_DIR}")
  endforeach()
  set_property(TARGET SOCI::sqlite3 PROPERTY
    INTERFACE_LINK_LIBRARIES SOCI::core SQLite::SQLite3)
  set_property(TARGET SOCI::postgresql PROPERTY
    INTERFACE_LINK_LIBRARIES SOCI::core PostgreSQL::PostgreSQL)
endif()
