"""Runs a GoogleTest program in several processes and counts what became of every test.

usage: run_gtest.py [--shards N] [--timeout SECONDS] RESULT COMMAND [ARGUMENT...]

RESULT receives "PASSED FAILED". Failed: a test that failed, was skipped or is disabled, that was running when its
process ended or hung, or that never got its turn because of that; and a program with no tests at all.
"""

import argparse
import os
import re
import subprocess
import sys
import threading

RUNNING = re.compile(r"^\[==========\] Running (\d+) tests? from")
START = re.compile(r"^\[ RUN      \] (\S+)")
# A program's own output may stand before the marker, on the same line.
END = re.compile(r"\[(       OK |  FAILED  |  SKIPPED )\] ([^\s,]+).*\(\d+ ms\)")
DISABLED = re.compile(r"YOU HAVE (\d+) DISABLED TEST")


class Shard:
    def __init__(self, command, index, count, timeout):
        self.index = index
        self.passed = []
        self.failed = []
        self.output = []
        self.announced = None
        self.disabled = 0
        self.running = None
        self.current = []
        self.note = ""
        environment = dict(os.environ, GTEST_TOTAL_SHARDS=str(count), GTEST_SHARD_INDEX=str(index))
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT)
        self.timeout = timeout
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        current = []
        for raw in self.process.stdout:
            line = raw.decode("utf-8", "replace").rstrip("\r\n")
            current.append(line)
            if match := RUNNING.match(line):
                self.announced = int(match[1])
            elif match := DISABLED.search(line):
                self.disabled = int(match[1])
            elif match := START.match(line):
                self.running = match[1]
                current = [line]
            elif self.running and (match := END.search(line)):
                if match[1].strip() == "OK":
                    self.passed.append(match[2])
                else:
                    self.failed.append(match[2])
                    self.output += current
                self.running = None
                current = []
            self.current = current

    def finish(self):
        """Waits for the end and gives the number of tests that count as failed."""
        try:
            self.process.wait(self.timeout)
        except subprocess.TimeoutExpired:
            self.note = "took too long"
            self.process.kill()
            self.process.wait()
        # Wine's own processes may inherit the pipe and keep it open for longer than this one lives.
        self.reader.join(5)
        code = self.process.returncode
        if self.running or code not in (0, 1):
            self.output += self.current[-200:]
        failed = len(self.failed)
        where = f" in {self.running}" if self.running else ""
        if self.announced is None:
            self.output.append(f"*** no test ran (exit code {code}) {self.note}")
            return failed + 1
        missing = self.announced - len(self.passed) - failed
        if missing > 0:
            self.output.append(f"*** the program ended{where} (exit code {code}) {self.note}: {missing} tests without "
                               "a result")
        elif code != 0 and failed == 0:
            self.output.append(f"*** every test passed, but the program ended with code {code} {self.note}")
            missing = 1
        return failed + max(missing, 0)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--shards", type=int, default=1)
    parser.add_argument("--timeout", type=int, default=600)
    parser.add_argument("result")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    options = parser.parse_args()

    shards = [Shard(options.command, i, options.shards, options.timeout) for i in range(options.shards)]
    failed = sum(shard.finish() for shard in shards)
    passed = sum(len(shard.passed) for shard in shards)
    if passed + failed == 0:
        print("*** the program has no tests")
        failed = 1
    # Every shard counts the disabled tests of the whole program.
    disabled = max(shard.disabled for shard in shards)
    if disabled:
        print(f"*** {disabled} disabled tests")
        failed += disabled
    for shard in shards:
        print("\n".join(shard.output), end="\n" if shard.output else "")
    for name in sorted(name for shard in shards for name in shard.failed):
        print(f"FAILED {name}")
    with open(options.result, "w", encoding="ascii") as file:
        file.write(f"{passed} {failed}\n")
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
