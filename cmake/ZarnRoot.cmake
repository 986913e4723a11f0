# Finds ROOT: an installed one (CMAKE_PREFIX_PATH, ROOT_DIR, thisroot.sh), else
# the wheel that script/setup installs into .venv.
find_package(ROOT CONFIG QUIET COMPONENTS Core Physics ROOTNTuple)
if(NOT ROOT_FOUND)
  file(GLOB wheel "${PROJECT_SOURCE_DIR}/.venv/lib/python3*/site-packages/ROOT/cmake")
  find_package(ROOT CONFIG REQUIRED COMPONENTS Core Physics ROOTNTuple HINTS ${wheel})
endif()
message(STATUS "ROOT ${ROOT_VERSION}: ${ROOT_DIR}")
