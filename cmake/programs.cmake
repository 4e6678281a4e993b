# The administrator and what is shipped beside it.
find_package(X11 REQUIRED)
find_library(MOTIF_LIBRARY Xm REQUIRED)
pkg_check_modules(ODBCINST REQUIRED IMPORTED_TARGET odbcinst)
add_library(motif INTERFACE)
target_link_libraries(motif INTERFACE ${MOTIF_LIBRARY} X11::Xt X11::Xmu X11::Xpm X11::X11)

add_subdirectory(installer)
add_subdirectory(motifutil)
add_subdirectory(admin)
add_subdirectory(catalogs)
add_subdirectory(packaging)
