#!/bin/bash
# A file is split and joined again through the real forms and dialogs.
# usage: split_and_join.sh PROGRAM, on a display of its own
. "$(dirname "$0")/lib.sh"

file="$home/files/some file.bin"
head -c 1000 /dev/urandom >"$file"

# By keyboard alone: from the selection form to three pieces.
start
await form Selection
key Return
choose "Select File To Sly" "$file"
await form Slyver
key shift+Tab   # From "Sly It" back to the options, of which the first is chosen.
key Down space Tab # The second one, and on to the size.
key Tab
xdotool type "x3"
key Return
confirm         # File Successfully Sly.
await_end
for i in 1 2 3; do
  [ -f "$file.$i.sly" ] || fail "piece $i is missing"
done
[ "$(stat -c %s "$file.1.sly")" = 334 ] || fail "piece 1 does not have 334 bytes"
cat "$file".?.sly | cmp - "$file" || fail "the pieces are not the file"

# By mouse: "Join File".
mv "$file" "$home/files/original"
start
await form Selection
measure Selection
point Selection $((WIDTH * 3 / 4)) $((HEIGHT * 45 / 100))
xdotool click 1
confirm         # Are they in the same folder?
choose "Select File To Join." "$file.2.sly"
confirm         # File Joined.
await_end
cmp "$file" "$home/files/original" || fail "the joined file is not the original"

# From the command line, over a file that is there.
head -c 10 /dev/zero >"$file"
start "$file.3.sly"
confirm         # Are they in the same folder?
choose "Please Select Any Other File To Join." "$file.1.sly"
confirm         # Replace it?
confirm         # File Joined.
await_end
cmp "$file" "$home/files/original" || fail "the file joined from the command line is not the original"
[ ! -e "$home/files/temprrr" ] || fail "the work folder is still there"

# A long job is stopped by closing its window, and leaves nothing.
truncate -s 43G "$home/files/big"
mkdir "$home/out"
start "$home/files/big"
await form Slyver
key Return
has_begun() { [ -n "$(ls -A "$home/files" | grep -v -e '^big$' -e '^some file' -e '^original$')" ]; }
until_true "the first piece" has_begun
point_at_caption_button Slyver 1
xdotool click 1
await_end
[ "$(ls -A "$home/files" | wc -l)" = 6 ] || fail "the stopped job has left: $(ls -A "$home/files")"

echo "split and join: passed"
