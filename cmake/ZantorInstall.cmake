# Installs the headers, the library, a CMake package (find_package(ZantorBase),
# target Zantor::ZantorBase) and a pkg-config file (ZantorBase.pc).
include(CMakePackageConfigHelpers)

set(ZANTOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZantorBase)

install(TARGETS ZantorBase EXPORT ZantorBaseTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT ZantorBaseTargets NAMESPACE Zantor:: DESTINATION ${ZANTOR_CMAKE_DIR})

configure_package_config_file(cmake/ZantorBaseConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ZantorBaseConfig.cmake
  INSTALL_DESTINATION ${ZANTOR_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ZantorBaseConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/ZantorBaseConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/ZantorBaseConfigVersion.cmake
  DESTINATION ${ZANTOR_CMAKE_DIR})

if(ZANTOR_BUILD_SHARED)
  set(ZANTOR_PC_CFLAGS "")
else()
  set(ZANTOR_PC_CFLAGS "-DZANTOR_BASE_STATIC")
endif()
file(RELATIVE_PATH ZANTOR_PC_PREFIX_RELATIVE
  "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/ZantorBase.pc.in ${CMAKE_CURRENT_BINARY_DIR}/ZantorBase.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZantorBase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
