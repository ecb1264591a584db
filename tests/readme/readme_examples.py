#!/usr/bin/env python3
"""The README's script and console examples, run in the stand-in and compared with what the README shows.

An example is made of indented code blocks, each right after a marker comment:

    <!-- example NAME file PATH -->      the block is a file of the game tree, PATH under game/
    <!-- example NAME console [ARGS] --> the block is a console session: lines starting with "] " are typed,
                                         the lines after each are what it prints

The session runs on a copy of the demo tree as built, with the example's files written into it; what each
typed line prints is compared with the lines the README shows after it. Start-up output is not compared.

Usage: readme_examples.py README BUILD_DIR DEMO_TREE NAME   runs one example
       readme_examples.py README --names                    lists the examples
       readme_examples.py README --unmarked                 fails on a script or console block without a marker
UPDATE=1 prints the session as it ran instead of comparing, to paste into the README after reading it.
"""
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

MARKER = re.compile(r"^<!-- example (\S+) (file|console)\s*(.*?)\s*-->$")
PROMPT = "] "
SEPARATOR = "==== readme example {} ===="


def code_blocks(lines):
    """(the marker line right before the block, or None; the block's first line number; its text) for each
    indented code block."""
    i = 0
    while i < len(lines):
        marker = MARKER.match(lines[i - 1]) if i > 0 else None
        if lines[i].startswith("    ") and (i == 0 or lines[i - 1].strip() == "" or marker):
            start = i
            block = []
            while i < len(lines) and (lines[i].startswith("    ") or lines[i].strip() == ""):
                block.append(lines[i][4:])
                i += 1
            while block and block[-1].strip() == "":
                block.pop()
            yield marker, start + 1, "\n".join(block) + "\n"
        else:
            i += 1


def examples(readme):
    """{name: {"files": {path: text}, "console": text, "args": [...]}} in README order."""
    found = {}
    for marker, _, text in code_blocks(open(readme, encoding="utf-8").read().split("\n")):
        if not marker:
            continue
        name, kind, rest = marker.groups()
        example = found.setdefault(name, {"files": {}, "console": None, "args": []})
        if kind == "file":
            example["files"][rest] = text
        else:
            example["console"] = text
            example["args"] = shlex.split(rest)
    return found


def unmarked(readme):
    """Blocks that look like a script or a console session but carry no marker."""
    missing = []
    for marker, line, text in code_blocks(open(readme, encoding="utf-8").read().split("\n")):
        looks = text.startswith(PROMPT) or re.search(r"^(block|event) \S+\s*$", text, re.M)
        if looks and not marker:
            missing.append(f"README line {line}: {text.splitlines()[0]}")
    return missing


def typed_lines(console):
    return [line[len(PROMPT):] for line in console.splitlines() if line.startswith(PROMPT)]


def run(example, build, demo):
    work = tempfile.mkdtemp(prefix="tw-readme-")
    try:
        shutil.copytree(demo, work, dirs_exist_ok=True)
        for path, text in example["files"].items():
            full = os.path.join(work, "game", path)
            os.makedirs(os.path.dirname(full), exist_ok=True)
            with open(full, "w", encoding="utf-8") as f:
                f.write(text)
        typed = typed_lines(example["console"])
        feed = ["echo " + SEPARATOR.format(0)]
        for i, line in enumerate(typed, 1):
            feed += [line, "echo " + SEPARATOR.format(i)]
        result = subprocess.run(
            [os.path.join(build, "tidewright-server"), "--game", os.path.join(work, "game"), *example["args"]],
            input="\n".join(feed) + "\n", stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, cwd=work)
        output = result.stdout.replace(work, "@ROOT@")
        session = []
        for i, line in enumerate(typed):
            start = output.index(SEPARATOR.format(i) + "\n") + len(SEPARATOR.format(i)) + 1
            end = output.find(SEPARATOR.format(i + 1) + "\n")
            session.append(PROMPT + line + "\n" + output[start:end if end >= 0 else len(output)])
        return "".join(session)
    finally:
        shutil.rmtree(work)


def main():
    readme = sys.argv[1]
    if sys.argv[2] == "--names":
        print("\n".join(name for name, e in examples(readme).items() if e["console"] is not None))
        return 0
    if sys.argv[2] == "--unmarked":
        missing = unmarked(readme)
        for m in missing:
            print(f"{m}\n  a script or console example without an <!-- example NAME file|console --> marker")
        return 1 if missing else 0
    build, demo, name = os.path.abspath(sys.argv[2]), os.path.abspath(sys.argv[3]), sys.argv[4]
    example = examples(readme)[name]
    session = run(example, build, demo)
    if os.environ.get("UPDATE") == "1":
        sys.stdout.write(session)
        return 0
    if session == example["console"]:
        print(f"readme example {name}: ok")
        return 0
    import difflib
    print(f"readme example {name}: the stand-in prints something else (- README, + actual)")
    sys.stdout.writelines(difflib.unified_diff(example["console"].splitlines(True), session.splitlines(True)))
    return 1


if __name__ == "__main__":
    sys.exit(main())
