# j4_export(target definition): what a shared library shows is the list in its module-definition file, on every
# platform; elsewhere than on Windows the linker gets the names as a version script.
function(j4_export target definition)
    if(WIN32)
        target_sources(${target} PRIVATE ${definition})
        return()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${definition})
    file(STRINGS ${definition} names REGEX "^ +J4_")
    list(TRANSFORM names REPLACE "^ +(J4_[A-Za-z]+).*$" "\\1")
    list(JOIN names "; " names)
    set(map ${CMAKE_BINARY_DIR}/generated/${target}.map)
    file(CONFIGURE OUTPUT ${map} CONTENT "{ global: @names@; local: *; };\n" @ONLY)
    # What the sanitizers have at run time is in the program.
    target_link_options(${target} PRIVATE "-Wl,--version-script=${map}" $<$<NOT:$<BOOL:${J4T_SANITIZE}>>:-Wl,--no-undefined>)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()
