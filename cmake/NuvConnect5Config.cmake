# find_package(NuvConnect5 [COMPONENTS connect printer file tools]), without components what is there:
#   connect  NuvConnect5::NuvConnect5
#   printer  NuvConnect5::nuvprinter, and NuvConnect5::nuvprinter_cxx for nuvprinter.hpp
#   file     NuvConnect5::NuvFile
#   tools    the programs NuvConnect5::nuvctl, nuvsim and nuvfile
set(NuvConnect5_wanted ${NuvConnect5_FIND_COMPONENTS})
if(NOT NuvConnect5_wanted)
  set(NuvConnect5_wanted connect printer file tools)
endif()
foreach(NuvConnect5_component IN LISTS NuvConnect5_wanted)
  set(NuvConnect5_targets "${CMAKE_CURRENT_LIST_DIR}/NuvConnect5-${NuvConnect5_component}.cmake")
  if(EXISTS "${NuvConnect5_targets}")
    include("${NuvConnect5_targets}")
    set(NuvConnect5_${NuvConnect5_component}_FOUND TRUE)
  elseif(NuvConnect5_FIND_REQUIRED_${NuvConnect5_component})
    set(NuvConnect5_FOUND FALSE)
    set(NuvConnect5_NOT_FOUND_MESSAGE "its component ${NuvConnect5_component} is not installed")
  endif()
endforeach()
