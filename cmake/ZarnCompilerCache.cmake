# Compiles through ccache, where it is installed: a wheel is built from the same
# sources as the release build.
find_program(ZARN_CCACHE ccache)
mark_as_advanced(ZARN_CCACHE)
if(ZARN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ZARN_CCACHE}")
endif()
