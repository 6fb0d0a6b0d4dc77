#!/usr/bin/env python3
"""Runs all peers against the bench server in one go and prints the comparison as tables.

Rounds interleave the peers, so that what the machine does meanwhile hits all of them alike. In each round a client
starts afresh, its first operation is thrown away (cold heap, first page faults), and the median of the others counts;
the table has the median of the rounds. Memory is that of a process that does the operation once. All peers must
deliver the same values. The local service is measured with the plug-in as its client. Ends with status 1 when a figure
is above its bar.
"""
import argparse
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from collections import namedtuple

PEERS = ("generated", "limit", "handwritten", "ours")

# Operation, path on the server, size of the map file in MiB, repetitions; bars: ours / generated, ours / limit, ours /
# handwritten (None: only shown).
Case = namedtuple("Case", "name operation path file repeat to_generated to_limit to_handwritten", defaults=[None])
CASES = (
    Case("login", "login", "/login", 0, 40, 0.9, 1.8),
    Case("list 10, thumbnails", "list", "/list/10/8192", 0, 20, 0.12, 1.4),
    Case("list 1,000, thumbnails", "list", "/list/1000/8192", 0, 6, 0.11, 1.5),
    Case("list 10,000, thumbnails", "list", "/list/10000/8192", 0, 3, 0.09, 1.35),
    Case("list 1,000, light", "list", "/list/1000/0", 0, 10, 0.17, 1.35, 1.1),
    Case("list 10,000, light", "list", "/list/10000/0", 0, 5, 0.17, 1.35, 1.1),
    Case("get 1 MiB", "get", "/get/1", 0, 12, 0.055, 1.4),
    Case("get 16 MiB", "get", "/get/16", 0, 5, 0.035, 1.3),
    Case("get 64 MiB", "get", "/get/64", 0, 3, 0.085, 1.25),
    Case("save 1 MiB", "save", "/save", 1, 12, 0.22, 1.5),
    Case("save 16 MiB", "save", "/save", 16, 5, 0.22, 1.5),
    Case("save 64 MiB", "save", "/save", 64, 3, 0.3, 1.1),
)
TOLERANCE = 1.15  # factor for times, which vary on a busy machine

# Operation and path; bar: times the map of so many MiB, or without one times what `limit` needs. For smaller maps the
# process itself needs more memory than the map.
Memory = namedtuple("Memory", "name operation path file map bar")
MEMORIES = (
    Memory("get 16 MiB", "get", "/get/16", 0, 16, 1.1),
    Memory("get 64 MiB", "get", "/get/64", 0, 64, 1.1),
    Memory("save 16 MiB", "save", "/save", 16, 16, 1.1),
    Memory("save 64 MiB", "save", "/save", 64, 64, 1.1),
    Memory("list 10,000, light", "list", "/list/10000/0", 0, None, 1.3),
)

# Operation and path; resident memory after 40 calls on one object minus that after 4, MiB.
Growth = namedtuple("Growth", "name operation path file")
GROWTHS = (
    Growth("get 16 MiB", "get", "/get/16", 0),
    Growth("list 1,000, thumbnails", "list", "/list/1000/8192", 0),
    Growth("list 1,000, light", "list", "/list/1000/0", 0),
)
GROWTH_BAR = 2

# Case as above, units in it, name of the unit; bar: instructions per unit.
Count = namedtuple("Count", "name operation path file units unit bar")
COUNTS = (
    Count("get 1 MiB", "get", "/get/1", 0, 1 << 20, "byte", 1.2),
    Count("save 1 MiB", "save", "/save", 1, 1 << 20, "byte", 1.2),
    Count("list 1,000, light", "list", "/list/1000/0", 0, 1000, "description", 17500),
    Count("list 100, thumbnails", "list", "/list/100/8192", 0, 100, "description", 31000),
)

LOGINS = 100  # of one account on the local service
LOGIN_BAR = 0.6  # milliseconds of CPU, after the account's first


