# Two Debian packages, made by cpack: zqcore with the programs, libzqcore-dev with what a developer links.
# (The archives are no runtime part of any program, so there is no package of libraries between them.)
set(package_version ${PROJECT_VERSION})
set(package_contact "ZQCore maintainers <maintainers@zqcore.invalid>")

# Honours SOURCE_DATE_EPOCH.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in ${CMAKE_BINARY_DIR}/debian/changelog @ONLY)
configure_file(cmake/debian/copyright.in ${CMAKE_BINARY_DIR}/debian/copyright @ONLY)
execute_process(COMMAND gzip -9nf ${CMAKE_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${CMAKE_BINARY_DIR}/debian/changelog.gz ${CMAKE_BINARY_DIR}/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zqcore COMPONENT Runtime)
install(FILES ${CMAKE_BINARY_DIR}/debian/changelog.gz ${CMAKE_BINARY_DIR}/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzqcore-dev COMPONENT Development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zqcore)
set(CPACK_PACKAGE_CONTACT ${package_contact})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL Runtime Development)
# Staged below DESTDIR, so that what is written at installation names the final paths.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
# Whatever the umask of who builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME zqcore)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Loaded when they are there: the unwinder and the symbols of a crash report. Called over the bus: the bus itself.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS
    "default-dbus-session-bus | dbus-session-bus, libunwind8, libdw1, shared-mime-info, fonts-dejavu-core")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "fonts-wqy-microhei, xdg-desktop-portal")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "command line of a desktop translation application
zq talks to the translation application Orbel and to its resident helper,
reads their settings and crash reports, and lends their text tools to a
shell. The package holds both as demonstration servers, and a gallery of
their interface components.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzqcore-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# What the archives stand on, by the modules that the pkg-config files name; and the resource bundle, at run time.
set(development_packages
    libsystemd-dev libsimdjson-dev libicu-dev libssl-dev
    libcairo2-dev libpango1.0-dev libfontconfig-dev libharfbuzz-dev libgdk-pixbuf-2.0-dev libpng-dev libjpeg-dev
    libxcb1-dev libxcb-randr0-dev libxcb-shape0-dev libxcb-xfixes0-dev libxcb-xinput-dev libxcb-composite0-dev
    libxcb-xkb-dev libxkbcommon-dev libxkbcommon-x11-dev)
list(JOIN development_packages ", " development_packages)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "zqcore (= ${package_version}), pkg-config, ${development_packages}")
set(development_suggestions "libxcb-xtest0-dev, dbus-daemon, xvfb")
if(TARGET ZQCoreJavaScript)
    string(APPEND development_suggestions ", libjavascriptcoregtk-4.1-dev")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS ${development_suggestions})
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "foundation library of a desktop translation application
ZQCore gives an application a request protocol over the session bus,
logging and crash reports, typed settings, timers, queues and text tools,
and in a library of its own the interface components. The package holds
the static libraries with their test kits, the headers, a CMake package
and pkg-config files.")
include(CPack)
