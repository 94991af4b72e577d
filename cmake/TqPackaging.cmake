# `cpack -G DEB` in a build tree: one Debian package of the library, its headers and CMake
# package, the tools and the tqdiagram program with its desktop entry, installed under /usr.
# The package's dependencies are read from the installed binaries by dpkg-shlibdeps.
set(CPACK_PACKAGE_NAME tarqtool)
set(CPACK_PACKAGE_VENDOR "tarqtool")
set(CPACK_PACKAGE_CONTACT "tarqtool developers <tarqtool@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Timing diagrams for digital hardware: toolkit library, command server tools and viewer")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# tclsh runs the tarqclient package; Qt's xcb platform plugin is what shows the windows.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "tcl8.6, qt6-qpa-plugins")
include(CPack)
