# Install rules: headers, both libraries, the command, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

set(VT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Veltara)

# The engine's headers keep their folders under include/veltara, where its includes find them.
target_include_directories(veltara PUBLIC
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/veltara>)
# Its public headers use C++20, which consumers of the installed library must compile with too.
target_compile_features(veltara PUBLIC cxx_std_20)
foreach(dir support electron render engine about)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${dir}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/veltara
    FILES_MATCHING PATTERN "*.h")
endforeach()

install(TARGETS veltara veltara_flags veltara_c
  EXPORT VeltaraTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS veltara_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(EXPORT VeltaraTargets NAMESPACE Veltara:: DESTINATION ${VT_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VeltaraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VeltaraConfig.cmake INSTALL_DESTINATION ${VT_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeltaraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeltaraConfig.cmake
              ${PROJECT_BINARY_DIR}/VeltaraConfigVersion.cmake
  DESTINATION ${VT_CMAKE_DIR})

configure_file(${CMAKE_CURRENT_LIST_DIR}/veltara.pc.in ${PROJECT_BINARY_DIR}/veltara.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/veltara.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
