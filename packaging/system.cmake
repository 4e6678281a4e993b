# The places where a system looks: commands, manual pages, desktop entry and icons, completion, documents.
find_program(GZIP gzip REQUIRED)
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(output ${CMAKE_CURRENT_BINARY_DIR}/system)
set(products)

# Makes `file` of `source` with a command that writes to its standard output.
function(add_product file source)
  add_custom_command(OUTPUT ${output}/${file} COMMAND ${ARGN} > ${output}/${file} DEPENDS ${source} VERBATIM)
  set(products ${products} ${output}/${file} PARENT_SCOPE)
endfunction()
file(MAKE_DIRECTORY ${output})

foreach(page ${manual_pages})
  string(REGEX MATCH "[0-9]$" section ${page})
  foreach(language . ${VARNHOLT_LANGUAGES})
    set(source ${CMAKE_CURRENT_SOURCE_DIR}/${language}/${page})
    file(MAKE_DIRECTORY ${output}/${language})
    add_product(${language}/${page}.gz ${source} ${GZIP} -9nc ${source})
    install(FILES ${output}/${language}/${page}.gz DESTINATION share/man/${language}/man${section})
  endforeach()
endforeach()

set(icon ${CMAKE_CURRENT_SOURCE_DIR}/odbcadmin.svg)
foreach(size 16 22 24 32 48 64 128 256)
  add_product(${size}.png ${icon} ${RSVG_CONVERT} -w ${size} -h ${size} ${icon})
  install(FILES ${output}/${size}.png DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME odbcadmin.png)
endforeach()
install(FILES ${icon} DESTINATION share/icons/hicolor/scalable/apps)

# Of the last change, in the two forms that are wanted.
execute_process(COMMAND git -C ${CMAKE_SOURCE_DIR} log -1 --format=%aD OUTPUT_VARIABLE change_time
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND git -C ${CMAKE_SOURCE_DIR} log -1 --format=%as OUTPUT_VARIABLE change_date
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(changes ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
add_product(CHANGELOG.md.gz ${changes} ${GZIP} -9nc ${changes})
configure_file(system/changelog.in ${output}/changelog @ONLY)
add_product(changelog.gz ${output}/changelog ${GZIP} -9nc ${output}/changelog)
install(FILES ${output}/CHANGELOG.md.gz ${output}/changelog.gz system/copyright
  DESTINATION share/doc/varnholt-odbcadmin)

foreach(program ${programs})
  file(CREATE_LINK ../lib/varnholt-odbcadmin/bin/${program} ${output}/${program} SYMBOLIC)
  install(FILES ${output}/${program} DESTINATION bin)
endforeach()
foreach(command odbcadmin-doctor odbcadmin-register)
  install(FILES system/completion.bash DESTINATION share/bash-completion/completions RENAME ${command})
endforeach()

set(program odbcadmin)
set(icon odbcadmin)
configure_file(odbcadmin.desktop.in ${output}/odbcadmin.desktop @ONLY)
install(FILES ${output}/odbcadmin.desktop DESTINATION share/applications)
configure_file(system/org.varnholt.odbcadmin.metainfo.xml.in ${output}/org.varnholt.odbcadmin.metainfo.xml @ONLY)
install(FILES ${output}/org.varnholt.odbcadmin.metainfo.xml DESTINATION share/metainfo)
install(FILES system/varnholt-odbcadmin.lintian-overrides DESTINATION share/lintian/overrides
  RENAME varnholt-odbcadmin)

add_custom_target(system_products ALL DEPENDS ${products})
