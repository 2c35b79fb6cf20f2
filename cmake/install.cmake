# What is installed, in three components: `runtime`, `development`, and `tools`.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ko_filesystem)
configure_package_config_file(cmake/config.cmake.in ko_filesystem-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(ko_filesystem-config-version.cmake COMPATIBILITY SameMajorVersion)

# The pkg-config file derives its prefix from its own location.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /p/${pkgconfig_dir} /p)
get_target_property(library_kind ko_filesystem TYPE)
if(library_kind STREQUAL "STATIC_LIBRARY")
    set(pkgconfig_needed "-lboost_filesystem -lboost_thread")
    if(NOT Iconv_IS_BUILT_IN)
        string(APPEND pkgconfig_needed " -liconv")
    endif()
endif()
configure_file(cmake/ko_filesystem.pc.in ko_filesystem.pc @ONLY)

install(
    TARGETS ko_filesystem
    EXPORT ko_filesystem-targets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS COMPONENT development)
install(
    EXPORT ko_filesystem-targets
    NAMESPACE ko::
    DESTINATION ${package_dir}
    COMPONENT development)
install(
    FILES ${PROJECT_BINARY_DIR}/ko_filesystem-config.cmake
          ${PROJECT_BINARY_DIR}/ko_filesystem-config-version.cmake
    DESTINATION ${package_dir}
    COMPONENT development)
install(
    FILES ${PROJECT_BINARY_DIR}/ko_filesystem.pc
    DESTINATION ${pkgconfig_dir}
    COMPONENT development)
install(
    FILES LICENSE
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT runtime)
if(TARGET kofs)
    install(TARGETS kofs RUNTIME COMPONENT tools)
    install(
        FILES tools/kofs/kofs.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT tools OPTIONAL)
    install(
        FILES tools/kofs/completion/kofs.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME kofs
        COMPONENT tools OPTIONAL)
    install(
        FILES tools/kofs/completion/_kofs
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
        COMPONENT tools OPTIONAL)
endif()
