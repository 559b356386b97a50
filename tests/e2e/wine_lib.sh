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
caption_button_width=32  # The font is smaller.
native() { printf 'Z:%s' "$1" | tr / '\\'; }

# A window is active before one of its controls has the keyboard, and nobody is told of the latter.
await() {
  until_true "the $1 '$2'" is_active "$1" "$2"
  sleep 0.5
}

# registry KEY VALUE: prints a value as Wine's own tool exports it, in quotation marks; nothing when
# it is not there. "@" is the key's own value. (A query would print what lies behind an empty value.)
registry() {
  local file=$home/export.reg name="\"$2\""
  [ "$2" = @ ] && name=@
  rm -f "$file"
  wine reg export "$1" "$(native "$file")" /y >/dev/null 2>&1 || return 0
  iconv -f UTF-16 -t UTF-8 "$file" | tr -d '\r' | sed -n "s/^$name=//p"
}
ram_setting_is() { [ "$(registry 'HKLM\Software\Orm Valis\Slyver' RAM)" = "\"$1\"" ]; }
menu_is_open() {
  local id
  for id in $(xdotool search --onlyvisible --class slyver 2>/dev/null); do
    xwininfo -id "$id" | grep -q 'Override Redirect State: yes' && return 0
  done
  return 1
}

# A form draws its own border, so that the window manager is asked for none; a dialog does not.
window() {
  local id
  for id in $(xdotool search --onlyvisible --name "^$2\$" 2>/dev/null); do
    case $1:$(xprop -id "$id" _MOTIF_WM_HINTS 2>/dev/null | cut -d, -f3) in
      form:' 0x0' | dialog:' 0x'[1-9a-f]*) echo "$id" && return 0 ;;
    esac
  done
  return 1
}
