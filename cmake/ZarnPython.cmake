# Adds the Python package if the Python environment has nanobind.
find_package(Python 3.11 COMPONENTS Interpreter Development.Module)
if(Python_Development.Module_FOUND)
  execute_process(COMMAND "${Python_EXECUTABLE}" -m nanobind --cmake_dir
    OUTPUT_STRIP_TRAILING_WHITESPACE OUTPUT_VARIABLE nanobind_DIR ERROR_QUIET)
endif()
if(nanobind_DIR)
  find_package(nanobind CONFIG REQUIRED)
  add_subdirectory(python)
else()
  message(STATUS "No Python package: script/setup --python installs nanobind")
endif()
