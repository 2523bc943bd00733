#!/usr/bin/env bash
# consume_test.sh BUILD_FOLDER SOURCE_FOLDER GENERATOR COMPILER [FLAG...]
set -euo pipefail
# shellcheck source=tests/install/consumer.sh
. "$(dirname "${BASH_SOURCE[0]}")/consumer.sh" "$@"

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
consume "$prefix"

# Another major version must be refused, for being another version.
major=${version%%.*}
for other in $((major - 1)).9 $((major + 1)).0; do
  if configure "$prefix" "$other" "$work/refused" >"$work/log" 2>&1 ||
    ! grep -q 'orva-config\.cmake, version: ' "$work/log"; then
    echo "version $other was not refused:" && cat "$work/log"
    exit 1
  fi
done
