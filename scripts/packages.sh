# shellcheck shell=bash
# Sourced by the other scripts: installs Debian packages that are missing.

# require_packages NAME...
require_packages() {
  local missing=() name
  for name in "$@"; do
    dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || missing+=("$name")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! sudo -n true 2>/dev/null; then
      echo "Some packages are missing. Install them with this command, then run $0 again:" >&2
      echo "  sudo apt-get install --no-install-recommends ${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo -n)
  fi
  echo "Installing ${missing[*]}"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive
             apt-get -qq -o DPkg::Lock::Timeout=300)
  "${apt[@]}" update
  "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >/dev/null
}

# Needed to build the library and the command.
# shellcheck disable=SC2034
build_packages=(g++ cmake ninja-build libcli11-dev libminizip-dev libpng-dev libpugixml-dev
                libtiff-dev nlohmann-json3-dev zlib1g-dev)

# Needed to build Debian packages of them.
# shellcheck disable=SC2034
deb_packages=(dpkg-dev file help2man)
