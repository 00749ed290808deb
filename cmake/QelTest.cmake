# SPDX-License-Identifier: MIT
# GoogleTest from Debian's source package, built with the project so the same
# suite compiles natively and for the Cortex-M33; qel_add_test() declares tests.
set(QEL_GTEST_SOURCE_DIR "/usr/src/googletest" CACHE PATH "GoogleTest sources")

set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
if(QEL_TARGET_M33)
  set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
endif()
add_subdirectory(${QEL_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
if(QEL_TARGET_M33)
  # newlib hides its POSIX calls under strict -std=c++NN; no regex library.
  set_target_properties(gtest gtest_main PROPERTIES CXX_EXTENSIONS ON)
  target_compile_definitions(gtest PRIVATE _POSIX_PATH_MAX=256)
  target_compile_definitions(gtest PUBLIC GTEST_HAS_POSIX_RE=0)
endif()

include(GoogleTest)

# qel_add_test(<name> SOURCES <files...>): one test binary over the library,
# the plain references and the recording platform fakes. Every gtest case is
# its own ctest entry, on the host and (through the emulator) on the M33.
function(qel_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE qel qel_ref qel_test_support qel_options gtest)
  if(QEL_TARGET_M33)
    target_link_libraries(${name} PRIVATE qel_m33_runtime)
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_TIMEOUT 120
    PROPERTIES TIMEOUT 300
    NO_PRETTY_VALUES)
endfunction()
