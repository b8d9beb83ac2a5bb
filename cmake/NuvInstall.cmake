# What is installed: the package NuvConnect5 for CMake, with a component for each library and one for the
# programs; the same for pkg-config; what people read.

# Those who pack debug information apart turn it off.
option(NUV_STRIP_INSTALL "Install without debug information" ON)
if(NUV_STRIP_INSTALL)
  install(CODE "set(CMAKE_INSTALL_DO_STRIP 1)")
endif()

set_target_properties(nuvfile_tool PROPERTIES EXPORT_NAME nuvfile)
install(TARGETS NuvConnect5 EXPORT NuvConnect5-connect)
install(TARGETS nuvprinter nuvprinter_cxx EXPORT NuvConnect5-printer)
install(TARGETS NuvFile EXPORT NuvConnect5-file)
install(TARGETS nuvctl nuvsim nuvfile_tool EXPORT NuvConnect5-tools)
install(DIRECTORY include/nuvconnect include/nuvprinter DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES nuvfile/include/nuvfile/NuvFile.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/nuvfile")

if(WIN32)
  set(package_folder cmake)
else()
  set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/NuvConnect5")
endif()
include(CMakePackageConfigHelpers)
# Before 1.0 a minor version may change everything.
write_basic_package_version_file("${CMAKE_BINARY_DIR}/NuvConnect5ConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
foreach(component connect printer file tools)
  install(EXPORT NuvConnect5-${component} NAMESPACE NuvConnect5:: DESTINATION "${package_folder}")
endforeach()
install(FILES cmake/NuvConnect5Config.cmake "${CMAKE_BINARY_DIR}/NuvConnect5ConfigVersion.cmake"
        DESTINATION "${package_folder}")
if(WIN32)
  return()
endif()

# nuv_pkg_config(NAME LIBRARY DESCRIPTION): works from wherever the prefix is moved to.
function(nuv_pkg_config name library description)
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  set(file "${CMAKE_BINARY_DIR}/${name}.pc")
  file(CONFIGURE OUTPUT "${file}" @ONLY CONTENT "prefix=\${pcfiledir}/@up@
Name: @name@
Description: @description@
Version: @PROJECT_VERSION@
Cflags: -I\${prefix}/@CMAKE_INSTALL_INCLUDEDIR@
Libs: -L\${prefix}/@CMAKE_INSTALL_LIBDIR@ -l@library@
")
  install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
nuv_pkg_config(nuvconnect5 NuvConnect5 "Connection library for resin 3D printers")
nuv_pkg_config(nuvprinter nuvprinter "Resin 3D printers, a handle each")
nuv_pkg_config(nuvfile NuvFile "Print files of resin 3D printers")

install(DIRECTORY python/nuvprinter DESTINATION lib/python3/dist-packages PATTERN __pycache__ EXCLUDE
        PATTERN ".*" EXCLUDE)
install(FILES packaging/udev/70-nuvconnect5.rules DESTINATION lib/udev/rules.d)
install(FILES packaging/udev/nuvconnect5.metainfo.xml RENAME org.nuvconnect5.printers.metainfo.xml
        DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(DIRECTORY examples docs DESTINATION "${CMAKE_INSTALL_DOCDIR}" PATTERN __pycache__ EXCLUDE PATTERN site EXCLUDE)
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
set(manuals packaging/manuals)
install(FILES ${manuals}/nuvctl.1 ${manuals}/nuvsim.1 ${manuals}/nuvfile.1
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES ${manuals}/nuvctl.bash RENAME nuvctl
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES ${manuals}/_nuvctl DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES ${manuals}/nuvctl.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
