# The Debian package of db: the tool, its man page and its bash completion
# (the install component "db"; the recorder stand-ins stay out). Built with
#
#   cpack --config BUILD/CPackConfig.cmake
#
# dpkg-shlibdeps (package dpkg-dev) fills in the dependencies on the runtime
# libraries from what the binary links.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME db)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Recorder maintenance tools")
set(CPACK_PACKAGE_CONTACT "Recorder maintenance tools <recorder-tools@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "maintenance tool of the video recorder's stream store")
set(CPACK_PACKAGE_DESCRIPTION
    "db lists the stream manager's events and stream files as fixed-width text tables, "
    "verifies split recordings, checks stream files for split points and deletes events. "
    "While the StreamMgr daemon runs, every query goes to it over IPC.")
list(JOIN CPACK_PACKAGE_DESCRIPTION "" CPACK_PACKAGE_DESCRIPTION)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Only the tool's own component, whatever else the build can install.
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};${PROJECT_NAME};db;/")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# A cross build packages for its target, not for the machine that builds it.
if(CMAKE_CROSSCOMPILING AND CMAKE_LIBRARY_ARCHITECTURE)
  execute_process(
    COMMAND dpkg-architecture -t ${CMAKE_LIBRARY_ARCHITECTURE} -q DEB_HOST_ARCH
    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET)
endif()

include(CPack)
