# zarn_add_kernels(<room> <source> <suffix>): loops compiled once for each kind
# of processor, as k<Kind><suffix>. errno and floating-point exceptions, which
# nobody reads, would prevent vectorisation; results do not change. Always
# optimised, so that no function with wide instructions is left for other code
# to call.
function(zarn_add_kernels room source suffix)
  zarn_add_kernel(${room} ${source} kBaseline${suffix})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    zarn_add_kernel(${room} ${source} kAVX2${suffix}
      -mavx2 -mprefer-vector-width=256)
    zarn_add_kernel(${room} ${source} kAVX512${suffix}
      -mavx512f -mavx512vl -mavx512dq -mavx512bw -mprefer-vector-width=512)
  endif()
endfunction()

function(zarn_add_kernel room source kernel)
  add_library(zarn_${kernel} OBJECT ${source})
  target_compile_definitions(zarn_${kernel} PRIVATE ZARN_KERNEL=${kernel})
  target_compile_options(zarn_${kernel} PRIVATE
    -O3 -fno-math-errno -fno-trapping-math ${ARGN})
  target_compile_features(zarn_${kernel} PRIVATE cxx_std_17)
  target_include_directories(zarn_${kernel} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(zarn_${kernel} PRIVATE zarn_fp zarn_warnings)
  set_target_properties(zarn_${kernel} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    UNITY_BUILD OFF)  # one source: as it is, the compiler cache knows it in a wheel
  target_sources(zarn_${room} PRIVATE $<TARGET_OBJECTS:zarn_${kernel}>)
endfunction()
