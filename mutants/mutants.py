#!/usr/bin/env python3
"""Puts faults into the library, one at a time, and tells which of them no test catches.

Usage: mutants.py [SEED] [--count NUMBER]

The faults are drawn by the seed from all places that faults.py finds. What is built and run is HEAD
in a working copy of its own, build/mutants/tree. One that does not compile is not counted, another is
drawn for it. Former survivors (the file beside this one) are tried too and not counted.
Exits with 1 when less than 95 % are caught.
"""

import argparse
import difflib
import json
import os
import random
import re
import secrets
import signal
import subprocess
import sys
import time
from pathlib import Path

from faults import all_faults

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
WORK = ROOT / "build/mutants"
TREE = WORK / "tree"
JOBS = os.environ.get("NUV_JOBS") or str(os.cpu_count())
LEAST_SHARE = 0.95
SHARDS = 8  # tests mostly wait
SHARDED = "connect_test transport_test hostile_test cut_test printer_test printer_send_test printer_watch_test".split()

# What reaches a folder of src, the quickest first. What no test program sees the scripts with whole
# programs may, and what those do not see, the sanitizers.
REACH = {
    "platform": "platform_test job_test transport_test usb_connector_test connect_test printer_test",
    "command": "command_test job_test api_test connect_test fuzz_corpus_test hostile_test printer_test printer_send_test",
    "transport": "usb_connector_test transport_test connect_test hostile_test printer_test printer_send_test",
    "job": "job_test api_test connect_test cut_test hostile_test printer_test printer_send_test",
    "connect": "api_test connect_test fuzz_corpus_test hostile_test cut_test printer_test printer_watch_test",
    "api": "api_test exports hostile_test",
    "printer": "printer_usb_test printer_test printer_send_test printer_watch_test printer_hostile_test",
}
SYSTEM = "two_hosts watch_and_firmware all_models".split()
PROGRAMS = ["nuvsim", "nuvctl", "nuvfile_tool", "NuvFile"]
# The checks of threads are not built for programs that have one thread only.
NOT_IN_TSAN = {"platform_test", "command_test", "fuzz_corpus_test", "hostile_test", "exports"}


class NotCompiled(Exception):
    pass


def run(*command, **options):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **options)


class Build:
    """One preset's build of the working copy, made when it is first asked for."""

    def __init__(self, preset):
        self.preset = preset
        self.folder = WORK / preset
        self.limits = {}  # seconds, of each test that ran with no fault in
        self.tests = None

    def compile(self, targets):
        done = subprocess.run(["cmake", "--build", self.folder, "-j", JOBS, "--target", *targets],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            raise NotCompiled(done.stdout[-3000:])

    def prepare(self, names):
        """Builds these tests as the sources are now, and finds how long they may take."""
        if self.tests is None:
            run("cmake", "--preset", self.preset, "-B", self.folder, "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF", "-DNUV_BUILD_BENCH=OFF", cwd=TREE)
            listed = subprocess.check_output(["ctest", "--test-dir", self.folder, "--show-only=json-v1"])
            self.tests = {test["name"]: test for test in json.loads(listed)["tests"]}
        new = [name for name in names if name not in self.limits]
        if new:
            self.compile(sorted({target for name in new for target in targets_of(name)}))
        for name in new:
            begun = time.monotonic()
            failed = self.fails(name, 600)
            if failed:
                sys.exit(f"{name} fails without a fault: {failed}")
            self.limits[name] = 15 + 4 * (time.monotonic() - begun)

    def fails(self, name, limit=None):
        """What fails first in this test, or None."""
        test = self.tests[name]
        properties = {p["name"]: p["value"] for p in test["properties"]}
        variables = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        shards = SHARDS if name in SHARDED else 1
        running = []
        for shard in range(shards):
            variables.update(GTEST_FAIL_FAST="1", GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(shard))
            log = open(WORK / f"{self.preset}-{shard}.log", "w+b")
            command = test["command"]
            if self.preset == "tsan":
                # The sanitizer's thread needs fixed addresses that newer kernels randomise away.
                command = ["setarch", os.uname().machine, "--addr-no-randomize", *command]
            running.append((log, subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, env={**os.environ, **variables},
                cwd=properties.get("WORKING_DIRECTORY", self.folder), start_new_session=True)))
        try:
            return self.first_failure(running, time.monotonic() + (limit or self.limits[name]))
        finally:
            for log, process in running:
                end_all(process)

    @staticmethod
    def first_failure(running, end):
        failure = None
        while running:
            for one in running[:]:
                log, process = one
                if process.poll() is None and time.monotonic() < end and not failure:
                    continue
                running.remove(one)
                if process.poll() is None:
                    failure = failure or "does not end"
                    end_all(process)
                elif process.returncode not in (0, 77):
                    log.seek(0)
                    text = log.read().decode(errors="replace")
                    said = re.search(r"HANGS: \S+|\[  FAILED  \] ([\w/.]+)[ ,]|ERROR: AddressSanitizer: \S+"
                                     r"|WARNING: ThreadSanitizer: [\w ]+|runtime error: [^\n]*", text)
                    failure = failure or (said.group().replace("[  FAILED  ] ", "").strip(" ,") if said
                                          else f"ends with {process.returncode}")
                log.close()
            time.sleep(0.02)
        return failure


