# What is shipped, in two forms: the folder out/ (component "out") and the package for developers (component
# "sdk").
#   cmake --install BUILD --component out --prefix out
#   cpack --config BUILD/CPackConfig.cmake

set(virtual_targets j4tavla64_virtual j4bench sorvane64)

# j4_install_virtual(component folder): the virtual variant with what it needs beside it.
function(j4_install_virtual component folder)
    install(TARGETS ${virtual_targets}
        RUNTIME DESTINATION ${folder} COMPONENT ${component}
        LIBRARY DESTINATION ${folder} COMPONENT ${component}
        ARCHIVE DESTINATION ${folder} COMPONENT ${component})
endfunction()

j4_install_virtual(out ${out_folder}/virtual)
install(FILES c_sdk/include/j4tavla.h DESTINATION include COMPONENT out)

if(WIN32)
    set(real_files
        $<TARGET_FILE:j4tavla64_real>
        $<TARGET_FILE:j4tavla64_real>.debug
        $<TARGET_LINKER_FILE:j4tavla64_real>
        ${microsoft_library})
    install(FILES ${real_files} DESTINATION ${out_folder} COMPONENT out)

    install(FILES $<TARGET_FILE:j4tavla64_real> $<TARGET_FILE:j4tavla64_real>.debug DESTINATION bin COMPONENT sdk)
    install(FILES $<TARGET_LINKER_FILE:j4tavla64_real> ${microsoft_library} DESTINATION lib COMPONENT sdk)
    install(FILES c_sdk/include/j4tavla.h DESTINATION include COMPONENT sdk)
    j4_install_virtual(sdk virtual)
    install(FILES
        examples/scan_chart.c examples/chart_file.c examples/chart_file.h examples/colour.c examples/colour.h
        DESTINATION examples COMPONENT sdk)
    install(FILES Generic/Colour/CieTables.h DESTINATION examples/Generic/Colour COMPONENT sdk)
    install(FILES README.md DESTINATION . COMPONENT sdk)
    install(DIRECTORY docs DESTINATION . COMPONENT sdk)

    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME j4tavla64-${PROJECT_VERSION}-windows)
    set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
    set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};j4tavla64;sdk;/")
    set(CPACK_STRIP_FILES ON)
    include(CPack)
else()
    install(TARGETS j4tavla64_real LIBRARY DESTINATION ${out_folder} COMPONENT out)

    include(CMakePackageConfigHelpers)
    configure_file(dist/j4tavla64.pc.in ${CMAKE_BINARY_DIR}/generated/j4tavla64.pc @ONLY)
    configure_file(dist/j4tavla64Config.cmake.in ${CMAKE_BINARY_DIR}/generated/j4tavla64Config.cmake @ONLY)
    write_basic_package_version_file(${CMAKE_BINARY_DIR}/generated/j4tavla64ConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(TARGETS j4tavla64_real EXPORT j4tavla64Targets LIBRARY DESTINATION lib COMPONENT sdk)
    install(EXPORT j4tavla64Targets NAMESPACE j4tavla64:: DESTINATION lib/cmake/j4tavla64 COMPONENT sdk)
    install(FILES
        ${CMAKE_BINARY_DIR}/generated/j4tavla64Config.cmake
        ${CMAKE_BINARY_DIR}/generated/j4tavla64ConfigVersion.cmake
        DESTINATION lib/cmake/j4tavla64 COMPONENT sdk)
    install(FILES ${CMAKE_BINARY_DIR}/generated/j4tavla64.pc DESTINATION lib/pkgconfig COMPONENT sdk)
    install(FILES c_sdk/include/j4tavla.h DESTINATION include COMPONENT sdk)
    install(FILES dist/70-j4tavla.rules DESTINATION lib/udev/rules.d COMPONENT sdk)
    j4_install_virtual(sdk lib/j4tavla64/virtual)
endif()
