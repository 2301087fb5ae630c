# The Debian packages that this project needs, in groups by what for, and how they are installed.
# Sourced by script/bootstrap, which builds nothing anew for what is added here.

packages_build=(
  cmake ninja-build dpkg-dev ca-certificates                        # the build itself
  g++-mingw-w64-x86-64-posix libz-mingw-w64-dev                     # the Windows flavour
  clang clang-format clang-tidy libclang-rt-14-dev                  # the host flavour and lint
  libcurl4-openssl-dev libjansson-dev zlib1g-dev libfmt-dev googletest
  tcl                                                               # makes SQLite's one source file
  libcpp-httplib-dev libssl-dev                                     # the local report server
  wine64                                                            # runs what was built
  sqlite3                               # makes databases for tests; its version is the library's
  faketime time                         # a clock of its own for the program, and what memory it took
  python3 python3-jsonschema                     # finishing images, the data inventory, bills of materials
  zip unzip osslsigncode                                            # what is shipped
)
packages_peers=(ripgrep strace llvm-14-dev)                         # what script/bench measures against
packages_browser=(chromium chromium-driver)                         # tests of the report server's page
packages_debugger=(gdb)
packages_coverage=(llvm-14)

# missing_packages GROUP...
missing_packages() {
  local group name
  for group; do
    local -n names=packages_$group
    for name in "${names[@]}"; do
      dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || echo "$name"
    done
  done
}

# install_packages GROUP...: as root or through sudo.
install_packages() {
  local group missing as_root=()
  for group; do
    declare -p "packages_$group" >/dev/null 2>&1 || fail "there is no group of packages called $group"
  done
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    sudo -n true 2>/dev/null ||
      fail "these Debian packages are missing and neither root nor sudo is at hand: ${missing[*]}" \
        "Install them with: apt-get install ${missing[*]}"
    as_root=(sudo -n)
  fi
  step "apt-get update" "${as_root[@]}" apt-get update
  step "install ${#missing[@]} Debian packages" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
}
