# Installs the build into an empty folder, builds the separate project with it, and
# runs its programs and the installed command.
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
# expect(<program> <text> <argument>...): it succeeds and prints this.
function(expect example text)
  execute_process(COMMAND "${work}/build/${example}" ${ARGN}
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  if(NOT output STREQUAL "${text}\n")
    message(FATAL_ERROR "${example} printed: ${output}")
  endif()
endfunction()
# refuse(<program> <text> <argument>...): it ends with status 2 and this error.
function(refuse example text)
  execute_process(COMMAND "${work}/build/${example}" ${ARGN}
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE error)
  if(NOT status STREQUAL 2 OR NOT output STREQUAL "" OR NOT error MATCHES "${text}")
    message(FATAL_ERROR "${example} ended with ${status}, printed: ${output}${error}")
  endif()
endfunction()
expect(CheckOnePath "shadowed by a pipe: 1" "${tables}")
expect(PathToPMT "Scint/InnerAV->AV->Water, 46.105 ns, shadowed: 0" "${tables}")
expect(CountShadowed "139809 of 388199 paths are shadowed" "${tables}"
  "${SOURCE}/data/source-scan.csv" "${SOURCE}/data/pmts.csv")
expect(ChooseTolerance
  "90 % of 388199 paths are clear below a tolerance of -4.319 mm" "${tables}"
  "${SOURCE}/data/source-scan.csv" "${SOURCE}/data/pmts.csv")
file(WRITE "${work}/bad.json" "[{}]")
foreach(example IN ITEMS CheckOnePath PathToPMT)
  refuse(${example} "^${example}: nowhere[^\n]*\n$" nowhere)
  refuse(${example} "^${example}: [^\n]*bad.json[^\n]*\n$" "${work}/bad.json")
  refuse(${example} "^usage: ${example} TABLES\n$")
endforeach()
set(database "sqlite:${work}/tables.db")
file(REMOVE "${work}/tables.db")
expect(ImportTables "added 26, unchanged 0\n26 entries after the first import, 26 now"
  "${tables}" "${database}" tester "first survey")
file(WRITE "${work}/boss.json" "[{\"table\": \"GEO\", \"index\": \"av\", "
  "\"runs\": [1000, null], \"fields\": {\"neck_boss_z\": 5700}}]")
expect(ImportTables "added 1, unchanged 0\n26 entries after the first import, 27 now"
  "${work}/boss.json" "${database}" tester "boss lowered")
expect(ImportTables "added 0, unchanged 1\n26 entries after the first import, 27 now"
  "${work}/boss.json" "${database}" tester "boss lowered again")
refuse(ImportTables "^ImportTables: [^\n]*bad.json[^\n]*\n$" "${work}/bad.json"
  "${database}" tester "a mistake")
refuse(CheckTables "^CheckTables: sqlite:nowhere[^\n]*\n$" sqlite:nowhere 0)
# The database has the same tables: the last line tells.
foreach(source IN ITEMS "${tables}" "${database}")
  execute_process(COMMAND "${work}/build/CheckTables" "${source}" 0
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "fingerprint [0-9a-f]+\n$" line "${output}")
  list(APPEND fingerprints "${line}")
endforeach()
list(REMOVE_DUPLICATES fingerprints)
if(NOT fingerprints MATCHES "^fingerprint [^;]*$")
  message(FATAL_ERROR "CheckTables printed: ${fingerprints}")
endif()
if(EXISTS "${work}/build/JudgeDataFrame")
  run("${work}/prefix/bin/zarn-shadow" scan --at=0,0,3000
    --pmts "${SOURCE}/data/pmts.csv" --geometry "${tables}" -o /dev/null
    --paths "${work}/paths.root")
  expect(JudgeDataFrame "3154 of 8000 paths are shadowed\n314 by a pipe" "${tables}"
    "${work}/paths.root")
  refuse(JudgeDataFrame "\nJudgeDataFrame: [^\n]*bad.json[^\n]*\n$" "${tables}"
    "${work}/bad.json")
endif()
run("${work}/prefix/bin/zarn-shadow" --version)

# Installed files must not refer to this source tree.
file(GLOB_RECURSE installed "${work}/prefix/*.cmake")
foreach(file IN LISTS installed)
  file(STRINGS "${file}" references REGEX "${SOURCE}/(log|db|sql|lightpath|du|scan|io|rdf|display|build|cmake)")
  if(references)
    message(FATAL_ERROR "${file} names the source tree: ${references}")
  endif()
endforeach()
