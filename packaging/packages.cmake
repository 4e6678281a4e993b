# Packages: cpack -G TGZ of a tree that stands by itself; cpack -G DEB and -G RPM of one that was configured with
# VARNHOLT_SYSTEM_PACKAGE. ./package makes all of them.
set(CPACK_PACKAGE_NAME varnholt-odbcadmin)
set(CPACK_PACKAGE_VERSION ${package_version})
set(CPACK_PACKAGE_VENDOR "Varnholt")
set(CPACK_PACKAGE_CONTACT "${package_contact}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "list, add, configure, test and remove ODBC data sources")
set(CPACK_PACKAGE_DESCRIPTION "Data sources are names behind which the settings of a database connection
stand. This program lists those of your account, adds, configures, tests
and removes them, shows the installed drivers and the versions of components,
switches the tracing of calls, and has a help book.
.
It comes with a setup dialog for any driver, with thin drivers over those of
SQLite, PostgreSQL and FreeTDS, and with a command that says why a data source
or a driver does not work.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/packages)
set(CPACK_VERBATIM_VARIABLES ON)

if(VARNHOLT_SYSTEM_PACKAGE)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(system ${CMAKE_CURRENT_SOURCE_DIR}/system)

  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION database)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "procps, fonts-dejavu-core, unixodbc-common")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libsqliteodbc, odbc-postgresql, tdsodbc, unixodbc, chromium | firefox-esr")
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "odbc-mariadb, odbc-mdbtools, fonts-noto-cjk")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${system}/postinst;${system}/prerm")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
  set(CPACK_POST_BUILD_SCRIPTS ${system}/debug_package.cmake)

  set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
  set(CPACK_RPM_PACKAGE_LICENSE "Proprietary")
  set(CPACK_RPM_PACKAGE_GROUP "Applications/Databases")
  set(CPACK_RPM_POST_INSTALL_SCRIPT_FILE ${system}/post)
  set(CPACK_RPM_PRE_UNINSTALL_SCRIPT_FILE ${system}/preun)
  # Those that other packages own.
  set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr /usr/bin /usr/lib /usr/share /usr/share/applications /usr/share/bash-completion
    /usr/share/bash-completion/completions /usr/share/doc /usr/share/icons /usr/share/icons/hicolor /usr/share/lintian
    /usr/share/lintian/overrides /usr/share/man /usr/share/man/man1 /usr/share/man/man5 /usr/share/metainfo)
  set(CPACK_PACKAGE_RELOCATABLE OFF)
  # Libraries of the tree are not for others, and the drivers below the thin ones are a matter of choice.
  set(CPACK_RPM_PACKAGE_AUTOPROV OFF)
  set(CPACK_RPM_SPEC_MORE_DEFINE "%global __requires_exclude ^(libsqlite3odbc|psqlodbcw|libtdsodbc)[.]so")
  # A lone dot is Debian's empty line.
  string(REPLACE "\n.\n" "\n\n" CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
  set(CPACK_RPM_PACKAGE_SUMMARY "List, add, configure, test and remove ODBC data sources")
  foreach(language ${VARNHOLT_LANGUAGES})
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
      /usr/share/man/${language} /usr/share/man/${language}/man1 /usr/share/man/${language}/man5)
  endforeach()
  foreach(size 16x16 22x22 24x24 32x32 48x48 64x64 128x128 256x256 scalable)
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
      /usr/share/icons/hicolor/${size} /usr/share/icons/hicolor/${size}/apps)
  endforeach()
else()
  set(CPACK_STRIP_FILES ON)
endif()
include(CPack)
