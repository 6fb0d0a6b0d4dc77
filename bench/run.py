#!/usr/bin/env python3
"""Runs all peers against the bench server in one go and prints the comparison as tables.

Rounds interleave the peers, so that what the machine does meanwhile hits all of them alike. In each round a client
starts afresh, its first operation is thrown away (cold heap, first page faults), and the median of the others counts;
the table has the median of the rounds. Memory is that of a process that does the operation once. All peers must
deliver the same values. Ends with status 1 when a figure is above its bar.
"""
import argparse
import os
import re
import statistics
import subprocess
import sys
import tempfile
from collections import namedtuple

PEERS = ("generated", "limit", "ours")

# Operation, path on the server, size of the map file in MiB, repetitions; bars: ours / generated, ours / limit.
Case = namedtuple("Case", "name operation path file repeat to_generated to_limit")
CASES = (
    Case("login", "login", "/login", 0, 40, 0.80, 1.8),
    Case("list 10, thumbnails", "list", "/list/10/8192", 0, 20, 0.12, 1.7),
    Case("list 1,000, thumbnails", "list", "/list/1000/8192", 0, 6, 0.09, 1.5),
    Case("list 10,000, thumbnails", "list", "/list/10000/8192", 0, 3, 0.09, 1.5),
    Case("list 1,000, light", "list", "/list/1000/0", 0, 10, 0.17, 1.7),
    Case("list 10,000, light", "list", "/list/10000/0", 0, 5, 0.17, 1.7),
    Case("get 1 MiB", "get", "/get/1", 0, 12, 0.045, 1.6),
    Case("get 16 MiB", "get", "/get/16", 0, 5, 0.035, 1.3),
    Case("get 64 MiB", "get", "/get/64", 0, 3, 0.065, 1.1),
    Case("save 1 MiB", "save", "/save", 1, 12, 0.17, 1.5),
    Case("save 16 MiB", "save", "/save", 16, 5, 0.17, 1.5),
    Case("save 64 MiB", "save", "/save", 64, 3, 0.29, 1.1),
)
TOLERANCE = 1.15  # factor for times, which vary on a busy machine
MEMORY_BAR = 1.1  # times the map, for get and save
MEMORY_FROM = 16  # MiB; for smaller maps the process itself needs more memory than the map

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
    Count("get 1 MiB", "get", "/get/1", 0, 1 << 20, "byte", 1.7),
    Count("save 1 MiB", "save", "/save", 1, 1 << 20, "byte", 1.2),
    Count("list 1,000, light", "list", "/list/1000/0", 0, 1000, "description", 22500),
    Count("list 100, thumbnails", "list", "/list/100/8192", 0, 100, "description", 35000),
    Count("login", "login", "/login", 0, 1, "login", 165000),
)


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
        """The value beside its bar, as text for a table; over is what misses it by more than the tolerance."""
        met = value <= bar * tolerance
        self.met = self.met and met
        return "%s%s (%s %s)" % ("" if met else "**over** ", figure(value), "≤" if value <= bar else ">", figure(bar))

    def compare(self, case, rounds):
        """One row of the first table."""
        digests = {self.run(peer, case, 1, BENCH_DIGEST="1")[0]["digest"] for peer in PEERS}
        if len(digests) > 1:
            sys.exit("the peers deliver different values: " + case.name)
        memory = "-"
        size = case.file or (int(case.path.split("/")[-1]) if case.operation == "get" else 0)
        if size >= MEMORY_FROM:
            once = self.run("ours", case, 1)[0]
            memory = self.against((int(once["peak_kib"]) - int(once["idle_kib"])) / 1024 / size, MEMORY_BAR)
        times = {peer: [] for peer in PEERS}
        for _ in range(rounds):
            for peer in PEERS:
                lines = self.run(peer, case, case.repeat + 1)[1:]
                times[peer].append(statistics.median(int(line["cpu_ns"]) for line in lines) / 1e6)
        generated, limit, ours = (statistics.median(times[peer]) for peer in PEERS)
        spread = max(max(values) / min(values) for values in times.values())
        return (case.name, "%.3f" % generated, "%.3f" % limit, "%.3f" % ours, "%.2f" % (limit / generated),
                self.against(ours / generated, case.to_generated, TOLERANCE),
                self.against(ours / limit, case.to_limit, TOLERANCE), memory,
                "%.2f" % spread)

    def growth(self, case):
        """One row of the second table."""
        lines = self.run("ours", case, 40)
        after4, after40 = (int(lines[calls - 1]["resident_kib"]) / 1024 for calls in (4, 40))
        return case.name, "%.1f" % after4, "%.1f" % after40, self.against(after40 - after4, GROWTH_BAR)

    def count(self, case):
        """One row of the third table."""
        per_unit = {peer: self.instructions(peer, case) / case.units for peer in PEERS}
        return (case.name, case.unit, figure(per_unit["generated"]), figure(per_unit["limit"]),
                self.against(per_unit["ours"], case.bar))


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
            print_head("operation", "generated, ms", "limit, ms", "ours, ms", "limit ÷ generated", "ours ÷ generated",
                       "ours ÷ limit", "ours, peak memory ÷ map", "largest spread over the rounds")
            for case in CASES:
                if re.search(options.only, case.name):
                    print_row(bench.compare(case, options.rounds))
            print()
            print_head("resident memory, MiB", "after 4 calls", "after 40 calls", "growth")
            for case in GROWTHS:
                if re.search(options.only, case.name):
                    print_row(bench.growth(case))
            if not options.no_instructions:
                print()
                print_head("instructions", "per", "generated", "limit", "ours")
                for case in COUNTS:
                    if re.search(options.only, case.name):
                        print_row(bench.count(case))
        finally:
            bench.server.kill()
            bench.server.wait()
    return 0 if bench.met else 1


if __name__ == "__main__":
    sys.exit(main())
