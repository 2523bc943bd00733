# shellcheck shell=bash
# Sourced by tests with the arguments BUILD_FOLDER SOURCE_FOLDER GENERATOR COMPILER [FLAG...]: builds
# the README's first C++ example against an installed library. The folder $work is removed at the end.
# shellcheck disable=SC2034
build=$1 source=$2 generator=$3 compiler=$4
shift 4
flags=$*

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

project=$work/project
cp -r "$source/tests/install/consumer" "$project"
# shellcheck disable=SC2016
sed -n '/^```cpp$/,/^```$/{/^```cpp$/d; /^```$/q; p}' "$source/README.md" >"$project/main.cpp"
grep -q 'int main' "$project/main.cpp"
# The version that the README asks for.
version=$(sed -n 's/^find_package(orva \([0-9.]*\) .*/\1/p' "$source/README.md")

# configure PREFIX VERSION FOLDER
configure() {
  cmake -G "$generator" -S "$project" -B "$3" -DCMAKE_PREFIX_PATH="$1" -DORVA_VERSION="$2" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags"
}

# check PROGRAM: it finds the nuclei of a sample image, as the command does, and explains itself
# without one.
check() {
  "$1" "$source/data/images/dsb_large_a.pgm" >"$work/found"
  if ! grep -Eq '^[0-9.]+ [0-9.]+ [0-9.]+ [0-9.]+$' "$work/found" || [ "$(wc -l <"$work/found")" -lt 10 ]; then
    echo "$1 printed:" && cat "$work/found"
    exit 1
  fi
  local status=0
  "$1" >"$work/found" 2>&1 || status=$?
  if [ "$status" -ne 2 ] || [ "$(cat "$work/found")" != "usage: $1 IMAGE.pgm" ]; then
    echo "$1 without an image ended with status $status and printed:" && cat "$work/found"
    exit 1
  fi
}

# consume PREFIX: through find_package, with both libraries, and through pkg-config.
consume() {
  configure "$1" "$version" "$work/build" >/dev/null
  cmake --build "$work/build" >/dev/null
  check "$work/build/with_orva"
  check "$work/build/with_orva_static"

  local pc options
  pc=$(dirname "$(find "$1" -name orva.pc)")
  read -ra options <<<"$flags $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs orva)"
  "$compiler" "$project/main.cpp" "${options[@]}" -Wl,-rpath,"$(dirname "$pc")" \
    -o "$work/by_pkg_config"
  check "$work/by_pkg_config"
}
