#!/bin/bash
# A piece is opened by its type, in the system that has the packages installed, and joined.
# usage: installed.sh ROOT COMMAND..., on a display of its own; COMMAND... runs another in the system
# below ROOT
. "$(dirname "$0")/lib.sh"
root=$1
shift
inside=("$@" DISPLAY="$DISPLAY" GDK_BACKEND=x11)
native() { printf '%s' "${1#"$root"}"; }
launch() { exec "${inside[@]}" xdg-open "$(native "$1")"; }

"${inside[@]}" rm /pieces/whole || fail "there are no pieces"
start "$root/pieces/whole.2.sly"
confirm # They are in the same folder.
choose "Please Select Any Other File To Join." "$root/pieces/whole.2.sly"
confirm # File Joined.
await_end
cmp "$root/pieces/whole" "$root/pieces/kept" || fail "the opened piece was joined wrongly"
echo "installed: passed"
