# libusb on a USB that umockdev mocks.

pkg_check_modules(UMOCKDEV REQUIRED IMPORTED_TARGET umockdev-1.0)
find_program(UMOCKDEV_WRAPPER umockdev-wrapper REQUIRED)

j4_add_test_program(usb_tests
    ${usb_sources}
    libusb/DeviceFile.cpp
    libusb/MockedBus.cpp
    libusb/UsbLibusbTest.cpp
    RUNNER ${UMOCKDEV_WRAPPER})
# Its types hold what lies in an unnamed namespace, which is well only in a source by itself.
set_source_files_properties(libusb/DeviceFile.cpp PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
target_link_libraries(usb_tests PRIVATE j4_clock_seam PkgConfig::UMOCKDEV)

# The library and the instrument's stand-in have folders of their own; the folder of the stand-in also has the
# virtual variant, which must not come first.
set(usb_environment LD_LIBRARY_PATH=$<TARGET_FILE_DIR:j4tavla64_real>:${CMAKE_BINARY_DIR}/bin)
if(J4T_SANITIZE)
    # umockdev's library is loaded before the sanitizer's, which objects to that.
    list(APPEND usb_environment ASAN_OPTIONS=verify_asan_link_order=0)
endif()
set_tests_properties(usb_tests PROPERTIES ENVIRONMENT "${usb_environment}")
