#!/bin/bash
# The window chrome under a window manager, by mouse and by keyboard, and how the program starts.
# usage: windows.sh PROGRAM, on a display of its own
. "$(dirname "$0")/lib.sh"

state_has() { xprop -id "$form" _NET_WM_STATE | grep -q "$1"; }
# The pointer goes on until the window follows: the window manager takes it over in its own time.
drags() { # drags VARIABLE PIXELS: the form's X or WIDTH grows with the pointer.
  xdotool mousemove_relative "$2" 0 && measure Slyver && [ "${!1}" -gt "$before" ]
}
drag() { # drag VARIABLE X Y: takes hold of the form there.
  measure Slyver
  before=${!1}
  point Slyver "$2" "$3"
  xdotool mousedown 1
  until_true "$1 to grow" drags "$1" 7
  xdotool mouseup 1
}
opens_menu() { # opens_menu KEY...
  key "$@"
  until_true "the menu" menu_is_open
}
chooses() { # chooses SETTING KEY...: what is chosen in the open menu is stored.
  key "${@:2}"
  until_true "the setting" ram_setting_is "$1"
  until_true "the end of the menu" menu_is_closed
}
system_menu() {
  click Slyver 200 12 3
  until_true "the window's menu" menu_is_open
}

touch "$home/files/file"
start "$home/files/file"
await form Slyver
form=$(window form Slyver)
drag X 200 12
drag WIDTH -2 150

# Maximized by a double-click, restored by its button.
measure Slyver
width=$WIDTH
point Slyver 200 12
xdotool click --repeat 2 --delay 50 1
is_maximized() { measure Slyver && [ "$X" = 0 ] && [ "$WIDTH" -gt 1000 ]; }
is_restored() { measure Slyver && [ "$WIDTH" = "$width" ]; }
until_true "the maximized window" is_maximized
click_caption Slyver 2
until_true "the restored window" is_restored

# Minimized by its button, and back.
click_caption Slyver 3
until_true "the minimized window" state_has HIDDEN
xdotool windowactivate "$form"
await form Slyver

# Menus by keyboard: by letter, then by the arrows from the other one.
opens_menu alt+r
chooses 0 Return
key F10 Right
opens_menu Down
chooses "" Right Down Return
opens_menu alt+h
key Escape
until_true "the end of the menu" menu_is_closed

# Moved by keyboard through the window's own menu, and closed by it.
measure Slyver
x0=$X
system_menu
key m
until_true "the end of the menu" menu_is_closed
moves_by_key() { key Right && measure Slyver && [ "$X" -gt "$x0" ]; }
until_true "the window to move by keys" moves_by_key
key Return
system_menu
key c
await_end

# Esc leaves the selection form. A second instance asks; the first one goes on.
start
await form Selection
first=$slyver
start
answer Escape
await_end
kill -0 "$first" || fail "the first instance has ended too"
slyver=$first
key Escape
await_end

# Without a runtime folder there is nothing to say at the end.
if [ -z "${SLYVER_E2E_WINE:-}" ]; then
  XDG_RUNTIME_DIR=/proc/none/x start
  await form Selection
  click_caption Selection 1
  await_end
  # A name that is no text in any locale comes through as it is.
  name=$(printf 'b\344d')
  truncate -s 2M "$home/files/$name"
  LC_ALL=C start "$home/files/$name"
  await form Slyver
  key Return
  confirm # File Successfully Sly.
  await_end
  [ -s "$home/files/$name.2.sly" ] || fail "the pieces of a name that is no text are not there"
  # In a terminal it answers.
  "$program" --help | grep -q sly && "$program" --version | grep -q '[0-9]' || fail "no help"
  "$program" a b 2>"$home/refusal" && fail "two files were taken"
  grep -q 'one file at a time' "$home/refusal" || fail "two files: $(cat "$home/refusal")"
  DISPLAY='' "$program" 2>"$home/refusal" && fail "it needs a display"
  grep -q 'use sly' "$home/refusal" || fail "without a display: $(cat "$home/refusal")"
fi

echo "windows: passed"
