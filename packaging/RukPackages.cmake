# The Debian packages: one for each component of cmake/RukInstall.cmake.
set(RUK_MAINTAINER "ruklog maintainers <maintainers@users.noreply.example>")
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(made ${PROJECT_BINARY_DIR}/packaging)

# What Debian wants to find under /usr/share/doc.  The copyright file quotes LICENSE: its second
# paragraph is the copyright, the rest the text, indented, with dots for empty lines.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n\n(.*)\n$" license "${license}")
set(copyright_holder "${CMAKE_MATCH_1}")
string(REPLACE "\n" "\n " license_text " ${CMAKE_MATCH_2}")
string(REPLACE "\n \n" "\n .\n" license_text "${license_text}")
configure_file(${packaging}/copyright.in ${made}/copyright @ONLY)
configure_file(${packaging}/changelog.in ${made}/changelog @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/LICENSE)

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_VENDOR "The ruklog authors")
set(CPACK_PACKAGE_CONTACT "${RUK_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL ${RUK_PACKAGES})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# The summaries below are the packages' own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

# Declares one package: its first line of description, then the lines that follow.
#   ruk_package(<package> <section> <description>)
macro(ruk_package package section description)
    string(TOUPPER ${package} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SOURCE ruklog)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}")
endmacro()

ruk_package(ruklog admin "event log tool of the RUK data path
ruklog controls and displays the in-memory event log of a host's data-path
module: it shows the log's status and entries, follows the log, starts, stops
and clears it, and sets the debug levels of each module. It talks to the
data-path agent over a local socket.
.
The package also has a systemd service, not enabled by itself, that follows
the log into the journal.")
set(CPACK_DEBIAN_RUKLOG_PACKAGE_SUGGESTS ruklog-agentsim)
set(CPACK_DEBIAN_RUKLOG_PACKAGE_CONTROL_EXTRA
    ${packaging}/ruklog/postinst ${packaging}/ruklog/prerm ${packaging}/ruklog/postrm)

ruk_package(ruklog-agentsim admin "stand-in for the data-path agent that ruklog talks to
ruklog-agentsim serves an event log on the data-path agent's socket, from
memory: for trying ruklog, for developing programs that use its libraries and
for testing them, on hosts without the data-path module.")
set(CPACK_DEBIAN_RUKLOG-AGENTSIM_PACKAGE_RECOMMENDS ruklog)

ruk_package(${RUK_RUNTIME_COMPONENT} libs "utility libraries of the RUK data path
The shared library of ruklog: clients of the data-path agent's event log and
of its command service, thread wrappers, bit sets, address text, OpenFlow 1.0
diagnostics, and interface indexes with their names.")
string(TOUPPER ${RUK_RUNTIME_COMPONENT} upper)
# A library that CPack itself looks into would get scripts that run ldconfig instead of Debian's
# trigger.  So its dependencies are found by packaging/options.cmake, and the names that others
# depend on it by are these.
set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS OFF)
file(WRITE ${made}/shlibs
     "libruklog ${PROJECT_VERSION_MAJOR} ${RUK_RUNTIME_COMPONENT} (>= ${PROJECT_VERSION})\n")
file(WRITE ${made}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${made}/shlibs ${made}/triggers)
set(CPACK_PROJECT_CONFIG_FILE ${packaging}/options.cmake)
set(CPACK_RUK_LIBRARY ${PROJECT_BINARY_DIR}/libruklog.so.${PROJECT_VERSION})
set(CPACK_RUK_LIBRARY_DEPENDS CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS)

ruk_package(libruklog-dev libdevel "utility libraries of the RUK data path (development files)
The headers, the static library, the files for pkg-config and CMake, and
example programs: what programs in C and C++ need to be built with the
libraries of ruklog.")
set(CPACK_COMPONENT_LIBRUKLOG-DEV_DEPENDS ${RUK_RUNTIME_COMPONENT})

set(CPACK_RUK_DOCUMENTS ${made}/copyright ${made}/changelog)
set(CPACK_PRE_BUILD_SCRIPTS ${packaging}/complete_staging.cmake)
include(CPack)
