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
# expect(<program> <text> <argument>...): it ends well and says this.
function(expect example text)
  execute_process(COMMAND "${work}/build/${example}" ${ARGN}
    OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
  if(NOT said STREQUAL "${text}\n")
    message(FATAL_ERROR "${example} said: ${said}")
  endif()
endfunction()
# refuse(<program> <text> <argument>...): it ends with status 2 and complains so.
function(refuse example text)
  execute_process(COMMAND "${work}/build/${example}" ${ARGN}
    RESULT_VARIABLE status OUTPUT_VARIABLE said ERROR_VARIABLE complaint)
  if(NOT status STREQUAL 2 OR NOT said STREQUAL "" OR NOT complaint MATCHES "${text}")
    message(FATAL_ERROR "${example} ended with ${status}, said: ${said}${complaint}")
  endif()
endfunction()
expect(CheckOnePath "shadowed by a pipe: 1" "${tables}")
expect(PathToPMT "Scint/InnerAV->AV->Water, 46.105 ns, shadowed: 0" "${tables}")
expect(CountShadowed "139809 of 388199 paths are shadowed" "${tables}"
  "${SOURCE}/data/source-scan.csv" "${SOURCE}/data/pmts.csv")
file(WRITE "${work}/bad.json" "[{}]")
foreach(example IN ITEMS CheckOnePath PathToPMT)
  refuse(${example} "^${example}: nowhere[^\n]*\n$" nowhere)
  refuse(${example} "^${example}: [^\n]*bad.json[^\n]*\n$" "${work}/bad.json")
  refuse(${example} "^usage: ${example} TABLES\n$")
endforeach()
run("${work}/prefix/bin/zarn-shadow" --version)

# What is installed must not lead back into this source tree.
file(GLOB_RECURSE installed "${work}/prefix/*.cmake")
foreach(file IN LISTS installed)
  file(STRINGS "${file}" leads REGEX "${SOURCE}/(log|db|lightpath|du|scan|io|build|cmake)")
  if(leads)
    message(FATAL_ERROR "${file} names the source tree: ${leads}")
  endif()
endforeach()
