# Sourced by the scripts in this folder: the compilers for Windows, and the libraries that the
# programs and their tests are linked with, built from Debian's source packages.

windows_architectures=(x86_64 i686)
windows_build_packages=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix cmake ninja-build make
  dpkg-dev xz-utils libcli11-dev googletest
  libgcrypt-mingw-w64-dev libgpg-error-mingw-w64-dev)
windows_test_packages=(wine wine64 unzip)

# Only the parts of wxWidgets that the program uses, with nothing from outside.
wx_options=(--with-msw --disable-shared --disable-debug_flag --disable-sys-libs --disable-tests
  --with-cxx=17 --enable-accessibility --with-nanosvg
  --without-libpng --without-libjpeg --without-libtiff --without-zlib --without-expat
  --without-regex --without-liblzma --without-opengl --without-winhttp
  --disable-xrc --disable-aui --disable-propgrid --disable-ribbon --disable-richtext
  --disable-stc --disable-html --disable-htmlhelp --disable-webview --disable-mediactrl
  --disable-sockets --disable-ipc --disable-webrequest --disable-protocol --disable-protocols
  --disable-ftp --disable-http --disable-url --disable-fs_archive --disable-fs_inet
  --disable-zipstream --disable-tarstream --disable-arcstream --disable-dialupman
  --disable-mdi --disable-mdidoc --disable-docview --disable-printarch --disable-svg
  --disable-postscript --disable-grid --disable-calendar --disable-datepick --disable-timepick
  --disable-wizarddlg
  --disable-debugreport --disable-secretstore --disable-joystick --disable-sound
  --disable-splash --disable-prefseditor --disable-dbghelp --disable-graphics-d2d --disable-help)

# What is built once stays here, outside the source tree, until its options change.
windows_cache=${XDG_CACHE_HOME:-$HOME/.cache}/slyver/windows-$(sha256sum <<<"${wx_options[*]}" | cut -c1-8)

# windows_prefix ARCHITECTURE prints the folder of its libraries.
windows_prefix() {
  echo "$windows_cache/$1"
}

# Unpacks the source of wxWidgets. The sources of Debian's packages are listed apart, so that the
# system's own lists stay as they are.
unpack_wx() (
  local lists=$windows_cache/lists file
  mkdir -p "$lists/sources" "$lists/state/partial"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources; do
    [[ -f $file ]] || continue
    sed -E 's/^Types:.*/Types: deb-src/; s/^deb /deb-src /; /^deb-src/!{/^[a-zA-Z-]+:|^$|^ /!d}' "$file" \
      >"$lists/sources/${file##*/}"
  done
  local options=(-qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$lists/sources"
    -o Dir::State::Lists="$lists/state" -o APT::Sandbox::User=)
  cd "$windows_cache"
  apt-get "${options[@]}" update || true
  apt-get "${options[@]}" --download-only source wxwidgets3.2
  rm -rf wx
  dpkg-source --no-check -x wxwidgets3.2_*.dsc wx >/dev/null
)

# make_libraries ARCHITECTURE builds what is not there yet. The folder gets its name last, so that
# a build that was broken off is begun anew.
make_libraries() {
  local architecture=$1 prefix work
  prefix=$(windows_prefix "$architecture")
  [[ ! -d $prefix ]] || return 0
  work=$prefix.work
  echo "Building wxWidgets for Windows ($architecture); this is done once ..." >&2
  rm -rf "$work"
  mkdir -p "$work/wx" "$work/googletest"
  [[ -d $windows_cache/wx ]] || unpack_wx
  (
    cd "$work/wx" &&
      CXXFLAGS=-O2 "$windows_cache/wx/configure" --host="$architecture-w64-mingw32" \
        --build="$(dpkg-architecture -qDEB_BUILD_GNU_TYPE)" \
        CC="$architecture-w64-mingw32-gcc-posix" CXX="$architecture-w64-mingw32-g++-posix" \
        --prefix="$prefix" "${wx_options[@]}" &&
      make -j"$(nproc)" &&
      make install DESTDIR="$work/root" &&
      cmake -S /usr/src/googletest -B "$work/googletest" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$top/packaging/windows/$architecture.cmake" -DBUILD_GMOCK=OFF \
        -DCMAKE_INSTALL_PREFIX="$prefix" &&
      cmake --build "$work/googletest" &&
      DESTDIR=$work/root cmake --install "$work/googletest"
  ) >"$windows_cache/$architecture.log" 2>&1 || {
    tail -n 20 "$windows_cache/$architecture.log" >&2
    echo "wxWidgets could not be built; $windows_cache/$architecture.log tells more" >&2
    return 1
  }
  # Headers alone, taken out of a folder whose other headers are not for Windows.
  cp -r /usr/include/CLI "$work/root$prefix/include/"
  mkdir -p "$work/root$prefix/share/cmake"
  cp -r /usr/share/cmake/CLI11 "$work/root$prefix/share/cmake/"
  mv "$work/root$prefix" "$prefix"
  rm -rf "$work"
}
