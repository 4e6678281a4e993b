# What needs the administrator and the installer library, most of it a display too: the tests bring an X server of their own.
find_library(XTST_LIBRARY Xtst REQUIRED)
set(display_support support/program.cpp support/x_display.cpp support/odbc_files.cpp support/scoped_environment.cpp
                    support/temporary_folder.cpp)

# A setup library that writes down how it is called, and one for user data sources only.
foreach(name recording_setup user_recording_setup)
  add_library(${name} MODULE fixtures/recording_setup.cpp)
  set_target_properties(${name} PROPERTIES PREFIX "")
  target_link_libraries(${name} PRIVATE project_flags PkgConfig::ODBCINST)
endforeach()
target_compile_definitions(recording_setup PRIVATE VH_TEST_FILE_SETUP)

add_subdirectory(catalogs)
add_subdirectory(installer)
add_subdirectory(doctor)
add_subdirectory(help)

# What `cmake --install` installs.
set(installed_tree odbcadmin odbcadmin-doctor describe-component odbcadmin-register libsqliteodbc_stand_in libsqlite3odbc_stand_in
                   libmdbodbc_stand_in vhsetup23 vhsqlite23 vhpostgresql23 vhfreetds23 odbccurs_identification
                   libodbc_identification libvhicu23_identification catalogs helpbook)

# The real windows in the test's own process.
add_executable(widget_tests ${display_support} support/child_process.cpp support/window_test.cpp)
target_link_libraries(widget_tests PRIVATE project_flags admin ${XTST_LIBRARY} GTest::gtest_main)
target_compile_definitions(widget_tests PRIVATE
  VH_TEST_INSTALL_DIR="${CMAKE_BINARY_DIR}"
  VH_TEST_SETUP="$<TARGET_FILE:recording_setup>"
  VH_TEST_USER_SETUP="$<TARGET_FILE:user_recording_setup>"
  VH_TEST_NO_SETUP="$<TARGET_FILE:bos_test_library>")
add_dependencies(widget_tests recording_setup user_recording_setup bos_test_library ${installed_tree})
add_subdirectory(admin)
add_subdirectory(motifutil)
add_test(NAME widget_tests COMMAND widget_tests)
add_test(NAME dense_widget_tests COMMAND widget_tests --gtest_filter=*LanguageTest*)
set_tests_properties(widget_tests dense_widget_tests PROPERTIES TIMEOUT 300)
set_property(TEST dense_widget_tests PROPERTY ENVIRONMENT VH_TEST_DENSE_SCREEN=1)
add_subdirectory(program)
