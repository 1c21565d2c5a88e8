# Installs the build in BUILD_DIR into a fresh prefix below WORK_DIR, then configures, builds
# and runs the consumer project in CONSUMER_SOURCE_DIR against it with find_package.

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

run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
string(REPLACE ";" " " cxx_flags "${CXX_FLAGS}")
run("configure consumer" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${consumer_build}
    -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${prefix} "-DCMAKE_CXX_FLAGS=${cxx_flags}"
    "-DCMAKE_EXE_LINKER_FLAGS=${cxx_flags}")
run("build consumer" ${CMAKE_COMMAND} --build ${consumer_build})
run("run consumer" ${consumer_build}/consumer)

# The installed signing tool finds the installed library on its own.
file(WRITE ${WORK_DIR}/signed.txt "hello\nworld\n")
execute_process(COMMAND ${prefix}/bin/corvane-sign hash ${WORK_DIR}/signed.txt
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output MATCHES "^[0-9a-f]+\n$")
    message(FATAL_ERROR "installed corvane-sign failed (${result}):\n${output}")
endif()
message(STATUS "installed corvane-sign: ok")
