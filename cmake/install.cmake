# Installation of the library for hosts: the shared library (with its
# SONAME), the public headers under include/zelnav/, a CMake package
# (find_package(zelnav) -> zelnav::zelnav) and a pkg-config file. The
# static archive the tests link, and the tools' libraries, stay in the
# build tree: they reach internal classes and are no interface.
#
# Every installed path is relative to the prefix, so the same build can
# be installed anywhere with `cmake --install <build> --prefix <dir>`; the
# pkg-config file finds its prefix from its own location for that reason.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZELNAV_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zelnav)
set(ZELNAV_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS zelnav EXPORT zelnavTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

file(GLOB ZELNAV_PUBLIC_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h)
install(FILES ${ZELNAV_PUBLIC_HEADERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zelnav)

install(EXPORT zelnavTargets
  NAMESPACE zelnav::
  DESTINATION ${ZELNAV_CMAKE_DIR})
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/zelnavConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zelnavConfig.cmake
  INSTALL_DESTINATION ${ZELNAV_CMAKE_DIR})
# A 0.x library makes no promise across minor versions: a host that asks
# for 0.1 is not offered 0.2.
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/zelnavConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/zelnavConfig.cmake
  ${PROJECT_BINARY_DIR}/zelnavConfigVersion.cmake
  DESTINATION ${ZELNAV_CMAKE_DIR})

# pkg-config: the prefix is found relative to the .pc file, unless the
# directories were given as absolute paths.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(ZELNAV_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(ZELNAV_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
else()
  file(RELATIVE_PATH up "/r/${ZELNAV_PC_DIR}" "/r")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(ZELNAV_PC_PREFIX "\${pcfiledir}/${up}")
  set(ZELNAV_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(ZELNAV_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
else()
  set(ZELNAV_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/zelnav.pc.in
  ${PROJECT_BINARY_DIR}/zelnav.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zelnav.pc DESTINATION ${ZELNAV_PC_DIR})
