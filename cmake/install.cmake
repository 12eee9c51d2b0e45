# What is installed, in three components: the library for programs that run, what a programmer
# needs besides, and the tool. No installed file names the folder it lies in, so that the
# tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS oc_pan_cal oc_pan_cal_shared EXPORT oc_pan_cal
  RUNTIME COMPONENT library
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/oc_pan_cal.h TYPE INCLUDE COMPONENT development)

# For find_package(). The library needs nothing of its user, so the list of its targets is the
# whole package.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/oc_pan_cal)
install(EXPORT oc_pan_cal NAMESPACE oc_pan_cal:: DESTINATION ${package_folder}
        FILE oc_pan_calConfig.cmake COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/oc_pan_calConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/oc_pan_calConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

if(UNIX)
  set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH include_from_pkgconfig
       /${pkgconfig_folder} /${CMAKE_INSTALL_INCLUDEDIR})
  configure_file(cmake/oc_pan_cal.pc.in ${PROJECT_BINARY_DIR}/oc_pan_cal.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/oc_pan_cal.pc
          DESTINATION ${pkgconfig_folder} COMPONENT development)
endif()

# The installed tool finds the library beside it, wherever both are put. Under /usr the loader
# does, and Debian wants nothing else there.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  file(RELATIVE_PATH library_from_tool /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(oc_pan PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tool}")
endif()
install(TARGETS oc_pan RUNTIME COMPONENT tool)
if(TARGET manual_pages)
  set(manual_folder ${PROJECT_BINARY_DIR}/tools/manual/pages)
  install(DIRECTORY ${manual_folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
          COMPONENT tool FILES_MATCHING PATTERN "*.1.gz")
  install(FILES ${manual_folder}/oc_pan COMPONENT tool
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
