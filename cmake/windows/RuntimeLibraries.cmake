# The libraries that the programs need beside them, next to the programs and into what is installed.
# Only for what is cross-compiled: elsewhere the developer's own PATH has them.
set(NUV_RUNTIME_LIBRARIES)
foreach(each libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${each}
                  OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  list(APPEND NUV_RUNTIME_LIBRARIES "${file}")
endforeach()
file(GLOB from_sysroot "${NUV_SYSROOT}/bin/*.dll")
list(APPEND NUV_RUNTIME_LIBRARIES ${from_sysroot})
file(COPY ${NUV_RUNTIME_LIBRARIES} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
install(FILES ${NUV_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR})
