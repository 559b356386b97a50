#!/bin/bash
# What the program for Windows does to the registry, as Wine's own tool exports it: the menu's
# setting, the answers to the warning about memory, and which ends of the program delete the value
# that outside components leave.
# usage: wine_settings.sh PROGRAM, on a display of its own, with SLYVER_E2E_WINE=1
. "$(dirname "$0")/lib.sh"

settings='HKLM\Software\Orm Valis\Slyver'
components='HKLM\Software\Orm Valis\FC'
shell_value='HKCR\StrTempSly'

# await_end_with KEPT|DELETED WHAT: the program ends, and the value is then as told.
leave_values() {
  wine reg add "$components" /v filepath /d left /f >/dev/null 2>&1
  wine reg add "$shell_value" /v filepath /d left /f >/dev/null 2>&1
}
await_end_with() {
  await_end
  local value expected=
  [ "$1" = DELETED ] || expected='"left"'
  value=$(registry "$components" filepath)
  [ "$value" = "$expected" ] || fail "$2: the value is $value, not ${expected:-deleted}"
  echo "  $2: $1"
}
refuse() { # Answers with the last button: No or Cancel.
  await dialog Slyver
  local id
  id=$(window dialog Slyver)
  key Escape
  until_true "the end of a question" window_is_gone "$id"
}
# A question with Yes and No has no button that Esc presses.
say_no() {
  await dialog Slyver
  local id
  id=$(window dialog Slyver)
  key n
  until_true "the end of a question" window_is_gone "$id"
}
cancel() { # cancel TITLE: of a file dialog.
  await dialog "$1"
  key Escape
  until_true "the end of a dialog" is_gone dialog "$1"
}

file="$home/files/file.bin"
head -c 1450001 /dev/urandom >"$file"
wine reg delete "$settings" /f >/dev/null 2>&1

echo "The menu RAM Warning:"
start "$file"
await form Slyver
[ -z "$(registry "$settings" RAM)" ] || fail "there is a setting before anything was chosen"
key alt+r
until_true "the menu" menu_is_open
key Return
until_true "the setting" ram_setting_is 0
echo "  first item: $(registry "$settings" RAM)"
key alt+r
until_true "the menu" menu_is_open
key Down Return
until_true "the setting" ram_setting_is ""
echo "  second item: $(registry "$settings" RAM)"
leave_values
point_at_caption_button Slyver 1
xdotool click 1
await_end_with DELETED "the last window closed"
[ -z "$(registry "$shell_value" filepath)" ] || fail "the shell's value was kept"

echo "The ends of the program:"
leave_values
start
await form Selection
key Escape
await_end_with KEPT "Cancel of the selection form"

start
await form Selection
key Return
cancel "Select File To Sly"
confirm # Do you want to exit?
await_end_with DELETED "no file chosen to split"

leave_values
start "$home/files"
confirm
await_end_with DELETED "a folder on the command line"

leave_values
start "$file.1.sly"
say_no  # Are they in the same folder?
await_end_with DELETED "No to the question about the pieces"

leave_values
start
await form Selection
first=$slyver
start
refuse  # Another instance?
await_end_with DELETED "no second instance"
slyver=$first
key Escape
await_end

leave_values
start "$file"
await form Slyver
key Return
confirm # File Successfully Sly.
await_end_with DELETED "a split done"

leave_values
rm "$file"
start "$file.1.sly"
confirm # They are in the same folder.
choose "Please Select Any Other File To Join." "$file.1.sly"
confirm # File Joined.
await_end_with DELETED "a join done"

# Wine tells its programs of the memory that this file of the system's reports.
if ! unshare -m true 2>/dev/null; then
  echo "The warning about memory is left out: this user cannot make a report of little memory."
else
  echo "The warning about memory:"
  printf 'MemTotal: 4000000 kB\nMemFree: 200000 kB\nMemAvailable: 200000 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n' \
    >"$home/meminfo"
  launch() {
    exec unshare -m sh -c 'mount --bind "$0" /proc/meminfo && exec wine "$@"' "$home/meminfo" "$program"
  }
  leave_values
  start
  say_no  # Continue?
  await_end_with KEPT "No to the warning about memory"
  ram_setting_is "" || fail "the setting has changed"
  start
  confirm # Continue.
  say_no  # See this warning again?
  await form Selection
  echo "  not to be seen again: $(registry "$settings" RAM)"
  ram_setting_is 0 || fail "the answer was not kept"
  key Escape
  await_end
  start
  await form Selection  # Without a warning.
  key Escape
  await_end
fi
echo "settings: passed"
