#!/usr/bin/python
# -*- coding: utf-8 -*-

# Copyright the lineup console's authors
# Licensed under the Apache License, Version 2.0
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: lineup_config
short_description: Keep a TV distribution headend at its configuration
version_added: "2.10.0"
description:
  - Makes the controller of a headend run the configuration in a file, with C(lineupctl apply) on the
    headend.
  - Nothing is sent if the headend runs it already. What was sent is read back and compared.
options:
  src:
    description:
      - The configuration, a file as C(lineupctl save) and the console write it.
      - A path on the control node, in the folder C(files) of the role or the playbook unless it is
        absolute; with I(remote_src) one on the headend.
    type: path
    required: true
  remote_src:
    description:
      - Whether I(src) and I(expect) are on the headend.
    type: bool
    default: false
  patch:
    description:
      - What this headend has of its own, as a patch by RFC 6902 that is applied to I(src) before
        anything is compared or sent.
      - The paths are those of C(lineupctl show --format json), and C(lineupctl diff --format json BASE SITE)
        prints such a patch. It holds where I(src) is the file BASE, as it names places, such as the third
        entry of a lineup.
      - Values have to have the type of their field. C("{{ number }}") as the whole of a value is a text
        before Ansible 2.19, unless Jinja's native types are turned on; see the examples for what keeps a
        number.
    type: list
    elements: dict
    default: []
  expect:
    description:
      - A file with the configuration that the headend has to run before. If it runs another, the module
        fails and nothing is sent.
      - It is compared as it is; I(patch) is not applied to it.
      - A task with it is not idempotent. When it has changed the headend, the next run fails, as the headend
        then runs I(src).
    type: path
  backup:
    description:
      - Whether what ran is kept in I(backup_dir) before anything is sent.
    type: bool
    default: false
  backup_dir:
    description:
      - The folder on the headend for the backups. With I(backup) it is made, for its owner alone, if it
        does not exist; that alone is no change.
    type: path
    default: /var/lib/lineup-console
  backup_keep:
    description:
      - How many backups stay, the newest ones. All of them unless it is given.
      - In /var/lib/lineup-console C(lineup-backup.timer) keeps thirty; where more are to stay, give another
        I(backup_dir).
    type: int
  state:
    description:
      - The configuration is what the headend runs. There is no other state, as a headend always runs one.
    type: str
    choices: [present]
    default: present
requirements:
  - C(lineupctl) on the headend, of the package C(lineup-console)
author:
  - Lineup console maintainers (@lineup-console)
attributes:
  check_mode:
    description: Can run in check mode and tell whether something would be sent.
    support: full
  async:
    description: Cannot go on while the playbook does.
    support: none
  diff_mode:
    description: Says each difference on a line, in the words of the console.
    support: full
notes:
  - With C(--diff) what is shown comes from the same run of C(lineupctl) that sends it.
  - If the module is killed, the headend runs the old configuration or the new one, as it is sent by one
    call.
"""

EXAMPLES = r"""
- name: Have one lineup on all headends
  lineup.console.lineup_config:
    src: lineup.json
    backup: true

- name: Have one lineup, and an id and a name for each
  lineup.console.lineup_config:
    src: lineup.json
    patch:
      - {op: replace, path: /headendGlobalConfig/headendId, value: 7}
      - {op: replace, path: /headendGlobalConfig/headendName, value: "{{ inventory_hostname }}"}

- name: The same with a number from a variable, which one expression for the whole list keeps a number
  lineup.console.lineup_config:
    src: lineup.json
    patch: "{{ [{'op': 'replace', 'path': '/headendGlobalConfig/headendId', 'value': headend_id}] }}"

# This works once: then the headend no longer runs what is expected.
- name: Undo, but only if nobody else has changed anything since
  lineup.console.lineup_config:
    src: "{{ changed.backup_file }}"
    expect: /root/lineup.json
    remote_src: true
"""

RETURN = r"""
changed:
  description:
    - Whether a configuration was sent and taken over, or would be in check mode.
    - In a failure this is true if that is known, also where what runs then could not be read back. If the
      controller or C(lineupctl) breaks off while it is sent, this is not known, and false.
  returned: always
  type: bool
  sample: true
difference:
  description: What differs between what ran and what is to run, a line each; empty if nothing does.
  returned: success
  type: list
  elements: str
  sample: ["id: 1 -> 7"]
backup_file:
  description: The file on the headend that holds what ran, a new one unless the newest there held it already.
  returned: >-
    if I(backup) is true and something was to be sent, but not in check mode; in a failure as well if what
    ran was kept before it
  type: str
  sample: /var/lib/lineup-console/lineup-20260617T120000.000Z.json
