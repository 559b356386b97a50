#!/bin/bash
# Runs jobs of the desktop program and closes the window in the middle of them.
# usage: window.sh PROGRAM HOME VARIABLE=VALUE..., on a display of its own; the variables are the
# program's alone. Reads a line for each: a job (split, join, hide, recover) and the seconds from its
# start to the closing. Prints how each has ended.
. "$(dirname "$0")/../e2e/lib.sh"
files=$2/files
export XDG_RUNTIME_DIR=$2/run XDG_CONFIG_HOME=$2/config
variables=("${@:3}")
start() {
  env "${variables[@]}" "$program" "$@" 2>"$home/slyver.log" &
  slyver=$!
}

# Each brings the program to the point from which the next Enter starts the job.
begin_split() {
  start "$files/whole.bin"
  await form Slyver
}
begin_join() {
  start "$files/whole.bin.1.sly"
  confirm         # Are they in the same folder?
  await dialog "Please Select Any Other File To Join."
  sleep 1         # Until it has listed the folder: the piece is selected then.
}
# opens N TITLE: from the selection form to the form of its button number N.
opens() {
  start
  await form Selection
  for ((i = 0; i < $1; ++i)); do key Tab; done
  key space
  await form "$2"
  key space       # Browse
}
begin_hide() {
  opens 2 "Hide File"
  choose "Select File In Which You Want To Hide File." "$files/main.jpg"
  choose "Select File You Want To Hide." "$files/first.zip"
  await form "Hide File"
  xdotool type geheim && key Tab && xdotool type geheim && key Return
  await dialog Slyver  # The files are big. Go on?
}
begin_recover() {
  opens 3 Recover
  choose "Select File From Which You Want To Recover File" "$files/carrier.jpg"
  await form Recover
  xdotool type geheim && key Return
  confirm         # The file is big. Go on?
  await form "Select File To Recover :"
  key Down
}

while read -r job delay; do
  "begin_$job"
  key Return
  sleep "$delay"
  key alt+F4  # Closes whatever window has the keyboard.
  deadline=$((SECONDS + patience))
  until is_ended; do
    [ $SECONDS -lt $deadline ] || fail "waited in vain for the end of the program"
    window dialog Slyver >/dev/null && key Return  # It was done before.
    sleep 0.02
  done
  wait "$slyver"
  echo "ended $?"
done
