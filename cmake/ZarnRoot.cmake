# Finds ROOT: an installed one (CMAKE_PREFIX_PATH, ROOT_DIR, thisroot.sh), else
# the wheel that script/setup installs into .venv.
find_package(ROOT CONFIG QUIET COMPONENTS Core Physics ROOTNTuple)
if(NOT ROOT_FOUND)
  file(GLOB wheel "${PROJECT_SOURCE_DIR}/.venv/lib/python3*/site-packages/ROOT/cmake")
  find_package(ROOT CONFIG REQUIRED COMPONENTS Core Physics ROOTNTuple HINTS ${wheel})
endif()
message(STATUS "ROOT ${ROOT_VERSION}: ${ROOT_DIR}")

# Installed libraries use the ROOT that they were built with.
get_target_property(root_core ROOT::Core LOCATION)
get_filename_component(ZARN_ROOT_LIBRARY_DIR "${root_core}" DIRECTORY)
set(ZARN_LIBRARY_RPATH "$ORIGIN;${ZARN_ROOT_LIBRARY_DIR}")
