# What `cmake --install` lays down: the shared module and the static library, the exported headers,
# a CMake package, a pkg-config file, and what debuggers show the types by. The tree may be moved
# afterwards.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VELDT20)

install(TARGETS veldt20_shared veldt20_static EXPORT VELDT20Targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/veldt20 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)
# Beside the module gdb loads the printers with it. A package for a prefix that gdb trusts puts them
# below share/gdb/auto-load, in a folder named as the module's is.
set(module_dir ${CMAKE_INSTALL_LIBDIR})
if(WIN32)
    set(module_dir ${CMAKE_INSTALL_BINDIR})
endif()
set(VELDT20_GDB_DIR ${module_dir} CACHE STRING "Where gdb's printers are installed")
install(FILES tools/gdb/printers.py DESTINATION ${VELDT20_GDB_DIR}
    RENAME $<TARGET_FILE_NAME:veldt20_shared>-gdb.py)
install(FILES tools/natvis/veldt20.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/veldt20)
install(EXPORT VELDT20Targets NAMESPACE VELDT20:: DESTINATION ${package_dir})

configure_package_config_file(cmake/VELDT20Config.cmake.in VELDT20Config.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(VELDT20ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VELDT20Config.cmake ${PROJECT_BINARY_DIR}/VELDT20ConfigVersion.cmake
    DESTINATION ${package_dir})

# The file finds the tree from where it stands itself.
file(RELATIVE_PATH pkgconfig_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
set(pkgconfig_private -pthread)
if(WIN32)
    list(APPEND pkgconfig_private -loleaut32 -luser32)
endif()
list(JOIN pkgconfig_private " " pkgconfig_private)
configure_file(cmake/veldt20.pc.in veldt20.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/veldt20.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
