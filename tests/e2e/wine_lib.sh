# As lib.sh, for the program for Windows under Wine, whose folders and registry are in $WINEPREFIX.

. "$(dirname "$0")/lib.sh"

start() {
  wine "$program" "$@" >"$home/slyver.log" 2>&1 &
  slyver=$!
}

# Prints a path as Windows programs have it.
windows_path() { printf 'Z:%s' "$1" | tr / '\\'; }

# The system's own boxes have no type of their own where no form owns them, and none of them is
# called as a form is but the split form's.
window() {
  local id type
  for id in $(xdotool search --onlyvisible --name "^$2\$" 2>/dev/null); do
    type=$(xprop -id "$id" _NET_WM_WINDOW_TYPE 2>/dev/null)
    case $1:$type in
      dialog:*_DIALOG*) echo "$id" && return 0 ;;
      form:*_NORMAL*) echo "$id" && return 0 ;;
    esac
  done
  return 1
}
