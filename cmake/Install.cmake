# What `cmake --install` puts where, and what finds it there: CMake packages and pkg-config.
include(CMakePackageConfigHelpers)
include(PublicHeaders)

set(TARNEL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelToolBoxLib)

# For programs: the libraries and the languages' texts.
install(TARGETS TarnelToolBoxLib tarnel-platform
    EXPORT TarnelToolBoxLib
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT library NAMELINK_COMPONENT development)
foreach(language de fr)
    install(FILES resources/${language}/TarnelToolBoxLib.rc
        DESTINATION ${CMAKE_INSTALL_DATADIR}/TarnelToolBoxLib/${language} COMPONENT library)
endforeach()

# For people: the tool, its manual and what shells complete.
install(TARGETS tarnel DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
install(TARGETS tarnel-loading DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/tarnel COMPONENT tool)
install(FILES ${CMAKE_BINARY_DIR}/man/tarnel.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES completions/tarnel.bash RENAME tarnel
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
install(FILES completions/_tarnel
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES completions/tarnel.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)

# For screens: the program that shows dialogs.
install(TARGETS tarnel-presenter
    DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/tarnel COMPONENT presenter)

# For developers: headers, and what finds the libraries.
foreach(header IN LISTS TARNEL_PUBLIC_HEADERS)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION ${TARNEL_INCLUDE_DIR}/${folder} COMPONENT development)
endforeach()
install(EXPORT TarnelToolBoxLib NAMESPACE TarnelToolBoxLib::
    FILE TarnelToolBoxLibTargets.cmake DESTINATION ${TARNEL_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/TarnelToolBoxLibConfig.cmake.in
    ${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLibConfig.cmake
    INSTALL_DESTINATION ${TARNEL_CMAKE_DIR}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLibConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLibConfig.cmake
    ${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLibConfigVersion.cmake
    DESTINATION ${TARNEL_CMAKE_DIR} COMPONENT development)

# The folder may be moved: all places in it are told from where the file lies.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE TARNEL_PREFIX_FROM_HERE)
configure_file(cmake/TarnelToolBoxLib.pc.in ${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLib.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/cmake/TarnelToolBoxLib.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/man/TarnelToolBoxLib.3
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
