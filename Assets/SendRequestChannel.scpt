#!/bin/sh
# SendRequestChannel: carries one request to an application of this user and prints its answer.
#
#     SendRequestChannel.scpt send IDENTIFIER JSON
#
# IDENTIFIER is the bundle identifier of the application addressed. JSON is the request; "-" stands for a text
# that comes by standard input, as every larger one does. The application's own answer goes to standard output,
# and nothing else does. A failure ends with a status other than 0 and, as the last line on standard error,
#
#     error NUMBER: TEXT
#
#     -1743  the application refused this caller      -1712  no answer in time
#      -600  the application is not there              -609  no session bus
#     -1708  it has no such command                   -1715  a text that can't be sent
#     -2700  anything else
#
# The request is carried by the first of these that is there:
#   1. the program that ZQ_RELAY names,
#   2. zq beside the application that runs this script (ZQ_APPLICATION_DIRECTORY),
#   3. zq on the PATH,
#   4. busctl, for texts of up to 64 KiB.
# The first three are called as "PROGRAM relay IDENTIFIER", read the request from standard input, print the
# answer, and fail as this script does.

fail() {
    printf 'error %s: %s\n' "$1" "$(printf %s "$2" | tr '\n' ' ')" >&2
    exit 1
}

find_relay() {
    for program in "$ZQ_RELAY" "${ZQ_APPLICATION_DIRECTORY:+$ZQ_APPLICATION_DIRECTORY/zq}"; do
        if [ -n "$program" ] && [ -f "$program" ] && [ -x "$program" ]; then
            printf '%s' "$program"
            return
        fi
    done
    command -v zq
}

# busctl prints {"type":"s","data":["..."]} in one line, the answer as a JSON string: \" \\ \b \f \n \r \t and
# \u00XX for the other controls, everything else as it is. printf's %b knows all of these but the last, which it
# takes as \0 and octal. A control, which doesn't stand there bare, keeps the place of an escaped backslash, so
# that the letter behind it isn't taken for an escape.
print_answer() {
    place=$(printf '\001')
    controls=$(code=1; while [ $code -lt 32 ]; do printf 's/\\\\u%04x/\\\\0%03o/g;' $code $code; code=$((code + 1)); done)
    printf '%b' "$(printf '%s\n' "$1" | LC_ALL=C sed 's/^{"type":"s","data":\["//; s/"\]}$//; s/\\\\/'"$place"'/g
        s/\\"/"/g; '"$controls"' s/'"$place"'/\\\\/g')"
}

send_by_busctl() {
    command -v busctl >/dev/null || fail -2700 "neither zq nor busctl is there to reach the session bus"
    json=$2
    if [ "$json" = - ]; then
        json=$(head -c 65537 && printf .)
        json=${json%.}
        [ "$(printf %s "$json" | wc -c)" -le 65536 ] || fail -1715 "the request is too large for busctl; zq is needed"
    fi
    path=/$(printf %s "$1" | LC_ALL=C tr . / | LC_ALL=C tr -c 'A-Za-z0-9/' _)
    if answer=$(busctl --user --json=short --timeout=120 call -- "$1" "$path" com.tessara.ZQCore.Scripting \
        request s "$json" 2>&1); then
        print_answer "$answer"
        return
    fi
    case $answer in
        *"Access denied"* | *"not permitted"* | *"ermission denied"*) fail -1743 "$answer" ;;
        *"not provided by any"* | *"does not exist"* | *"no such name"*) fail -600 "$answer" ;;
        *"onnect to bus"* | *"Failed to set bus address"*) fail -609 "$answer" ;;
        *"nknown method"* | *"nknown interface"* | *"nknown object"*) fail -1708 "$answer" ;;
        *"timed out"*) fail -1712 "$answer" ;;
        *) fail -2700 "$answer" ;;
    esac
}

send() {
    relay=$(find_relay) || { send_by_busctl "$1" "$2"; return; }
    if [ "$2" = - ]; then
        exec "$relay" relay "$1"
    fi
    printf %s "$2" | "$relay" relay "$1"
}

case $1 in
    send)
        [ $# -eq 3 ] || fail -1715 "send takes an identifier and a text"
        send "$2" "$3"
        ;;
    *) fail -1708 "this script has no handler \"$1\"" ;;
esac
