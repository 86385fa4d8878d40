#!/bin/sh
# Stands in for the program that TOOL names when the manual is made: brings its help into the form that help2man turns
# into sections and entries.
set -eu
"$TOOL" "$@" | awk '
/^Subcommands:/ { inCommands = 1; next }
/^Exit codes:/ { inCommands = 0; print "Exit codes:"; next }
# A command: a heading, its description, and the entries of its arguments and options.
inCommands && /^[a-z]/ { print "\nCommand " $0 ":"; isDescription = 1; next }
isDescription { print $0 "\n"; isDescription = 0; next }
inCommands && /^  (Positionals|Options):$/ { next }
{
    # What the parser says of kinds and ranges of values, and "-h,--help".
    sub(/ (TEXT|FLOAT|INT|UINT)(:[A-Z]+)?( in \[[^]]*\])?(=[0-9]+)?( |$)/, " ")
    sub(/ x [0-9]+( |$)/, " ")
    sub(/ REQUIRED/, "         ")
    sub(/:value in {[^ ]*} OR {[^ ]*}/, "")
    if ($1 ~ /^-.,--/) sub(/,/, ", ")
    print
}'
