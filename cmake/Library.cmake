# The library's object files, from which every variant is linked, and its platform seams.

set(j4_core_sources
    Generic/Configuration/Properties.cpp
    Generic/Configuration/Property.cpp
    Generic/Utilities/EndianConversion.cpp
    c_sdk/src/ContextJ4T.cpp
    c_sdk/src/Sandbox.cpp
    c_sdk/src/Validator.cpp
    c_sdk/src/j4T_c_sdk.cpp
    src/Communication/j4TableComCommand.cpp
    src/Communication/j4TableComFlash.cpp
    src/Communication/j4TableComInfo.cpp
    src/Communication/j4TableComManager.cpp
    src/Communication/j4TableComMisc.cpp
    src/Communication/j4TableComMotors.cpp
    src/Communication/j4TableCommunication.cpp
    src/Flash/j4TableFlashData.cpp
    src/Flash/j4TableFlashDataHandle.cpp
    src/OptionKeys.cpp
    src/Position.cpp
    src/SerialUSB/SerialUSB.cpp
    src/j4Bridge.cpp
    src/j4SpectraGuard.cpp
    src/j4Table.cpp
    src/j4TableHelper.cpp
    src/j4TableProperties.cpp
    src/j4TableSDK.cpp
    src/j4TableScanHandle.cpp)
if(J4T_CHECK_THREADS)
    list(APPEND j4_core_sources c_sdk/src/CallGuard.cpp)
endif()
# Which places the arm reaches; the tool asks that too, before it moves anything.
add_library(j4_arm_geometry STATIC src/Communication/j4TableArmGeometry.cpp)
target_link_libraries(j4_arm_geometry PUBLIC j4_foundation)
# Where nobody listens to the application's calls; a variant that has a listener links that instead.
add_library(j4_untraced STATIC c_sdk/src/CallTrace.cpp)
target_link_libraries(j4_untraced PUBLIC j4t_flags)
add_library(j4_core OBJECT ${j4_core_sources})
target_link_libraries(j4_core PUBLIC j4_untraced j4_arm_geometry j4_foundation)
# One object for each source: the tool takes the line to the table out of them, and not the rest.
set_target_properties(j4_core PROPERTIES UNITY_BUILD OFF)
target_compile_definitions(j4_core PRIVATE J4T_CHECK_THREADS=$<BOOL:${J4T_CHECK_THREADS}>)
target_include_directories(j4_core
    PUBLIC ${PROJECT_SOURCE_DIR}/c_sdk/include
    PRIVATE ${CMAKE_BINARY_DIR}/generated)

# The clock of the real variants.
add_library(j4_clock_seam OBJECT Utilities/Tools/${platform}/Clock.cpp)
target_link_libraries(j4_clock_seam PUBLIC j4t_flags)

# A table's USB device over the lines of a bench, which it does not link: a program may find its bench at run time.
add_library(j4_virtual_usb STATIC src/SerialUSB/Virtual/VirtualUsb.cpp)
target_link_libraries(j4_virtual_usb PUBLIC j4_foundation)

# j4_add_library(target seam...): one variant of the library, linked from the core and the named seams.
function(j4_add_library target)
    add_library(${target} SHARED)
    target_link_libraries(${target} PRIVATE j4_core ${ARGN})
    set_target_properties(${target} PROPERTIES PREFIX "${library_prefix}" OUTPUT_NAME j4tavla64)
    target_include_directories(${target} INTERFACE
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/c_sdk/include> $<INSTALL_INTERFACE:include>)
    j4_export(${target} ${PROJECT_SOURCE_DIR}/c_sdk/src/j4tavla64.def)
    if(WIN32)
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/c_sdk/src/j4tavla64.rc
            ${PROJECT_SOURCE_DIR}/Utilities/Tools/Win32/RuntimeRelease.cpp)
        target_include_directories(${target} PRIVATE ${CMAKE_BINARY_DIR}/generated)
    endif()
endfunction()
