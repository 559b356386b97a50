#!/bin/bash
# Takes the pictures of the forms in docs/images.
# usage: xvfb-run -s "-screen 0 1920x1200x24" docs/screenshots.sh GALLERY [FOLDER]
# GALLERY is the program slyver_gallery that the tests' build makes. GDK_SCALE, GDK_DPI_SCALE and
# the like in the environment show how the forms look at other scales.
set -eu
gallery=$1
folder=${2:-$(dirname "$0")/images}
export NO_AT_BRIDGE=1 GDK_BACKEND=x11 ASAN_OPTIONS=detect_leaks=0
XDG_RUNTIME_DIR=$(mktemp -d)
XDG_CONFIG_HOME=$XDG_RUNTIME_DIR
export XDG_RUNTIME_DIR XDG_CONFIG_HOME
openbox --sm-disable >/dev/null 2>&1 &
manager=$!
shown=
trap 'kill $manager $shown 2>/dev/null || true; rm -rf "$XDG_RUNTIME_DIR"' EXIT
mkdir -p "$folder"
until xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; do sleep 0.05; done

# take FORM TITLE
take() {
  "$gallery" "$1" 2>/dev/null &
  shown=$!
  local id='' type before='' now=''
  for _ in $(seq 200); do
    for id in $(xdotool search --onlyvisible --name "^$2\$" 2>/dev/null || true); do
      type=$(xprop -id "$id" _NET_WM_WINDOW_TYPE)
      case $1:$type in
        frm*_NORMAL* | Message*_DIALOG* | Question*_DIALOG* | InputBox*_DIALOG*) break 2 ;;
      esac
    done
    sleep 0.05
  done
  # The form is drawn when it has more than a background and looks the same twice.
  for _ in $(seq 50); do
    sleep 0.2
    import -window "$id" "$folder/$1.png"
    now=$(identify -format '%#' "$folder/$1.png")
    [ "$now" = "$before" ] && [ "$(identify -format %k "$folder/$1.png")" -gt 8 ] && break
    before=$now
  done
  kill "$shown"
  wait "$shown" 2>/dev/null || true
}

take frmSplitJoin Selection
take frmSplitter Slyver
take frmJoin "Joining Files"
take frmInit "Wait......."
take frmHideFile "Hide File"
take frmHideRec Recover
take frmShowList "Select File To Recover :"
take InputBox Slyver
take Message Slyver
take Question Slyver
