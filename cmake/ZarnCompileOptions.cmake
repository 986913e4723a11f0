# zarn::fp: how verdict arithmetic is compiled. Exported to callers as well:
# ROOT's vector operations are inline, and the linker may pick the caller's copy
# of one. A copy with fused operations rounds differently and changes verdicts
# near a limit.
add_library(zarn_fp INTERFACE)
add_library(zarn::fp ALIAS zarn_fp)
set_target_properties(zarn_fp PROPERTIES EXPORT_NAME fp)
target_compile_options(zarn_fp INTERFACE -ffp-contract=off)
install(TARGETS zarn_fp EXPORT zarnTargets)

# Warnings for this project's own sources; never exported. Errors where
# CMAKE_COMPILE_WARNING_AS_ERROR is set, as script/test does.
add_library(zarn_warnings INTERFACE)
target_compile_options(zarn_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  -Wdouble-promotion -Wformat=2)
