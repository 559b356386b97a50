# What is different in lib.sh where Wine runs the program. Its folders and its registry are those of
# $WINEPREFIX.

launch() {
  local arguments=() argument
  for argument in "$@"; do
    case $argument in /*) argument=$(native "$argument") ;; esac
    arguments+=("$argument")
  done
  exec wine "$program" "${arguments[@]}"
}
native() { printf 'Z:%s' "$1" | tr / '\\'; }
private_folder() { echo "$WINEPREFIX/drive_c"; }

# A form draws its own border, so that the window manager is asked for none; a dialog does not.
window() {
  local id decorations
  for id in $(xdotool search --onlyvisible --name "^$2\$" 2>/dev/null); do
    decorations=$(xprop -id "$id" _MOTIF_WM_HINTS 2>/dev/null | cut -d, -f3)
    case $1:$decorations in
      form:' 0x0' | dialog:' 0x'[1-9a-f]*) echo "$id" && return 0 ;;
    esac
  done
  return 1
}
