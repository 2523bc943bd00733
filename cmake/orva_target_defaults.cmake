# How every target of the project is compiled: C++20, warnings, and floating point that gives the
# same bits on every CPU.
function(orva_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # No result depends on errno or on floating-point traps, which would keep loops scalar.
  target_compile_options(${target} PRIVATE -ffp-contract=off -fno-math-errno -fno-trapping-math)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(EMSCRIPTEN)  # whose addresses and sizes have 32 bits
      target_compile_options(${target} PRIVATE -Wno-shorten-64-to-32)
    endif()
  endif()
endfunction()
