#!/usr/bin/env python3
"""Writes a large CSV data file for the end-to-end timings (bench/e2e.sh).

The same arguments give the same bytes (Python's random with a fixed seed;
standard library only). Values are normal, rounded to three decimals so that
there are ties as in real data.

  independent: columns x,g; --cases rows, g in 1..--groups, the groups
               shifted by 0.01 each.
  related:     columns v1..vK (--fields K); --cases rows, field j shifted by
               0.01*j.
"""
import argparse
import random
import sys


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("shape", choices=["independent", "related"])
    parser.add_argument("--cases", type=int, default=10_000_000)
    parser.add_argument("--groups", type=int, default=10)
    parser.add_argument("--fields", type=int, default=4)
    parser.add_argument("--seed", type=int, default=2026)
    parser.add_argument("-o", "--output", default="-")
    args = parser.parse_args()

    rng = random.Random(args.seed)
    gauss = rng.gauss
    out = sys.stdout if args.output == "-" else open(args.output, "w", newline="")
    chunk = []
    if args.shape == "independent":
        out.write("x,g\n")
        randrange = rng.randrange
        for _ in range(args.cases):
            g = randrange(args.groups)
            chunk.append("%.3f,%d\n" % (gauss(0.01 * g, 1.0), g + 1))
            if len(chunk) == 100_000:
                out.write("".join(chunk))
                chunk.clear()
    else:
        k = args.fields
        out.write(",".join("v%d" % (j + 1) for j in range(k)) + "\n")
        for _ in range(args.cases):
            chunk.append(",".join("%.3f" % gauss(0.01 * j, 1.0) for j in range(k)) + "\n")
            if len(chunk) == 100_000:
                out.write("".join(chunk))
                chunk.clear()
    out.write("".join(chunk))
    if out is not sys.stdout:
        out.close()


if __name__ == "__main__":
    main()
