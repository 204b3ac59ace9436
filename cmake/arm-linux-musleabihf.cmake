# 32-bit ARM, hard float, musl: Debian's cross compiler with the C library of
#     dpkg --add-architecture armhf && apt-get update && apt-get install musl-dev:armhf
# Builds C programs and the library, but no other C++ programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(musl /usr/lib/arm-linux-musleabihf)
execute_process(COMMAND ${CMAKE_C_COMPILER} -print-file-name=include
    OUTPUT_VARIABLE compiler_headers OUTPUT_STRIP_TRAILING_WHITESPACE)
set(headers "-nostdinc -isystem /usr/include/arm-linux-musleabihf -isystem ${compiler_headers}")
set(CMAKE_C_FLAGS_INIT "${headers}")
set(CMAKE_CXX_FLAGS_INIT "${headers} -nostdinc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-nostdlib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -nostdlib ${musl}/crt1.o ${musl}/crti.o ${musl}/crtn.o")
set(CMAKE_C_STANDARD_LIBRARIES "-L${musl} -lc -lgcc -lc")
