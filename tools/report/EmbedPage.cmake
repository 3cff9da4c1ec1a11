# Writes OUTPUT, the source of PageTemplate.h: page.html of this folder with style, script, and the charting library from
# DYGRAPHS, under the licence in LICENCE.
foreach(name page.css page.js page.html)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${name} ${name})
endforeach()
file(READ ${LICENCE} licence)
set(dygraphs)
foreach(name dygraph.min.js extras/synchronizer.js)
  file(READ ${DYGRAPHS}/${name} script)
  string(APPEND dygraphs "${script}\n")
endforeach()
file(READ ${DYGRAPHS}/dygraph.min.css dygraphs_css)
foreach(text dygraphs dygraphs_css)
  string(REGEX REPLACE "sourceMappingURL=[^ \n]*" "" ${text} "${${text}}")  # a file beside it
endforeach()
set(text "${page.html}")
foreach(pair LICENCE=licence DYGRAPHS=dygraphs DYGRAPHS_CSS=dygraphs_css CSS=page.css JS=page.js)
  string(REPLACE "=" ";" pair ${pair})
  list(GET pair 0 mark)
  list(GET pair 1 variable)
  string(REPLACE "@${mark}@" "${${variable}}" text "${text}")
endforeach()

file(WRITE ${OUTPUT}.html "${text}")
file(READ ${OUTPUT}.html bytes HEX)
string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
string(REGEX REPLACE "(('[^']*',){32})" "\\1\n" bytes "${bytes}")
file(WRITE ${OUTPUT} "#include \"tools/report/PageTemplate.h\"

namespace {

constexpr char kText[] = {
${bytes}};

}  // namespace

std::string_view replay::pageTemplate() {
    return {kText, sizeof kText};
}
")
