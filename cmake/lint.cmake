# Target lint: formatting, clang-tidy, cppcheck and shellcheck. Checks a file again
# only when it or a header changed.
cfg_set_need(CLANG_FORMAT clang-format clang-format)
cfg_set_need(CLANG_TIDY clang-tidy clang-tidy)
cfg_set_need(CPPCHECK cppcheck cppcheck)
cfg_set_need(SHELLCHECK shellcheck shellcheck)

file(GLOB_RECURSE sources CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} *.c *.cpp)
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} *.h)
list(FILTER sources EXCLUDE REGEX "^build/")
list(FILTER headers EXCLUDE REGEX "^build/")
set(scripts
    .ci/run
    bench/count
    desk/camera
    desk/make-tools
    desk/root.sh
    desk/rootfs/etc_ro/init.d/rcS
    scripts/abi-baseline
    scripts/bench
    scripts/demo
    scripts/fuzz
    scripts/packages
    scripts/packages.sh
    scripts/size
    scripts/test
    tests/camera_test
    tests/example_test
    tests/in-root
    tests/package_test)
file(GLOB chapters CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} scripts/demo.d/*.sh)
list(APPEND scripts ${chapters} scripts/arm-machine)
foreach(part cuts day figures init tests)
  list(APPEND scripts scripts/arm-machine.d/${part})
endforeach()
set(stamps ${PROJECT_BINARY_DIR}/lint)
file(MAKE_DIRECTORY ${stamps})

# lint(NAME FILES COMMAND...): runs COMMAND in the source folder when FILES changed.
function(lint name files)
  add_custom_command(OUTPUT ${stamps}/${name}
      COMMAND ${ARGN}
      COMMAND ${CMAKE_COMMAND} -E touch ${stamps}/${name}
      DEPENDS ${files} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
  set_property(GLOBAL APPEND PROPERTY lint_stamps ${stamps}/${name})
endfunction()

list(TRANSFORM sources PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE all_sources)
list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE all_headers)
list(TRANSFORM scripts PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE all_scripts)
lint(format "${all_sources};${all_headers};${PROJECT_SOURCE_DIR}/.clang-format"
    ${CLANG_FORMAT} --dry-run -Werror ${sources} ${headers})
lint(cppcheck "${all_sources};${all_headers}"
    ${CPPCHECK} --quiet --error-exitcode=1 --enable=warning,performance,portability
    --inline-suppr --suppress=preprocessorErrorDirective --library=googletest
    -I . ${sources})
lint(shellcheck "${all_scripts}" ${SHELLCHECK} -x ${scripts})
list(FILTER sources EXCLUDE REGEX "^tests/consumer/") # a separate project
foreach(source IN LISTS sources)
  string(REPLACE "/" "." name ${source})
  lint(${name} "${PROJECT_SOURCE_DIR}/${source};${all_headers};${PROJECT_SOURCE_DIR}/.clang-tidy"
      sh -c "\"$0\" \"$@\" 2>/dev/null" # it only counts suppressed warnings there
      ${CLANG_TIDY} --quiet -p ${PROJECT_BINARY_DIR} ${source})
endforeach()

get_property(all_stamps GLOBAL PROPERTY lint_stamps)
add_custom_target(lint DEPENDS ${all_stamps})
add_dependencies(lint docs) # checks that the reference builds from the header
add_dependencies(lint cfgctl harness) # their precompiled headers
