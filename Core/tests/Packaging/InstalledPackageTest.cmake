# Installs the build in BUILD_DIR into a fresh prefix below WORK_DIR (or, with DEB_DIR, unpacks
# the Debian packages found there into a fresh root with dpkg-deb -x, installing nothing on the
# machine), then configures, builds and runs the consumer project in CONSUMER_SOURCE_DIR against
# it with find_package(PACKAGE): its own code, and an application laid out by the package's CMake
# helpers, run from the build tree and from its install folder.
# With OTHER_BUILD_DIR (a build for the other Qt major) that build is installed into the same
# prefix first: the two must not share a file, and the consumer of each package must still run.
# TOOLCHAIN_FILE cross-builds the consumer as the library was built.

cmake_minimum_required(VERSION 3.16)

function(run step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${step} failed (${result}):\n${output}")
    endif()
    message(STATUS "${step}: ok")
endfunction()

# Runs a program from another working folder; its standard output must be expected exactly.
function(expect_output step expected)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK_DIR}
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
        message(FATAL_ERROR "${step} failed (${result}):\n${output}\n${errors}\n"
                            "expected:\n${expected}")
    endif()
    message(STATUS "${step}: ok")
endfunction()

if(NOT PACKAGE)
    set(PACKAGE CorvaneCore)
endif()
set(consumer_build ${WORK_DIR}/consumer)
file(REMOVE_RECURSE ${WORK_DIR})

if(DEB_DIR)
    set(root ${WORK_DIR}/root)
    set(prefix ${root}/usr)
    file(MAKE_DIRECTORY ${root})
    file(GLOB packages ${DEB_DIR}/*.deb)
    if(NOT packages)
        message(FATAL_ERROR "no packages in ${DEB_DIR}")
    endif()
    foreach(package IN LISTS packages)
        run("unpack ${package}" dpkg-deb -x ${package} ${root})
    endforeach()
else()
    set(prefix ${WORK_DIR}/prefix)
    if(OTHER_BUILD_DIR)
        run("install ${OTHER_PACKAGE}" ${CMAKE_COMMAND} --install ${OTHER_BUILD_DIR} --prefix ${prefix})
        file(STRINGS ${OTHER_BUILD_DIR}/install_manifest.txt other_files)
    endif()
    run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
    if(OTHER_BUILD_DIR)
        file(STRINGS ${BUILD_DIR}/install_manifest.txt own_files)
        set(shared "")
        foreach(file IN LISTS own_files)
            if(file IN_LIST other_files)
                list(APPEND shared ${file})
            endif()
        endforeach()
        if(shared)
            message(FATAL_ERROR "${PACKAGE} and ${OTHER_PACKAGE} install the same files:\n${shared}")
        endif()
        message(STATUS "${PACKAGE} beside ${OTHER_PACKAGE}: no shared file")
    endif()
endif()

set(toolchain "")
if(TOOLCHAIN_FILE)
    set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()
function(build_consumer package build flags)
    string(REPLACE ";" " " flags "${flags}")
    run("configure consumer of ${package}" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${build}
        -G ${GENERATOR} ${toolchain} -DCMAKE_PREFIX_PATH=${prefix} -DCORVANE_PACKAGE=${package}
        "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}"
        "-DCMAKE_MODULE_LINKER_FLAGS=${flags}")
    run("build consumer of ${package}" ${CMAKE_COMMAND} --build ${build})
    run("run consumer of ${package}" ${build}/consumer)
endfunction()

if(OTHER_BUILD_DIR)
    build_consumer(${OTHER_PACKAGE} ${consumer_build}-other "${OTHER_CXX_FLAGS}")
endif()
build_consumer(${PACKAGE} ${consumer_build} "${CXX_FLAGS}")

set(greeting "Hello consumer, translations found\n")
expect_output("application in the build tree" "${greeting}" ${consumer_build}/greeter/greeter)
run("install application" ${CMAKE_COMMAND} --install ${consumer_build}
    --prefix ${WORK_DIR}/applications)
file(REMOVE_RECURSE ${consumer_build})
expect_output("installed application" "${greeting}" ${WORK_DIR}/applications/greeter/greeter)

# The installed tools find the installed library on their own.
set(sign ${prefix}/bin/corvane-sign${SUFFIX})
file(WRITE ${WORK_DIR}/signed.txt "hello\nworld\n")
execute_process(COMMAND ${sign} hash ${WORK_DIR}/signed.txt
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output MATCHES "^[0-9a-f]+\n$")
    message(FATAL_ERROR "installed corvane-sign failed (${result}):\n${output}")
endif()
message(STATUS "installed corvane-sign: ok")
set(plugins ${prefix}/bin/corvane-plugins${SUFFIX})
file(GLOB_RECURSE schema ${prefix}/share/${PACKAGE}/corvane-configuration.xsd)
file(WRITE ${WORK_DIR}/app.xml "<config><information><applicationtype>GUI</applicationtype>"
    "</information><plugins><plugin><library>Absent</library></plugin></plugins></config>\n")
execute_process(COMMAND ${plugins} check app.xml WORKING_DIRECTORY ${WORK_DIR}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 1 OR NOT output MATCHES "^app.xml:1:91: plug-in library 'Absent' is not"
   OR NOT schema)
    message(FATAL_ERROR "installed corvane-plugins check failed (${result}):\n${output}\n"
                        "schema: ${schema}")
endif()
message(STATUS "installed corvane-plugins and schema: ok")

# The demo, when the tree built it, runs from its install folder.
if(EXISTS ${prefix}/corvane-demo${SUFFIX}/corvane-demo)
    execute_process(COMMAND ${prefix}/corvane-demo${SUFFIX}/corvane-demo WORKING_DIRECTORY ${WORK_DIR}
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result EQUAL 0 OR NOT output MATCHES "^Inventory report")
        message(FATAL_ERROR "installed demo failed (${result}):\n${output}\n${errors}")
    endif()
    message(STATUS "installed demo: ok")
endif()
