# Install layout of db: the tool in bin/, its man page in share/man/man1/ and
# its bash completion in share/bash-completion/completions/, where
# bash-completion looks for the completion of a command named db.
#
# The recorder's stand-ins (StreamMgr, ConfigMP, sql, StreamMgrCli, filePes)
# and the recorder sandbox are for workstations without a recorder: they go
# to libexec/db/ under the component "simulators", with a recorder-sandbox
# command in bin/ that runs the installed db among them. They install with
# DB_INSTALL_SIMULATORS=ON, or on request with
# `cmake --install BUILD --component simulators`.
include(GNUInstallDirs)

option(DB_INSTALL_SIMULATORS "Install the recorder stand-ins and the recorder sandbox too" OFF)

# Installing and packaging take what the build made and never build
# themselves: cpack (which the tests run while other tests use the build)
# then never touches the build tree.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(TARGETS db RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT db)

# Debian installs man pages compressed; man reads them either way.
set(DB_MAN_PAGE_GZ ${CMAKE_BINARY_DIR}/docs/db.1.gz)
add_custom_command(
  OUTPUT ${DB_MAN_PAGE_GZ}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/docs
  COMMAND gzip -9 -n -c ${CMAKE_SOURCE_DIR}/docs/db.1 > ${DB_MAN_PAGE_GZ}
  DEPENDS ${CMAKE_SOURCE_DIR}/docs/db.1
  COMMENT "Compressing the man page"
  VERBATIM)
add_custom_target(db_man_page ALL DEPENDS ${DB_MAN_PAGE_GZ})
install(FILES ${DB_MAN_PAGE_GZ} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT db)

install(FILES ${CMAKE_SOURCE_DIR}/tools/db-completion.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME db
        COMPONENT db)

if(DB_INSTALL_SIMULATORS)
  set(DB_SIMULATORS_EXCLUDED "")
else()
  set(DB_SIMULATORS_EXCLUDED EXCLUDE_FROM_ALL)
endif()
set(DB_STAND_INS_DIR ${CMAKE_INSTALL_LIBEXECDIR}/db)
install(TARGETS StreamMgr ConfigMP StreamMgrCli filePes
        RUNTIME DESTINATION ${DB_STAND_INS_DIR}
        COMPONENT simulators ${DB_SIMULATORS_EXCLUDED})
install(PROGRAMS ${CMAKE_SOURCE_DIR}/sim/sql ${CMAKE_SOURCE_DIR}/tools/recorder-sandbox
        DESTINATION ${DB_STAND_INS_DIR}
        COMPONENT simulators ${DB_SIMULATORS_EXCLUDED})

# The sandbox looks for the stand-ins in RECORDER_BIN_DIR and puts them first
# on PATH; the command in bin/ points it at the installed ones and puts the
# installed db right behind them. Paths are relative to the command itself, so
# the tree can be moved (DESTDIR, packages).
file(RELATIVE_PATH DB_BIN_TO_STAND_INS
     ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${DB_STAND_INS_DIR})
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/install/recorder-sandbox CONTENT [[#!/bin/sh
# Runs the recorder sandbox with the installed recorder stand-ins and db.
here=$(dirname "$(readlink -f "$0")")
stand_ins=$here/@DB_BIN_TO_STAND_INS@
PATH=$here:$PATH RECORDER_BIN_DIR=$stand_ins exec "$stand_ins/recorder-sandbox" "$@"
]] @ONLY)
install(PROGRAMS ${CMAKE_BINARY_DIR}/install/recorder-sandbox
        DESTINATION ${CMAKE_INSTALL_BINDIR}
        COMPONENT simulators ${DB_SIMULATORS_EXCLUDED})
