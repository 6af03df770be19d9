#!/usr/bin/env python3
"""Measures the console side by side with its peers and prints the table of docs/performance.md.

Run by bench/run, inside a headend's sandbox. Whatever is compared is run in turns, several
rounds, so that a machine whose speed changes changes it for all of them. Times are medians.
"""

import csv
import json
import os
import platform
import pty
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import termios
from dataclasses import dataclass
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
BUILD = PROJECT / "build"
BIN = BUILD / "release" / "bin"
CONSOLE = str(BIN / "lineup-console")
CTL = str(BIN / "lineupctl")
BARE = str(BIN / "bench-bare")
EMPTY = str(BIN / "bench-empty")
NO_SYNC = str(BUILD / "release" / "bench" / "libbench-no-sync.so")
CATALOGUE = "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite"

REDIS_PORT = "6399"
REDIS = "redis-cli -p " + REDIS_PORT

QUICK = "--quick" in sys.argv
CHOSEN = [word for word in sys.argv[1:] if word != "--quick"]
ROUNDS = 2 if QUICK else 5


@dataclass
class Figure:
    """A command's median wall time and its processor time (a mean a round, and their median), in
    seconds."""
    wall: float
    cpu: float


@dataclass
class Row:
    """What was measured, the console's figure, against whom, their figure, and the ratio to aim at."""
    what: str
    console: str
    peer: str
    figure: str
    ratio: float
    aim: float
    note: str = ""

    def cells(self):
        met = "yes" if self.ratio <= self.aim else "**no**"
        return [self.what, self.console, self.peer, self.figure, f"{self.ratio:.2f}", f"{self.aim:g}",
                met, self.note]


ROWS = []


def add_row(*values, **named):
    row = Row(*values, **named)
    ROWS.append(row)
    print("  ".join(row.cells()), file=sys.stderr)


def shown(seconds):
    return f"{seconds * 1e3:.2f} ms" if seconds < 0.1 else f"{seconds * 1e3:.0f} ms"


