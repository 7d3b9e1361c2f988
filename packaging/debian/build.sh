#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# build.sh BUILD: packs what a build folder that was configured for /usr installs. The packages are left in
# BUILD/packages.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.." # dpkg's tools read debian/control and debian/changelog
umask 022
packages=$build/packages
rm -rf "$packages"
mkdir -p "$packages"

compress() {
  gzip -9 --no-name "$@"
}

# Control files of the shared library: what depends on it, and a refresh of the linker's cache.
describe_shared_library() {
  local stage=$1 soname
  soname=$(objdump -p "$stage"/usr/lib/*/libhdr_engine.so.* | awk '/SONAME/ { print $2; exit }')
  echo "${soname%.so.*} ${soname##*.so.} libhdr-engine${soname##*.so.} (>= $(dpkg-parsechangelog -S Version | sed 's/-.*//'))" \
    >"$stage/DEBIAN/shlibs"
  echo 'activate-noawait ldconfig' >"$stage/DEBIAN/triggers"
}

# make_package NAME COMPONENT
make_package() {
  local name=$1 stage=$build/stage/$1 documents binaries
  rm -rf "$stage"
  DESTDIR=$stage cmake --install "$build" --component "$2" --strip >/dev/null
  mkdir -p "$stage/DEBIAN"

  documents=$stage/usr/share/doc/$name
  mkdir -p "$documents"
  # The licences are in the copyright file or part of every Debian system.
  rm -rf "$stage/usr/share/licenses"
  cp debian/copyright "$documents/copyright"
  cp debian/changelog "$documents/changelog.Debian"
  cp ../CHANGELOG.md "$documents/changelog"
  compress "$documents"/changelog*
  [ ! -d "$stage/usr/share/man" ] || find "$stage/usr/share/man" -type f -exec gzip -9 --no-name {} +
  find "$stage" -name '*.a' -exec strip --strip-debug --enable-deterministic-archives {} +

  [ "$2" != library ] || describe_shared_library "$stage"
  mapfile -t binaries < <(find "$stage/usr" -type f \( -path '*/bin/*' -o -name '*.so.*' \))
  : >"$build/$name.substvars"
  [ ${#binaries[@]} -eq 0 ] || dpkg-shlibdeps -T"$build/$name.substvars" "${binaries[@]}"
  dpkg-gencontrol -p"$name" -P"$stage" -T"$build/$name.substvars" -f"$build/files"
  (cd "$stage" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
  dpkg-deb --root-owner-group --build "$stage" "$packages" >/dev/null
}

make_package tristop application
make_package libhdr-engine0 library
make_package libhdr-engine-dev development
