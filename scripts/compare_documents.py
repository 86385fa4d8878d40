#!/usr/bin/env python3
"""Compares the documents with the sources and names what is missing or wrong in them.

- Every text in the library's sources, so every text that a failure can have, stands in docs/errors.md,
  docs/options.md or docs/protocol.md. Texts are taken from all string literals, so that no way of throwing escapes.
- The option keys of the library and those of docs/options.md are the same, with number, section and what is answered
  here; so are the keys of the header, and the typed ones in C++ and C#. Every property number stands in
  docs/options.md and no other, every key of the virtual table in docs/simulator.md.
- Every command of the table's protocol stands in docs/protocol.md, and every frame there has its right checksum.
- Every status stands in docs/errors.md.
- Every keyword and field of the tool's files stands in docs/files.md, and the exit codes there are the tool's.
- Links between the documents, and to their headings, lead somewhere.
- The version is everywhere that of CMakeLists.txt.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SOURCE_FOLDERS = ["src", "c_sdk/src", "usbio", "Utilities", "Generic/Configuration", "Generic/Utilities"]

# Literals that no user ever sees: names for the linker, date formats, parts of the compiler's own texts.
NOT_SHOWN = re.compile(r"J4_\w+|SetupDi\w+|setupapi\.dll|operator|\[abi:| \[with |j4TavlaCorrection|%[-%:/HMSYmd]+"
                       r"|\\\\\.\\USBIO_Device%d|0123456789(abcdef)?|\\src\\|TlsAlloc|kernel32\.dll")

# What docs/options.md says of a direction in which a key is not this library's.
INSTRUMENT = "goes to the instrument's library"

problems = []


def character(escape):
    """What an escape sequence of a literal stands for; a byte by its number is no letter of a text that is shown."""
    return {"n": "\n", "t": "\t", "r": "\r"}.get(escape[1], escape[1] if len(escape[1]) == 1 else "")


def literals(path):
    """The string literals of a C++ source, without those of comments and #include lines."""
    text = path.read_text(encoding="utf-8")
    text = re.sub(r"^[ \t]*#[ \t]*include.*$", "", text, flags=re.M)
    for token in re.finditer(r'//[^\n]*|/\*.*?\*/|\'(?:[^\'\\\n]|\\.)+\'|"((?:[^"\\\n]|\\.)*)"', text, flags=re.S):
        if token.group(1) is not None:
            yield re.sub(r"\\(x[0-9a-fA-F]{2}|.)", character, token[1])


def document(name):
    return (ROOT / "docs" / name).read_text(encoding="utf-8")


def require(found, problem):
    if not found:
        problems.append(problem)


def numbers(source, pattern):
    return re.findall(pattern, (ROOT / source).read_text(encoding="utf-8"))


def covers(page, number):
    """Whether a table of the page has the number, alone, in a list, or in "N to M"."""
    for cell in re.findall(r"^\| ([^|]*\d[^|]*) \|", page, flags=re.M):
        for first, last in re.findall(r"(\d+)(?: to (\d+))?", cell):
            if int(first) <= number <= int(last or first):
                return True
    return False


def check_texts(pages):
    count = 0
    for folder in SOURCE_FOLDERS:
        for path in sorted((ROOT / folder).rglob("*.[ch]*")):
            for text in literals(path):
                if re.search(r"[A-Za-z]{4}", text) and not NOT_SHOWN.fullmatch(text):
                    count += 1
                    shown = text.strip().replace("Error code 0x%08X: %s", "Error code 0xN: TEXT")
                    # One of the driver's statuses written out is the row of their table.
                    shown = re.sub(r"^Error code (0x[0-9A-F]{8}): ", r"`\1` | ", shown)
                    require(shown in pages, f"{path.relative_to(ROOT)}: no document has the text '{text}'")
    return count


def constants(source):
    """The constants of a header by name, "PropertyId::MoveSpeed" for one in a namespace."""
    text = (ROOT / source).read_text(encoding="utf-8")
    return {f"{space}::{name}": int(value)
            for space, body in re.findall(r"^namespace (\w+) \{\n(.*?)^\}", text, flags=re.M | re.S)
            for name, value in re.findall(r"uint16_t (\w+) = (\d+);", body)}


