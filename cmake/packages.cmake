# Debian packages, made by cpack from a shared build; see scripts/packages.
if(NOT BUILD_SHARED_LIBS)
  return()
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME cfg-set)
set(CPACK_PACKAGE_CONTACT "cfg_set maintainers <maintainers@cfg-set.example>" CACHE STRING
    "Who the packages name as their maintainer")
set(CPACK_COMPONENTS_ALL runtime dev)
if(CFG_SET_PLATFORM)
  list(APPEND CPACK_COMPONENTS_ALL cfgctl)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# SOURCE_DATE_EPOCH sets the times. An unreleased version sorts before its release.
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
file(STRINGS CHANGELOG.md unreleased REGEX "^## ${PROJECT_VERSION}, not released yet")
if(unreleased)
  string(TIMESTAMP today "%Y%m%d" UTC)
  string(APPEND CPACK_PACKAGE_VERSION "~git${today}")
endif()

# CMake 3.31 writes the field; older versions need it after the section.
if(CMAKE_VERSION VERSION_LESS 3.31)
  set(multiarch "\nMulti-Arch: same")
endif()

set(library libcfg-set${PROJECT_VERSION_MAJOR})
set(same_version "(= ${CPACK_PACKAGE_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs${multiarch}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "The library that the daemons of a Wi-Fi \
camera link to turn stored settings\ninto device state. The program that uses it \
supplies the parameter store.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libcfg-set-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION "libdevel${multiarch}")
set(CPACK_DEBIAN_DEV_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Headers, CMake package and pkg-config file of libcfg_set.")

set(CPACK_DEBIAN_CFGCTL_PACKAGE_NAME cfgctl)
set(CPACK_DEBIAN_CFGCTL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_CFGCTL_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_CFGCTL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_CFGCTL_DESCRIPTION "The command-line tool: reads, changes and \
applies the camera's settings,\nwatches its daemons' messages, checks its firmware images.")
if(CFG_SET_PLATFORM STREQUAL desk_platform)
  string(APPEND CPACK_DEBIAN_CFGCTL_DESCRIPTION "\nThis build has the platform of the \
desk camera: it works inside one and\nrefuses to start anywhere else.")
endif()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
if(CMAKE_CROSSCOMPILING)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS /usr/${CMAKE_LIBRARY_ARCHITECTURE}/lib)
endif()

# Every package has its own folder of documents.
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(packaging/debian/changelog.in debian/changelog @ONLY)
execute_process(COMMAND gzip -9nf debian/changelog WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright
          ${PROJECT_BINARY_DIR}/debian/changelog.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
      COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
include(CPack)
