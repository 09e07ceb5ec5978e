#!/usr/bin/env python3
"""Writes a result document with many tests, for measuring the HTML report.

It repeats the tests of an example document (every Algorithm except the
Lilliefors records, which pair with a command) until there are as many as
asked, keeping the example's data dictionary and field information, so the
document is valid by construction and its charts are the example's.

    bench/gen_large_doc.py --tests 1000 -o /tmp/large.xml
"""

import argparse
import xml.etree.ElementTree as ET
from pathlib import Path


def main():
    root_dir = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tests", type=int, default=1000, help="number of tests (default 1000)")
    parser.add_argument("--from", dest="source", default=str(root_dir / "examples/overview.xml"),
                        help="the example document whose tests are repeated")
    parser.add_argument("-o", "--output", required=True, help="the document to write")
    args = parser.parse_args()

    tree = ET.parse(args.source)
    tests = tree.getroot().find(".//NonParametricTests")
    pattern = [a for a in tests.findall("Algorithm") if not a.get("name", "").startswith("OLilliefors")]
    for algorithm in tests.findall("Algorithm"):
        tests.remove(algorithm)
    for i in range(args.tests):
        tests.append(pattern[i % len(pattern)])
    tests.set("number", str(args.tests))
    tree.write(args.output, encoding="UTF-8", xml_declaration=True)


if __name__ == "__main__":
    main()
