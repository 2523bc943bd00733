# shellcheck shell=bash
# Sourced by the other scripts: builds with little output.

# build ARGUMENT...: `cmake --build` with one line of progress in place of a line per file. Warnings
# and errors are shown in full.
build() {
  NINJA_STATUS='[%f/%t] ' cmake --build "$@" 2>&1 | {
    local line percent shown=0
    while IFS= read -r line; do
      if [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]]; then
        percent=$((BASH_REMATCH[1] * 10 / BASH_REMATCH[2] * 10))
        [ "$percent" -gt "$shown" ] || continue
        [ "$shown" -gt 0 ] || printf 'Building'
        printf ' %d%%' "$percent"
        shown=$percent
      else
        [ "$shown" -eq 0 ] || echo
        shown=0
        printf '%s\n' "$line"
      fi
    done
    [ "$shown" -eq 0 ] || echo
  }
}
