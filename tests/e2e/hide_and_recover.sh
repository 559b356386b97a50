#!/bin/bash
# A second file is hidden in a picture and recovered through the real forms and dialogs.
# usage: hide_and_recover.sh PROGRAM SLY, on a display of its own; SLY is the terminal program
. "$(dirname "$0")/lib.sh"
sly=$2

cd "$home/files" || exit 1
head -c 5003 /dev/urandom >carrier.png
head -c 777 /dev/urandom >first.zip
printf 'the second one' >"second file.txt"
echo geheim >password
"$sly" hide --quiet carrier.png first.zip --password-file password >/dev/null
mv "Hidden File carrier.png" carrier.png

# opens N FORM: from the selection form to the form of its button number N, by keyboard.
opens() {
  start
  await form Selection
  for ((i = 0; i < $1; ++i)); do key Tab; done
  key space
  await form "$2"
}
# By mouse where there is something to click on.
opens 2 "Hide File"
click "Hide File" -50 75 # Browse
choose "Select File In Which You Want To Hide File." "$home/files/carrier.png"
choose "Select File You Want To Hide." "$home/files/second file.txt"
await form "Hide File"
xdotool type x
key Tab
xdotool type x
click "Hide File" -130 -30 # Hide
confirm                    # Add another?
await dialog Slyver
xdotool type geheim
confirm # The password of the last file.
confirm # File Hidden.
await_end

# The second file is chosen in the list.
opens 3 Recover
key space # Browse
choose "Select File From Which You Want To Recover File" "$home/files/Hidden File carrier.png"
await form Recover
xdotool type geheim
key Return
await form "Select File To Recover :"
key Down Return
confirm # File Recovered.
await_end
same "Original second file.txt" "second file.txt"
[ ! -e "Original first.zip" ] || fail "a file that was not chosen was recovered"
[ -z "$(find "$home" -iname 'temp[HPR]*')" ] || fail "a work folder is still there"

echo "hide and recover: passed"
