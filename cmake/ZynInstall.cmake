# Installation: the libraries, the public headers, a CMake package, two pkg-config files and the licence.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/ZynDisplayQt)
install(TARGETS ZynDisplayQt ZynDemosaicing EXPORT ZynDisplayQtTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZynDisplayQt)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT ZynDisplayQtTargets NAMESPACE ZynDisplayQt:: DESTINATION ${package_folder})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/ZynDisplayQtConfig.cmake.in
  ${CMAKE_BINARY_DIR}/ZynDisplayQtConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZynDisplayQtConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZynDisplayQtConfig.cmake ${CMAKE_BINARY_DIR}/ZynDisplayQtConfigVersion.cmake
  DESTINATION ${package_folder})

# The installed folder may be moved: a .pc file finds its prefix from its own place.
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(library ZynDisplayQt ZynDemosaicing)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/${library}.pc.in ${CMAKE_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
