#!/usr/bin/env bash
# package_test.sh BUILD_FOLDER SOURCE_FOLDER GENERATOR COMPILER [FLAG...]
set -euo pipefail
# shellcheck source=tests/install/consumer.sh
. "$(dirname "${BASH_SOURCE[0]}")/consumer.sh" "$@"

command=$build/apps/orva
release=$("$command" --version | sed 's/^orva //')
library=liborva${release%%.*}
multiarch=$(dpkg-architecture -q DEB_HOST_MULTIARCH)

cpack -G DEB -B "$work/packages" --config "$build/CPackConfig.cmake" >"$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }

# package NAME
package() { echo "$work/packages/$1_${release}_$(dpkg --print-architecture).deb"; }

# same NAME WHAT EXPECTED FOUND
same() {
  [ "$3" != "$4" ] || return 0
  echo "$1: another $2 than expected (<):"
  diff <(echo "$3") <(echo "$4") || true
  exit 1
}

# holds NAME FILE...: these and no others. The build type is part of the name of one of them.
holds() {
  local name=$1 expected found
  shift
  expected=$(printf './usr/%s\n' "$@" "share/doc/$name/"{NEWS,changelog}.gz | sort)
  found=$(dpkg-deb --fsys-tarfile "$(package "$name")" | tar -t |
    sed '/\/$/d; s/orva-targets-[a-z]*\.cmake/orva-targets-TYPE.cmake/' | sort)
  same "$name" "list of files" "$expected" "$found"
}

headers=(bip/bip detect/detect detect/measure detect/segment image/image image/point image/point3d
  image/point_operators image/points image/truncate image_io/icsparser image_io/image_io image_math/image_math scalespace/scalespace
  util/export util/fnp util/global util/parallel voting/circularvoting voting/find_centers)
if grep -q '^ORVA_BUILD_JAVA:BOOL=ON$' "$build/CMakeCache.txt"; then
  headers+=(voting/JNICircularVoting)
fi
headers=("${headers[@]/#/include/orva/}")
lib=lib/$multiarch
holds "$library" "$lib/liborva.so.${release%%.*}" "$lib/liborva.so.$release"
holds liborva-dev "${headers[@]/%/.h}" "$lib/liborva.a" "$lib/liborva.so" "$lib/pkgconfig/orva.pc" \
  "$lib"/cmake/orva/orva-{config,config-version,targets,targets-TYPE}.cmake
holds orva bin/orva share/man/man1/orva.1.gz

# What each depends on, without versions of other packages.
same liborva-dev dependency "$library (= $release)" \
  "$(dpkg-deb -f "$(package liborva-dev)" Depends)"
# depends NAME PATTERN...: each pattern matches one dependency of NAME, which has no part of orva.
depends() {
  local name=$1 found pattern
  shift
  found=$(dpkg-deb -f "$(package "$name")" Depends | sed 's/ ([^)]*)//g; s/, /\n/g')
  for pattern in "$@"; do
    grep -qx "$pattern" <<<"$found" || { echo "$name depends on no $pattern, but on ${found:-nothing}"; exit 1; }
  done
  if grep orva <<<"$found"; then exit 1; fi
}
depends "$library" libc6 'libstdc++6'
depends orva libc6 'libstdc++6' 'libminizip.*' 'libpng.*' 'libpugixml.*' 'libtiff.*' 'zlib1g'
same "$library" "version for its users" "liborva ${release%%.*} $library (>= $release)" \
  "$(dpkg-deb -I "$(package "$library")" shlibs)"

# Today's Debian has /lib as a link.
root=$work/root
mkdir -p "$root/usr/lib"
ln -s usr/lib "$root/lib"
for name in "$library" liborva-dev orva; do dpkg-deb -x "$(package "$name")" "$root"; done

image=$source/data/images/dsb_large_a.pgm
"$command" vote --quiet --max-radius 36 --centers "$work/expected.csv" "$image"
"$root/usr/bin/orva" vote --quiet --max-radius 36 --centers "$work/found.csv" "$image"
[ "$(wc -l <"$work/expected.csv")" -gt 10 ]
cmp "$work/expected.csv" "$work/found.csv"

consume "$root"
