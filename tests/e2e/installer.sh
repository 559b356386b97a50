#!/bin/bash
# The installer for Windows puts the programs in place without a question, and takes all of it away.
# usage: installer.sh SETUP SLY VERSION, on a display of its own, with SLYVER_E2E_WINE=1
. "$(dirname "$0")/lib.sh"
setup=$program sly=$2 version=$3
# Wine shall not put what it has in its menu into this system's.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-};winemenubuilder.exe="
uninstall='Software\Microsoft\Windows\CurrentVersion\Uninstall'
menu='Software\Classes\*\shell'
drive=$WINEPREFIX/drive_c

# Prints all that programs may leave in the registry.
registry_text() {
  local key
  for key in 'HKLM\Software' 'HKCU\Software' 'HKCU\Environment' \
    'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment'; do
    rm -f "$home/all.reg"
    wine reg export "$key" "$(native "$home/all.reg")" /y >/dev/null 2>&1 &&
      iconv -f UTF-16 -t UTF-8 "$home/all.reg"
  done
}
files() { find "$drive" -not -path '*/Temp/*' | sort; }
install() {
  wine "$setup" /S "$@" >/dev/null 2>&1 || fail "the installer ended with status $?"
  wineserver -w
}
# remove MODE: as Windows does it, by the command that the installer has left.
remove() {
  local root=HKLM command
  [ "$1" = /AllUsers ] || root=HKCU
  command=$(registry "$root\\$uninstall\\Slyver" QuietUninstallString)
  command=${command#\"\\\"} command=${command%%\\\"*}
  wine "${command//\\\\/\\}" /S "$1" >/dev/null 2>&1 || fail "the uninstaller ended with status $?"
  wineserver -w
}
# Of a key alone, without the keys below it.
value() { registry "$1" "$2" | head -n 1; }
is() { [ "$1" = "$2" ] || fail "$3 is $1, not $2"; }

# Keys and folders that every Windows has.
mkdir -p "$drive"/users/"${USER:-root}"/AppData/Local/Programs
for key in Software\\Classes "$uninstall"; do wine reg add "HKCU\\$key" /f >/dev/null 2>&1; done
wine reg add 'HKCU\Software\Classes\.sly' /ve /d 'Other Program.1' /f >/dev/null 2>&1
wine reg add 'HKCU\Environment' /v Path /t REG_SZ /d 'C:\one;C:\Slyver two;' /f >/dev/null 2>&1
# What the program has left in this Wine goes with it.
for root in HKLM HKCU; do wine reg delete "$root\\Software\\Orm Valis" /f >/dev/null 2>&1; done
wineserver -w
registry_text >"$home/before.reg"
files >"$home/before.files"

for mode in /CurrentUser /AllUsers; do
  root=HKLM
  [ $mode = /AllUsers ] || root=HKCU
  install $mode /PATH /EXPLORER
  is "$(value "$root\\$uninstall\\Slyver" DisplayVersion)" "\"$version\"" "the version in the list"
  is "$(value "$root\\Software\\Classes\\.sly" @)" '"Slyver.Piece"' "the type of pieces"
  is "$(value "$root\\$menu\\Slyver.Split" @)" '"Split with Slyver"' "the entry in the Explorer's menu"
  is "$(find "$drive" -name Slyver.lnk | wc -l)" 1 "the number of entries in the Start menu"
  is "$(cd "$home" && wine cmd /c 'sly --version' 2>/dev/null | tr -d '\r')" "sly $version" "sly on the PATH"
  # The same again with less: what is not wanted goes, and nothing is there twice.
  install $mode /PATH
  is "$(value "$root\\$menu\\Slyver.Split" @)" '' "the entry in the Explorer's menu"
  wine reg add 'HKLM\Software\Orm Valis\Slyver' /v RAM /d 0 /f >/dev/null 2>&1
  remove $mode
  registry_text | diff "$home/before.reg" - || fail "$mode: the registry is not as it was"
  files | diff "$home/before.files" - || fail "$mode: the files are not as they were"
done

# A piece is opened by what the installer has registered.
head -c 900 /dev/urandom >"$home/files/some file"
"$sly" split --quiet --size 300 "$home/files/some file" >/dev/null
mv "$home/files/some file" "$home/whole"
install /AllUsers
launch() { exec wine start /wait "$(native "$1")"; }
start "$home/files/some file.2.sly"
confirm # They are in the same folder.
await dialog "Please Select Any Other File To Join."
key Return # The piece is selected.
confirm # File Joined.
await_end
cmp "$home/whole" "$home/files/some file" || fail "the opened piece was joined wrongly"
remove /AllUsers
echo "installer: passed"
