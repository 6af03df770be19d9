# Copyright the lineup console's authors
# Licensed under the Apache License, Version 2.0
# SPDX-License-Identifier: Apache-2.0

"""The part of lineup_config on the control node: takes files from there to the headend."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

from ansible.errors import AnsibleConnectionFailure, AnsibleError
from ansible.module_utils.parsing.convert_bool import boolean
from ansible.plugins.action import ActionBase

NO_ROOM = "No space left on device"


def renamed(value, places):
    """A result of the module, with the files' names on the control node."""
    if isinstance(value, dict):
        return dict((key, renamed(member, places)) for key, member in value.items())
    if isinstance(value, list):
        return [renamed(member, places) for member in value]
    if isinstance(value, str):
        for place, ours in places.items():
            value = value.replace(place, ours)
    return value


class FileNotTransferred(Exception):
    """A file that is not there, or for which the headend has no room."""


class ActionModule(ActionBase):

    TRANSFERS_FILES = True

    def run(self, tmp=None, task_vars=None):
        result = {}
        arguments = dict(self._task.args)
        places = {}
        try:
            result = super(ActionModule, self).run(tmp, task_vars)
            if not boolean(arguments.get("remote_src", False), strict=False):
                places = self._transfer(arguments)
            done = self._execute_module(module_name="lineup.console.lineup_config", module_args=arguments,
                                        task_vars=task_vars)
            result.update(renamed(done, places))
        except FileNotTransferred as error:
            result.update(failed=True, reason="file", msg=str(error))
        except AnsibleConnectionFailure as error:
            # Where there is no room for a folder either, Ansible takes that for a connection that failed.
            if NO_ROOM not in str(error):
                raise
            result.update(failed=True, reason="file", msg=str(error).strip())
        finally:
            self._remove_tmp_path(self._connection._shell.tmpdir)
        return result

    def _transfer(self, arguments):
        """Takes the files to the headend, puts their places there in the arguments, and returns which
        file each place stands for. That the headend cannot be reached is left to Ansible."""
        try:
            return self._transfer_files(arguments)
        except AnsibleConnectionFailure:
            raise
        except AnsibleError as error:
            raise FileNotTransferred(str(error))

    def _transfer_files(self, arguments):
        places = {}
        for name in ("src", "expect"):
            if arguments.get(name):
                ours = str(arguments[name])
                real = self._loader.get_real_file(self._find_needle("files", ours), decrypt=True)
                if self._connection._shell.tmpdir is None:
                    self._make_tmp_path()
                place = self._connection._shell.join_path(self._connection._shell.tmpdir, name + ".json")
                arguments[name] = self._transfer_file(real, place)
                places[place] = ours
        if places:
            self._fixup_perms2([self._connection._shell.tmpdir] + list(places), execute=False)
        return places
