#!/bin/sh
# Tests that what is shipped is hardened, as far as the files themselves tell. Linux: they lie at any address, their
# tables of addresses are complete and read-only before the first call, no stack is executable, stacks are watched, calls
# through pointers have their marks, the C library checks what it is given. Windows: they lie anywhere in 64 bits, execute
# no data, watch their stacks, and need no DLL but the system's and the bench's.
set -eu
cd "$(dirname "$0")/.."

facts=$(mktemp)
trap 'rm -f "$facts"' EXIT
failed=0

# expect FILE WHAT PATTERN...: each of the patterns stands among the facts
expect() {
    file=$1 what=$2
    shift 2
    for pattern in "$@"; do
        grep -Eq -e "$pattern" "$facts" || { echo "$file lacks $what" >&2; failed=1; }
    done
}

# refuse FILE WHAT PATTERN: it does not
refuse() {
    if grep -Eq -e "$3" "$facts"; then
        echo "$1 has $2" >&2
        failed=1
    fi
}

linux=$(find out/linux -name '*.so' -o -name j4tavla)
for file in $linux; do
    readelf -W -h -l -d -n --dyn-syms "$file" >"$facts"
    expect "$file" "a free choice of its address" '^ *Type: +DYN '
    expect "$file" "addresses that are complete and read-only" 'GNU_RELRO' '\(FLAGS_1\).* NOW'
    expect "$file" "a stack without code" 'GNU_STACK .* RW +0x'
    expect "$file" "the mark of the shadow stack" 'x86 feature:.*SHSTK'
    refuse "$file" "another search path than its own folder" '\((RPATH|RUNPATH)\).*\[(\$ORIGIN.+|[^$].*)?\]'
    case $file in
    *libsorvane64.so) ;; # it has nothing on the stack to watch
    *) expect "$file" "the stack protector" ' __stack_chk_fail' ;;
    esac
    case $file in
    */j4tavla) expect "$file" "the checks of the C library" '\(FLAGS_1\).* PIE' ' __[a-z]*printf_chk' ;;
    esac
    # Where calls through pointers arrive: the functions that the dynamic linker hands out.
    case $file in
    *libj4bench.so) ;; # it hands out none
    *.so)
        objdump -d --no-show-raw-insn "$file" | awk '/<J4_[A-Za-z]*(@@Base)?>:$/ { name = $2; getline; print name, $2 }' >"$facts"
        expect "$file" "the exported functions" '<J4_Calibrate'
        refuse "$file" "a function without the mark for calls through pointers" '<J4_.*>: ([^e]|e[^n])' ;;
    esac
done

windows=$(find out/windows -name '*.dll' -o -name '*.exe')
for file in $windows; do
    { x86_64-w64-mingw32-objdump -p "$file"; strings "$file"; } >"$facts"
    expect "$file" "a free choice of its address" HIGH_ENTROPY_VA DYNAMIC_BASE '^Entry 5 .* 0*[1-9a-f][0-9a-f]* Base Reloc'
    expect "$file" "data without code" NX_COMPAT
    case $file in
    */sorvane64.dll) ;; # as on Linux
    *) expect "$file" "the stack protector" '^\*\*\* stack smashing detected' ;;
    esac
    others=$(sed -n 's/.*DLL Name: //p' "$facts" | grep -Ev '^(KERNEL32|msvcrt|j4bench)\.dll$' || true)
    [ -z "$others" ] || { echo "$file needs" $others >&2; failed=1; }
done

[ "$failed" -eq 0 ] || exit 1
echo "hardened: $(echo $linux $windows | wc -w) programs and libraries"
