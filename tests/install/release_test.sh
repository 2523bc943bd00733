#!/usr/bin/env bash
# release_test.sh SOURCE_FOLDER
set -euo pipefail
source=$1

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# shellcheck disable=SC2046
unset $(git rev-parse --local-env-vars)  # as a hook of git leaves them
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
repository=$work/repository
mkdir -p "$repository/scripts"
cp "$source"/scripts/{release,packages.sh} "$repository/scripts/"
cp "$source/.gitignore" "$source/CMakeLists.txt" "$repository/"
release=$(sed -n 's/^project(orva VERSION \([^ ]*\) .*/\1/p' "$source/CMakeLists.txt")
printf '# Changes\n\n## %s, not released yet\n' "$release" >"$repository/CHANGELOG.md"

# commit
commit() {
  git -C "$repository" add -A
  git -C "$repository" -c user.name=test -c user.email=test@orva.invalid commit -qm change
}
git -C "$repository" init -q
commit

# refused TEXT [FOLDER]: the message holds TEXT.
refused() {
  if "$repository/scripts/release" "${@:2}" >"$work/log" 2>&1 || ! grep -qF "$1" "$work/log"; then
    echo "not refused for \"$1\":" && cat "$work/log"
    exit 1
  fi
}

refused "no heading \"## $release\""
sed -i 's/, not released yet//' "$repository/CHANGELOG.md"
refused "not committed"
commit
touch "$repository/new.cpp"
refused "not committed"
rm "$repository/new.cpp"
refused "under version control" "$repository/files"
refused "under version control" "$repository"
refused "one folder" a b
[ -z "$(git -C "$repository" status --porcelain --ignored)" ]
