/*
 * What code with watched stacks calls on Windows. The compiler's own library for it would make every file need one more
 * DLL of the system, for a random number; this makes one as Microsoft's run-time does, out of what differs from start to
 * start.
 */
#include <stdint.h>
#include <windows.h>

uintptr_t __stack_chk_guard;

/* Called before all other constructors, when no function that is watched runs yet. */
static void __attribute__((constructor(101))) SetGuard(void)
{
    FILETIME time;
    LARGE_INTEGER counter;
    GetSystemTimeAsFileTime(&time);
    QueryPerformanceCounter(&counter);
    uintptr_t guard = (uintptr_t)time.dwHighDateTime << 32 | time.dwLowDateTime;
    guard ^= (uintptr_t)counter.QuadPart << 24;
    guard ^= (uintptr_t)GetCurrentThreadId() << 16 ^ GetCurrentProcessId();
    guard ^= (uintptr_t)GetTickCount64() << 40 ^ (uintptr_t)&guard;
    guard *= 0x9E3779B97F4A7C15u; /* odd, so that nothing is lost */
    guard ^= guard >> 32;
    /* The zero byte, which lies first in memory, ends the copy of a text before it gets past. */
    __stack_chk_guard = guard << 8;
}

void __attribute__((noreturn)) __stack_chk_fail(void)
{
    static const char text[] = "*** stack smashing detected ***: terminated\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, sizeof text - 1, &written, NULL);
    /* The system ends the process at once: no handler of the program, whose stack can't be trusted, runs any more. */
    __asm__ volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
    __builtin_unreachable();
}