reason:
  description:
    - The kind of failure. C(expect) is that the headend does not run I(expect); C(file) is a file that
      cannot be read, written or brought to the headend, or holds no complete configuration;
      C(controller) that it cannot be reached, refuses or breaks off; C(other) that the headend runs
      something else than was sent;
      C(signal) that C(lineupctl) was ended by one; C(usage) that it does not know what the module asks;
      C(unknown) that it ended with a status that this module does not know.
  returned: failure of C(lineupctl), or of a file that it is to take
  type: str
  sample: controller
rc:
  description: The exit status of C(lineupctl), negative for a signal.
  returned: failure of C(lineupctl)
  type: int
  sample: 4
stdout:
  description: What C(lineupctl) printed; the difference, where what ran was kept, and for the reason C(other) what runs instead of
    what was sent.
  returned: failure of C(lineupctl)
  type: str
  sample: ""
stderr:
  description: What C(lineupctl) said.
  returned: failure of C(lineupctl)
  type: str
  sample: "lineupctl: 127.0.0.1:9190: the controller is not ready"
"""

import json
import os
import tempfile

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lineup.console.plugins.module_utils import lineupctl

KEPT = "kept what ran in "


def patch_file(module):
    """A file with the patch, which goes with the module's folder for temporary files."""
    try:
        number, path = tempfile.mkstemp(suffix=".patch", dir=module.tmpdir)
        module.add_cleanup_file(path)
        with os.fdopen(number, "w") as patch:
            json.dump(module.params["patch"], patch)
    except OSError as error:
        module.fail_json(msg="the patch cannot be written: %s" % error, reason="file")
    return path


def as_file(path):
    """The path as a word that means that file: "running" and "-" mean other things to lineupctl."""
    return path if os.path.isabs(path) else os.path.join(".", path)


def make_folder(module):
    """Makes the folder of the backups, and those that it is in."""
    folder = as_file(module.params["backup_dir"])
    try:
        os.makedirs(folder, 0o700)
    except FileExistsError:
        pass  # lineupctl says so if it is no folder
    except OSError as error:
        module.fail_json(msg="%s: %s" % (folder, error.strerror), reason="file")


def require_names(module):
    for name in ("src", "expect", "backup_dir"):
        if module.params[name] == "":
            module.fail_json(msg="%s is empty and names no file" % name, reason="file")


def words_for_apply(module, patch):
    params = module.params
    words = ["apply"]
    if params["expect"] is not None:
        words += ["--expect", as_file(params["expect"])]
    if patch:
        words += ["--patch", patch]
    if module.check_mode:
        words += ["--dry-run"]
    elif params["backup"]:
        words += ["--backup", as_file(params["backup_dir"])]
        if params["backup_keep"] is not None:
            words += ["--keep", str(params["backup_keep"])]
    return words + ["--", as_file(params["src"])]


def parts(out):
    """The lines of the difference that lineupctl printed, and the path of the backup or None."""
    # Not splitlines(), which also ends lines at characters that names may hold.
    lines = [line for line in out.split("\n") if line]
    for number, line in enumerate(lines):
        # No line of a difference begins like this. After it comes what else runs, if something does.
        if line.startswith(KEPT):
            return lines[:number], line[len(KEPT):]
    return lines, None


def apply(module):
    """Returns the difference, line by line, and the path of the backup or None."""
    require_names(module)
    if module.params["backup"] and not module.check_mode:
        make_folder(module)
    patch = patch_file(module) if module.params["patch"] else ""
    status, out, err = lineupctl.run(module, words_for_apply(module, patch))
    # An expectation that does not hold has the same status, and no output.
    differs = module.check_mode and status == 1 and out
    difference, backup = parts(out)
    if status != 0 and not differs:
        lineupctl.fail(module, status, out, err.replace(patch, "the patch") if patch else err,
                       **({"backup_file": backup} if backup else {}))
    return difference, backup


def main():
    module = AnsibleModule(
        argument_spec={
            "src": {"type": "path", "required": True},
            "remote_src": {"type": "bool", "default": False},
            "patch": {"type": "list", "elements": "dict", "default": []},
            "expect": {"type": "path"},
            "backup": {"type": "bool", "default": False},
            "backup_dir": {"type": "path", "default": "/var/lib/lineup-console"},
            "backup_keep": {"type": "int"},
            "state": {"type": "str", "choices": ["present"], "default": "present"},
        },
        supports_check_mode=True,
    )
    difference, backup = apply(module)
    result = {"changed": bool(difference), "difference": difference}
    if backup:
        result["backup_file"] = backup
    if difference:
        result["diff"] = {"prepared": "\n".join(difference) + "\n"}
    module.exit_json(**result)


if __name__ == "__main__":
    main()
