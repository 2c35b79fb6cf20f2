# What is installed, in three components: `runtime`, `development`, and `tools`.
include(CMakePackageConfigHelpers)

# kofs and the library find what they need relative to themselves. Both trees are laid out alike, so
# that the build needs no RUNPATH of its own: CMake would end it with an empty element, for which the
# loader searches the working directory.
if(PROJECT_IS_TOP_LEVEL AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}"
   AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    set(tree ${PROJECT_BINARY_DIR}$<$<BOOL:${is_multi_config}>:/$<CONFIG>>)
    file(RELATIVE_PATH libraries_from_programs /p/${CMAKE_INSTALL_BINDIR} /p/${CMAKE_INSTALL_LIBDIR})
    set(origin $<IF:$<PLATFORM_ID:Darwin>,@loader_path,$ORIGIN>)
    set_target_properties(
        ko_filesystem
        PROPERTIES ARCHIVE_OUTPUT_DIRECTORY ${tree}/${CMAKE_INSTALL_LIBDIR}
                   LIBRARY_OUTPUT_DIRECTORY ${tree}/${CMAKE_INSTALL_LIBDIR}
                   BUILD_WITH_INSTALL_RPATH ON
                   INSTALL_RPATH_USE_LINK_PATH ON) # for Boost in a place of its own
    if(BUILD_SHARED_LIBS AND NOT is_multi_config AND CMAKE_HOST_UNIX)
        # At the top of the tree as well, where a library is built by default and looked for.
        add_custom_command(
            TARGET ko_filesystem
            POST_BUILD
            COMMAND
                ${CMAKE_COMMAND} -E create_symlink
                ${CMAKE_INSTALL_LIBDIR}/$<TARGET_LINKER_FILE_NAME:ko_filesystem>
                ${tree}/$<TARGET_LINKER_FILE_NAME:ko_filesystem>)
    endif()
    if(TARGET kofs)
        set_target_properties(
            kofs
            PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${tree}/${CMAKE_INSTALL_BINDIR}
                       BUILD_WITH_INSTALL_RPATH ON
                       INSTALL_RPATH "${origin}/${libraries_from_programs}")
    endif()
endif()

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
    # Where zsh looks: Debian keeps the other folder of /usr for the administrator.
    set(zsh_dir ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS /etc/debian_version)
        set(zsh_dir ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
    endif()
    install(TARGETS kofs RUNTIME COMPONENT tools)
    install(
        FILES ${PROJECT_BINARY_DIR}/tools/kofs.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT tools OPTIONAL)
    install(
        FILES ${PROJECT_BINARY_DIR}/tools/kofs.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME kofs
        COMPONENT tools OPTIONAL)
    install(
        FILES ${PROJECT_BINARY_DIR}/tools/_kofs
        DESTINATION ${zsh_dir}
        COMPONENT tools OPTIONAL)
endif()
