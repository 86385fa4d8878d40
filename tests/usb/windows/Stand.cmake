# The USB kernel driver's stand-in under Wine. The test program has what a user's program has beside it: the library, as
# it is shipped, and the instrument's library.

set(usb_folder ${CMAKE_BINARY_DIR}/usb)
set(driver_file ${usb_folder}/j4benchusb.sys)
add_custom_command(OUTPUT ${driver_file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${usb_folder}
    COMMAND ${CMAKE_C_COMPILER} -std=c11 -O2 -Wall -Wextra -Werror -ffreestanding -fno-stack-protector
        -I${PROJECT_SOURCE_DIR} -isystem /usr/share/mingw-w64/include/ddk
        -nostdlib -nostartfiles -Wl,--subsystem,native -Wl,--entry,DriverEntry -Wl,--dynamicbase
        ${CMAKE_CURRENT_SOURCE_DIR}/windows/driver/J4BenchUsb.c -lntoskrnl -lhal -o ${driver_file}
    DEPENDS windows/driver/J4BenchUsb.c windows/driver/DriverWire.h
    COMMENT "Building the stand-in of the USB kernel driver"
    VERBATIM)

j4_add_test_program(usb_tests
    ${usb_sources}
    windows/DriverSessionTest.cpp
    windows/DriverStand.cpp
    windows/ProcessTest.cpp
    windows/Relay.cpp
    windows/UsbIoTest.cpp)
add_executable(foreign windows/foreign.c)
target_link_libraries(foreign PRIVATE j4t_flags)
set_target_properties(usb_tests foreign PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${usb_folder})

set(usb_targets j4tavla64_real sorvane64 j4bench)
list(TRANSFORM usb_targets REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE usb_files)
add_custom_target(usb_neighbours
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${usb_files} ${usb_folder}
    DEPENDS ${driver_file} ${usb_targets} foreign
    VERBATIM)
add_dependencies(usb_tests usb_neighbours)

# The stand-in of the driver serves all programs of its Wine: others have another one.
set_tests_properties(usb_tests PROPERTIES ENVIRONMENT J4T_WINE_PREFIX=${CMAKE_BINARY_DIR}/wine-usb)
