# What an embedder gets: libraries, headers, a CMake package, pkg-config files, the program and its manual page.
include(CMakePackageConfigHelpers)

# The engine is an archive inside the program; its C++ interface is not one to build on from outside.
install(TARGETS qzbifun qzhost EXPORT qzbifun LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET qzeval)
  install(TARGETS qzeval RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(DIRECTORY include/qzbifun host/include/qzhost DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
file(GLOB manual_pages CONFIGURE_DEPENDS docs/*.1)
install(FILES ${manual_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# find_package(qzbifun): qzbifun::qzbifun and qzbifun::qzhost.
set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/qzbifun)
install(EXPORT qzbifun NAMESPACE qzbifun:: FILE qzbifun-targets.cmake DESTINATION ${package_directory})
configure_package_config_file(cmake/qzbifun-config.cmake.in qzbifun-config.cmake INSTALL_DESTINATION ${package_directory})
write_basic_package_version_file(qzbifun-config-version.cmake COMPATIBILITY SameMinorVersion)
install(
  FILES ${CMAKE_CURRENT_BINARY_DIR}/qzbifun-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/qzbifun-config-version.cmake
  DESTINATION ${package_directory}
)

# pkg-config, for the two C libraries. The prefix is told by the place of the file, so that a tree can be moved.
file(RELATIVE_PATH QZBIFUN_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(library qzbifun qzhost)
  configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
