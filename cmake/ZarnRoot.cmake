# Finds ROOT: an installed one (CMAKE_PREFIX_PATH, ROOT_DIR, thisroot.sh), else
# ROOT's wheel in the Python environment. A wheel of this project always uses the
# latter, beside which it is installed.
set(root_components Core Physics ROOTNTuple ROOTDataFrame)
if(NOT SKBUILD)
  find_package(ROOT CONFIG QUIET COMPONENTS ${root_components})
endif()
if(NOT ROOT_FOUND)
  # Not by importing ROOT: an isolated build of a wheel cannot see its modules.
  if(Python_EXECUTABLE)
    execute_process(COMMAND "${Python_EXECUTABLE}" -c
      "import sysconfig; print(sysconfig.get_path('platlib'))"
      OUTPUT_VARIABLE packages OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  if(NOT EXISTS "${packages}/ROOT/cmake")
    message(FATAL_ERROR "No ROOT: script/setup installs ROOT's wheel into .venv; "
      "another environment needs root==0.1a12 before this project")
  endif()
  # The wheel's CMake files call the folder of packages mock_site_packages.
  set(root_wheel "${PROJECT_BINARY_DIR}/root-wheel")
  file(MAKE_DIRECTORY "${root_wheel}")
  file(CREATE_LINK "${packages}" "${root_wheel}/mock_site_packages" SYMBOLIC)
  find_package(ROOT CONFIG REQUIRED COMPONENTS ${root_components}
    PATHS "${root_wheel}/mock_site_packages/ROOT/cmake" NO_DEFAULT_PATH)
endif()
message(STATUS "ROOT ${ROOT_VERSION}: ${ROOT_DIR}")

# Installed libraries use the ROOT that they were built with; those in a wheel, which
# are in zarn/lib, the one beside the package.
get_target_property(root_core ROOT::Core LOCATION)
file(REAL_PATH "${root_core}" root_core)
get_filename_component(ZARN_ROOT_LIBRARY_DIR "${root_core}" DIRECTORY)
if(SKBUILD)
  set(ZARN_LIBRARY_RPATH "$ORIGIN;$ORIGIN/../../ROOT/lib")
else()
  set(ZARN_LIBRARY_RPATH "$ORIGIN;${ZARN_ROOT_LIBRARY_DIR}")
endif()
