# Copyright the lineup console's authors
# Licensed under the Apache License, Version 2.0
# SPDX-License-Identifier: Apache-2.0

"""Runs lineupctl for a module, and turns what it says into the module's result."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import re

# The statuses of lineupctl(1): a word for playbooks, and what it means.
REASONS = {
    1: ("expect", "the headend runs something else than was expected, and nothing was sent"),
    2: ("usage", "lineupctl does not know what this module asks of it; is it older?"),
    3: ("file", "a file cannot be read or written, or does not hold what it should"),
    4: ("controller", "the headend's controller cannot be reached, refuses or breaks off"),
    5: ("other", "the headend runs something else than was sent"),
}

# How its lines end that say that the configuration was sent and taken over, whatever came then.
SENT = re.compile(r": was sent, (and runs|but something else runs)$|"
                  r" was sent, but could not be read back$|: was sent and taken over; a signal ends this", re.MULTILINE)


def run(module, words):
    """Runs lineupctl with these words, and returns its status and what it said on its two outputs."""
    return module.run_command([module.get_bin_path("lineupctl", required=True)] + words)


def output(module, words):
    """The same for what has no status but 0 when all is well; returns the standard output."""
    status, out, err = run(module, words)
    if status != 0:
        fail(module, status, out, err)
    return out


def fail(module, status, out, err, **result):
    """Ends the module with what a status of lineupctl means, and what else is in the result."""
    sent = bool(SENT.search(err))
    if status < 0:
        reason = "signal"
        meaning = "signal %d ended lineupctl" % -status
        meaning += "" if sent else "; whether it has sent anything is not known"
    else:
        reason, meaning = REASONS.get(status, ("unknown", "lineupctl ended with status %d" % status))
    said = err.strip()
    if said.startswith("lineupctl: "):
        said = said[len("lineupctl: "):]
    module.fail_json(msg=meaning + (": " + said if said else ""), reason=reason, rc=status,
                     changed=sent, stdout=out, stderr=err, **result)
