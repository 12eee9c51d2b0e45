include(GNUInstallDirs)

# The installed tool finds the library beside it, wherever both are put.
set_target_properties(oc_pan PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS oc_pan oc_pan_cal_shared)
install(FILES include/oc_pan_cal.h TYPE INCLUDE)
if(TARGET manual_pages)
  set(pages ${PROJECT_BINARY_DIR}/tools/manual/pages)
  install(DIRECTORY ${pages}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
  install(FILES ${pages}/oc_pan DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
