#!/bin/bash
# The window chrome under a window manager: by mouse and by keyboard.
# usage: windows.sh PROGRAM, on a display of its own
. "$(dirname "$0")/lib.sh"

state_has() { xprop -id "$form" _NET_WM_STATE | grep -q "$1"; }
width_is() { measure Slyver && [ "$WIDTH" = "$1" ]; }

touch "$home/files/file"
start "$home/files/file"
await form Slyver
form=$(window form Slyver)

# Moved by the title bar.
measure Slyver
x0=$X
point Slyver 200 12
xdotool mousedown 1
# The pointer goes on until the window follows: the window manager takes it over in its own time.
moved() { xdotool mousemove_relative 10 0 && measure Slyver && [ "$X" -gt "$x0" ]; }
until_true "the window to move" moved
xdotool mouseup 1

# Made wider by its right edge.
measure Slyver
width=$WIDTH
point Slyver -2 150
xdotool mousedown 1
wider() { xdotool mousemove_relative 5 0 && measure Slyver && [ "$WIDTH" -gt "$width" ]; }
until_true "the window to grow" wider
xdotool mouseup 1

# Maximized by a double-click, restored by its button.
measure Slyver
width=$WIDTH
point Slyver 200 12
xdotool click --repeat 2 --delay 50 1
is_maximized() { measure Slyver && [ "$X" = 0 ] && [ "$WIDTH" -gt 1000 ]; }
until_true "the maximized window" is_maximized
point_at_caption_button Slyver 2
xdotool click 1
until_true "the restored window" width_is "$width"

# Minimized by its button, and back.
measure Slyver
point_at_caption_button Slyver 3
xdotool click 1
until_true "the minimized window" state_has HIDDEN
xdotool windowactivate "$form"
await form Slyver

# Menus by keyboard: by letter, then by the arrows from the other one.
key alt+r
is_closed() { ! menu_is_open; }
until_true "the menu" menu_is_open
key Return
until_true "the setting" ram_setting_is 0
until_true "the end of the menu" is_closed
key F10 Right Down
until_true "the Help menu" menu_is_open
key Right
key Down Return
until_true "the setting" ram_setting_is ""
until_true "the end of the menu" is_closed
key alt+h
until_true "the Help menu" menu_is_open
key Escape
until_true "the end of the menu" is_closed

# Moved by keyboard through the window's own menu, which a right click opens, and closed by it.
measure Slyver
x0=$X
point Slyver 200 12
xdotool click 3
until_true "the window's menu" menu_is_open
key m
until_true "the end of the menu" is_closed
moves_by_key() { key Right && measure Slyver && [ "$X" -gt "$x0" ]; }
until_true "the window to move by keys" moves_by_key
key Return
point Slyver 200 12
xdotool click 3
until_true "the window's menu" menu_is_open
key c
await_end

# Esc leaves the selection form.
start
await form Selection
key Escape
await_end

# A second instance asks.
start
await form Selection
first=$slyver
start
await dialog Slyver
key Escape
await_end
kill -0 "$first" || fail "the first instance has ended too"
slyver=$first
point_at_caption_button Selection 1
xdotool click 1
await_end

# A folder is refused.
start "$home/files"
confirm
await_end

echo "windows: passed"
