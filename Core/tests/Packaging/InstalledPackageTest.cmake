# Installs the build in BUILD_DIR into a fresh prefix below WORK_DIR, then configures, builds
# and runs the consumer project in CONSUMER_SOURCE_DIR against it with find_package(PACKAGE).
# With OTHER_BUILD_DIR (a build for the other Qt major) that build is installed into the same
# prefix first: the two must not share a file, and the consumer of each package must still run.

cmake_minimum_required(VERSION 3.16)

function(run step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${step} failed (${result}):\n${output}")
    endif()
    message(STATUS "${step}: ok")
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(consumer_build ${WORK_DIR}/consumer)
file(REMOVE_RECURSE ${WORK_DIR})

function(installed_files build_dir out)
    file(STRINGS ${build_dir}/install_manifest.txt files)
    set(${out} ${files} PARENT_SCOPE)
endfunction()

string(REPLACE ";" " " cxx_flags "${CXX_FLAGS}")
function(build_and_run_consumer package other_flags)
    string(REPLACE ";" " " flags "${other_flags}")
    set(build ${consumer_build}-${package})
    set(toolchain "")
    if(TOOLCHAIN_FILE)
        set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
    endif()
    run("configure consumer of ${package}" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${build}
        -G ${GENERATOR} ${toolchain} -DCMAKE_PREFIX_PATH=${prefix} -DCORVANE_PACKAGE=${package}
        "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
    run("build consumer of ${package}" ${CMAKE_COMMAND} --build ${build})
    run("run consumer of ${package}" ${build}/consumer)
endfunction()

if(OTHER_BUILD_DIR)
    run("install ${OTHER_PACKAGE}" ${CMAKE_COMMAND} --install ${OTHER_BUILD_DIR} --prefix ${prefix})
    installed_files(${OTHER_BUILD_DIR} other_files)
endif()
run("install ${PACKAGE}" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
if(OTHER_BUILD_DIR)
    installed_files(${BUILD_DIR} own_files)
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
    build_and_run_consumer(${OTHER_PACKAGE} "${OTHER_CXX_FLAGS}")
endif()
build_and_run_consumer(${PACKAGE} "${CXX_FLAGS}")

# The installed signing tool finds the installed library on its own.
file(WRITE ${WORK_DIR}/signed.txt "hello\nworld\n")
execute_process(COMMAND ${prefix}/bin/corvane-sign${SUFFIX} hash ${WORK_DIR}/signed.txt
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output MATCHES "^[0-9a-f]+\n$")
    message(FATAL_ERROR "installed corvane-sign${SUFFIX} failed (${result}):\n${output}")
endif()
message(STATUS "installed corvane-sign${SUFFIX}: ok")
