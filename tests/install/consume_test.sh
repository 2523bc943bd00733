#!/usr/bin/env bash
# consume_test.sh BUILD_FOLDER SOURCE_FOLDER GENERATOR COMPILER [FLAG...]
set -euo pipefail
build=$1 source=$2 generator=$3 compiler=$4
shift 4
flags=$*

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

mkdir "$work/project"
cp "$source/tests/install/CMakeLists.txt" "$work/project/"
# The first C++ example of the README is the program.
# shellcheck disable=SC2016
sed -n '/^```cpp$/,/^```$/{/^```cpp$/d; /^```$/q; p}' "$source/README.md" >"$work/project/main.cpp"
grep -q 'int main' "$work/project/main.cpp"

# check NAME: the program NAME finds the nuclei of a sample image, as the command does.
check() {
  "$1" "$source/data/images/dsb_large_a.pgm" >"$work/found"
  if ! grep -Eq '^[0-9]+ [0-9]+$' "$work/found" || [ "$(wc -l <"$work/found")" -lt 10 ]; then
    echo "$1 printed:" && cat "$work/found"
    exit 1
  fi
}

cmake -G "$generator" -S "$work/project" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/build" >/dev/null
check "$work/build/with_orva"
check "$work/build/with_orva_static"

pc=$(dirname "$(find "$prefix" -name orva.pc)")
read -ra options <<<"$flags $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs orva)"
"$compiler" "$work/project/main.cpp" "${options[@]}" -Wl,-rpath,"$(dirname "$pc")" \
  -o "$work/by_pkg_config"
check "$work/by_pkg_config"

# Another minor version must be refused.
sed -i 's/find_package(orva 0.1/find_package(orva 0.2/' "$work/project/CMakeLists.txt"
if cmake -G "$generator" -S "$work/project" -B "$work/refused" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" >/dev/null 2>&1; then
  echo "version 0.2 was accepted"
  exit 1
fi
