# What "cmake --install" puts where.  Each component is one Debian package of that name.
include(CMakePackageConfigHelpers)

set(RUK_RUNTIME_COMPONENT libruklog${PROJECT_VERSION_MAJOR})
set(RUK_PACKAGES ruklog ruklog-agentsim ${RUK_RUNTIME_COMPONENT} libruklog-dev)

set_target_properties(ruklog_shared PROPERTIES EXPORT_NAME ruklog)
install(TARGETS ruklog RUNTIME COMPONENT ruklog)
install(TARGETS ruklog-agentsim RUNTIME COMPONENT ruklog-agentsim)
install(TARGETS ruklog_shared ruklog_static EXPORT ruklog
        LIBRARY COMPONENT ${RUK_RUNTIME_COMPONENT} NAMELINK_COMPONENT libruklog-dev
        ARCHIVE COMPONENT libruklog-dev
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ruk COMPONENT libruklog-dev
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The archive's objects also hold what one version of one compiler needs to optimise across files.
# No other can read it.
install(CODE "
    set(archive \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libruklog.a\")
    execute_process(COMMAND ${CMAKE_STRIP} --strip-debug --enable-deterministic-archives
                            --remove-section=.gnu.lto_* --remove-section=.gnu.debuglto_*
                            --remove-section=.comment
                            --strip-symbol=__gnu_lto_slim \${archive}
                    COMMAND_ERROR_IS_FATAL ANY)
" COMPONENT libruklog-dev)

# Installs a file that names the prefix, which is known only when installing.
#   ruk_install_with_prefix(<component> <file>.in <destination>)
function(ruk_install_with_prefix component template destination)
    cmake_path(GET template STEM LAST_ONLY name)
    set(file ${PROJECT_BINARY_DIR}/${name})
    set(prefix @CMAKE_INSTALL_PREFIX@)
    configure_file(${PROJECT_SOURCE_DIR}/${template} ${file}.in @ONLY)
    install(CODE "configure_file(${file}.in ${file} @ONLY)" COMPONENT ${component})
    install(FILES ${file} COMPONENT ${component} DESTINATION ${destination})
endfunction()
ruk_install_with_prefix(libruklog-dev cmake/ruklog.pc.in ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# CMake.
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/ruklog)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ruklog-config.cmake.in
                              ${PROJECT_BINARY_DIR}/ruklog-config.cmake
                              INSTALL_DESTINATION ${config_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ruklog-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ruklog-config.cmake
              ${PROJECT_BINARY_DIR}/ruklog-config-version.cmake
        COMPONENT libruklog-dev DESTINATION ${config_folder})
install(EXPORT ruklog NAMESPACE ruklog:: FILE ruklog-targets.cmake
        COMPONENT libruklog-dev DESTINATION ${config_folder})

# Examples, the manual, completions for the shells, the service that keeps the log in the journal.
set(examples ${PROJECT_SOURCE_DIR}/examples)
install(FILES ${examples}/CMakeLists.txt ${examples}/Makefile ${examples}/bit_runs.cpp
              ${examples}/interface_names.c ${examples}/last_entries.c
        COMPONENT libruklog-dev DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libruklog-dev/examples)

#   ruk_install_page(<component> <page>)
function(ruk_install_page component page)
    string(REGEX REPLACE ".*\\." "" section ${page})
    install(FILES ${PROJECT_BINARY_DIR}/man/${page} COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endfunction()
ruk_install_page(ruklog ruklog.1)
ruk_install_page(ruklog-agentsim ruklog-agentsim.8)
ruk_install_page(libruklog-dev libruklog.3)

foreach(program ruklog ruklog-agentsim)
    set(completions ${PROJECT_SOURCE_DIR}/completions)
    install(FILES ${completions}/${program}.bash COMPONENT ${program}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
    install(FILES ${completions}/_${program} COMPONENT ${program}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endforeach()

ruk_install_with_prefix(ruklog packaging/ruklog-tail.service.in lib/systemd/system)
