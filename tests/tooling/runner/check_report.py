#!/usr/bin/env python3
"""Runs tidewright-test and compares its report with a report file of this suite: what it prints on
standard output and standard error, then `(exit status N)`. The report is the tool's contract with its
users, so any change of it shows here.

Usage: check_report.py REPORT COMMAND...   (run from this folder)
UPDATE=1 writes REPORT instead of comparing; read it before committing.
"""
import difflib
import os
import subprocess
import sys


def main():
    report, command = sys.argv[1], sys.argv[2:]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    actual = done.stdout + f"(exit status {done.returncode})\n"
    if os.environ.get("UPDATE") == "1":
        with open(report, "w", encoding="utf-8") as f:
            f.write(actual)
        print(f"{report} written")
        return 0
    with open(report, encoding="utf-8") as f:
        expected = f.read()
    if actual == expected:
        print(f"{report}: ok")
        return 0
    print(f"{report}: the report differs (- expected, + actual)")
    sys.stdout.writelines(difflib.unified_diff(expected.splitlines(True), actual.splitlines(True)))
    return 1


if __name__ == "__main__":
    sys.exit(main())
