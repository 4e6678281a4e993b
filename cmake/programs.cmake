# The administrator and what is shipped beside it.
find_package(X11 REQUIRED)
find_library(MOTIF_LIBRARY Xm REQUIRED)
pkg_check_modules(ODBCINST REQUIRED IMPORTED_TARGET odbcinst)
pkg_check_modules(ODBC REQUIRED IMPORTED_TARGET odbc)
add_library(motif INTERFACE)
pkg_check_modules(XFT REQUIRED IMPORTED_TARGET xft fontconfig)
target_link_libraries(motif INTERFACE ${MOTIF_LIBRARY} PkgConfig::XFT X11::Xt X11::Xmu X11::Xpm X11::X11)

option(VARNHOLT_SYSTEM_PACKAGE "Install for a package of the system: the tree below lib/ of /usr" OFF)
set(VARNHOLT_TREE "")
if(VARNHOLT_SYSTEM_PACKAGE)
  set(VARNHOLT_TREE lib/varnholt-odbcadmin/)
endif()
# The install step alone knows where the tree is written to, and where it will stand: "tree" and "prefix" in what follows.
install(CODE [[
  get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
  set(tree "$ENV{DESTDIR}${prefix}")
  # Where cpack puts a tree is no place that anybody knows later: what finds its way from there says where it would usually be.
  if(prefix MATCHES "/_CPack_Packages/")
    set(isPacked TRUE)
    set(prefix /opt/varnholt)
  endif()
]])
if(VARNHOLT_SYSTEM_PACKAGE)
  install(CODE "set(tree \"\${tree}/lib/varnholt-odbcadmin\")\nset(prefix /usr/lib/varnholt-odbcadmin)")
endif()

# The languages beside English, each with the countries where it is spoken.
set(VARNHOLT_LANGUAGES de fr ja)
set(VARNHOLT_COUNTRIES_de _DE _AT _CH _LU _LI)
set(VARNHOLT_COUNTRIES_fr _FR _BE _CA _CH _LU)
set(VARNHOLT_COUNTRIES_ja _JP)

add_subdirectory(installer)
add_subdirectory(motifutil)
add_subdirectory(help)
add_subdirectory(admin)
add_subdirectory(catalogs)
add_subdirectory(packaging)
add_subdirectory(components)
add_subdirectory(setup)
add_subdirectory(doctor)
add_subdirectory(helpbook)
