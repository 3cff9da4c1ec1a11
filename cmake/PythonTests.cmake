# Tests written with Python's unittest. Each method is a test of its own, named FILE.Class.method without "_test" and "test_".
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# lsc_add_python_test(NAME FILE Class.method LABELS...): one test. The method may be made when the file runs.
function(lsc_add_python_test name file method)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" LABELS)
  add_test(NAME ${name} COMMAND ${Python3_EXECUTABLE} -B ${file} ${method})
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" ENVIRONMENT
    "PYTHONPATH=${CMAKE_CURRENT_SOURCE_DIR}/support;LSC_REPLAY=${emulator} '$<TARGET_FILE:lsc_replay>'")
endfunction()

# lsc_add_python_tests(FILE LABELS...): every method in FILE, a path within this folder.
function(lsc_add_python_tests file)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" LABELS)
  cmake_path(ABSOLUTE_PATH file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  cmake_path(GET file STEM stem)
  string(REPLACE "_test" "" stem ${stem})
  file(STRINGS ${file} lines REGEX "^class |^    def test_")
  foreach(line ${lines})
    if(line MATCHES "^class ([A-Za-z]+)")
      set(class ${CMAKE_MATCH_1})
    elseif(line MATCHES "def test_([a-z0-9_]+)")
      lsc_add_python_test(${stem}.${class}.${CMAKE_MATCH_1} ${file} ${class}.test_${CMAKE_MATCH_1}
        LABELS ${arg_LABELS})
    endif()
  endforeach()
endfunction()
