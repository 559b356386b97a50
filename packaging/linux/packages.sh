# Sourced by run, test and bench/run: installs the Debian packages that are missing.

build_packages=(g++ cmake ninja-build libcli11-dev libgcrypt20-dev)
desktop_packages=(libwxgtk3.2-dev libgtk-3-dev pkg-config adwaita-icon-theme)
screen_packages=(xvfb xauth openbox xdotool x11-utils imagemagick)
test_packages=(age python3 time libgtest-dev clang libclang-rt-dev)
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

  local as_root=()
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing; please have them installed: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  # The lists of packages may be older than the packages, or not there at all.
  "${as_root[@]}" apt-get update -qq >&2 || true
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null || {
    echo "These packages could not be installed: ${missing[*]}" >&2
    return 1
  }
}

# configure PRESET FOLDER [DESKTOP] configures the tree once, saying so on stderr. DESKTOP is ON or
# OFF: whether the desktop program is built too; a tree that once was configured with it keeps it.
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
