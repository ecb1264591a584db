#!/usr/bin/env python3
"""The README's worked example of tidewright-test, done as a reader would do it, compared with what the
README shows.

Each indented block right after one of these markers is a step, taken in README order in a fresh folder
that holds `build` (a link to the build folder) and nothing else:

    <!-- example NAME file PATH -->      a script file: written to demo/game/PATH
    <!-- tidewright-test file PATH -->   any other file: written to PATH
    <!-- tidewright-test run -->         commands, each on a line starting with "$ ", run by bash; the lines
                                         after each are what it prints (output and errors together)

Usage: readme_check.py README BUILD_DIR NAME   (NAME: the example name of the script files to use)
UPDATE=1 prints the run blocks as they ran instead of comparing.
"""
import difflib
import os
import re
import subprocess
import sys
import tempfile

MARKER = re.compile(r"^<!-- (?:example (\S+) file (\S+)|tidewright-test file (\S+)|tidewright-test (run)) -->$")
PROMPT = "$ "


def steps(readme, name):
    """(kind, path, text) in README order: kind is "file" or "run"."""
    lines = open(readme, encoding="utf-8").read().split("\n")
    found = []
    for i, line in enumerate(lines[:-1]):
        marker = MARKER.match(line)
        if not marker or not lines[i + 1].startswith("    "):
            continue
        example, script_path, file_path, run = marker.groups()
        if example is not None and example != name:
            continue
        block = []
        j = i + 1
        while j < len(lines) and (lines[j].startswith("    ") or not lines[j].strip()):
            block.append(lines[j][4:])
            j += 1
        while block and not block[-1].strip():
            block.pop()
        text = "\n".join(block) + "\n"
        if run:
            found.append(("run", None, text))
        else:
            found.append(("file", os.path.join("demo", "game", script_path) if example else file_path, text))
    return found


def run_block(text, folder):
    """The block as it runs: each command followed by what it printed."""
    shown = []
    for command in (line[len(PROMPT):] for line in text.splitlines() if line.startswith(PROMPT)):
        done = subprocess.run(["bash", "-c", command], cwd=folder, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        shown.append(PROMPT + command + "\n" + done.stdout)
    return "".join(shown)


def main():
    readme, build, name = sys.argv[1], os.path.abspath(sys.argv[2]), sys.argv[3]
    found = steps(readme, name)
    if not any(kind == "run" for kind, _, _ in found):
        print(f"{readme}: no <!-- tidewright-test run --> block")
        return 1
    failed = 0
    with tempfile.TemporaryDirectory(prefix="tw-readme-runner-") as folder:
        os.symlink(build, os.path.join(folder, "build"))
        for kind, path, text in found:
            if kind == "file":
                os.makedirs(os.path.dirname(os.path.join(folder, path)), exist_ok=True)
                with open(os.path.join(folder, path), "w", encoding="utf-8") as f:
                    f.write(text)
                continue
            actual = run_block(text, folder)
            if os.environ.get("UPDATE") == "1":
                sys.stdout.write(actual + "\n")
            elif actual != text:
                failed += 1
                print("the README shows something else (- README, + actual):")
                sys.stdout.writelines(difflib.unified_diff(text.splitlines(True), actual.splitlines(True)))
    print("README's tidewright-test example: " + ("ok" if not failed else f"{failed} run block(s) differ"))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
