# find_package(NuvConnect5) gives the target NuvConnect5::NuvConnect5.
include("${CMAKE_CURRENT_LIST_DIR}/NuvConnect5Targets.cmake")
