# Read by run.sh and test.sh: what a fresh Debian 12 needs, and the release build.

packages=(g++ cmake make zlib1g-dev rapidjson-dev libgtest-dev)

# Installs the packages that are missing, as root or with sudo, and says so.
install_packages() {
  local missing=()
  for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return
  local as_root=()
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || {
      echo "Missing packages: ${missing[*]}. Run as root, or install sudo." >&2
      exit 1
    }
    as_root=(sudo)
  fi
  echo "+ installing ${missing[*]}" >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends "${missing[@]}" >/dev/null
}

# Builds targets of the release preset, all of them where none is named.
build_release() {
  install_packages
  echo "+ building into build/release" >&2
  cmake --preset release >/dev/null
  cmake --build --preset release -j "$(nproc)" ${1:+--target "$@"} >/dev/null
}