def end_all(process):
    """Ends a test and what it has started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def targets_of(name):
    return PROGRAMS if name in SYSTEM else ["NuvConnect5"] if name == "exports" else [name]


BUILDS = {preset: Build(preset) for preset in ("debug", "asan", "tsan")}


def attempts(file):
    """(preset, test) in the order in which a fault is looked for."""
    return [("debug", name) for name in reach(file) + SYSTEM]


def last_attempts(kind, file):
    """What a fault that all tests have let through is tried with."""
    preset = "tsan" if kind == "lock" else "asan"
    return [(preset, name) for name in reach(file) if name not in (NOT_IN_TSAN if kind == "lock" else ["exports"])]


def reach(file):
    return REACH[file.split("/")[1]].split()


def hunk(file, old, new):
    """What changed, with the lines around it and without the lines' numbers."""
    lines = difflib.unified_diff(old.splitlines(), new.splitlines(), lineterm="", n=2)
    return [f"--- {file}"] + [line for line in list(lines)[2:] if not line.startswith("@@")]


def first_to_fail(tried, file, changed, original):
    """Which of these tests catches the fault, or None. Restores the file."""
    path = TREE / file
    for preset in dict.fromkeys(preset for preset, _ in tried):
        wanted = [name for one, name in tried if one == preset]
        BUILDS[preset].prepare(wanted)
        path.write_text(changed)
        try:
            for name in wanted:
                BUILDS[preset].compile(targets_of(name))
                failed = BUILDS[preset].fails(name)
                if failed:
                    return f"{name} ({preset}): {failed}"
        finally:
            path.write_text(original)
    return None


def former_survivors(sources):
    """(file, changed source) of each entry of the list; a message for those that fit nowhere."""
    listed = HERE / "survivors"
    entries = listed.read_text().split("\n\n") if listed.exists() else []
    for entry in entries:
        lines = [line for line in entry.splitlines() if not line.startswith("#")]
        if not lines:
            continue
        file = lines[0].split()[1]
        old = "\n".join(line[1:] for line in lines[1:] if line[:1] in " -")
        new = "\n".join(line[1:] for line in lines[1:] if line[:1] in " +")
        source = sources.get(file, "")
        if source.count(old) == 1:
            yield file, source.replace(old, new)
        else:
            print(f"The list's entry fits nowhere, or at several places:\n{entry}")


def check_out():
    run("git", "-C", ROOT, "worktree", "prune")
    if not TREE.exists():
        run("git", "-C", ROOT, "worktree", "add", "--detach", TREE, "HEAD", stderr=subprocess.DEVNULL)
    head = subprocess.check_output(["git", "-C", ROOT, "rev-parse", "HEAD"], text=True).strip()
    run("git", "-C", TREE, "checkout", "--force", "--detach", head, stderr=subprocess.DEVNULL)
    os.environ["CCACHE_BASEDIR"] = str(TREE)
    return head


def main():
    options = argparse.ArgumentParser()
    options.add_argument("seed", nargs="?", type=int, default=secrets.randbelow(10**6))
    options.add_argument("--count", type=int, default=60)
    chosen = options.parse_args()
    head = check_out()
    sources, faults = all_faults(TREE)
    print(f"Seed {chosen.seed}, {chosen.count} of {len(faults)} places, sources of {head[:8]}", flush=True)
    random.Random(chosen.seed).shuffle(faults)

    counted, survivors, uncompiled = 0, [], 0
    for fault in faults:
        if counted == chosen.count:
            break
        source = sources[fault.file]
        changed = source[:fault.start] + fault.new + source[fault.end:]
        place = f"{fault.file}:{source.count(chr(10), 0, fault.start) + 1}"
        begun = time.monotonic()
        try:
            caught = first_to_fail(attempts(fault.file), fault.file, changed, source)
        except NotCompiled:
            uncompiled += 1
            continue
        counted += 1
        was = " ".join(source[fault.start:fault.end].split())[:60]
        print(f"{counted:3} {'caught  ' if caught else 'SURVIVES'} {fault.kind:10} {place}: {was} -> {fault.new[:40]!r}"
              f"  {caught or ''} [{time.monotonic() - begun:.0f} s]", flush=True)
        if not caught:
            survivors.append((fault.kind, place, fault.file, changed))

    for one in survivors[:]:
        kind, place, file, changed = one
        caught = first_to_fail(last_attempts(kind, file), file, changed, sources[file])
        if caught:
            survivors.remove(one)
            print(f"    caught   {place}  {caught}", flush=True)

    again = former = 0
    for file, changed in former_survivors(sources):
        former += 1
        difference = hunk(file, sources[file], changed)
        kind = "lock" if re.search(r"^-.*[lL]ock", "\n".join(difference), re.M) else ""
        if first_to_fail([*attempts(file), *last_attempts(kind, file)], file, changed, sources[file]):
            again += 1
        else:
            print("A former survivor still survives:", *difference, sep="\n", flush=True)

    for _, place, file, changed in survivors:
        print(f"\nSurvives at {place}", *hunk(file, sources[file], changed), sep="\n")
    share = (counted - len(survivors)) / counted if counted else 0
    print(f"\nSeed {chosen.seed}: {counted - len(survivors)} of {counted} caught, {share:.1%};"
          f" {uncompiled} did not compile and are not counted; of {former} former survivors {again} are caught")
    sys.exit(share < LEAST_SHARE)


if __name__ == "__main__":
    main()
