#!/bin/bash
# The package's scripts let Windows open a piece with the program, and undo that.
# usage: registration.sh ZIP SLY, on a display of its own, with SLYVER_E2E_WINE=1
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

head -c 900 /dev/urandom >"$home/files/some file"
"$2" split --quiet --size 300 "$home/files/some file" >/dev/null
mv "$home/files/some file" "$home/whole"

script register.cmd
opens_with '"Slyver.Piece"'
# Wine does not look at a user's own types; they are copied to where it looks.
for key in .sly Slyver.Piece; do
  wine reg export "HKCU\Software\Classes\\$key" "$(native "$home/key.reg")" /y >/dev/null 2>&1
  iconv -f UTF-16 -t UTF-8 "$home/key.reg" | sed s/HKEY_CURRENT_USER/HKEY_LOCAL_MACHINE/ |
    iconv -f UTF-8 -t UTF-16 >"$home/copy.reg"
  wine reg import "$(native "$home/copy.reg")" >/dev/null 2>&1 || fail "$key was not copied"
done
launch() { exec wine start /wait "$(native "$1")"; }
start "$home/files/some file.2.sly"
confirm # They are in the same folder.
choose "Please Select Any Other File To Join." "$home/files/some file.2.sly"
confirm # File Joined.
await_end
cmp "$home/whole" "$home/files/some file" || fail "the opened piece was joined wrongly"
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
