# Read by run.sh, test.sh and .ci/run: what a fresh Debian 12 needs, and the builds.

# clang compiles the code for GPUs.
packages=(g++ clang cmake make zlib1g-dev rapidjson-dev libcoordgen-dev libgtest-dev)
# The Python package and its tests; a build does without it where they are missing.
python_packages=(python3-dev python3-numpy pybind11-dev python3-pytest mypy)
# What else its tests use where it is there.
toolkit_packages=(python3-rdkit python3-pandas python3-matplotlib python3-pip)

# Installs those of the packages named that are missing, as root or with sudo, and says so.
install_packages() {
  local missing=()
  for package in "$@"; do
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

# Builds targets of a preset, all of them where none is named.
build() {
  local preset=$1
  shift
  echo "+ building into build/$preset" >&2
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"} >/dev/null
}

# The same of the release preset, with what it needs.
build_release() {
  install_packages "${packages[@]}"
  build release "$@"
}

# The Python package in the release build, where Python has what it needs.
build_python() {
  cmake --build --preset release --target help | grep -q korvex_python || return 0
  build release korvex_python
}
