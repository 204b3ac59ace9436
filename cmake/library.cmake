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
    time/sync.cpp
    time/zone.cpp
    upload/upload.cpp)
add_library(cfg_set::cfg_set ALIAS cfg_set)

target_include_directories(cfg_set
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_options(cfg_set PRIVATE
    -fno-exceptions -fno-rtti -ffunction-sections -fdata-sections)
target_link_libraries(cfg_set PRIVATE $<BUILD_INTERFACE:cfg_set_warnings>)

# No C++ run time: the C driver links, and nothing of C++ is implied. The
# firmware supplies the platform's symbols, so some stay undefined here.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
set_target_properties(cfg_set PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE C)

install(TARGETS cfg_set EXPORT cfg_set_targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES cfg_set.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cfg_set FILES_MATCHING PATTERN "*.h")

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/cfg_set)
install(EXPORT cfg_set_targets NAMESPACE cfg_set:: FILE cfg_set-config.cmake
    DESTINATION ${package_dir})
write_basic_package_version_file(cfg_set-config-version.cmake COMPATIBILITY SameMajorVersion)
configure_file(packaging/cfg_set.pc.in cfg_set.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cfg_set-config-version.cmake DESTINATION ${package_dir})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cfg_set.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
