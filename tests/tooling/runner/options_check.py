#!/usr/bin/env python3
"""tidewright-test's options that change files: --update (a golden test without expected.txt gets one that
equals the blessed copy in good/golden_echo, the test then passes, and a changed expected.txt fails it
again) and --keep (a failed test's tree stays where the report says, a passed one's doesn't).

Usage: options_check.py TIDEWRIGHT_TEST [OPTIONS...]   (run from this folder)
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile


def run(command, folder):
    done = subprocess.run(command + [folder], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout


def check_keep(command):
    status, report = run(command + ["--scripts", "scripts", "--keep"], os.path.join("broken", "missing_line"))
    kept = re.search(r"the test's tree is kept in (\S+)", report)
    if status != 1 or not kept:
        return [f"--keep must name the failed test's tree:\n{report}"]
    tree = kept.group(1)
    found = os.path.isfile(os.path.join(tree, "game", "cfg", "tw_greeted_db.txt"))
    shutil.rmtree(tree, ignore_errors=True)
    if not found:
        return [f"--keep named {tree}, which doesn't hold the test's tree"]
    status, report = run(command + ["--keep"], os.path.join("good", "golden_echo"))
    if status != 0 or "kept" in report:
        return [f"--keep must not keep a passed test's tree:\n{report}"]
    return []


def main():
    command = sys.argv[1:]
    blessed = os.path.join("good", "golden_echo")
    with tempfile.TemporaryDirectory(prefix="tw-update-check-") as scratch:
        folder = os.path.join(scratch, "golden_echo")
        shutil.copytree(blessed, folder, ignore=shutil.ignore_patterns("expected.txt"))
        failures = []
        status, report = run(command, folder)
        if status != 1 or "has neither expected.txt nor expect.txt" not in report:
            failures.append(f"without expected.txt and --update the test must fail:\n{report}")
        status, report = run(command + ["--update"], folder)
        if status != 0 or "expected.txt written" not in report:
            failures.append(f"--update must pass and say it wrote expected.txt:\n{report}")
        with open(os.path.join(folder, "expected.txt")) as written, \
                open(os.path.join(blessed, "expected.txt")) as wanted:
            if written.read() != wanted.read():
                failures.append("--update wrote something else than good/golden_echo/expected.txt")
        status, report = run(command, folder)
        if status != 0:
            failures.append(f"the written expected.txt must pass:\n{report}")
        with open(os.path.join(folder, "expected.txt"), "a") as f:
            f.write("one more line\n")
        status, report = run(command, folder)
        if status != 1 or "+++ output" not in report:
            failures.append(f"a changed expected.txt must fail with a diff:\n{report}")
    failures += check_keep(command)
    for failure in failures:
        print(failure)
    print("options check: " + ("ok" if not failures else f"{len(failures)} failed"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