def key_rows(numbers):
    """The library's own table of option keys: key, (number as text, section of the document, read here, written here)."""
    sections = {"Table": "Table options", "Block": "Configuration block", "Facade": "Options of the library"}
    rows = {}
    text = (ROOT / "src/OptionKeys.cpp").read_text(encoding="utf-8")
    for key, number, answers, reading, writing in re.findall(
            r'\{"([^"]+)",\s*([\w: +]+),\s*Answers::(\w+),\s*Reading::(\w+),\s*Writing::(\w+)\}', text):
        name, _, offset = number.partition(" + ")
        value = str(numbers[name] + int(offset or 0)) if name in numbers else ""
        rows[key] = (value, sections[answers], reading != "Instrument", writing != "Instrument")
    return rows


def documented_rows(options):
    """The same out of docs/options.md."""
    rows = {}
    for section in ("Table options", "Options of the library", "Configuration block"):
        heading, *lines = re.findall(r"^\| (.*) \|$", options.split(f"\n## {section}\n")[1].split("\n## ")[0], flags=re.M)
        columns = [cell.strip() for cell in heading.split("|")]
        for line in lines:
            if line.startswith("number "):
                break
            cells = dict(zip(columns, (cell.strip() for cell in line.split("|"))))
            for key in re.findall(r"^`([^`]+)`", cells["key"]):
                number = cells.get("number") or "".join(re.findall(r"value (\d+)$", cells["reading"]))
                here = [cells.get(column, INSTRUMENT) != INSTRUMENT for column in ("reading", "writing")]
                rows[key] = (number, section, *here)
    return rows


def check_keys(options):
    ids = {**constants("src/j4TableProperties.h"), **constants("src/Flash/j4TableFlashData.h")}
    keys, documented = key_rows(ids), documented_rows(options)
    for key in sorted({*keys, *documented}):
        require(keys.get(key) == documented.get(key),
                f"`{key}`: the library has {keys.get(key)}, docs/options.md {documented.get(key)}")
    header = (ROOT / "c_sdk/include/j4tavla.h").read_text(encoding="utf-8")
    in_header = {key for cell in re.findall(r'^ \* \| (".*?") .*? \|', header, flags=re.M)
                 for key in re.findall(r'"([^"]+)"', cell) if not key.isdigit()}
    for key in sorted({*keys} ^ in_header):
        problems.append(f"`{key}` stands in only one of src/OptionKeys.cpp and j4tavla.h")
    check_typed_keys({*keys, *re.findall(r"[`\"]([\w.]+)[`\"]", header)})
    for number in sorted(set(ids.values())):
        require(covers(options, number), f"docs/options.md has no row for the number {number}")
    check_properties(options, ids)
    simulator = document("simulator.md")
    bench = {text for path in (ROOT / "simulator").rglob("SimulatorOptions.cpp") for text in literals(path)
             if re.fullmatch(r"Simulator\.\w+", text)}
    for key in sorted(bench):
        require(f"| `{key}` |" in simulator, f"docs/simulator.md has no row for `{key}`")
    return len(keys) + len(set(ids.values())) + len(bench) if keys and ids and bench and in_header else 0


def check_typed_keys(known):
    """The options that have a type in C++ and in C# are the same, and each is one."""
    header, source = [(ROOT / "c_sdk" / name).read_text(encoding="utf-8")
                      for name in ("include/j4tavla.hpp", "csharp/J4Tavla.cs")]
    in_header = set(re.findall(r'inline constexpr Read[^;]*\{\s*"([^"]+)"\};', header))
    in_source = set(re.findall(r'get \{ return [^"}]*[(\[]"([^"]+)"', source))
    for key in sorted(in_header ^ in_source):
        problems.append(f"`{key}` has a type in only one of j4tavla.hpp and J4Tavla.cs")
    for key in sorted(in_header - known):
        problems.append(f"`{key}` of j4tavla.hpp is no option")
    require(in_header, "j4tavla.hpp has no typed options")


def check_properties(options, ids):
    """Every number in the table of properties is one that the library has, alone or between a First and a Last."""
    ranges = [(ids[name], ids[name.replace("::First", "::Last")]) for name in ids
              if "::First" in name and name.replace("::First", "::Last") in ids and not name.endswith("TableValue")]
    section = options.split("\n## Numbered properties\n")[1].split("\n## ")[0]
    for cell in re.findall(r"^\| (\d[^|]*) \|", section, flags=re.M):
        for number in map(int, re.findall(r"\d+", cell)):
            require(number in ids.values() or any(first <= number <= last for first, last in ranges),
                    f"docs/options.md has a property {number} that the library has not")


