# Tool chain for another of Debian's architectures: Debian's cross compiler and libraries, and qemu, which runs the tests.
#   cmake -S . -B build/arm64 --toolchain cmake/cross.cmake -DTARNWELL_TRIPLET=aarch64-linux-gnu
# scripts/cross installs what it needs.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNWELL_TRIPLET)
string(REGEX REPLACE "-.*" "" processor ${TARNWELL_TRIPLET})
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
set(CMAKE_CXX_COMPILER ${TARNWELL_TRIPLET}-g++)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${TARNWELL_TRIPLET}/pkgconfig:/usr/share/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${processor}-static)