def compare(*commands, runs, shell=True, prepare=None):
    """The figures of the commands, in their order. They take turns, so that all of them meet a machine
    that becomes slower or faster: long ones after each run, short ones after as many as are asked for."""
    rounds, each = (ROUNDS, runs) if runs > 10 else (ROUNDS * runs, 1)
    if QUICK:
        rounds, each = ROUNDS, 3
    options = ["--style", "none", "--warmup", "0" if each == 1 else "1", "--runs", str(each)]
    options += ["--shell", "sh"] if shell else ["-N"]
    if prepare:
        options += [word for command in prepare for word in ("--prepare", command)]
    times = [[] for _ in commands]
    cpu = [[] for _ in commands]
    with tempfile.NamedTemporaryFile() as export:
        for _ in range(rounds):
            subprocess.run(["hyperfine", *options, "--export-json", export.name, *commands], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            results = json.loads(Path(export.name).read_text())["results"]
            for index, result in enumerate(results):
                times[index] += result["times"]
                cpu[index].append(result["user"] + result["system"])
    return [Figure(statistics.median(times[i]), statistics.median(cpu[i]))
            for i in range(len(commands))]


def add_times(what, figures, peer, aim):
    console, other = figures
    add_row(what, shown(console.wall), peer, shown(other.wall), console.wall / other.wall, aim,
            note=f"CPU {console.cpu / other.cpu:.2f}")


def add_processor_times(what, figures, peer, aim):
    """For what the simulator takes part in, whose own time is for the most part the wall time."""
    console, other = figures
    add_row(f"{what}, processor time", shown(console.cpu), peer, shown(other.cpu), console.cpu / other.cpu, aim,
            note=f"wall {console.wall / other.wall:.2f}")


def script(folder, name, lines):
    path = folder / name
    path.write_text("\n".join(lines) + "\n")
    return path


def console_session(path):
    return f"{CONSOLE} < {path}"


def output_of(command):
    return subprocess.run(command, shell=True, check=True, stdout=subprocess.PIPE).stdout


# ---- what is measured on


def start_simulator():
    ready, end = os.pipe()
    simulator = subprocess.Popen([BIN / "headend-simulator", "--in-memory", "--ready-fd", str(end)], pass_fds=[end],
                                 stdout=subprocess.DEVNULL)
    os.close(end)
    if not os.read(ready, 16):
        sys.exit("the simulator does not start")
    os.close(ready)
    return simulator


def stop(process):
    process.terminate()
    process.wait()


def start_redis(folder):
    server = subprocess.Popen(
        ["redis-server", "--port", REDIS_PORT, "--bind", "127.0.0.1", "--save", "", "--dir", folder],
        stdout=subprocess.DEVNULL)
    while subprocess.run(f"{REDIS} ping", shell=True, stdout=subprocess.PIPE,
                         stderr=subprocess.DEVNULL).stdout != b"PONG\n":
        pass
    return server


def restore(path):
    subprocess.run([CONSOLE, "--restore", path], check=True, stdout=subprocess.DEVNULL)


def make_lineups(folder, counts):
    """Files of configurations with so many services of the catalogue, on both lineups."""
    files = {}
    for count in counts:
        files[count] = folder / f"lineup-{count}.json"
        lines = ["clear"] + ["adddvb 17"] * count + [f"save {files[count]}"]
        output_of(console_session(script(folder, "make", lines)))
    return files


def make_big_catalogue():
    """100,000 satellite services like one that is there; "needle" is in the names of ten."""
    with sqlite3.connect(CATALOGUE) as catalogue:
        like = list(catalogue.execute("SELECT * FROM availableSatService").fetchone())
        catalogue.execute("DELETE FROM availableSatService")
        names = [column[1] for column in catalogue.execute("PRAGMA table_info(availableSatService)")]
        number, name = names.index("service_id"), names.index("service_name")

        def row(i):
            like[number] = 100_000 + i
            like[name] = f"Needle {i}" if i % 10_000 == 0 else f"Channel {i}"
            return like
        places = ", ".join("?" * len(like))
        catalogue.executemany(f"INSERT INTO availableSatService VALUES({places})",
                              (list(row(i)) for i in range(100_000)))


# ---- the rows


def start(_folder, _lineups):
    figures = compare(f"{CONSOLE} --version", "sqlite3 -version", "redis-cli --version", EMPTY,
                      runs=200, shell=False)
    for other, peer, aim in zip(figures[1:], ["sqlite3 -version", "redis-cli --version", "empty program"],
                                [1, 1, 1.2]):
        add_processor_times("start to exit, `--version`", (figures[0], other), peer, aim)


def first_prompt(folder, _lineups):
    size = int(output_of(f"{BARE} size"))
    value = folder / "value"
    value.write_bytes(b"x" * size)
    output_of(f"{REDIS} -x set config < {value}")
    figures = compare(CONSOLE, f"{REDIS} get config", runs=200, shell=False)
    add_times("start, fetch, first prompt, quit", figures, f"redis-cli get of {size} B", 1)


def calls(folder, lineups):
    for count, lineup in list(lineups.items())[1:]:
        times = max(10, min(1000, 30_000 // count))
        restore(lineup)
        for command, call in (("reset", "fetch"), ("commit", "commit")):
            session = console_session(script(folder, command, [command] * times))
            figures = compare(session, f"{BARE} {call} {times}", runs=3)
            add_processor_times(f"{call} of {count:,} services", figures, "bare client", 1.05)


def entries(folder, lineups):
    times = []
    for count in (1000, 10_000):
        session = script(folder, "addenc", ["addenc 3 0"] * count + ["commit"])
        sets = script(folder, "sets", [f"SET service:{i} ENC" for i in range(count)])
        figures = compare(console_session(session), f"{REDIS} < {sets}", runs=3,
                          prepare=[f"{CONSOLE} --restore {lineups[0]}", f"{REDIS} flushall"])
        times.append(figures[0].cpu)
        add_processor_times(f'{count:,} "addenc", commit', figures, "redis-cli, SET", 1)
    add_growth('"addenc", commit: growth from 1,000 to 10,000', times)


def reserved_slots(folder, lineups):
    for what, service_type in (("filling them", 1), ("matching none", 2)):
        times = []
        for count in (1000, 10_000):
            half = count // 2
            session = script(folder, "slots",
                             [f"rfaddempty {service_type}"] * half + ["rfaddenc 3 0"] * half)
            times.append(compare(console_session(session), runs=3,
                                 prepare=[f"{CONSOLE} --restore {lineups[0]}"])[0].cpu)
        add_growth(f"half reserving slots, half {what}: growth", times)


def add_growth(what, times):
    add_row(f"{what}, processor time", shown(times[1]), "1,000 of them", shown(times[0]), times[1] / times[0], 11)


def show(folder, lineups):
    for count in (1000, 10_000):
        restore(lineups[count])
        times = 20_000 // count
        figures = compare(console_session(script(folder, "show", ["show"] * times)),
                          f"{BARE} show {times}", runs=3)
        add_times(f'"show" of {count:,} services', figures, "bare debug protocol", 1.1)


def files(folder, lineups):
    for count in (1000, 10_000):
        restore(lineups[count])
        times = 20_000 // count
        copy = folder / "copy.json"
        # With a change pending, "save" fetches nothing first.
        saves = script(folder, "save", ["id 1"] + [f"save {copy}"] * times)
        restores = script(folder, "restore", [f"restore {lineups[count]}"] * times)
        for what, session, bare in (("save", saves, f"{BARE} save {times} {copy}"),
                                    ("restore", restores, f"{BARE} restore {times} {lineups[count]}")):
            figures = compare(f"LD_PRELOAD={NO_SYNC} {console_session(session)}", bare, runs=3)
            add_processor_times(f'"{what}" of {count:,} services', figures, "bare JSON protocol", 1.1)


def ctl(folder, lineups):
    add_times("`lineupctl wait`, start to exit", compare(f"{CTL} wait", f"{BARE} fetch", runs=200, shell=False),
              "bare client", 1.2)

    # The last entry of each lineup put in front: the worst place for a comparison by position.
    other = folder / "other.json"
    config = json.loads(lineups[10_000].read_text())
    for entries_field in ("3", "5"):
        entries_list = config["1"]["rec"][entries_field]["lst"]  # type, count, entries
        entries_list.insert(2, entries_list.pop())
    other.write_text(json.dumps(config, separators=(",", ":")))
    for what in ("text", "json"):
        # Its status says that they differ.
        figures = compare(f"{CTL} diff --format={what} {lineups[10_000]} {other} || true",
                          f"{BARE} read 2 {other}", runs=3)
        add_times(f"`lineupctl diff` of 10,000 against 10,000, {what}", figures, "bare reading of both", 3)

    restore(lineups[10_000])
    database = folder / "lineup.sqlite"
    make_tables(database)
    for options, shell, rows in (
            ("", "-column -header", "SELECT * FROM rf; SELECT * FROM ip"),
            ("--format=csv", "-csv -header", "SELECT * FROM rf"),
            ("--format=json", "-json", "SELECT * FROM rfEntries; SELECT * FROM ipEntries; SELECT * FROM services")):
        figures = compare(f"{CTL} show {options}".strip(), f"sqlite3 {shell} {database} '{rows}'", runs=5)
        add_processor_times(f"`lineupctl show {options}".strip() + "` of 10,000 services", figures,
                            "sqlite3, as many rows", 1.5 if options == "" else float("inf"))
    # What the wall time of these is made of: the fetch, or the library's reading of JSON.
    for command, bare, peer in (("show", f"{BARE} fetch", "bare client, fetch alone"),
                                ("show --format=csv", f"{BARE} fetch", "bare client, fetch alone"),
                                (f"show {lineups[10_000]}", f"{BARE} read 1 {lineups[10_000]}", "bare reading of it")):
        figures = compare(f"{CTL} {command}", bare, runs=5)
        what = command.replace(str(lineups[10_000]), "FILE")
        add_times(f"`lineupctl {what}` of 10,000 services", figures, peer, float("inf"))


def make_tables(database):
    """The tables of "lineupctl show", and the records that its JSON consists of, a column for each of
    their values."""
    tables = {}
    for lineup in ("rf", "ip"):
        rows = list(csv.reader(output_of(f"{CTL} show --format=csv --section={lineup}").decode().splitlines()))
        tables[lineup] = rows[0], rows[1:]
    config = json.loads(output_of(f"{CTL} show --format=json"))["lineupConfig"]
    for name, records in (("rfEntries", config["rfEntries"]), ("ipEntries", config["ipEntries"]),
                          ("services", config["dvbInputServices"].values())):
        rows = [dict(leaves(record)) for record in records]
        tables[name] = list(rows[0]), [list(row.values()) for row in rows]
    with sqlite3.connect(database) as connection:
        for name, (columns, rows) in tables.items():
            connection.execute(f"CREATE TABLE {name}({', '.join(json.dumps(column) for column in columns)})")
            connection.executemany(f"INSERT INTO {name} VALUES({', '.join('?' * len(columns))})", rows)


def leaves(value, path=""):
    """The values in a JSON value, with their places."""
    if not isinstance(value, (dict, list)):
        yield path, value
        return
    for name, member in value.items() if isinstance(value, dict) else enumerate(value):
        yield from leaves(member, f"{path}/{name}")


def find(folder, _lineups):
    make_big_catalogue()
    times = 10
    needle = "SELECT * FROM availableSatService WHERE service_name LIKE '%needle%';"
    figures = compare(console_session(script(folder, "find", ["findsat needle"] * times)),
                      f"sqlite3 {CATALOGUE} < {script(folder, 'select', [needle] * times)}", runs=3)
    add_times("find of 10 in 100,000 rows", figures, "sqlite3, same select", 1)

    listing = console_session(script(folder, "list", ["findsat channel"]))
    bare = f"{BARE} find 1 channel"
    if output_of(bare) not in output_of(listing):
        sys.exit("the bare loop prints other lines than the console")
    everything = script(folder, "everything", [needle.replace("needle", "channel")])
    figures = compare(listing, bare, f"sqlite3 {CATALOGUE} < {everything}", runs=3)
    add_times("find listing 100,000 rows", figures[:2], "bare loop", 1.3)
    add_row("the same", shown(figures[0].wall), "sqlite3, same select", shown(figures[2].wall),
            figures[0].wall / figures[2].wall, float("inf"))

    beyond = (peak_memory(listing) - peak_memory(bare)) / 100_000
    add_row("the same: memory a row beyond the bare loop's", f"{beyond:,.0f} B", "limit", "2,048 B",
            beyond / 2048, 1)


def peak_memory(command):
    """Bytes that the command's process had resident at most."""
    process = subprocess.Popen(["sh", "-c", "exec " + command], stdout=subprocess.DEVNULL)
    _, _, usage = os.wait4(process.pid, 0)
    process.returncode = 0
    return usage.ru_maxrss * 1024


def memory_at_prompt(command, prompt):
    """Bytes resident when the command waits at its prompt on a terminal."""
    child, terminal = pty.fork()
    if child == 0:
        os.environ["TERM"] = "xterm"
        termios.tcsetwinsize(0, (24, 80))
        os.execvp(command[0], command)
    said = b""
    while prompt not in said:
        said += os.read(terminal, 4096)
    status = Path(f"/proc/{child}/status").read_text()
    os.kill(child, 9)
    os.close(terminal)
    os.waitpid(child, 0)
    return int(status.split("VmRSS:")[1].split()[0]) * 1024


def memory(_folder, lineups):
    programs = {"redis-cli": (["redis-cli", "-p", REDIS_PORT], b"> "),
                "sqlite3": (["sqlite3", CATALOGUE], b"sqlite> "), "console": ([CONSOLE], b"> ")}
    for count in (0, 1000):
        restore(lineups[count])
        samples = [[memory_at_prompt(*program) for program in programs.values()] for _ in range(9)]
        redis, shell, console = (statistics.median(column) for column in zip(*samples))
        aim = 1 if count == 0 else float("inf")
        for peer, bytes_used in (("redis-cli", redis), ("sqlite3", shell)):
            add_row(f"resident at the prompt, {count:,} services", f"{console / 1e6:.2f} MB", peer,
                    f"{bytes_used / 1e6:.2f} MB", console / bytes_used, aim)


def sizes(folder, _lineups):
    for preset, strip, limit in (("release", "strip", 1_600_000),
                                 ("armhf", "arm-linux-gnueabihf-strip", 1_000_000)):
        stripped = folder / "stripped"
        subprocess.run([strip, "-o", stripped, BUILD / preset / "bin" / "lineup-console"], check=True)
        size = stripped.stat().st_size
        arch = platform.machine() if preset == "release" else preset
        add_row(f"stripped size, {arch}", f"{size:,} B", "limit", f"{limit:,} B", size / limit, 1)


def print_table():
    head = ["What", "Console", "Against", "Its figure", "Ratio", "Aim", "Met", ""]
    print("| " + " | ".join(head) + " |")
    print("|---|---:|---|---:|---:|---:|---|---|")
    for row in ROWS:
        print("| " + " | ".join("–" if cell == "inf" else cell for cell in row.cells()) + " |")


# "find" comes last: it changes the simulator's catalogue.
MEASUREMENTS = [start, first_prompt, memory, calls, entries, reserved_slots, show, files, ctl, sizes, find]


def main():
    unknown = set(CHOSEN) - {measure.__name__ for measure in MEASUREMENTS}
    if unknown:
        sys.exit(f"no such measurement: {' '.join(unknown)}")
    with tempfile.TemporaryDirectory(dir=BUILD) as name:
        folder = Path(name)
        redis = start_redis(folder)
        simulator = start_simulator()
        lineups = make_lineups(folder, (0, 10, 100, 1000, 10_000))
        for measure in MEASUREMENTS:
            if not CHOSEN or measure.__name__ in CHOSEN:
                restore(lineups[0])
                measure(folder, lineups)
        stop(simulator)
        stop(redis)
    print_table()


main()
