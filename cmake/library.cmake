include(CheckLinkerFlag)

# The library: static by default, shared with BUILD_SHARED_LIBS=ON.
add_library(cfg_set
    events/check.cpp
    events/lock.cpp
    events/queue.cpp
    events/status.cpp
    events/storage.cpp
    firmware/board.cpp
    firmware/crc32.cpp
    firmware/upgrade.cpp
    firmware/verify.cpp
    network/interfaces.cpp
    network/link.cpp
    network/link_stored.cpp
    network/supplicant.cpp
    records/features.cpp
    records/schedules.cpp
    records/sounds.cpp
    records/str_replace.cpp
    records/viewers.cpp
    settings/audio.cpp
    settings/detection.cpp
    settings/frame.cpp
    settings/image.cpp
    settings/messages.cpp
    settings/privacy.cpp
    settings/probes.cpp
    settings/probes_stored.cpp
    settings/stored.cpp
    settings/version.cpp
    time/sync.cpp
    time/zone.cpp
    upload/upload.cpp)
add_library(cfg_set::cfg_set ALIAS cfg_set)

# Users in the build tree see only the headers, under their installed names.
set(public ${CMAKE_CURRENT_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${public}/cfg_set)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/cfg_set.h ${public}/cfg_set.h SYMBOLIC)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/platform ${public}/cfg_set/platform SYMBOLIC)
target_include_directories(cfg_set PRIVATE ${PROJECT_SOURCE_DIR}
    PUBLIC $<BUILD_INTERFACE:${public}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_options(cfg_set PRIVATE
    -fno-exceptions -fno-rtti -ffunction-sections -fdata-sections)
# Times past 2038 if a 32-bit C library offers them; no public type depends on it.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CFG_SET_WIDE_TIME _TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()
target_compile_definitions(cfg_set_options INTERFACE ${CFG_SET_WIDE_TIME})
target_link_libraries(cfg_set PRIVATE $<BUILD_INTERFACE:cfg_set_options>)

# The library always calls its own functions, even if the program has functions of
# the same names.
check_linker_flag(C -Wl,-Bsymbolic-functions CFG_SET_HAVE_BSYMBOLIC)
if(CFG_SET_HAVE_BSYMBOLIC)
  target_link_options(cfg_set PRIVATE -Wl,-Bsymbolic-functions)
endif()

option(CFG_SET_GC_SECTIONS
    "Programs that link the static library leave out what they do not use" OFF)
if(CFG_SET_GC_SECTIONS)
  target_link_options(cfg_set INTERFACE -Wl,--gc-sections)
endif()

# No C++ run time: the C driver links. The firmware supplies the platform's symbols,
# so they stay undefined here.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
set_target_properties(cfg_set PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE C)

# The exported symbols and their interface versions.
set(version_script ${CMAKE_CURRENT_LIST_DIR}/cfg_set.map)
target_link_options(cfg_set PRIVATE -Wl,--version-script=${version_script})
set_property(TARGET cfg_set PROPERTY LINK_DEPENDS ${version_script})

if(NOT CFG_SET_INSTALL)
  return()
endif()

# Components: runtime is for the device, dev for the compiler.
install(TARGETS cfg_set EXPORT cfg_set_targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(FILES cfg_set.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(DIRECTORY platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cfg_set COMPONENT dev
    FILES_MATCHING PATTERN "*.h")

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/cfg_set)
install(EXPORT cfg_set_targets NAMESPACE cfg_set:: FILE cfg_set-config.cmake
    DESTINATION ${package_dir} COMPONENT dev)
write_basic_package_version_file(cfg_set-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cfg_set-config-version.cmake
    DESTINATION ${package_dir} COMPONENT dev)

# The .pc file names folders relative to itself; absolute ones, and all of them
# with CFG_SET_PC_PREFIX, in full.
set(pc_libdir "\${pcfiledir}/..")
set(pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
if(CFG_SET_PC_PREFIX)
  foreach(folder LIBDIR INCLUDEDIR)
    string(TOLOWER ${folder} lower)
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_${folder} BASE_DIRECTORY ${CFG_SET_PC_PREFIX}
        OUTPUT_VARIABLE pc_${lower})
  endforeach()
elseif(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} AND NOT IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  file(RELATIVE_PATH pc_includedir /${CMAKE_INSTALL_LIBDIR}/pkgconfig /${CMAKE_INSTALL_INCLUDEDIR})
  set(pc_includedir "\${pcfiledir}/${pc_includedir}")
endif()
configure_file(packaging/cfg_set.pc.in cfg_set.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cfg_set.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
