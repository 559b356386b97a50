#!/bin/bash
# What one system's sly has made the other's joins, lists and recovers.
# usage: exchange.sh SLY WINDOWS_SLY; the second one runs under Wine
set -u
here=$(realpath "$1") windows=$(realpath "$2")
folder=$(mktemp -d "${TMPDIR:-/tmp}/slyver-exchange-XXXXXX")
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8 WINEDEBUG=err+all,fixme-all
cd "$folder" || exit 1

# run SYSTEM ARGUMENT...: what that system's sly prints is in `out`, with this system's line ends and
# without folders.
run() {
  local program=("$here")
  [ "$1" = linux ] || program=(wine "$windows")
  "${program[@]}" "${@:2}" </dev/null >raw 2>err || {
    echo "FAILED: $*: status $?" >&2
    cat raw err | cat -v >&2
    exit 1
  }
  tr -d '\r' <raw | sed 's|.*[/\\]||' >out
}
same() { cmp "$1" "$2" || { echo "FAILED: $1 and $2 differ" >&2 && exit 1; }; }

printf 'geheim\r\n' >password
head -c 1000003 /dev/urandom >"Übung 1.bin"
head -c 40001 /dev/urandom >carrier.png
hidden=("erste Datei é.txt" "naïve.tar.gz" "日本語.txt")
for file in "${hidden[@]}"; do printf 'text of %s' "$file" >"$file"; done

mkdir linux wine
for way in "linux wine" "wine linux"; do
  read -r maker reader <<<"$way"
  run $maker split --quiet --size 33000 --output $maker "Übung 1.bin"
  run $reader join --quiet "$maker/Übung 1.bin.17.sly"
  same "$maker/Übung 1.bin" "Übung 1.bin"
done

# A carrier that both add to in turn.
turns=(wine linux wine)
for i in 0 1 2; do
  run ${turns[i]} hide --quiet --yes --password-file password carrier.png "${hidden[i]}"
  mv "Hidden File carrier.png" carrier.png
done
for system in linux wine; do
  run $system list --password-file password carrier.png
  cp out list_$system
  for number in 0 1 2; do
    run $system recover --quiet --password-file password --file $number carrier.png
    same "$(cat out)" "${hidden[number]}"
    rm "$(cat out)"
  done
done
grep -q "naïve.tar.gz" list_linux || { echo "FAILED: the list lacks a name" >&2 && exit 1; }
same list_linux list_wine
echo "exchange: passed"
