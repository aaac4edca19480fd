# What an installation holds. Runtime: the programs, the resource bundle, manual pages, completion, and what the desktop
# and the bus need to start the two demonstration servers. Development: the archives, the headers under one prefix, a
# CMake package, pkg-config files and the documents.
include(CMakePackageConfigHelpers)

# One list of targets for each set of libraries that they stand on: who wants the core alone need not have a drawing
# library, and who draws need not have the one that injects input.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZQCore)
set(bundle_dir ${CMAKE_INSTALL_DATADIR}/ZQCore/ZQCore.bundle)
function(zq_install_libraries list)
    install(TARGETS ${ARGN} EXPORT ${list}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
    install(EXPORT ${list} NAMESPACE ZQCore:: DESTINATION ${package_dir} COMPONENT Development)
endfunction()
zq_install_libraries(ZQCoreTargets ZQCore ZQCoreTestKit)
zq_install_libraries(ZQCoreUITargets ZQCoreUI)
zq_install_libraries(ZQCoreUITestKitTargets ZQCoreUITestKit)
if(TARGET ZQCoreJavaScript)
    zq_install_libraries(ZQCoreJavaScriptTargets ZQCoreJavaScript)
endif()

configure_package_config_file(cmake/ZQCoreConfig.cmake.in ${CMAKE_BINARY_DIR}/ZQCoreConfig.cmake
    INSTALL_DESTINATION ${package_dir} PATH_VARS bundle_dir)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZQCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZQCoreConfig.cmake ${CMAKE_BINARY_DIR}/ZQCoreConfigVersion.cmake
    cmake/ZQInfoPlist.cmake DESTINATION ${package_dir} COMPONENT Development)

# Headers that only one backend needs lie in Linux/ and X11/ and stay here.
install(DIRECTORY Platform Classes TestKit DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZQCore COMPONENT Development
    FILES_MATCHING PATTERN "*.h" PATTERN "Linux" EXCLUDE PATTERN "X11" EXCLUDE)
install(DIRECTORY Assets/ DESTINATION ${bundle_dir} COMPONENT Runtime USE_SOURCE_PERMISSIONS)

# pkg-config files, found from where they lie, so that the prefix may still change.
file(RELATIVE_PATH pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
# What an archive stands on belongs on every link line; a shared library brings it itself.
get_target_property(library_type ZQCore TYPE)
if(library_type STREQUAL "STATIC_LIBRARY")
    list(JOIN ZQ_CORE_MODULES " " pc_core_modules)
    list(JOIN ZQ_UI_MODULES " " pc_ui_modules)
endif()
foreach(file zqcore zqcore-ui)
    configure_file(cmake/${file}.pc.in ${CMAKE_BINARY_DIR}/${file}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${file}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
endforeach()

if(ZQ_DEBIAN)
    set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/libzqcore-dev)
endif()
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Development)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Development
    FILES_MATCHING PATTERN "*.md" PATTERN "examples/*" PATTERN "*.png")

# What makes an application known to the desktop, and what lets the session bus start it when it is asked for something.
# Written at installation, since only that knows the prefix.
function(zq_install_for_program program template folder identifier name)
    get_filename_component(ending ${template} NAME_WLE)
    get_filename_component(ending ${ending} LAST_EXT)
    install(CODE "
        set(identifier \"${identifier}\")
        set(name \"${name}\")
        set(program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${program}\")
        configure_file(\"${CMAKE_SOURCE_DIR}/cmake/${template}\"
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${folder}/${identifier}${ending}\" @ONLY)"
        COMPONENT Runtime)
endfunction()
function(zq_install_desktop_entry identifier name program)
    zq_install_for_program(${program} application.desktop.in applications ${identifier} "${name}")
endfunction()
function(zq_install_startable identifier name program)
    zq_install_desktop_entry(${identifier} "${name}" ${program})
    zq_install_for_program(${program} application.service.in dbus-1/services ${identifier} "${name}")
endfunction()
# What a program prints, as a file: its manual page, its completion. They can't grow stale that way.
function(zq_install_output file)
    list(TRANSFORM ARGN REPLACE "(.+)" "\"\\1\"" OUTPUT_VARIABLE command)
    list(JOIN command " " command)
    install(CODE "
        set(file \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${file}\")
        message(STATUS \"Installing: \${file}\")
        get_filename_component(folder \"\${file}\" DIRECTORY)
        file(MAKE_DIRECTORY \"\${folder}\")
        execute_process(COMMAND ${command} OUTPUT_FILE \"\${file}\" COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT Runtime)
endfunction()
if(ZQ_APPS)
    zq_install_startable(com.tessaradev.Orbel Orbel orbel)
    zq_install_startable(com.tessaradev.OrbelHelper "Orbel Helper" orbel-helper)
    zq_install_desktop_entry(com.tessaradev.Gallery Gallery gallery)
    foreach(program zq orbel orbel-helper gallery)
        zq_install_output(man/man1/${program}.1.gz
            ${CMAKE_SOURCE_DIR}/scripts/manual-page $<TARGET_FILE:${program}> ${PROJECT_VERSION})
    endforeach()
    zq_install_output(bash-completion/completions/zq $<TARGET_FILE:zq> completion bash)
endif()

if(ZQ_DEBIAN)
    include(cmake/Debian.cmake)
endif()
