# Install rules: the public headers under include/veltara/, the libraries, the command, the CMake
# package and the pkg-config file.
#
#   lib/libveltara.so         the C interface, shared (Veltara::veltara_c)
#   lib/libveltara.a          the C interface, static: the vt_ functions only (Veltara::veltara_c_static)
#   lib/libveltara_engine.a   the C++ engine (Veltara::veltara), which the static C library needs
#   include/veltara/veltara.h, veltara_version.h     the C header
#   include/veltara/<folder>/<file>.h                the public C++ headers
# Consumers put only <prefix>/include on their include path and write <veltara/...>.
include(CMakePackageConfigHelpers)

set(VT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Veltara)

target_include_directories(veltara PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

# The public C++ headers only: the records, the interfaces and the public classes. They include
# each other by relative paths, so their folders keep their places under include/veltara/.
set(VT_PUBLIC_HEADERS
  records/PublicTypes.h records/type_library.h
  support/error.h support/clock.h support/cMemoryDCEx.h support/rgba_array.h
  electron/cElectron.h electron/state.h render/cOrbital.h
  engine/cOrbitalCol.h engine/cVeltara.h
  about/about_box.h)
foreach(header ${VT_PUBLIC_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/veltara/${folder})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/host/veltara.h
              ${PROJECT_BINARY_DIR}/include/veltara/veltara_version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/veltara)

install(TARGETS veltara veltara_c veltara_c_static
  EXPORT VeltaraTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
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
