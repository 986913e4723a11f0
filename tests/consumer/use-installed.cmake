# Installs the build into an empty folder, builds the outside project against it,
# and runs both what it built and the installed command.
#   cmake -D BUILD=<build> -D SOURCE=<source> -D ROOT_DIR=<folder>
#         -D CXX=<compiler> -D CXX_FLAGS=<flags> -P use-installed.cmake
function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(work "${BUILD}/tests/consumer")
file(REMOVE_RECURSE "${work}/prefix" "${work}/build")
run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${work}/prefix")
run(${CMAKE_COMMAND} -S "${SOURCE}/tests/consumer" -B "${work}/build"
  "-DCMAKE_PREFIX_PATH=${work}/prefix" "-DROOT_DIR=${ROOT_DIR}"
  "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
  "-DZARN_EXAMPLES_DIR=${SOURCE}/examples")
run(${CMAKE_COMMAND} --build "${work}/build")

set(tables "${work}/prefix/share/zarn/reference-detector")
function(expect example text)
  execute_process(COMMAND "${work}/build/${example}" "${tables}"
    OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
  if(NOT said STREQUAL "${text}\n")
    message(FATAL_ERROR "${example} said: ${said}")
  endif()
endfunction()
expect(CheckOnePath "shadowed by a pipe: 1")
expect(PathToPMT "Scint/InnerAV->AV->Water, 46.105 ns, shadowed: 0")
run("${work}/prefix/bin/zarn-shadow" --version)

# What is installed must not lead back into this source tree.
file(GLOB_RECURSE installed "${work}/prefix/*.cmake")
foreach(file IN LISTS installed)
  file(STRINGS "${file}" leads REGEX "${SOURCE}/(log|db|lightpath|du|build|cmake)")
  if(leads)
    message(FATAL_ERROR "${file} names the source tree: ${leads}")
  endif()
endforeach()
