# Warnings for every target of this project, in one place.
add_library(lsc_warnings INTERFACE)
target_compile_options(lsc_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wformat=2 -Wcast-qual -Wcast-align
  -Wnon-virtual-dtor -Woverloaded-virtual -Wundef -Wunused -Wdouble-promotion
  # GCC follows null pointers that its own inlining of the standard library makes up.
  $<$<NOT:$<CXX_COMPILER_ID:GNU>>:-Wnull-dereference>
  $<$<BOOL:${LSC_WERROR}>:-Werror>)
if(LSC_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC follows data through its own instrumentation and warns of what no source line does.
  target_compile_options(lsc_warnings INTERFACE
    -Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow -Wno-restrict)
endif()
