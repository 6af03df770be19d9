"""What the tests beside a fleet share: sandbox/headend-fleet runs them, in the folder with its inventory."""

import json
import os
import re
import signal
import subprocess
import time

PATIENCE = 300

# The configuration that the headends are to share is there already.
LINEUP = "lineup.json"


def run(*words, **options):
    """Runs a command to its end; its output comes with what it says on standard error."""
    return subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=PATIENCE, check=False, **options)


def headend(number, *words, stdin=None):
    """What a command on a headend prints; it has to end well."""
    done = run("headend", str(number), *words, input=stdin)
    if done.returncode != 0:
        raise AssertionError(f"headend {number} {words}: {done.returncode}: {done.stdout}")
    return done.stdout


def config(number):
    """What a headend runs."""
    return json.loads(headend(number, "lineupctl", "show", "--format", "json"))


def module_command(name, arguments=None):
    """A command that runs a module on the first headend."""
    given = ["-a", json.dumps(arguments)] if arguments else []
    return ["ansible", "headend1", "-m", "lineup.console." + name] + given


def module(name, arguments=None, *options):
    """The result of a module on the first headend."""
    done = run(*module_command(name, arguments), *options)
    found = re.search(r"^headend1 \| (\S+) => (\{.*?^\})", done.stdout, re.DOTALL | re.MULTILINE)
    if not found:
        raise AssertionError(done.stdout)
    result = json.loads(found.group(2))
    result["failed"] = found.group(1) == "FAILED!"
    result["printed"] = done.stdout
    return result


def own(path, value):
    """A patch that gives a headend a value of its own."""
    return [{"op": "replace", "path": path, "value": value}]


def wait_until(holds):
    """Waits, and fails after a while."""
    end = time.monotonic() + PATIENCE
    while not holds():
        if time.monotonic() > end:
            raise AssertionError("waited in vain")
        time.sleep(0.05)


def processes(name):
    """The processes of this name, on all headends."""
    numbers = []
    for number in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{number}/comm", encoding="utf-8") as comm:
                if comm.read() == name[:15] + "\n":  # as much of a name as Linux keeps
                    numbers.append(int(number))
        except FileNotFoundError:
            pass
    return numbers


def kill(name):
    """Ends every process of this name at once."""
    for number in processes(name):
        try:
            os.kill(number, signal.SIGKILL)
        except ProcessLookupError:
            pass


def calls(number):
    """The names of the calls that a headend's simulator has had."""
    log = headend(number, "cat", "/var/log/headend-simulator.log")
    return re.findall(r"^(\w+): ", log, re.MULTILINE)
