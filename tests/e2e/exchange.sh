#!/bin/bash
# What one system's sly has made the other's joins, lists and recovers, and both make the same bytes.
# usage: exchange.sh SLY WINDOWS_SLY; the second one runs under Wine
set -u
here=$(realpath "$1") windows=$(realpath "$2")
folder=$(mktemp -d "${TMPDIR:-/tmp}/slyver-exchange-XXXXXX")
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8 WINEDEBUG=err+all,fixme-all
cd "$folder" || exit 1

# fail WHAT: tells also how the last program ended and all that it has said, with what Wine said.
fail() {
  echo "FAILED: $*; last: $command: status $status" >&2
  head -c 4000 out err | cat -v >&2
  exit 1
}
# run SYSTEM ARGUMENT...: what that system's sly prints is in `out`, with this system's line ends and
# without folders; what it says is in `err`.
run() {
  local program=("$here")
  command="$*"
  [ "$1" = linux ] || program=(wine "$windows")
  "${program[@]}" "${@:2}" </dev/null >raw 2>err
  status=$?
  tr -d '\r' <raw | sed 's|.*[/\\]||' >out
}
makes() { # makes NAME SYSTEM ARGUMENT...: the run makes this file and says so.
  run "${@:2}"
  [ $status = 0 ] && [ "$(cat out)" = "$1" ] || fail "$1 was not made"
}
same() { cmp "$1" "$2" || fail "$3: $1 and $2 differ"; }

printf 'geheim\r\n' >password
printf 'falsch\n' >wrong
head -c 1000003 /dev/urandom >"Übung 1.bin"
head -c 40001 /dev/urandom >"Bild größer.png"
main="Bild größer.png"
hidden=("erste Datei é.txt" "naïve.tar.gz" "日本語.txt")
for file in "${hidden[@]}"; do printf 'text of %s' "$file" >"$file"; done

# Pieces.
for way in "linux wine" "wine linux"; do
  mkdir pieces
  run ${way% *} split --quiet --size 33000 --output pieces "Übung 1.bin"
  [ "$(ls pieces | wc -l)" = 31 ] || fail "$(ls pieces | wc -l) pieces"
  makes "Übung 1.bin" ${way#* } join --quiet "pieces/Übung 1.bin.17.sly"
  same "pieces/Übung 1.bin" "Übung 1.bin" "split and joined by $way"
  rm -r pieces
done

# Carriers: both systems' are the same in every byte, also where one adds to the other's. The carrier
# in the folder becomes the one with the file hidden in it: its own name is in it too.
hide() { # hide SYSTEM FOLDER FILE
  makes "Hidden File $main" "$1" hide --quiet --yes --password-file password "$2/$main" "$3"
  mv "$2/Hidden File $main" "$2/$main"
}
turns=(wine linux wine)
for copies in linux wine both; do mkdir $copies && cp "$main" $copies; done
for i in 0 1 2; do
  hide linux linux "${hidden[i]}"
  hide wine wine "${hidden[i]}"
  hide "${turns[i]}" both "${hidden[i]}"
  same "linux/$main" "wine/$main" "with ${hidden[i]}"
  same "linux/$main" "both/$main" "with ${hidden[i]}"
done

# What both list, recover and refuse.
for system in linux wine; do
  run $system list --password-file password "both/$main"
  cp out list_$system
  for number in 0 1 2; do
    run $system recover --quiet --password-file password --file $number "both/$main"
    same "both/$(cat out)" "${hidden[number]}" "recovered by $system"
    rm "both/$(cat out)"
  done
  makes "Original $main" $system recover --quiet --password-file password --main "both/$main"
  same "both/Original $main" "$main" "recovered by $system"
  rm "both/Original $main"
  WINEDEBUG=-all run $system list --password-file wrong "both/$main"
  [ $status = 1 ] || fail "a wrong password was taken"
  tr -d '\r' <err >refusal_$system
done
grep -q "naïve.tar.gz" list_linux || fail "the list lacks a name"
same list_linux list_wine "the lists"
same refusal_linux refusal_wine "the refusals"
echo "exchange: passed"
