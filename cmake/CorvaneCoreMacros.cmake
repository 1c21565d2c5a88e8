# corvane_add_plugin(<name> <sources>...)
#
# A plug-in library, lib<name>.so, for the application folder. The configuration names it
# "<name>" (or "<name>.dll"). Only the plug-in entry points are exported.
function(corvane_add_plugin name)
    add_library(${name} MODULE ${ARGN})
    target_link_libraries(${name} PRIVATE Corvane::Core)
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        PREFIX "lib"
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    corvane_relative_file_names(${name})
endfunction()

# corvane_relative_file_names(<target>)
#
# __FILE__ relative to the project's source folder, as the compiler is given the file (Ninja
# passes paths relative to the build folder, Make absolute ones): logger names, which are derived
# from it, then do not depend on where the sources lie, and builds become reproducible.
function(corvane_relative_file_names target)
    file(RELATIVE_PATH relative "${CMAKE_BINARY_DIR}" "${PROJECT_SOURCE_DIR}")
    string(REGEX REPLACE "/$" "" relative "${relative}")
    target_compile_options(${target} PRIVATE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
    if(relative)
        target_compile_options(${target} PRIVATE "-fmacro-prefix-map=${relative}/=")
    endif()
endfunction()
