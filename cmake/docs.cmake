# Target docs: the public header as HTML, docs/html/index.html in the build folder.
find_program(DOXYGEN doxygen)
if(DOXYGEN)
  configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
  add_custom_command(OUTPUT docs/html/index.html
      COMMAND ${DOXYGEN} docs/Doxyfile
      DEPENDS cfg_set.h docs/doxygen-filter docs/Doxyfile.in VERBATIM)
  add_custom_target(docs DEPENDS docs/html/index.html)
endif()
