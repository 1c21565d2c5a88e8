# Debian packages of the library for one Qt major, made by CPack's DEB generator
# (tools/build-packages.sh): the runtime library with its translations, the development files,
# and the tools with their manual pages. Package names follow Debian's library policy: the
# runtime package carries the SONAME, the Qt 6 build has names of its own, so that both
# majors install side by side.

if(CORVANE_SUFFIX)
    set(runtimePackage libcorvanecore${CORVANE_SUFFIX}-${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
else()
    set(runtimePackage libcorvanecore${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
endif()
set(developmentPackage libcorvanecore${CORVANE_SUFFIX}-dev)
set(toolsPackage corvane${CORVANE_SUFFIX}-tools)
set(packageRelease 1)
set(packageVersion ${PROJECT_VERSION}-${packageRelease})

# The pkg-config file of the development package.
configure_file(${PROJECT_SOURCE_DIR}/packaging/CorvaneCore.pc.in
    ${PROJECT_BINARY_DIR}/packaging/CorvaneCore${CORVANE_SUFFIX}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/CorvaneCore${CORVANE_SUFFIX}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Manual pages, compressed as Debian wants them (gzip -9n: no name, no time stamp).
find_program(CORVANE_GZIP gzip REQUIRED)
function(corvane_gzip source target)
    execute_process(COMMAND ${CORVANE_GZIP} -9nc ${source} OUTPUT_FILE ${target}
                    RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "gzip ${source} failed")
    endif()
endfunction()
set(VERSION ${PROJECT_VERSION})
foreach(tool corvane-sign corvane-plugins)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/${tool}.1
        ${PROJECT_BINARY_DIR}/packaging/${tool}${CORVANE_SUFFIX}.1 @ONLY)
    corvane_gzip(${PROJECT_BINARY_DIR}/packaging/${tool}${CORVANE_SUFFIX}.1
        ${PROJECT_BINARY_DIR}/packaging/${tool}${CORVANE_SUFFIX}.1.gz)
    install(FILES ${PROJECT_BINARY_DIR}/packaging/${tool}${CORVANE_SUFFIX}.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endforeach()

# Every package's copyright and changelog.
set(VERSION ${PROJECT_VERSION})
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog
    ${PROJECT_BINARY_DIR}/packaging/changelog.Debian @ONLY)
corvane_gzip(${PROJECT_BINARY_DIR}/packaging/changelog.Debian
    ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
foreach(component runtime development tools)
    if(component STREQUAL "runtime")
        set(package ${runtimePackage})
    elseif(component STREQUAL "development")
        set(package ${developmentPackage})
    else()
        set(package ${toolsPackage})
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
        ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane-core${CORVANE_SUFFIX})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Corvane developers")
set(CPACK_PACKAGE_CONTACT "Corvane maintainers <maintainers@corvane.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${packageRelease})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://corvane.invalid/")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/bin)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtimePackage})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The library cache is renewed through dpkg's ldconfig trigger, not by scripts calling ldconfig.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers
    ${PROJECT_SOURCE_DIR}/packaging/postinst ${PROJECT_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# CPack indents the lines after the first and turns empty ones into " .".
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "Corvane Core application framework library for Qt ${CORVANE_QT_MAJOR}
Corvane Core runs Qt ${CORVANE_QT_MAJOR} applications made of a small executable,
plug-in libraries, an XML configuration file and a log4cplus properties file:
it reads the configuration, sets up logging, guards against a second instance,
loads, orders and starts the plug-ins, and runs them as a GUI, console or
service application.

This package holds the shared library and its translations.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${developmentPackage})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
if(CORVANE_QT_MAJOR EQUAL 6)
    set(qtDevelopment qt6-base-dev)
else()
    set(qtDevelopment qtbase5-dev)
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtimePackage} (= ${packageVersion}), ${qtDevelopment}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "Corvane Core application framework for Qt ${CORVANE_QT_MAJOR} (development files)
Corvane Core runs Qt ${CORVANE_QT_MAJOR} applications made of a small executable,
plug-in libraries, an XML configuration file and a log4cplus properties file.

This package holds the headers, the CMake package CorvaneCore${CORVANE_SUFFIX}
with the helpers corvane_add_application and corvane_add_plugin, a
pkg-config file, and the XML Schema of the configuration file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${toolsPackage})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtimePackage} (= ${packageVersion})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "Corvane Core tools for Qt ${CORVANE_QT_MAJOR} applications
corvane-sign${CORVANE_SUFFIX} computes and checks the fingerprints of
configuration files; corvane-plugins${CORVANE_SUFFIX} explains the start order
of an application's plug-ins, draws their service graph and checks its
configuration file.")

include(CPack)
