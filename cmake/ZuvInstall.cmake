# What `cmake --install` puts under the prefix: bin/zuvCli, the static archives of the library
# with their headers under include/zuv/<sub>/, the CMake package zuv (zuv::core and one target
# per subsystem), zuv.pc and the zuvCli(1) man page. Simulators, tests and benchmarks stay out.
include(CMakePackageConfigHelpers)

# zuv_gzip(<target> <file> <out-var>): the target makes <file>.gz in the build tree as Debian
# ships man pages and changelogs (gzip -9n: no name, no time stamp); <out-var> names it.
function(zuv_gzip target file outvar)
  get_filename_component(name ${file} NAME)
  set(out ${PROJECT_BINARY_DIR}/${name}.gz)
  add_custom_command(OUTPUT ${out} COMMAND gzip -9nc ${file} > ${out} DEPENDS ${file} VERBATIM)
  add_custom_target(${target} ALL DEPENDS ${out})
  set(${outvar} ${out} PARENT_SCOPE)
endfunction()

# Every process that links the tables builds them before main, so a consumer takes the whole
# archive: zuv::tables is that whole-archive link, and the archive itself is zuv::tables_archive.
set_target_properties(zuv_tables PROPERTIES EXPORT_NAME tables_archive)
add_library(zuv_tables_whole INTERFACE)
target_link_libraries(
  zuv_tables_whole INTERFACE
  "$<LINK_LIBRARY:WHOLE_ARCHIVE,$<BUILD_INTERFACE:zuv_tables>$<INSTALL_INTERFACE:zuv::tables_archive>>")
set_target_properties(zuv_tables_whole PROPERTIES EXPORT_NAME tables)

add_library(zuv_core INTERFACE)
list(TRANSFORM ZUV_SUBSYSTEMS PREPEND zuv_ OUTPUT_VARIABLE zuv_archives)
list(REMOVE_ITEM zuv_archives zuv_tables)
target_link_libraries(zuv_core INTERFACE ${zuv_archives} zuv_tables_whole)
set_target_properties(zuv_core PROPERTIES EXPORT_NAME core)
add_library(zuv::core ALIAS zuv_core)

set(zuv_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zuv)
install(TARGETS zuvCli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ${zuv_archives} zuv_tables zuv_tables_whole zuv_core EXPORT zuvTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/lib/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zuv
        FILES_MATCHING PATTERN "*.h")
install(EXPORT zuvTargets NAMESPACE zuv:: DESTINATION ${zuv_cmake_dir})
configure_package_config_file(cmake/zuvConfig.cmake.in zuvConfig.cmake INSTALL_DESTINATION ${zuv_cmake_dir})
write_basic_package_version_file(zuvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zuvConfig.cmake ${PROJECT_BINARY_DIR}/zuvConfigVersion.cmake
        DESTINATION ${zuv_cmake_dir})

# zuv.pc finds the prefix from its own place, so the tree can be installed under any prefix.
# The archives depend on each other in a cycle (utils, vmware, platform): one linker group.
file(RELATIVE_PATH ZUV_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
list(JOIN zuv_archives " -l" ZUV_PC_GROUP)
configure_file(cmake/zuv.pc.in zuv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zuv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

zuv_gzip(zuv_man ${PROJECT_SOURCE_DIR}/man/zuvCli.1 zuv_man_gz)
install(FILES ${zuv_man_gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
