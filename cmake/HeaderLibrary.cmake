# j4_add_header_library(target header): a library of Debian that is headers only, for both platforms. A folder of its
# own keeps the host's other headers away from the cross-compiler.
function(j4_add_header_library target header)
    get_filename_component(folder ${header} DIRECTORY)
    find_path(${target}_INCLUDE ${header} PATHS /usr/include /usr/include/eigen3 NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers/${target})
    file(CREATE_LINK ${${target}_INCLUDE}/${folder} ${CMAKE_BINARY_DIR}/headers/${target}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/headers/${target})
endfunction()
