# Sourced by run, test and bench/run: installs the Debian packages that are missing.
# A user is asked before sudo is called, unless CI is set or SLYVER_YES ("--yes" sets it).

build_packages=(g++ cmake ninja-build libcli11-dev libgcrypt20-dev)
desktop_packages=(libwxgtk3.2-dev libgtk-3-dev pkg-config adwaita-icon-theme librsvg2-common)
screen_packages=(xvfb xauth openbox xdotool x11-utils imagemagick)
quick_packages=(age git libgtest-dev python3)
test_packages=("${quick_packages[@]}" clang libclang-rt-dev par2 time)
lint_packages=(clang-format clang-tidy)
bench_packages=(age btrfs-progs time xfsprogs)
debian_packages=(debhelper dpkg-dev git librsvg2-bin scdoc xz-utils)
debian_test_packages=(lintian desktop-file-utils appstream debootstrap)

# project_version prints the version, which stands in the top CMakeLists.txt alone.
project_version() {
  sed -n 's/^project(Slyver VERSION \([0-9.]*\).*/\1/p' "$top/CMakeLists.txt"
}

# need PACKAGE... makes sure that the packages are installed; does nothing when they are.
need() {
  if ! command -v dpkg-query >/dev/null; then
    echo "This system has no Debian packages; make sure that you have what these hold: $*" >&2
    return 0
  fi
  local package missing=()
  for package in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
      missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  local update=(apt-get update -qq)
  local install=(env DEBIAN_FRONTEND=noninteractive
    apt-get install -y -qq --no-install-recommends "${missing[@]}")
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      printf '%s\n' "These packages are missing. As root:" "  apt-get install ${missing[*]}" >&2
      return 1
    fi
    agreed "sudo apt-get install ${missing[*]}" || return 1
    update=(sudo "${update[@]}") install=(sudo "${install[@]}")
  fi
  echo "Installing ${missing[*]}" >&2
  # The lists of packages may be missing, or older than the packages.
  "${update[@]}" >&2 || true
  "${install[@]}" >/dev/null || {
    echo "These packages could not be installed: ${missing[*]}" >&2
    return 1
  }
}

# agreed COMMAND asks whether it may be run. Where nobody can be asked it prints the command and fails.
agreed() {
  [[ -z ${CI:-}${SLYVER_YES:-} ]] || return 0
  if [[ ! -t 0 || ! -t 2 ]]; then
    printf '%s\n' "Packages are missing. Run this, or repeat with --yes:" "  $1" >&2
    return 1
  fi
  local answer
  read -r -p "Packages are missing. Run \"$1\"? [y/n] " answer
  [[ $answer == [yY]* ]]
}

# configure PRESET FOLDER [DESKTOP] configures the tree once, saying so on stderr. DESKTOP is ON or
# OFF: with or without the desktop program; a tree that was configured with it keeps it.
configure() {
  local desktop=SLYVER_DESKTOP:BOOL=${3:-OFF}
  if [[ ! -e $top/$2/build.ninja ]] ||
    { [[ $desktop == *ON ]] && ! grep -q "^$desktop" "$top/$2/CMakeCache.txt"; }; then
    (cd "$top" && cmake --preset "$1" "-D$desktop" >&2)
  fi
}

# build PRESET FOLDER [DESKTOP [TARGET...]] configures the tree and builds what has changed, saying
# so on stderr; without targets, everything.
build() {
  configure "$@"
  (cd "$top" && cmake --build --preset "$1" ${4:+--target "${@:4}"}) | sed '/no work to do/d' >&2
}
