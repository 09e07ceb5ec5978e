#!/usr/bin/env python3
"""Runs a command several times and prints its best wall time, its best CPU
time (user + system), both in milliseconds:

    measure.py RUNS COMMAND [ARG...]   ->   "WALL_MS CPU_MS"

Standard output of the command is discarded; a failing run stops with its
exit status. CPU time is the figure to compare on a busy machine: other
processes stretch the wall time but not the time the command itself used.
(Peak memory is left to /usr/bin/time: a child's maximum resident size as
wait4 reports it includes this interpreter's, inherited before exec.)
"""

import os
import subprocess
import sys
import time


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    runs = int(sys.argv[1])
    command = sys.argv[2:]
    best_wall = best_cpu = float("inf")
    for _ in range(runs):
        start = time.perf_counter()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - start
        code = os.waitstatus_to_exitcode(status)
        if code != 0:
            sys.exit("measure: %s exited with %d" % (" ".join(command), code))
        best_wall = min(best_wall, wall)
        best_cpu = min(best_cpu, usage.ru_utime + usage.ru_stime)
    print("%.1f %.1f" % (best_wall * 1000, best_cpu * 1000))


if __name__ == "__main__":
    main()
