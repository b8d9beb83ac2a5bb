# Builds for 64-bit ARM on Debian, with Debian's compiler and libraries for it (./dev setup arm64).
# The tests run as they are where the kernel hands such programs to an emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triple aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${triple}/pkgconfig:/usr/share/pkgconfig")
