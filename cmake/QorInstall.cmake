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

configure_file(cmake/QorVisShaders.pc.in ${CMAKE_BINARY_DIR}/QorVisShaders.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/QorVisShaders.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
