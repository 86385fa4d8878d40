# Prepares a Markdown document for Doxygen 1.9, which knows no links to headings. Each heading gets an anchor of its
# own, "document-heading-in-words", and the links "#heading" and "document.md#heading" are turned to it.
function base(path) { sub(/^.*\//, "", path); sub(/\.md$/, "", path); return tolower(path) }
FNR == 1 { name = base(FILENAME) }
/^```/ { inCode = !inCode }
!inCode && /^##+ / {
    anchor = $0
    sub(/^#+ /, "", anchor)
    anchor = tolower(anchor)
    gsub(/[^a-z0-9_ -]/, "", anchor)
    gsub(/ /, "-", anchor)
    print $0 " {#" name "-" anchor "}"
    next
}
{
    line = ""
    rest = $0
    while (match(rest, /\]\([^):]*#[^) ]*\)/)) {
        target = substr(rest, RSTART + 2, RLENGTH - 3)
        hash = index(target, "#")
        page = hash > 1 ? base(substr(target, 1, hash - 1)) : name
        line = line substr(rest, 1, RSTART - 1) "](#" page "-" substr(target, hash + 1) ")"
        rest = substr(rest, RSTART + RLENGTH)
    }
    print line rest
}
