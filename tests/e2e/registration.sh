#!/bin/bash
# The package's scripts tell Windows to open pieces with the program, and undo that.
# usage: registration.sh ZIP, on a display of its own, with SLYVER_E2E_WINE=1
. "$(dirname "$0")/lib.sh"

extension='HKCU\Software\Classes\.sly'
unzip -q "$program" -d "$home/R&D (new)"
cd "$home"/R*/*/64-bit || fail "the package has no programs for 64-bit Windows"
[ -s "Orm Valis Help.chm" ] || fail "the package has no help"
script() { wine cmd /c "$1" >>"$home/scripts.log" 2>&1 || fail "$1: $(cat "$home/scripts.log")"; }

opens_with() {
  local found
  found=$(registry "$extension" @)
  [ "$found" = "$1" ] || fail "pieces open with $found, not with $1"
}

script register.cmd
opens_with '"Slyver.Piece"'
command=$(registry 'HKCU\Software\Classes\Slyver.Piece\shell\open\command' @)
[[ $command == '"\"Z:'*'R&D (new)'*'\\slyver.exe\" %1"' ]] || fail "pieces are opened by $command"
script unregister.cmd
opens_with ''

# What opened the pieces before comes back, also when it came between two registrations.
script register.cmd
wine reg add "$extension" /ve /d 'Other Program.1' /f >/dev/null 2>&1
script register.cmd
script register.cmd
opens_with '"Slyver.Piece"'
script unregister.cmd
opens_with '"Other Program.1"'
wine reg delete "$extension" /f >/dev/null 2>&1
wine reg query 'HKCU\Software\Classes\Slyver.Piece' >/dev/null 2>&1 && fail "the type is still there"
echo "registration: passed"
