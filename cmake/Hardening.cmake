# What makes faults harder to exploit. scripts/check_hardening.sh reads it from the files that are shipped. The sanitizers
# watch more themselves and bear no checks of the C library beside them.

if(WIN32)
    add_library(j4t_stack_protector STATIC Utilities/Tools/Win32/StackProtector.c)
    target_link_libraries(j4t_flags INTERFACE j4t_stack_protector)
    target_compile_options(j4t_flags INTERFACE -fstack-protector-strong)
    add_link_options(-Wl,--dynamicbase,--high-entropy-va,--nxcompat)
elseif(NOT J4T_SANITIZE)
    include(CheckPIESupported)
    check_pie_supported()
    target_compile_options(j4t_flags INTERFACE -fstack-protector-strong -fstack-clash-protection)
    target_compile_definitions(j4t_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
    add_link_options(-Wl,-z,relro,-z,now)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
        # The linker drops the mark of the shadow stack for the sake of the C library's start files, which need none.
        target_compile_options(j4t_flags INTERFACE -fcf-protection)
        add_link_options(-Wl,-z,shstk)
    endif()
endif()
