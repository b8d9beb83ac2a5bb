# Settings that every target of the project shares.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
# Programs and libraries find each other where they are built and where they are installed, in a folder of any
# name: it would be part of the identity of what is built.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}:$ORIGIN")

# No path of the machine that builds in what it builds.
if(NOT MSVC)
  add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")
endif()

find_program(NUV_CCACHE ccache)
if(NUV_CCACHE)
  # What the cache needs to be told where headers are precompiled.
  set(launcher "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${NUV_CCACHE}")
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

# They are errors where a preset says so only: a newer compiler than ours warns of more.
add_library(nuv_warnings INTERFACE)
if(MSVC)
  target_compile_options(nuv_warnings INTERFACE /W4)
else()
  target_compile_options(nuv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
endif()

set(NUV_SANITIZE "" CACHE STRING "Sanitizers, such as address,undefined or thread")
if(NUV_SANITIZE)
  add_compile_options(-fsanitize=${NUV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${NUV_SANITIZE})
endif()

if(WIN32)
  set(NUV_SYSTEM windows)
else()
  set(NUV_SYSTEM posix)
endif()

# nuv_version_resource(TARGET DESCRIPTION): what Windows shows as the file's properties.
function(nuv_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(NUV_DESCRIPTION "${description}")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(NUV_FILE_NAME "${target}.exe")
    set(NUV_FILE_TYPE VFT_APP)
  else()
    set(NUV_FILE_NAME "${target}.dll")
    set(NUV_FILE_TYPE VFT_DLL)
  endif()
  set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in" "${resource}" @ONLY)
  target_sources(${target} PRIVATE "${resource}")
endfunction()

# nuv_precompile(TARGET PRIVATE headers... | REUSE_FROM TARGET): headers that take longer to read than
# what includes them takes to compile. The sources include them all the same.
function(nuv_precompile target)
  target_precompile_headers(${target} ${ARGN})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

# What runs but a moment is compiled with less effort where GCC optimises: that is what takes the time
# of a build.
set(NUV_QUICKLY "$<$<AND:$<CONFIG:RelWithDebInfo>,$<CXX_COMPILER_ID:GNU>>:-O1;-g1>")

# nuv_join(TARGET SIZE [SINGLE sources...]): compiles the target's sources SIZE at a time, where what
# they include takes far longer than they do; SINGLE: those whose own names others have too.
option(NUV_JOIN_SOURCES "Compile sources of some targets together" ON)
function(nuv_join target size)
  cmake_parse_arguments(PARSE_ARGV 2 JOIN "" "" "SINGLE")
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${NUV_JOIN_SOURCES} UNITY_BUILD_BATCH_SIZE ${size})
  set_source_files_properties(${JOIN_SINGLE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Off where nothing else would notice that a source lacks an include.
option(NUV_JOIN_LAYERS "Compile sources of the library's layers together" OFF)

# nuv_add_layer(NAME sources... [NEEDS layers or libraries...]): one layer of the library as a static
# library, so that the shared library and the tests are built from the same objects.
function(nuv_add_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 LAYER "" "" "NEEDS")
  add_library(${name} STATIC ${LAYER_UNPARSED_ARGUMENTS})
  if(NUV_JOIN_LAYERS)
    # The headers of a system do not stand what came before them.
    set(own ${LAYER_UNPARSED_ARGUMENTS})
    list(FILTER own INCLUDE REGEX "_(posix|linux|windows|win)\\.cpp$")
    nuv_join(${name} 12 SINGLE ${own})
  endif()
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}/include")
  target_link_libraries(${name} PUBLIC ${LAYER_NEEDS} PRIVATE nuv_warnings)
endfunction()

# nuv_export(TARGET HEADER MARK NODE): the shared library shows the functions that the header declares
# behind MARK, on Linux in the symbol version NODE, and nothing else.
function(nuv_export target header mark node)
  if(WIN32)
    return()
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
  file(READ "${header}" declarations)
  string(REGEX MATCHALL "\n${mark} [^(]*\\(" names "${declarations}")
  list(TRANSFORM names REPLACE "^.*[ *]([A-Za-z0-9_]+)\\($" "\\1")
  list(JOIN names "; " names)
  set(exports "${CMAKE_CURRENT_BINARY_DIR}/exports.map")
  file(CONFIGURE OUTPUT "${exports}" CONTENT "@node@ { global: @names@; local: *; };\n" @ONLY)
  target_link_options(${target} PRIVATE "-Wl,--version-script=${exports}" -Wl,-z,defs)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS "${exports}")
endfunction()

# nuv_number(TARGET NUMBER): the number of the shared library's interface, apart from the project's
# version. docs/decisions.md says when it is raised.
function(nuv_number target number)
  if(WIN32)
    return()
  endif()
  set_target_properties(${target} PROPERTIES SOVERSION ${number} VERSION ${number}.${PROJECT_VERSION})
endfunction()

# nuv_add_test(TARGET): runs a test program inside a private network with a network of its own, so
# that its broadcasts leave neither the machine nor the test.
function(nuv_add_test target)
  cmake_parse_arguments(PARSE_ARGV 1 TEST "" "TIMEOUT" "ARGS")
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 300)
  endif()
  add_test(NAME ${target}
           COMMAND "${PROJECT_SOURCE_DIR}/tests/support/in_private_network.sh"
                   ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:${target}>" ${TEST_ARGS})
  set_tests_properties(${target} PROPERTIES TIMEOUT ${TEST_TIMEOUT} SKIP_RETURN_CODE 77)
  # What the watchdog of the test programs allows one test; usually it is 60 s.
  if(NUV_SANITIZE OR CMAKE_CROSSCOMPILING)
    set_tests_properties(${target} PROPERTIES ENVIRONMENT NUV_TEST_SECONDS=240)
  endif()
endfunction()
