# `cmake --install`: the library, its headers, the CMake package, the pkg-config file and the tool.
include(CMakePackageConfigHelpers)

install(TARGETS HalvexRTKBasics EXPORT HalvexRTKBasicsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILE_SET generated DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(HALVEX_BUILD_TOOL)
  install(TARGETS halvex RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/HalvexRTKBasics)
install(EXPORT HalvexRTKBasicsTargets NAMESPACE HalvexRTKBasics:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/HalvexRTKBasicsConfig.cmake.in
    ${PROJECT_BINARY_DIR}/HalvexRTKBasicsConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/HalvexRTKBasicsConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/HalvexRTKBasicsConfig.cmake
              ${PROJECT_BINARY_DIR}/HalvexRTKBasicsConfigVersion.cmake
    DESTINATION ${package_dir})

configure_file(${PROJECT_SOURCE_DIR}/cmake/HalvexRTKBasics.pc.in ${PROJECT_BINARY_DIR}/HalvexRTKBasics.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/HalvexRTKBasics.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
