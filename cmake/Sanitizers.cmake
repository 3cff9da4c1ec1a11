# Sanitizers apply to everything in one build: mixing instrumented and plain code gives false reports.
if(LSC_SANITIZE)
  add_compile_options(-fsanitize=${LSC_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LSC_SANITIZE})
endif()
