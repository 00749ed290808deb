# SPDX-License-Identifier: MIT
# Install: headers, libqel.a, the port(s) of this build, a CMake package
# (find_package(qel CONFIG) -> qel::qel, qel::port_hosted or qel::port_m33)
# and pkg-config files.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(qel_options PROPERTIES EXPORT_NAME options)
if(QEL_TARGET_M33)
  set(QEL_PORT_TARGETS qel_port_m33 qel_m33_runtime)
  set(QEL_PORT_PC qel-port-m33)
  set(QEL_PORT_LIB qel_port_m33)
  install(FILES ${PROJECT_SOURCE_DIR}/dsp/sdk/port/cortex-m33/mps2_an505.ld
          DESTINATION ${CMAKE_INSTALL_DATADIR}/qel)
else()
  set(QEL_PORT_TARGETS qel_port_hosted)
  set(QEL_PORT_PC qel-port-hosted)
  set(QEL_PORT_LIB qel_port_hosted)
endif()

install(TARGETS qel qel_options ${QEL_PORT_TARGETS}
  EXPORT qelTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR}/qel-objects)
install(FILES ${PROJECT_SOURCE_DIR}/dsp/sdk/matrix/vector.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qel/matrix)
install(FILES ${PROJECT_SOURCE_DIR}/dsp/sdk/utils/os_support.h
              ${PROJECT_SOURCE_DIR}/dsp/sdk/utils/qel_types.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qel/utils)

install(EXPORT qelTargets NAMESPACE qel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qel)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qelConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qelConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qel)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qelConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qelConfig.cmake ${PROJECT_BINARY_DIR}/qelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qel)

# The .pc files assume lib/ and include/ under the prefix (GNUInstallDirs defaults).
configure_file(${PROJECT_SOURCE_DIR}/cmake/qel.pc.in ${PROJECT_BINARY_DIR}/qel.pc @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qel-port.pc.in ${PROJECT_BINARY_DIR}/${QEL_PORT_PC}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qel.pc ${PROJECT_BINARY_DIR}/${QEL_PORT_PC}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
