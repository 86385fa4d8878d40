# What is shipped, in two forms: the folder out/ (component "out") and the package for developers (component
# "sdk"), on Linux with one for Python beside it (component "python").
#   cmake --install BUILD --component out --prefix out
#   cpack --config BUILD/CPackConfig.cmake

set(virtual_targets j4tavla64_virtual j4bench sorvane64)
set(public_headers c_sdk/include/j4tavla.h c_sdk/include/j4tavla.hpp)

# j4_install_virtual(component folder [EXPORT export]): the virtual variant with what it needs beside it.
function(j4_install_virtual component folder)
    install(TARGETS ${virtual_targets} ${ARGN}
        RUNTIME DESTINATION ${folder} COMPONENT ${component}
        LIBRARY DESTINATION ${folder} COMPONENT ${component}
        ARCHIVE DESTINATION ${folder} COMPONENT ${component})
endfunction()

# j4_install_python(component folder): the Python package, which needs no library of its own kind.
function(j4_install_python component folder)
    install(DIRECTORY python/j4tavla DESTINATION ${folder} COMPONENT ${component}
        FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
endfunction()

j4_install_virtual(out ${out_folder}/virtual)
install(FILES ${public_headers} DESTINATION include COMPONENT out)
install(FILES c_sdk/csharp/J4Tavla.cs DESTINATION csharp COMPONENT out)

# What find_package and pkg-config find: both variants, from wherever the package lies.
if(WIN32)
    set(virtual_folder virtual)
else()
    set(virtual_folder lib/j4tavla64/virtual)
    set(virtual_search_path "-Wl,-rpath,\${virtualdir}")
endif()
set_target_properties(j4tavla64_real PROPERTIES EXPORT_NAME j4tavla64)
set_target_properties(j4tavla64_virtual PROPERTIES EXPORT_NAME virtual)
# The C++ header asks for its standard.
add_library(j4tavla64_cpp INTERFACE)
target_link_libraries(j4tavla64_cpp INTERFACE j4tavla64_real)
target_compile_features(j4tavla64_cpp INTERFACE cxx_std_17)
set_target_properties(j4tavla64_cpp PROPERTIES EXPORT_NAME cpp)
install(TARGETS j4tavla64_cpp EXPORT j4tavla64Targets)
install(TARGETS j4tavla64_real EXPORT j4tavla64Targets
    RUNTIME DESTINATION bin COMPONENT sdk
    LIBRARY DESTINATION lib COMPONENT sdk
    ARCHIVE DESTINATION lib COMPONENT sdk)
j4_install_virtual(sdk ${virtual_folder} EXPORT j4tavla64VirtualTargets)
foreach(export j4tavla64Targets j4tavla64VirtualTargets)
    install(EXPORT ${export} NAMESPACE j4tavla64:: DESTINATION lib/cmake/j4tavla64 COMPONENT sdk)
endforeach()
include(CMakePackageConfigHelpers)
string(TOUPPER "${CMAKE_BUILD_TYPE}" package_configuration)
configure_file(dist/j4tavla64Config.cmake.in ${CMAKE_BINARY_DIR}/generated/j4tavla64Config.cmake @ONLY)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/generated/j4tavla64ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/generated/j4tavla64Config.cmake
    ${CMAKE_BINARY_DIR}/generated/j4tavla64ConfigVersion.cmake
    DESTINATION lib/cmake/j4tavla64 COMPONENT sdk)
foreach(name j4tavla64 j4tavla64-virtual)
    configure_file(dist/${name}.pc.in ${CMAKE_BINARY_DIR}/generated/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/generated/${name}.pc DESTINATION lib/pkgconfig COMPONENT sdk)
endforeach()
install(FILES ${public_headers} DESTINATION include COMPONENT sdk)

if(WIN32)
    set(real_files
        $<TARGET_FILE:j4tavla64_real>
        $<TARGET_FILE:j4tavla64_real>.debug
        $<TARGET_LINKER_FILE:j4tavla64_real>
        ${microsoft_library})
    install(FILES ${real_files} DESTINATION ${out_folder} COMPONENT out)

    install(FILES $<TARGET_FILE:j4tavla64_real>.debug DESTINATION bin COMPONENT sdk)
    install(FILES ${microsoft_library} DESTINATION lib COMPONENT sdk)
    j4_install_python(sdk python)
    set(document_folder .)
    set(package_readme dist/README.windows.md)

    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME j4tavla64-${PROJECT_VERSION}-windows)
