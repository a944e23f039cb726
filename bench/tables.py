#!/usr/bin/python3
"""Prints the Markdown tables of bench/run.

Usage: tables.py --runs N [--ratio peer|first] [--column TITLE] {-- NAME COMMAND...}...
       tables.py --stages JSON
       tables.py --levels JSON
       tables.py --replace DOCUMENT TABLE < text

The first form runs each command N times, after one round that is not measured. The commands are run in turns, so that
other load on the machine affects all commands alike. The second and the third form read the output of StagesBench. The
last form replaces the text between "<!-- table: TABLE -->" and "<!-- end -->" in the document.
"""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

# The stages of a True Color run, by StagesBench's names.
RUN_STAGES = ["decode the icon", "decode the launch image", "convert both", "resample and compose, mitchell", "encode",
              "write and sync"]


def run(command):
    """Returns the seconds and the peak memory in MiB of one run. Only the largest process counts for the memory."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(command)} failed: {errors.decode(errors='replace')}")
    return seconds, usage.ru_maxrss / 1024


def table(title, columns, rows):
    """Returns the lines of a table. The first column is text, the other columns are numbers."""
    lines = [[title, *columns], *rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(columns) + 1)]

    def line_of(cells):
        return "| " + " | ".join(cell.ljust(width) if i == 0 else cell.rjust(width)
                                 for i, (cell, width) in enumerate(zip(cells, widths))) + " |"

    rules = ["-" * (width + 1) + ("-" if i == 0 else ":") for i, width in enumerate(widths)]
    return "\n".join([line_of(lines[0]), f"|{'|'.join(rules)}|", *map(line_of, lines[1:])])


def ratio(numerators, denominators):
    """Returns the median of the ratios of two commands. Each ratio compares two runs of the same turn."""
    return f"{statistics.median(a / b for a, b in zip(numerators, denominators)):.2f}"


def time_commands(runs, reference, title, commands):
    times = [[] for _ in commands]
    memory = [0.0] * len(commands)
    for turn in range(runs + 1):
        for i, (_, command) in enumerate(commands):
            seconds, peak = run(command)
            memory[i] = max(memory[i], peak)
            if turn > 0:
                times[i].append(seconds * 1000)

    columns = ["median, ms", "best, ms", "peak, MiB"]
    against = None
    if reference == "first":
        against, heading = times[0], f"to {commands[0][0]}"
    elif reference == "peer" and len(commands) > 1:
        fastest = min(range(1, len(commands)), key=lambda i: statistics.median(times[i]))
        against, heading = times[fastest], f"to {commands[fastest][0]}"
    if against:
        columns.append(heading)
    rows = []
    for (name, _), own, peak in zip(commands, times, memory):
        digits = 0 if min(own) >= 100 else 1
        rows.append([name, f"{statistics.median(own):.{digits}f}", f"{min(own):.{digits}f}", f"{peak:.0f}"]
                    + ([ratio(own, against)] if against else []))
    return table(title, columns, rows)


def stage_table(file):
    # Google Benchmark appends its own settings to the names: "stage: compose/min_time:0.500".
    results = {entry["name"].partition("/")[0]: entry["real_time"]
               for entry in json.loads(Path(file).read_text())["benchmarks"]}
    stages = {name.removeprefix("stage: "): value for name, value in results.items() if name.startswith("stage: ")}
    whole = sum(stages[name] for name in RUN_STAGES)

    def line(name, value, total=None):
        return [name, f"{value:.1f}", f"{100 * value / total:.0f} %" if total else ""]

    return table("Stage", ["ms", "of the run"], [
        *(line(name, stages[name], whole) for name in RUN_STAGES),
        line("**the run, one stage after the other**", whole, whole),
        *(line(name, value) for name, value in stages.items() if name not in RUN_STAGES),
    ])


def level_table(file):
    results = {entry["name"].partition("/")[0]: entry for entry in json.loads(Path(file).read_text())["benchmarks"]}

    def cells(name):
        entry = results.get(name)
        return [f"{entry['real_time']:.0f}", f"{entry['bytes'] / 1024:.0f}"] if entry else ["", ""]

    return table("Level", ["ms", "KiB", "zlib, ms", "zlib, KiB"],
                 [[str(level), *cells(f"level {level}"), *cells(f"zlib {level}")] for level in range(1, 11)])


def replace(document, name, text):
    path = Path(document)
    begin, end = f"<!-- table: {name} -->\n", "<!-- end -->"
    whole, count = re.subn(f"({begin}).*?({end})", lambda match: match[1] + text + match[2], path.read_text(), count=1,
                           flags=re.DOTALL)
    if count == 0:
        sys.exit(f"{document} has no place for the table '{name}'")
    path.write_text(whole)


def split_commands(words):
    """Returns the options and the list of (name, command). Each command begins after a "--" in `words`."""
    groups = [[]]
    for word in words:
        if word == "--":
            groups.append([])
        else:
            groups[-1].append(word)
    return groups[0], [(group[0], group[1:]) for group in groups[1:]]


def main():
    options, commands = split_commands(sys.argv[1:])
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--runs", type=int)
    parser.add_argument("--ratio", choices=["peer", "first"])
    parser.add_argument("--column", default="")
    parser.add_argument("--stages")
    parser.add_argument("--levels")
    parser.add_argument("--replace", nargs=2)
    arguments = parser.parse_args(options)
    if arguments.replace:
        replace(*arguments.replace, sys.stdin.read())
    elif arguments.stages:
        print(stage_table(arguments.stages))
    elif arguments.levels:
        print(level_table(arguments.levels))
    else:
        print(time_commands(arguments.runs, arguments.ratio, arguments.column, commands))


main()
