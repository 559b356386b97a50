#!/bin/bash
# Two files are hidden in a picture and recovered again through the real forms and dialogs.
# usage: hide_and_recover.sh PROGRAM SLY, on a display of its own; SLY is the terminal program
. "$(dirname "$0")/lib.sh"
sly=$2

cd "$home/files" || exit 1
head -c 5003 /dev/urandom >picture.png
head -c 777 /dev/urandom >first.zip
printf 'the second one' >"second file.txt"
echo geheim >password
"$sly" hide --quiet picture.png first.zip --password-file password >/dev/null
mv "Hidden File picture.png" by_sly_1
"$sly" hide --quiet --yes by_sly_1 "second file.txt" --password-file password >/dev/null
mv "Hidden File by_sly_1" by_sly_2

# opens N: from the selection form to the form of its button number N, by keyboard.
opens() {
  start
  await form Selection
  for ((i = 0; i < $1; ++i)); do key Tab; done
  key space
  await form "$2"
}

# The first file, by keyboard.
opens 2 "Hide File"
key space       # Browse
choose "Select File In Which You Want To Hide File." "$home/files/picture.png"
choose "Select File You Want To Hide." "$home/files/first.zip"
await form "Hide File"
xdotool type geheim
key Tab
xdotool type geheim
key Return
confirm         # File Hidden.
await_end
cmp "Hidden File picture.png" by_sly_1 || fail "the window has hidden other bytes than sly"

# The second one, by mouse where there is something to click on.
mv "Hidden File picture.png" carrier.png
opens 2 "Hide File"
point "Hide File" -50 75
xdotool click 1 # Browse
choose "Select File In Which You Want To Hide File." "$home/files/carrier.png"
choose "Select File You Want To Hide." "$home/files/second file.txt"
await form "Hide File"
xdotool type x
key Tab
xdotool type x
point "Hide File" -130 -30
xdotool click 1 # Hide
confirm         # Add another?
await dialog Slyver
xdotool type geheim
confirm         # The password of the last file.
confirm         # File Hidden.
await_end
cmp "Hidden File carrier.png" by_sly_2 || fail "the window has added other bytes than sly"
mv "Hidden File carrier.png" carrier.png

# The second file is chosen in the list.
opens 3 Recover
key space       # Browse
choose "Select File From Which You Want To Recover File" "$home/files/carrier.png"
await form Recover
xdotool type geheim
key Return
await form "Select File To Recover :"
key Down Return
confirm         # File Recovered.
await_end
cmp "Original second file.txt" "second file.txt" || fail "the second file is not the same"
[ ! -e "Original first.zip" ] || fail "a file that was not chosen was recovered"

# The main file, by mouse.
opens 3 Recover
key space
choose "Select File From Which You Want To Recover File" "$home/files/carrier.png"
await form Recover
xdotool type geheim
point Recover -130 -30
xdotool click 1 # Rec Main
confirm         # File Recovered.
await_end
cmp "Original carrier.png" picture.png || fail "the main file is not the same"
[ ! -e TempRRR ] || fail "the work folder is still there"
[ ! -e "$(private_folder)/tempHHH" ] || fail "the private work folder is still there"

echo "hide and recover: passed"
