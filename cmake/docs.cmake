# Target docs: the public headers as HTML, docs/html/index.html in the build folder.
find_program(DOXYGEN doxygen)
if(DOXYGEN)
  configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
  add_custom_command(OUTPUT docs/html/index.html
      COMMAND ${DOXYGEN} docs/Doxyfile
      DEPENDS cfg_set.h platform/param_store.h platform/relay_ipc.h platform/viewer_relay.h docs/doxygen-filter docs/Doxyfile.in VERBATIM)
  add_custom_target(docs DEPENDS docs/html/index.html)
endif()
