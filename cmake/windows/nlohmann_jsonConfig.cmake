# Found by the toolchain file next to it only.
if(NOT TARGET nlohmann_json::nlohmann_json)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE "${NUV_HEADERS_ONLY}")
endif()
