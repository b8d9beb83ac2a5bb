# Builds for Windows on Debian: MinGW-w64 with posix threads, Qt and OpenSSL from the unpacked
# archive of ./dev windows, all else from Debian's packages.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

get_filename_component(project "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
set(sysroot "${project}/build/windows-sysroot")
set(NUV_SYSROOT "${sysroot}")
set(CMAKE_FIND_ROOT_PATH "${sysroot}" /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(OPENSSL_ROOT_DIR "${sysroot}")
# Linked in: one library less to ship.
set(ZLIB_LIBRARY "/usr/${triple}/lib/libz.a")

# Libraries of headers only are the same for every system. The folder they lie in also has the
# headers of Debian's C library, so they are taken out of it.
set(headers "${project}/build/windows-headers")
file(MAKE_DIRECTORY "${headers}")
foreach(each CLI nlohmann asio asio.hpp)
  file(CREATE_LINK "/usr/include/${each}" "${headers}/${each}" SYMBOLIC)
endforeach()
set(NUV_HEADERS_ONLY "${headers}")
set(CLI11_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(nlohmann_json_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(ASIO_INCLUDE_DIR "${headers}")
# Debian has no GoogleTest for Windows, but its sources.
set(NUV_GTEST_SOURCE /usr/src/googletest)

# Makes a test of each program possible, as CTest would run it here.
set(NUV_WINE_DRIVE Z:)  # what it calls the root folder
set(CMAKE_CROSSCOMPILING_EMULATOR "${project}/tests/support/run_under_wine.sh")
