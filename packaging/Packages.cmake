# Makes Debian packages with `cpack --config build/release/CPackConfig.cmake -B build/packages`, and the archive of the
# sources with CPackSourceConfig.cmake. From a build for the other Qt, the plug-in's package alone joins them:
# -D CPACK_COMPONENTS_ALL=plugin.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${contact})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)

configure_file(changelog.in changelog @ONLY)

# debian_package(COMPONENT PACKAGE SECTION DESCRIPTION): the description's first line is the synopsis.
macro(debian_package component package section description)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}")
  install(FILES copyright DESTINATION ${doc}/${package} COMPONENT ${component})
  install_zipped(${CMAKE_CURRENT_BINARY_DIR}/changelog ${doc}/${package} ${component})
endmacro()

debian_package(plugin tarnwell-qt${TARNWELL_QT} net "Map service plug-in for a mind-mapping application with Qt ${TARNWELL_QT}
The plug-in gives the application access to the maps that a user keeps on the
service.")
debian_package(tarnwell tarnwell net "Console host of the Tarnwell map service plug-in
Lists, downloads, uploads, renames and deletes the maps that a user keeps on
the service, from a terminal.")
debian_package(localservice tarnwell-localservice net "Map service on one machine, for development and tests
Stores maps and accounts in one SQLite file and answers hosts of the Tarnwell
plug-in as the service in the cloud does. Runs by hand or as a user unit of
systemd, on the loopback interface.")
debian_package(dev tarnwell-dev libdevel "Headers for hosts of the Tarnwell plug-in
A host compiles against these headers, with CMake or pkg-config. The package
tarnwell-localservice has a service to try the host with.")
debian_package(doc tarnwell-doc doc "Documentation of the Tarnwell plug-in and its tools
How a host uses the plug-in, what travels on the wire, how the code is built,
and how to change it.")
set(CPACK_DEBIAN_TARNWELL_PACKAGE_DEPENDS "tarnwell-qt${TARNWELL_QT} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "tarnwell-qt5 (= ${PROJECT_VERSION}) | tarnwell-qt6 (= ${PROJECT_VERSION}), \
qtbase5-dev (>= ${TARNWELL_QT5_LEAST}) | qt6-base-dev (>= ${TARNWELL_QT6_LEAST})")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "tarnwell-doc, tarnwell-localservice")
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)

set(CPACK_SOURCE_GENERATOR TXZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME tarnwell-${PROJECT_VERSION})
# Anchored at the tree, which itself may be in a folder named build.
string(REGEX REPLACE "([][+.*?()^$|\\])" "\\\\\\1" tree ${CMAKE_SOURCE_DIR})
set(CPACK_SOURCE_IGNORE_FILES "^${tree}/build/" "/\\\\.git$" "/\\\\.git/" "^${tree}/\\\\.clangd/" "^${tree}/\\\\.cache/")
include(CPack)
