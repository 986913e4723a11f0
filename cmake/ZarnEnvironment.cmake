# The Python environment: the one that a wheel is built for, or .venv.
if(NOT Python_EXECUTABLE AND EXISTS "${PROJECT_SOURCE_DIR}/.venv/bin/python3")
  set(Python_EXECUTABLE "${PROJECT_SOURCE_DIR}/.venv/bin/python3")
endif()
