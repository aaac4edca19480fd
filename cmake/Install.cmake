# What an installation holds: the archives, the headers under one prefix, the resource bundle, a CMake package, a
# pkg-config file, the programs, and what the desktop and the bus need to start the two demonstration servers.
include(CMakePackageConfigHelpers)

install(TARGETS ZQCore ZQCoreTestKit EXPORT ZQCoreTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# A list of its own: who wants the core alone need not have a drawing library.
install(TARGETS ZQCoreUI ZQCoreUITestKit EXPORT ZQCoreUITargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

if(TARGET ZQCoreJavaScript)
    install(TARGETS ZQCoreJavaScript EXPORT ZQCoreJavaScriptTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

# Headers that only one backend needs lie in Linux/ and X11/ folders and stay here.
install(DIRECTORY Platform Classes TestKit DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZQCore
    FILES_MATCHING PATTERN "*.h" PATTERN "Linux" EXCLUDE PATTERN "X11" EXCLUDE)
install(DIRECTORY Assets/ DESTINATION ${CMAKE_INSTALL_DATADIR}/ZQCore/ZQCore.bundle USE_SOURCE_PERMISSIONS)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZQCore)
install(EXPORT ZQCoreTargets NAMESPACE ZQCore:: DESTINATION ${package_dir})
install(EXPORT ZQCoreUITargets NAMESPACE ZQCore:: DESTINATION ${package_dir})
if(TARGET ZQCoreJavaScript)
    install(EXPORT ZQCoreJavaScriptTargets NAMESPACE ZQCore:: DESTINATION ${package_dir})
endif()
configure_package_config_file(cmake/ZQCoreConfig.cmake.in ${CMAKE_BINARY_DIR}/ZQCoreConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZQCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZQCoreConfig.cmake ${CMAKE_BINARY_DIR}/ZQCoreConfigVersion.cmake
    cmake/ZQInfoPlist.cmake DESTINATION ${package_dir})

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
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/${folder}/${identifier}${ending}\" @ONLY)")
endfunction()
function(zq_install_desktop_entry identifier name program)
    zq_install_for_program(${program} application.desktop.in applications ${identifier} "${name}")
endfunction()
function(zq_install_startable identifier name program)
    zq_install_desktop_entry(${identifier} "${name}" ${program})
    zq_install_for_program(${program} application.service.in dbus-1/services ${identifier} "${name}")
endfunction()
if(ZQ_APPS)
    zq_install_startable(com.tessaradev.Orbel Orbel orbel)
    zq_install_startable(com.tessaradev.OrbelHelper "Orbel Helper" orbel-helper)
    zq_install_desktop_entry(com.tessaradev.Gallery Gallery gallery)
endif()

# Found from where it lies, so that the prefix may still change.
file(RELATIVE_PATH pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/zqcore.pc.in ${CMAKE_BINARY_DIR}/zqcore.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zqcore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zqcore)
set(CPACK_PACKAGE_CONTACT "ZQCore maintainers <maintainers@zqcore.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Foundation library of a desktop translation application and its companion")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Staged below DESTDIR, so that what is written at installation names the final paths.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
include(CPack)