def check_protocol(protocol):
    commands = numbers("src/Communication/j4TableCommands.h",
                       r"CommandDefinition (\w+)\{'(.)', (?:'(.)'|NoSubCommand)")
    for name, letter, sub in commands:
        require(re.search(rf"^\| `;{letter}{sub}`[^|]*\| {name} \|", protocol, flags=re.M),
                f"docs/protocol.md has no row for {name}, ;{letter}{sub}")
    frames = [frame for frame in re.findall(r"`([;:][^`\n]*)`", protocol) if re.search(r"[0-9a-f]{2}$", frame)
              and len(frame) > 3]
    for frame in frames:
        require((sum(frame[:-2].encode()) + int(frame[-2:], 16)) % 256 == 0,
                f"docs/protocol.md: the checksum of {frame} is wrong")
    return len(commands) + len(frames)


def check_statuses(errors):
    statuses = numbers("c_sdk/include/j4tavla.h", r"(J4_Result\w+) = (\d+)")
    for name, number in statuses:
        require(f"| {number} | `{name}` |" in errors, f"docs/errors.md has no row for {name}, {number}")
    return len(statuses)


def check_files(files):
    """Names such as "LAYOUT_ROWS" are keywords and fields, but for those of the environment and of the format itself."""
    words = {text for folder in ("chart", "tools") for path in sorted((ROOT / folder).rglob("*.[ch]*"))
             if path.name != "CgatsFile.cpp" and path.suffix in (".h", ".cpp")
             for text in literals(path) if re.fullmatch(r"[A-Z][A-Z0-9]*(_[A-Z0-9]+)+", text)}
    words -= {"XDG_STATE_HOME", "SOURCE_DATE_EPOCH", "J4TAVLA_OPTIONS"}
    for word in sorted(words):
        group = re.sub(r"(CMYK|CMY|RGB|LAB|XYZ)_[A-Z]$", lambda name: name[1] + "_" + name[1][0], word)
        require(word in files or group in files, f"docs/files.md does not tell of {word}")
    header = (ROOT / "tools/ExitCode.h").read_text(encoding="utf-8")
    values = dict(re.findall(r"(\w+) = (\d+),", header))
    codes = [f"| {values[name]} | {text} |" for name, text in re.findall(r'\{ExitCode::(\w+), "(.*?)"\}', header)]
    section = files.split("\n## Exit codes\n")[1]
    require(re.findall(r"^\| \d.*\|$", section, flags=re.M) == codes, "docs/files.md has other exit codes than the tool")
    return len(words) and len(codes) and len(words) + len(codes)


def anchor(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def check_links():
    count = 0
    for path in sorted([ROOT / "README.md", *(ROOT / "docs").glob("*.md")]):
        for target in re.findall(r"\]\(([^)\s]+)\)", path.read_text(encoding="utf-8")):
            if "://" in target:
                continue
            name, _, heading = target.partition("#")
            linked = path.parent / name if name else path
            found = linked.exists()
            if found and heading:
                headings = re.findall(r"^#+ (.*)$", linked.read_text(encoding="utf-8"), flags=re.M)
                found = heading in map(anchor, headings)
            count += 1
            require(found, f"{path.relative_to(ROOT)}: the link {target} leads nowhere")
    return count


def check_version():
    version = re.search(r"^project\(\w+ VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"), flags=re.M)[1]
    count = 0
    for path in [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md")), ROOT / "c_sdk/include/j4tavla.h",
                 ROOT / "python/j4tavla/_version.py"]:
        text = path.read_text(encoding="utf-8")
        for found in re.findall(r"(?<![\d.])\d+(?:\.\d+){3}(?![\d.])|(?<=Version )\d+\.\d+\.\d+  Build \d+", text):
            count += 1
            require(found.replace("  Build ", ".") == version, f"{path.relative_to(ROOT)}: {found} is not the version {version}")
    return count


def main():
    errors, options, protocol = document("errors.md"), document("options.md"), document("protocol.md")
    counts = {
        "texts": check_texts("\n".join((errors, options, protocol))),
        "keys and numbers": check_keys(options),
        "commands and frames": check_protocol(protocol),
        "statuses": check_statuses(errors),
        "keywords, fields and exit codes": check_files(document("files.md")),
        "links": check_links(),
        "versions": check_version(),
    }
    for problem in problems:
        print(problem, file=sys.stderr)
    # A pattern that no longer matches its source must not pass for a document without faults.
    for name, count in counts.items():
        if count == 0:
            problems.append(name)
            print(f"no {name} were found to check", file=sys.stderr)
    print("documents: " + ", ".join(f"{count} {name}" for name, count in counts.items()))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
