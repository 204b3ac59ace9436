# A vendor's toolchain: CROSS and CROSS_SUFFIX surround "gcc" in its compiler's name,
#     cmake --preset release-vendor -DCROSS=/opt/vendor/bin/arm-vendor-linux-
# Add its -march or --sysroot to CMAKE_CXX_FLAGS_INIT where the compiler does not imply it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
if(NOT CROSS)
  message(FATAL_ERROR "CROSS is missing: -DCROSS=/opt/vendor/bin/arm-vendor-linux-")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CROSS CROSS_SUFFIX)
set(CMAKE_C_COMPILER ${CROSS}gcc${CROSS_SUFFIX})
set(CMAKE_CXX_COMPILER ${CROSS}g++${CROSS_SUFFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
