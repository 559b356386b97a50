#!/bin/bash
# What one system's sly has made the other's joins, lists and recovers, and both make the same bytes.
# usage: exchange.sh SLY WINDOWS_SLY; the second one runs under Wine
set -eu -o pipefail
here=$(realpath "$1") windows=$(realpath "$2")
folder=$(mktemp -d "${TMPDIR:-/tmp}/slyver-exchange-XXXXXX")
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8
cd "$folder"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}
# Each takes the arguments of sly; what they print has this system's line ends and no folders.
linux() { "$here" "$@" </dev/null 2>>messages | sed 's|.*/||'; }
wine_sly() { wine "$windows" "$@" </dev/null 2>>messages | tr -d '\r' | sed 's|.*\\||'; }
same() { cmp "$1" "$2" || fail "$3: $1 and $2 differ"; }

printf 'geheim\r\n' >password
head -c 1000003 /dev/urandom >"Übung 1.bin"
head -c 40001 /dev/urandom >"Bild größer.png"
printf 'the first' >"erste Datei é.txt"
printf 'the second one' >"naïve.tar.gz"
printf 'text in a name that the code page lacks' >"日本語.txt"

# Pieces.
for way in "linux wine_sly" "wine_sly linux"; do
  read -r splits joins <<<"$way"
  mkdir pieces
  "$splits" split --quiet --size 33000 --output pieces "Übung 1.bin"
  [ "$(ls pieces | wc -l)" = 31 ] || fail "$splits made $(ls pieces | wc -l) pieces"
  [ "$("$joins" join --quiet "pieces/Übung 1.bin.17.sly")" = "Übung 1.bin" ] || fail "$joins named another file"
  same "pieces/Übung 1.bin" "Übung 1.bin" "split by $splits, joined by $joins"
  rm -r pieces
done

# Carriers: both systems' are the same in every byte, also where one adds to the other's.
main="Bild größer.png"
hidden=("erste Datei é.txt" "naïve.tar.gz" "日本語.txt")
# hide SYSTEM FOLDER FILE: the carrier in the folder becomes the one with the file hidden in it. Its
# own name is in it too, so that it has to stay the same.
hide() {
  [ "$("$1" hide --quiet --yes --password-file password "$2/$main" "$3")" = "Hidden File $main" ] ||
    fail "$1 did not hide $3: $(tail -n 3 messages)"
  mv "$2/Hidden File $main" "$2/$main"
}
mkdir by_linux by_windows by_both
for copies in by_linux by_windows by_both; do cp "$main" $copies; done
turn=0
for file in "${hidden[@]}"; do
  hide linux by_linux "$file"
  hide wine_sly by_windows "$file"
  [ $((turn++ % 2)) = 0 ] && system=wine_sly || system=linux
  hide $system by_both "$file"
  same "by_linux/$main" "by_windows/$main" "with $file"
  same "by_linux/$main" "by_both/$main" "with $file"
done
carrier=by_both/$main

linux list --password-file password "$carrier" >list_linux
wine_sly list --password-file password "$carrier" >list_wine_sly
same list_linux list_wine_sly "the lists"
grep -q "naïve.tar.gz" list_linux || fail "the list lacks a name"

for system in linux wine_sly; do
  for number in 0 1 2; do
    made=$("$system" recover --quiet --password-file password --file $number "$carrier")
    same "by_both/$made" "${hidden[number]}" "recovered by $system"
    rm "by_both/$made"
  done
  made=$("$system" recover --quiet --password-file password --main "$carrier")
  same "by_both/$made" "$main" "recovered by $system"
  rm "by_both/$made"
done

# What is refused is refused alike.
printf 'falsch\n' >wrong
for system in linux wine_sly; do
  : >messages
  "$system" list --password-file wrong "$carrier" && fail "$system took a wrong password"
  tr -d '\r' <messages >"refusal_$system"
done
same refusal_linux refusal_wine_sly "the refusals"
echo "exchange: passed"
