# The shipped variants: each is the same object files with other seams.

j4_add_library(j4tavla64_virtual j4_loader_seam j4_virtual_seams j4bench)

if(WIN32)
    # The real table, through the USBIO kernel driver. The names are those of the virtual variant, so it has a
    # folder of its own. Symbols go into a file beside the DLL.
    add_library(j4_usb_seam OBJECT
        src/SerialUSB/Win32/USB_Win.cpp
        usbio/CUsbIo.cpp
        usbio/CUsbIoErrorText.cpp
        usbio/CUsbIoPipe.cpp
        usbio/SetupApi.cpp)
    target_link_libraries(j4_usb_seam PUBLIC j4t_flags)
    j4_add_library(j4tavla64_real j4_loader_seam j4_clock_seam j4_usb_seam)
    set_target_properties(j4tavla64_real PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/real
        ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/real)
    target_link_options(j4tavla64_real PRIVATE -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
endif()

# What is shipped: cmake --install BUILD --component out --prefix out
install(TARGETS j4tavla64_virtual j4bench sorvane64
    RUNTIME DESTINATION ${out_folder}/virtual COMPONENT out
    LIBRARY DESTINATION ${out_folder}/virtual COMPONENT out
    ARCHIVE DESTINATION ${out_folder}/virtual COMPONENT out)
install(FILES c_sdk/include/j4tavla.h DESTINATION include COMPONENT out)
