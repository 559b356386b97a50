#!/bin/bash
# A file is split and joined again through the real forms and dialogs.
# usage: split_and_join.sh PROGRAM, on a display of its own
. "$(dirname "$0")/lib.sh"

file="$home/files/some file.bin"
head -c 1000 /dev/urandom >"$file"
cp "$file" "$home/original"

# By keyboard alone: from the selection form to twelve pieces.
start
await form Selection
key Return
choose "Select File To Sly" "$file"
await form Slyver
key shift+Tab shift+Tab shift+Tab shift+Tab # From "Sly It" back to the options, of which the first is chosen.
key Down space Tab Tab                      # The second one, and on to the number.
xdotool type "x12"
key Return
confirm # File Successfully Sly.
await_end
[ "$(stat -c %s "$file.1.sly")" = 84 ] || fail "piece 1 does not have 84 bytes"
cat "$file".?.sly "$file".??.sly | cmp - "$file" || fail "the pieces are not the file"

# By mouse: "Join File".
rm "$file"
start
await form Selection
measure Selection
click Selection $((WIDTH * 3 / 4)) $((HEIGHT * 45 / 100))
confirm # Are they in the same folder?
choose "Select File To Join." "$file.2.sly"
confirm # File Joined.
await_end
same "$file" "$home/original"

echo "split and join: passed"