class Bench:
    """The bench server while it runs, and the clients beside it."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.met = True
        self.server = subprocess.Popen([os.path.join(build, "benchserver")], stdout=subprocess.PIPE, text=True)
        self.base = "http://127.0.0.1:" + self.server.stdout.readline().strip()

    def command(self, peer, case, repeat):
        client = [os.path.join(self.build, "bench_" + peer), self.base + case.path, case.operation, str(repeat)]
        return client + ([self.map_file(case.file)] if case.file else [])

    def map_file(self, size):
        path = os.path.join(self.folder, "map%d" % size)
        if not os.path.exists(path):
            with open(path, "wb") as file:
                file.write(os.urandom(size << 20))
        return path

    def run(self, peer, case, repeat, **environment):
        """The lines of one client, each as a dictionary."""
        command = self.command(peer, case, repeat)
        done = subprocess.run(command, stdout=subprocess.PIPE, text=True, env=dict(os.environ, **environment))
        if done.returncode:
            sys.exit("failed: %s\n%s" % (" ".join(command), done.stdout[-500:]))
        return [dict(pair.split("=", 1) for pair in line.split()) for line in done.stdout.splitlines()]

    def instructions(self, peer, case):
        """User-space instructions of one operation, by callgrind: without noise of the machine and without start-up."""

        def total(repeat):
            command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
            done = subprocess.run(command + self.command(peer, case, repeat), stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, text=True)
            if done.returncode:
                sys.exit(done.stderr)
            return int(re.search(r"Collected : (\d+)", done.stderr).group(1))

        return (total(3) - total(1)) / 2

    def against(self, value, bar, tolerance=1):
        """The value beside its bar, if any, as text for a table; over is what misses it by more than the tolerance."""
        if bar is None:
            return figure(value)
        met = value <= bar * tolerance
        self.met = self.met and met
        return "%s%s (%s %s)" % ("" if met else "**over** ", figure(value), "≤" if value <= bar else ">", figure(bar))

    def compare(self, case, rounds):
        """One row of the first table."""
        digests = {self.run(peer, case, 1, BENCH_DIGEST="1")[0]["digest"] for peer in PEERS}
        if len(digests) > 1:
            sys.exit("the peers deliver different values: " + case.name)
        times = {peer: [] for peer in PEERS}
        for _ in range(rounds):
            for peer in PEERS:
                lines = self.run(peer, case, case.repeat + 1)[1:]
                times[peer].append(statistics.median(int(line["cpu_ns"]) for line in lines) / 1e6)
        generated, limit, handwritten, ours = medians = [statistics.median(times[peer]) for peer in PEERS]
        spread = max(max(values) / min(values) for values in times.values())
        return (case.name, *("%.3f" % median for median in medians),
                self.against(ours / generated, case.to_generated, TOLERANCE),
                self.against(ours / limit, case.to_limit, TOLERANCE),
                self.against(ours / handwritten, case.to_handwritten, TOLERANCE), "%.2f" % spread)

    def memory(self, case):
        """One row of the second table."""
        once = {peer: self.run(peer, case, 1)[0] for peer in PEERS}
        peaks = {peer: (int(line["peak_kib"]) - int(line["idle_kib"])) / 1024 for peer, line in once.items()}
        return (case.name, *("%.1f" % peaks[peer] for peer in PEERS), "the map" if case.map else "limit",
                self.against(peaks["ours"] / (case.map or peaks["limit"]), case.bar))

    def growth(self, case):
        """One row of the third table."""
        lines = self.run("ours", case, 40)
        after4, after40 = (int(lines[calls - 1]["resident_kib"]) / 1024 for calls in (4, 40))
        return case.name, "%.1f" % after4, "%.1f" % after40, self.against(after40 - after4, GROWTH_BAR)

    def count(self, case):
        """One row of the fourth table."""
        per_unit = {peer: self.instructions(peer, case) / case.units for peer in PEERS}
        return (case.name, case.unit, *(figure(per_unit[peer]) for peer in PEERS[:-1]),
                self.against(per_unit["ours"], case.bar))

    def logins(self):
        """The row of the last table: CPU time of the local service, all its threads."""
        service = os.path.join(self.build, "tarnwell-localservice")
        database = ["--db", os.path.join(self.folder, "maps.sqlite")]
        subprocess.run([service, *database, "--add-account", "anna"], input="secret\n", text=True, check=True,
                       stdout=subprocess.DEVNULL)
        with subprocess.Popen([service, *database, "--port", "0"], stdout=subprocess.PIPE, text=True) as running:
            try:
                client = [os.path.join(self.build, "bench_ours"), running.stdout.readline().strip(), "login"]
                clock = ~running.pid << 3 | 2  # of a process, as clock_getcpuclockid(3) makes it
                used = [time.clock_gettime(clock)]
                for calls in (1, LOGINS):
                    subprocess.run(client + [str(calls)], stdout=subprocess.DEVNULL, check=True)
                    used.append(time.clock_gettime(clock))
            finally:
                running.kill()
        first, later = 1000 * (used[1] - used[0]), 1000 * (used[2] - used[1]) / LOGINS
        return "login", "%.2f" % first, self.against(later, LOGIN_BAR, TOLERANCE)


def figure(value):
    return "{:,.0f}".format(value) if value >= 1000 else "%.3g" % value


def print_row(cells):
    print("| " + " | ".join(cells) + " |", flush=True)


def print_head(*cells):
    print_row(cells)
    print("|" + " --- |" * len(cells))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", help="the build folder, with target `bench` built")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", default="", metavar="REGEX", help="of the operations' names")
    parser.add_argument("--no-instructions", action="store_true", help="leave out what needs valgrind")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="tarnwell-bench") as folder:
        bench = Bench(options.build, folder)
        try:
            def table(rows, row, *head):
                chosen = [case for case in rows if re.search(options.only, case.name)]
                if chosen:
                    print_head(*head)
                for case in chosen:
                    print_row(row(case))
                if chosen:
                    print()

            table(CASES, lambda case: bench.compare(case, options.rounds), "CPU time of an operation",
                  *(peer + ", ms" for peer in PEERS), *("ours ÷ " + peer for peer in PEERS[:-1]),
                  "largest spread over the rounds")
            table(MEMORIES, bench.memory, "peak memory", *(peer + ", MiB" for peer in PEERS), "compared with",
                  "ours ÷ this")
            table(GROWTHS, bench.growth, "resident memory, MiB", "after 4 calls", "after 40 calls", "growth")
            if not options.no_instructions:
                table(COUNTS, bench.count, "instructions", "per", *PEERS)
            if re.search(options.only, "login"):
                print_head("CPU time of the local service, ms", "first of an account", "later")
                print_row(bench.logins())
        finally:
            bench.server.kill()
            bench.server.wait()
    return 0 if bench.met else 1


if __name__ == "__main__":
    sys.exit(main())
