#!/usr/bin/python
# -*- coding: utf-8 -*-

# Copyright the lineup console's authors
# Licensed under the Apache License, Version 2.0
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: lineup_facts
short_description: Tell what a TV distribution headend runs
version_added: "2.10.0"
description:
  - Asks the controller of a headend for the configuration that it runs and the state of its RF inputs,
    with C(lineupctl show) on the headend.
  - Nothing is changed.
options: {}
requirements:
  - C(lineupctl) on the headend, of the package C(lineup-console)
author:
  - Lineup console maintainers (@lineup-console)
attributes:
  async:
    description: Can go on while the playbook does.
    support: full
  check_mode:
    description: Runs in check mode as it always does.
    support: full
notes:
  - Text that is not in UTF-8 has replacement characters in the facts.
"""

EXAMPLES = r"""
- name: Ask the headends
  lineup.console.lineup_facts:

- name: Insist on a signal
  ansible.builtin.assert:
    that: lineup_rf_inputs.SAT1.enabled and lineup_rf_inputs.SAT1.locked

- name: Insist on an id
  ansible.builtin.assert:
    that: lineup_running.headendGlobalConfig.headendId == 7
"""

RETURN = r"""
ansible_facts:
  description: What is true of the headend.
  returned: success
  type: dict
  contains:
    lineup_version:
      description: The version of C(lineupctl) on the headend.
      type: str
      sample: 2.10.1+d20260617
    lineup_running:
      description: The configuration that runs, by the names of its fields.
      type: dict
      sample: {"headendGlobalConfig": {"headendId": 7, "headendName": "Hotel Bellevue"}}
    lineup_rf_inputs:
      description: The RF inputs by their names.
      type: dict
      sample: {"SAT1": {"enabled": true, "locked": true}}
reason:
  description: The kind of failure, as of M(lineup.console.lineup_config).
  returned: failure of C(lineupctl)
  type: str
  sample: controller
rc:
  description: The exit status of C(lineupctl), negative for a signal.
  returned: failure of C(lineupctl)
  type: int
  sample: 4
stdout:
  description: What C(lineupctl) printed before it failed.
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

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lineup.console.plugins.module_utils import lineupctl


def rf_inputs(module):
    """The table of the RF inputs, whose rows are after its title and its header."""
    rows = lineupctl.output(module, ["show", "--section", "rfinputs"]).strip().split("\n")[2:]
    inputs = {}
    for row in rows:
        name, state, locked = row.rsplit(None, 2)
        inputs[name] = {"enabled": state == "enabled", "locked": locked == "yes"}
    return inputs


def main():
    module = AnsibleModule(argument_spec={}, supports_check_mode=True)
    facts = {
        "lineup_version": lineupctl.output(module, ["--version"]).split()[-1],
        "lineup_running": json.loads(lineupctl.output(module, ["show", "--format", "json"])),
        "lineup_rf_inputs": rf_inputs(module),
    }
    module.exit_json(changed=False, ansible_facts=facts)


if __name__ == "__main__":
    main()
