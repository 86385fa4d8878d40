# The shipped variants: each is the same object files with other seams.

j4_add_library(j4tavla64_virtual j4_virtual_seams j4bench)
# It loads the instrument's library when it runs.
add_dependencies(j4tavla64_virtual sorvane64)

# The variants for real tables. Their names are those of the virtual variant, so they have a folder of their
# own.
if(WIN32)
    # Through the USBIO kernel driver. Symbols go into a file beside the DLL.
    add_library(j4_usb STATIC
        src/SerialUSB/Win32/USB_Win.cpp
        usbio/CUsbIo.cpp
        usbio/CUsbIoErrorText.cpp
        usbio/CUsbIoPipe.cpp
        usbio/SetupApi.cpp)
    target_link_libraries(j4_usb PUBLIC j4_foundation)
    add_library(j4_usb_seam OBJECT src/SerialUSB/SystemUsbFactory.cpp)
    target_link_libraries(j4_usb_seam PUBLIC j4_usb)
    j4_add_library(j4tavla64_real j4_clock_seam j4_usb_seam)
    set_target_properties(j4tavla64_real PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/real
        ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/real)
    add_custom_command(TARGET j4tavla64_real POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:j4tavla64_real> $<TARGET_FILE:j4tavla64_real>.debug
        COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=$<TARGET_FILE:j4tavla64_real>.debug
            $<TARGET_FILE:j4tavla64_real>
        VERBATIM)

    # The import library for Microsoft's linker. LLVM's tool writes its short form, GNU's does not.
    find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)
    set(microsoft_library ${CMAKE_BINARY_DIR}/real/j4tavla64.lib)
    add_custom_command(OUTPUT ${microsoft_library}
        COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -D j4tavla64.dll -d ${PROJECT_SOURCE_DIR}/c_sdk/src/j4tavla64.def
            -l ${microsoft_library}
        DEPENDS ${PROJECT_SOURCE_DIR}/c_sdk/src/j4tavla64.def
        VERBATIM)
    add_custom_target(j4tavla64_microsoft_library ALL DEPENDS ${microsoft_library})
else()
    # Through libusb.
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBUSB REQUIRED IMPORTED_TARGET libusb-1.0)
    add_library(j4_usb STATIC src/SerialUSB/Libusb/UsbLibusb.cpp)
    target_link_libraries(j4_usb PUBLIC j4_foundation PkgConfig::LIBUSB)
    add_library(j4_usb_seam OBJECT src/SerialUSB/SystemUsbFactory.cpp)
    target_link_libraries(j4_usb_seam PUBLIC j4_usb)
    j4_add_library(j4tavla64_real j4_clock_seam j4_usb_seam)
    set_target_properties(j4tavla64_real PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/real)
endif()

# The seams of a program that chooses between both at run time: an archive, so that one which brings seams of its own has
# those instead.
add_library(j4_table_line_seams STATIC src/SerialUSB/TableLineSeams.cpp)
target_link_libraries(j4_table_line_seams PUBLIC j4_usb j4_virtual_usb)
