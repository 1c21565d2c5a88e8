# corvane_add_plugin(<name> [SOURCES] <sources>...)
#
# A plug-in library, lib<name>.so, for the application folder. The configuration names it
# "<name>" (or "<name>.dll"). Only the plug-in entry points are exported. corvane_add_application
# puts it beside the executables that name it in PLUGINS.
function(corvane_add_plugin name)
    set(sources ${ARGN})
    list(REMOVE_ITEM sources SOURCES)
    add_library(${name} MODULE ${sources})
    target_link_libraries(${name} PRIVATE Corvane::Core)
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        PREFIX "lib"
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        INSTALL_RPATH_USE_LINK_PATH ON)
    corvane_relative_file_names(${name})
endfunction()

# corvane_add_application(<name>
#     SOURCES <file>...
#     [CONFIG <file>...]         the first is the application's <name>.xml; others keep their names
#     [PROPERTIES <file>...]     the first is the application's <name>.properties
#     [PLUGINS <target>...]      plug-ins made with corvane_add_plugin
#     [FILES <file>...]          further files beside the executable (data)
#     [OUTPUT_DIRECTORY <dir>]   the folder in the build tree (default: CMAKE_RUNTIME_OUTPUT_DIRECTORY,
#                                else <current binary dir>/<name>)
#     [DESTINATION <dir>])       the folder below the install prefix (default: <name>)
#
# An application's executable with everything it needs in one folder, as the framework expects:
# the plug-ins, the configuration, the logging properties, data files and the start-up
# translations (translations/). It runs straight from the build tree, and install() puts the
# same folder below the prefix. Several applications may share one folder.
function(corvane_add_application name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT_DIRECTORY;DESTINATION"
        "SOURCES;CONFIG;PROPERTIES;PLUGINS;FILES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "corvane_add_application(${name}): unknown arguments ${arg_UNPARSED_ARGUMENTS}")
    endif()
    set(folder ${arg_OUTPUT_DIRECTORY})
    if(NOT folder)
        set(folder ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    endif()
    if(NOT folder)
        set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
    endif()
    set(destination ${arg_DESTINATION})
    if(NOT destination)
        set(destination ${name})
    endif()

    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE Corvane::Core)
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${folder}
        INSTALL_RPATH_USE_LINK_PATH ON)
    corvane_relative_file_names(${name})
    # Built beside the library (in its own tree), the installed executable finds it relative to
    # itself; an installed library is found through the path it was linked from.
    get_target_property(coreImported Corvane::Core IMPORTED)
    if(NOT coreImported AND NOT IS_ABSOLUTE "${destination}")
        file(RELATIVE_PATH toLibraries /${destination} /${CMAKE_INSTALL_LIBDIR})
        set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN/${toLibraries}")
    endif()
    install(TARGETS ${name} RUNTIME DESTINATION ${destination})

    # Plug-ins are built into the folder, or copied there when they already have one of their own.
    set(copies)
    foreach(plugin IN LISTS arg_PLUGINS)
        get_target_property(pluginFolder ${plugin} LIBRARY_OUTPUT_DIRECTORY)
        if(NOT pluginFolder)
            set_target_properties(${plugin} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${folder})
        elseif(NOT pluginFolder STREQUAL folder)
            set(copy ${folder}/lib${plugin}${CMAKE_SHARED_MODULE_SUFFIX})
            add_custom_command(OUTPUT ${copy}
                COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${plugin}> ${copy}
                DEPENDS ${plugin} VERBATIM)
            list(APPEND copies ${copy})
        endif()
        add_dependencies(${name} ${plugin})
        install(TARGETS ${plugin} LIBRARY DESTINATION ${destination})
    endforeach()

    # Text files are copied when CMake runs, and again whenever they change.
    foreach(kind CONFIG PROPERTIES)
        set(first ON)
        foreach(file IN LISTS arg_${kind})
            get_filename_component(source ${file} ABSOLUTE)
            get_filename_component(target ${file} NAME)
            if(first AND kind STREQUAL "CONFIG")
                set(target ${name}.xml)
            elseif(first)
                set(target ${name}.properties)
            endif()
            set(first OFF)
            configure_file(${source} ${folder}/${target} COPYONLY)
            install(FILES ${source} DESTINATION ${destination} RENAME ${target})
        endforeach()
    endforeach()
    foreach(file IN LISTS arg_FILES)
        get_filename_component(source ${file} ABSOLUTE)
        get_filename_component(target ${file} NAME)
        configure_file(${source} ${folder}/${target} COPYONLY)
        install(FILES ${source} DESTINATION ${destination})
    endforeach()

    # The start-up translations: built in the Corvane tree, installed with the library elsewhere.
    if(TARGET CoreTranslations)
        set(translations ${CORVANE_TRANSLATIONS_OUTPUT})
        set(translationFiles ${translations}/StartUp_de.qm)
        add_dependencies(${name} CoreTranslations)
    else()
        set(translations ${CorvaneCore_TRANSLATIONS_DIR})
        file(GLOB translationFiles ${translations}/*.qm)
    endif()
    if(NOT translations STREQUAL "${folder}/translations")
        foreach(file IN LISTS translationFiles)
            get_filename_component(target ${file} NAME)
            set(copy ${folder}/translations/${target})
            add_custom_command(OUTPUT ${copy}
                COMMAND ${CMAKE_COMMAND} -E copy ${file} ${copy}
                DEPENDS ${file} VERBATIM)
            list(APPEND copies ${copy})
        endforeach()
    endif()
    install(FILES ${translationFiles} DESTINATION ${destination}/translations)
    if(copies)
        add_custom_target(${name}_folder DEPENDS ${copies})
        add_dependencies(${name} ${name}_folder)
    endif()
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
