# `cpack` makes Debian packages: the library, the tool, the program for dialogs (so that a gateway
# without a screen has no toolkit), and what developers need.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarneltoolboxlib)
set(CPACK_PACKAGE_VENDOR TarnelToolBoxLib)
set(CPACK_PACKAGE_CONTACT "TarnelToolBoxLib developers <tarneltoolboxlib@localhost>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library tool presenter development)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# tarnel_package(component name): the binary package of what `component` installs. The text is a
# line for lists and paragraphs below it.
function(tarnel_package component name section text)
    string(TOUPPER ${component} COMPONENT)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_COMPONENT_${COMPONENT}_DESCRIPTION ${text} PARENT_SCOPE)
endfunction()

set(library libtarneltoolboxlib${PROJECT_VERSION_MAJOR})
set(same_library "${library} (= ${PROJECT_VERSION})")
tarnel_package(library ${library} libs "measuring machines, messages, settings and desktop services
Talks to measuring machines over serial lines and turns their records into
points in millimetres, exchanges messages over TCP, keeps typed settings,
and serves the desktop.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS tarnel-presenter)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)

tarnel_package(tool tarnel utils "watch measuring machines, and simulate them
The services of TarnelToolBoxLib at the command line.")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS ${same_library})
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS tarnel-presenter)

tarnel_package(presenter tarnel-presenter x11 "shows the dialogs of TarnelToolBoxLib
The library starts it when the first dialog opens.")

tarnel_package(development libtarneltoolboxlib-dev libdevel "headers of TarnelToolBoxLib
And what CMake and pkg-config need to find the library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${same_library})

include(CPack)
