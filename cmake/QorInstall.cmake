# Installs the CMake package (find_package(QorVisShaders)) and the pkg-config file.
include(CMakePackageConfigHelpers)

set(QOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QorVisShaders)
install(EXPORT QorVisShadersTargets NAMESPACE Qor:: DESTINATION ${QOR_CMAKE_DIR})
install(FILES cmake/FindCg.cmake DESTINATION ${QOR_CMAKE_DIR})
configure_package_config_file(cmake/QorVisShadersConfig.cmake.in
  ${CMAKE_BINARY_DIR}/QorVisShadersConfig.cmake INSTALL_DESTINATION ${QOR_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/QorVisShadersConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/QorVisShadersConfig.cmake
  ${CMAKE_BINARY_DIR}/QorVisShadersConfigVersion.cmake DESTINATION ${QOR_CMAKE_DIR})

# The pkg-config file is written at install time, with the prefix the tree is installed
# under (cmake --install build --prefix DIR gives DIR's folders), not the configured one.
install(CODE "
  set(QOR_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
  set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
  set(PROJECT_VERSION \"${PROJECT_VERSION}\")
  set(pc_file \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/QorVisShaders.pc\")
  message(STATUS \"Installing: \${pc_file}\")
  configure_file(\"${PROJECT_SOURCE_DIR}/cmake/QorVisShaders.pc.in\" \"\${pc_file}\" @ONLY)
")
