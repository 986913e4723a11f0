# zarn::fp: compile options of verdict arithmetic. Also exported to callers:
# ROOT's vector operations are inline, and the linker may choose the caller's
# copy of one. A copy with fused operations rounds differently and changes
# verdicts near a limit.
add_library(zarn_fp INTERFACE)
add_library(zarn::fp ALIAS zarn_fp)
set_target_properties(zarn_fp PROPERTIES EXPORT_NAME fp)
target_compile_options(zarn_fp INTERFACE -ffp-contract=off)
install(TARGETS zarn_fp EXPORT zarnTargets)

# Warnings for this project's own sources; never exported. They are errors if
# CMAKE_COMPILE_WARNING_AS_ERROR is set, as in script/test.
add_library(zarn_warnings INTERFACE)
target_compile_options(zarn_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  -Wdouble-promotion -Wformat=2)

# With a sanitizer, optimizing the sources of the command, of its pictures and databases,
# and of the tests takes longer than it saves.
set(ZARN_PROGRAM_OPTIONS "" CACHE STRING
  "Compiler options for the command and test programs, not for what they compute with")
