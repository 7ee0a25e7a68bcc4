#!/bin/sh
# The program's help in the shape that help2man makes sections of: every command's usage in the synopsis, every command
# under a heading of its own.  The lines at the end of each help are left out: manual_page.py has more on what they say.
# Usage: MENSURA=program help_to_man.sh --help-all|--version
set -eu
text=$("$MENSURA" "$@")
printf '%s\n' "$text" | awk '
    function say(line) { text = text line "\n" }

    /^Tables are CSV/    { closing = 1 }
    /^mensura [a-z]+:$/  { closing = 0 }
    closing              { next }
    /^Usage: /           { usage = usage (usage ? "  or:  " : "Usage: ") substr($0, 8) "\n"; next }
    /^mensura [a-z]+:$/  { command = substr($2, 1, length($2) - 1); say("*mensura " command "*"); next }
    /^Subcommands:$/     { say("*Commands*"); next }
    /^Options:$/         { say(command ? "Options of " command ":" : $0); next }
    /^Examples:$/        { say(command ? "For example:\n" : $0); examples = 1; next }
    /^$/                 { examples = 0 }
    examples             { say("  $ " substr($0, 3)); next }
    !command             { common[$0] = 1 }
    /^(  -|[A-Z].* )/    { if (command && $0 in common) next }
    /^  -[A-Za-z],-/     { sub(/,/, ", ") }
                         { say($0) }
    END                  { printf "%s%s", text, usage ? "\n" usage : "" }
'
