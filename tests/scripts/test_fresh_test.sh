#!/bin/bash
# test_fresh_test.sh SOURCE-FOLDER: scripts/test-fresh where the making of the system fails.
# shellcheck disable=SC2016  # the stubs' own variables
set -eu

folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
mkdir "$folder/scripts" "$folder/bin"
cp "$1/scripts/test-fresh" "$folder/scripts"
cd "$folder"

stub() {
  printf '#!/bin/bash\n%s\n' "$2" >"$1"
  chmod +x "$1"
}
stub scripts/install-packages ''
stub bin/sleep ''
stub bin/apt-get '[ "$1" != indextargets ] || . /etc/os-release
[ "$1" != indextargets ] || printf "%s\n" "Debian deb http://mirror.invalid/debian $VERSION_CODENAME main" \
  "Other deb http://other.invalid/debian $VERSION_CODENAME main" "Debian deb http://mirror.invalid/debian sid main"'
# Like the real one, it makes the file first.
stub bin/mmdebstrap 'echo tried >>tries; cat >sources; touch "${@: -2:1}"; exit 1'

status=0
PATH=$folder/bin:$PATH scripts/test-fresh trixie true 2>said || status=$?
if [ "$status" = 77 ]; then
  cat said
  exit 77
fi

same() {
  [ "$2" = "$3" ] || {
    echo "$1: '$3' instead of '$2'"
    cat said
    exit 1
  }
}
same "the status" 1 "$status"
same "what Debian's sources are for the other release" "deb http://mirror.invalid/debian trixie main" "$(cat sources)"
same "tries" 3 "$(wc -l <tries)"
same "systems that are taken for whole" "" "$(ls build/fresh/*.tar 2>/dev/null || true)"
