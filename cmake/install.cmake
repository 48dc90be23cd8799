# Installation: library, headers, package config and pkg-config file.
install(TARGETS qdcli EXPORT qdcliTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qdcli DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
