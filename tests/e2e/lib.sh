# Helpers for tests that use the program as a user does: with keys and a mouse on a real screen,
# under a real window manager. They wait for what should happen, not for a time. With
# SLYVER_E2E_WINE in the environment the program is the one for Windows, run by Wine.

set -u
program=$1
patience=${SLYVER_E2E_PATIENCE:-30}  # Seconds after which something that did not happen is a failure.

# What the user of this machine has set, and the services of a desktop, have no part in it.
home=$(mktemp -d "${TMPDIR:-/tmp}/slyver-e2e-XXXXXX")
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_RUNTIME_DIR=$home/run
export NO_AT_BRIDGE=1 GDK_BACKEND=x11 GTK_THEME=Adwaita GTK_USE_PORTAL=0
export GSETTINGS_BACKEND=memory DBUS_SESSION_BUS_ADDRESS=disabled: LC_ALL=C.UTF-8
unset LANGUAGE GDK_SCALE GDK_DPI_SCALE
mkdir -p "$home/run" "$home/files"
chmod 700 "$home/run"
openbox --sm-disable >"$home/openbox.log" 2>&1 &

finish() {
  kill $(jobs -p) 2>/dev/null
  wait 2>/dev/null
  rm -rf "$home"
}
trap finish EXIT

fail() {
  echo "FAILED: $*; windows:" >&2
  for id in $(xdotool search --onlyvisible --name . 2>/dev/null); do
    echo "  $id $(xdotool getwindowname "$id")" >&2
  done
  echo "the program's own messages: $(cat "$home/slyver.log")" >&2
  [ -n "${SLYVER_E2E_SHOT:-}" ] && import -window root "$SLYVER_E2E_SHOT"
  exit 1
}
same() { cmp "$1" "$2" || fail "$1 is not the same as $2"; }

# until_true WHAT COMMAND...: waits until the command succeeds.
until_true() {
  local what=$1 deadline=$((SECONDS + patience))
  shift
  until "$@"; do
    [ $SECONDS -lt $deadline ] || fail "waited in vain for $what"
    sleep 0.02
  done
}

# Prints the id of the visible window with this title: of a dialog or, for "form", of a form.
window() {
  local id
  for id in $(xdotool search --onlyvisible --name "^$2\$" 2>/dev/null); do
    case $1:$(xprop -id "$id" _NET_WM_WINDOW_TYPE 2>/dev/null) in
      dialog:*_DIALOG* | form:*_NORMAL*) echo "$id" && return 0 ;;
    esac
  done
  return 1
}
is_active() {
  local id
  id=$(window "$1" "$2") && [ "$(xdotool getactivewindow 2>/dev/null)" = "$id" ]
}
is_gone() { ! window "$1" "$2" >/dev/null; }
window_is_gone() { ! xdotool search --onlyvisible --name . 2>/dev/null | grep -qx "$1"; }

# await form|dialog TITLE: waits until the window is there and has the keyboard.
await() { until_true "the $1 '$2'" is_active "$1" "$2"; }
await_end() {
  until_true "the end of the program" is_ended
  wait "$slyver" || fail "the program ended with status $?"
}
is_ended() { ! kill -0 "$slyver" 2>/dev/null; }

launch() { exec "$program" "$@"; }
native() { printf '%s' "$1"; } # A path as the program has it.
ram_setting_is() { grep -q "^RAM=\"$1\"" "$XDG_CONFIG_HOME/slyver/registry.ini" 2>/dev/null; }
# Whether one of the program's menus is open.
menu_is_open() {
  local id
  for id in $(xdotool search --onlyvisible --class slyver 2>/dev/null); do
    xprop -id "$id" _NET_WM_WINDOW_TYPE 2>/dev/null | grep -q POPUP_MENU && return 0
  done
  return 1
}
menu_is_closed() { ! menu_is_open; }

start() {
  launch "$@" >"$home/slyver.log" 2>&1 &
  slyver=$!
}
key() { xdotool key --clearmodifiers "$@"; }

# answer KEY: presses a key in the message or question that comes. confirm: its first button.
answer() {
  await dialog Slyver
  local id
  id=$(window dialog Slyver)
  key "$1"
  until_true "the end of a message" window_is_gone "$id"
}
confirm() { answer Return; }

# choose TITLE PATH: types a path into a file dialog.
choose() {
  await dialog "$1"
  xdotool type --delay 5 "$(native "$2")"
  key Return
  # The first Enter may only take a proposed ending over.
  local deadline=$((SECONDS + 3))
  until is_gone dialog "$1"; do
    [ $SECONDS -lt $deadline ] || { key Return && deadline=$((SECONDS + 3)); }
    sleep 0.05
  done
}

# Sets X, Y, WIDTH and HEIGHT to the form's place.
measure() { eval "$(xdotool getwindowgeometry --shell "$(window form "$1")")"; }

# point TITLE X Y: moves the mouse to a place in a form; from its right or lower side if negative.
point() {
  measure "$1"
  xdotool mousemove $((X + $2 + ($2 < 0 ? WIDTH : 0))) $((Y + $3 + ($3 < 0 ? HEIGHT : 0)))
}
# click TITLE X Y [BUTTON]
click() { point "$1" "$2" "$3" && xdotool click "${4:-1}"; }
# click_caption TITLE N: the Nth button of the title bar from the right (from 1).
caption_button_width=44
click_caption() { click "$1" $((caption_button_width / 2 - $2 * caption_button_width)) 12; }

[ -z "${SLYVER_E2E_WINE:-}" ] || . "$(dirname "$0")/wine_lib.sh"

# A window that is there before the window manager does not get the keyboard.
manager_is_ready() { xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; }
until_true "the window manager" manager_is_ready
