# Install: the library, the public headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS nq_tls20an EXPORT nq_tls20anTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nq_tls20an)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/nq_tools/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nq_tls20an FILES_MATCHING PATTERN "*.h")
install(EXPORT nq_tls20anTargets NAMESPACE nq_tls20an::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/nq_tls20an)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/nq_tls20anConfig.cmake.in
  ${PROJECT_BINARY_DIR}/nq_tls20anConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/nq_tls20an)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nq_tls20anConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nq_tls20anConfig.cmake
  ${PROJECT_BINARY_DIR}/nq_tls20anConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/nq_tls20an)

# The pkg-config file finds its prefix from where it lies, so an installed tree can move.
file(RELATIVE_PATH NQ_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/nq_tls20an.pc.in ${PROJECT_BINARY_DIR}/nq_tls20an.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nq_tls20an.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
