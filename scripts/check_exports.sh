#!/bin/sh
# Tests what is shipped: that no library holds a build path, that the Windows DLL needs the system alone and tells its
# version, and that each library shows exactly the functions in its module-definition file:
# the 22 of the header, on Windows with the ordinals 4 to 25, and in the instrument's stand-in the sixteen that the
# bridge binds.
set -eu
cd "$(dirname "$0")/.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sed -n 's/^ *\(J4_[A-Za-z]*\) @\([0-9]*\)$/\2 \1/p' c_sdk/src/j4tavla64.def | sort >"$work/ordinals"
cut -d' ' -f2 "$work/ordinals" | sort >"$work/names"
sed -n 's/^J4T_API.*[ *]\(J4_[A-Za-z]*\)(.*/\1/p' c_sdk/include/j4tavla.h | sort >"$work/header"
[ "$(wc -l <"$work/names")" -eq 22 ] || { echo "the list of exports does not have 22 names" >&2; exit 1; }
diff "$work/names" "$work/header"

# linux_names FILE, windows_names FILE: "ordinal name" or "name", sorted
linux_names() { nm -D --defined-only "$1" | awk '{ print $NF }' | sed 's/@.*//' | sort; }
windows_names() {
    x86_64-w64-mingw32-objdump -p "$1" | awk '
        /^Ordinal Base|Ordinal Base/ && !base { base = $NF }
        /\[Ordinal\/Name Pointer\] Table/ { inTable = 1; next }
        inTable && /^\t\[/ { gsub(/[][]/, " "); print $1 + base, $NF; next }
        inTable && NF == 0 { inTable = 0 }' | sort
}

for library in out/linux/virtual/libj4tavla64.so out/windows/virtual/j4tavla64.dll; do
    [ -f "$library" ] || { echo "$library is missing" >&2; exit 1; }
done
for library in $(find out/linux -name libj4tavla64.so); do
    linux_names "$library" >"$work/found"
    diff "$work/names" "$work/found"
    echo "$library: 22 functions, nothing else"
done
for library in $(find out/windows -name j4tavla64.dll); do
    windows_names "$library" >"$work/found"
    diff "$work/ordinals" "$work/found"
    echo "$library: 22 functions with the ordinals 4 to 25, nothing else"
done

for library in $(find out -name '*.so' -o -name '*.dll'); do
    if grep -aqF "$PWD" "$library"; then
        echo "$library holds the path of its build" >&2
        exit 1
    fi
done
x86_64-w64-mingw32-objdump -p out/windows/j4tavla64.dll >"$work/headers"
dlls=$(sed -n 's/.*DLL Name: //p' "$work/headers" | sort | tr '\n' ' ')
[ "$dlls" = "KERNEL32.dll msvcrt.dll " ] || { echo "j4tavla64.dll needs: $dlls" >&2; exit 1; }
# What tools that watch the import table can see of the traffic with the driver.
for fact in CreateFileA CloseHandle DeviceIoControl ReadFile WriteFile \
    GetOverlappedResult CancelIo CreateEventA WaitForMultipleObjects GetTickCount Sleep LoadLibraryA LoadLibraryExA \
    GetProcAddress FreeLibrary GetModuleFileNameA; do
    grep -qw "$fact" "$work/headers" || { echo "j4tavla64.dll lacks $fact" >&2; exit 1; }
done
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
strings -el out/windows/j4tavla64.dll | grep -qx "$version" ||
    { echo "j4tavla64.dll does not tell the version $version" >&2; exit 1; }
echo "j4tavla64.dll needs KERNEL32.dll and msvcrt.dll alone; no build path in any library"

sed -n 's/^ *\(J4_[A-Za-z]*\)$/\1/p' simulator/faces/Sorvane.def | sort >"$work/sixteen"
[ "$(wc -l <"$work/sixteen")" -eq 16 ] || { echo "the list of the stand-in does not have 16 names" >&2; exit 1; }
grep -o '"J4_[A-Za-z]*"' src/j4Bridge.cpp | tr -d '"' | sort >"$work/bound"
diff "$work/sixteen" "$work/bound"
linux_names out/linux/virtual/libsorvane64.so >"$work/found"
diff "$work/sixteen" "$work/found"
windows_names out/windows/virtual/sorvane64.dll | cut -d' ' -f2 | sort >"$work/found"
diff "$work/sixteen" "$work/found"
echo "instrument's stand-in: sixteen functions on both platforms"
