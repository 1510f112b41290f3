# How every target of the project is compiled.

# staylit_target(NAME) gives a target the language level, the include root and the strict warnings.
function(staylit_target name)
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF OBJCXX_EXTENSIONS OFF)
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_compile_options(${name} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough
    -Wundef)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 mistakes the joining of texts for overlapping copies when it optimizes (PR 105651).
    target_compile_options(${name} PRIVATE -Wno-restrict)
    target_compile_options(${name} PRIVATE -Wduplicated-cond -Wlogical-op -Wuseless-cast)
  endif()
  if(STAYLIT_WERROR)
    target_compile_options(${name} PRIVATE -Werror)
  endif()
endfunction()
