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
endfunction()
