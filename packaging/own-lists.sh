# shellcheck shell=bash
# Sourced by scripts that fetch Debian's packages to use them without installing them.

# own_lists FOLDER [OPTION]...: sets apt_options, with which apt's programs work on lists of their own in
# FOLDER, so that this machine's package management is left as it is; needs no root. apt_sources is a copy
# of the machine's package sources that they use, which may be changed.
own_lists() {
  local folder=$1 sources=/etc/apt/sources.list.d/debian.sources
  shift
  [ -e "$sources" ] || sources=/etc/apt/sources.list
  mkdir -p "$folder/lists/partial" "$folder/archives/partial"
  : >"$folder/status"
  apt_sources=$folder/${sources##*/}
  cp "$sources" "$apt_sources"
  # shellcheck disable=SC2034  # for the script that sources this
  apt_options=(
    -q -o Dir::State::lists="$folder/lists" -o Dir::State::status="$folder/status"
    -o Dir::Cache::archives="$folder/archives" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
    -o Dir::Etc::sourcelist="$apt_sources" -o Dir::Etc::sourceparts=-
    -o APT::Sandbox::User= -o APT::Update::Post-Invoke= -o APT::Update::Post-Invoke-Success= "$@"
  )
}
