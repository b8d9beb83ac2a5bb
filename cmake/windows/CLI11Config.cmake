# Found by the toolchain file next to it only.
if(NOT TARGET CLI11::CLI11)
  add_library(CLI11::CLI11 INTERFACE IMPORTED)
  target_include_directories(CLI11::CLI11 INTERFACE "${NUV_HEADERS_ONLY}")
endif()