else()
    install(TARGETS j4tavla64_real LIBRARY DESTINATION ${out_folder} COMPONENT out)
    install(FILES dist/70-j4tavla.rules DESTINATION lib/udev/rules.d COMPONENT sdk)
    set(document_folder share/doc/j4tavla64)
    set(package_readme dist/README.debian.md)

    set(CPACK_GENERATOR DEB)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kestrelon <j4tavla@kestrelon.example>")
    set(CPACK_DEBIAN_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"SDK and command-line tool of the J4 Tavla scanning table
A library of 22 C functions that measures with the spectrophotometer in a J4
Tavla scanning table, moves the table, and scans charts row by row, and a
command-line tool that does so without a program.

With it come the header, files for pkg-config and CMake, the udev rule that gives
users access to the table, a virtual table for work without hardware, documents,
and examples in C, Python and C#. The library of the instrument's maker is not
part of it.")
    # The virtual variant finds its bench beside itself.
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
    set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

    # The Python package, in a package of its own since it needs no processor of a kind; the library comes with the other.
    set(python_folder lib/python3/dist-packages)
    j4_install_python(python ${python_folder})
    set(python_information ${CMAKE_BINARY_DIR}/generated/j4tavla-${PROJECT_VERSION}.dist-info)
    file(CONFIGURE OUTPUT ${python_information}/METADATA
        CONTENT "Metadata-Version: 2.1\nName: j4tavla\nVersion: ${PROJECT_VERSION}\n")
    install(DIRECTORY ${python_information} DESTINATION ${python_folder} COMPONENT python)

    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_DEBIAN_SDK_PACKAGE_NAME j4tavla64)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-j4tavla)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), j4tavla64 (>= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS python3-numpy)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/dist/python/postinst
        ${PROJECT_SOURCE_DIR}/dist/python/prerm)
    set(CPACK_DEBIAN_PYTHON_DESCRIPTION "Python package of the J4 Tavla scanning table
Measures colour charts with the J4 Tavla scanning table, or with a virtual one
that needs no hardware: spectra as lists or numpy arrays, options as a mapping,
failures as exceptions.")
endif()

install(TARGETS j4tavla RUNTIME DESTINATION ${out_folder} COMPONENT out)
install(TARGETS j4tavla RUNTIME DESTINATION bin COMPONENT sdk)
if(NOT WIN32 AND NOT J4T_SANITIZE)
    # The manual says what --help says, and what dist/j4tavla.h2m adds.
    find_program(HELP2MAN help2man REQUIRED)
    set(manual ${CMAKE_BINARY_DIR}/generated/j4tavla.1)
    set(manual_help ${PROJECT_SOURCE_DIR}/dist/manual_help.sh)
    set(manual_addition ${PROJECT_SOURCE_DIR}/dist/j4tavla.h2m)
    add_custom_command(OUTPUT ${manual}.gz
        COMMAND ${CMAKE_COMMAND} -E env TOOL=$<TARGET_FILE:j4tavla>
            ${HELP2MAN} --no-info --help-option=--help-all "--name=measure charts with the J4 Tavla scanning table"
            --include=${manual_addition} --output=${manual} ${manual_help}
        COMMAND gzip --best --no-name --force ${manual}
        DEPENDS j4tavla ${manual_help} ${manual_addition}
        VERBATIM)
    add_custom_target(j4tavla_manual ALL DEPENDS ${manual}.gz)
    install(FILES ${manual}.gz DESTINATION share/man/man1 COMPONENT sdk)
endif()

# The notices of what is compiled into the tool.
install(FILES /usr/share/doc/libcli11-dev/copyright DESTINATION ${document_folder}/licenses COMPONENT sdk
    RENAME CLI11.txt)
install(FILES /usr/share/doc/nlohmann-json3-dev/copyright DESTINATION ${document_folder}/licenses COMPONENT sdk
    RENAME nlohmann-json.txt)
install(FILES /usr/share/doc/librapidxml-dev/copyright DESTINATION ${document_folder}/licenses COMPONENT sdk
    RENAME rapidxml.txt)
install(FILES /usr/share/doc/libtomlplusplus-dev/copyright DESTINATION ${document_folder}/licenses COMPONENT sdk
    RENAME tomlplusplus.txt)
install(FILES tools/report/vendor/LICENSE DESTINATION ${document_folder}/licenses COMPONENT sdk RENAME uPlot.txt)

install(FILES ${package_readme} DESTINATION ${document_folder} COMPONENT sdk RENAME README.md)
install(FILES docs/continuous_integration.md docs/errors.md docs/files.md docs/guide.md docs/languages.md docs/options.md
    docs/protocol.md docs/python.md docs/simulator.md docs/tolerances.md docs/tool.md
    DESTINATION ${document_folder}/docs COMPONENT sdk)
install(DIRECTORY docs/images DESTINATION ${document_folder}/docs COMPONENT sdk)
install(FILES
    examples/scan_chart.c examples/chart_file.c examples/chart_file.h examples/colour.c examples/colour.h
    examples/scan_chart.py examples/scan_rows.cpp examples/ScanChart.cs c_sdk/csharp/J4Tavla.cs
    examples/virtual.exe.config
    DESTINATION ${document_folder}/examples COMPONENT sdk)
install(FILES examples/charts/colours.cgats examples/charts/chart.cgats examples/charts/chart.pdf
    DESTINATION ${document_folder}/examples/charts COMPONENT sdk)
install(FILES chart/colour/CieTables.h DESTINATION ${document_folder}/examples/chart/colour COMPONENT sdk)
install(DIRECTORY tolerances DESTINATION ${document_folder} COMPONENT sdk)
install(DIRECTORY tolerances DESTINATION . COMPONENT out)
configure_file(dist/Doxyfile.in ${CMAKE_BINARY_DIR}/generated/Doxyfile @ONLY)

set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
if(WIN32)
    set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};j4tavla64;sdk;/")
else()
    set(CPACK_COMPONENTS_ALL sdk python)
endif()
set(CPACK_STRIP_FILES ON)
include(CPack)
