#!/bin/sh
# Runs a command where Ansible is installed, and ends with 77 elsewhere.
command -v ansible-test >/dev/null || {
  echo "ansible-core is not installed" >&2
  exit 77
}
exec "$@"
