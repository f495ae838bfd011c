"""Runs clang-tidy over the project's own files of a compilation database, several at a time.

usage: run_tidy.py [--jobs N] RESULT BUILD_FOLDER SOURCE_FOLDER CACHE_FOLDER

A file that was clean is not read again until it, a header of the project, its flags, the checks or clang-tidy change.
RESULT receives "PASSED FAILED", counted in files.
"""

import argparse
import concurrent.futures
import glob
import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile

TIDY = "clang-tidy-14"
TARGET = "x86_64-w64-mingw32"
OWN_FOLDERS = ("bench", "host", "include", "sim", "src", "tests")


def standard_library_folders():
    """The cross compiler's C++ folders, which clang does not find by itself."""
    roots = sorted(glob.glob(f"/usr/lib/gcc/{TARGET}/*-posix/include/c++"))
    if not roots:
        sys.exit("run_tidy.py: the cross compiler's C++ headers are missing")
    return [roots[-1], f"{roots[-1]}/{TARGET}", f"{roots[-1]}/backward"]


def arguments():
    extra = [f"--target={TARGET}", "-nostdinc++"]
    for folder in standard_library_folders():
        extra += ["-isystem", folder]
    return [f"--extra-arg={argument}" for argument in extra]


def own_files(database, source_folder):
    own = {}
    for entry in database:
        path = os.path.realpath(os.path.join(entry["directory"], entry["file"]))
        relative = os.path.relpath(path, source_folder)
        if relative.split(os.sep)[0] in OWN_FOLDERS and relative.endswith((".c", ".cpp")):
            own[relative] = entry.get("command") or " ".join(entry["arguments"])
    return own


def without_precompiled_headers(database):
    """The same commands, each file read with what it includes itself: clang cannot read what GCC has compiled."""
    return [{**entry, "command": re.sub(r" -Winvalid-pch| -include \S*/cmake_pch\.hxx", "", entry["command"])}
            for entry in database]


def digest_of(paths):
    digest = hashlib.sha256()
    for path in sorted(paths):
        with open(path, "rb") as file:
            digest.update(path.encode() + b"\0" + file.read())
    return digest.hexdigest()


def common_state(source_folder):
    headers = [f"{source_folder}/.clang-tidy"]
    for folder in OWN_FOLDERS:
        headers += glob.glob(f"{source_folder}/{folder}/**/.clang-tidy", recursive=True)
        headers += glob.glob(f"{source_folder}/{folder}/**/*.h", recursive=True)
    version = subprocess.run([TIDY, "--version"], capture_output=True, check=True).stdout
    return digest_of(headers) + hashlib.sha256(version).hexdigest()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("result")
    parser.add_argument("build_folder")
    parser.add_argument("source_folder")
    parser.add_argument("cache_folder")
    options = parser.parse_args()

    source_folder = os.path.realpath(options.source_folder)
    with open(os.path.join(options.build_folder, "compile_commands.json"), encoding="utf-8") as file:
        database = without_precompiled_headers(json.load(file))
    files = own_files(database, source_folder)
    plain_folder = tempfile.TemporaryDirectory()
    with open(os.path.join(plain_folder.name, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(database, file)
    os.makedirs(options.cache_folder, exist_ok=True)
    state = common_state(source_folder)
    extra = arguments()

    def tidy(item):
        """(file, whether it is clean, what was said)"""
        name, command = item
        path = os.path.join(source_folder, name)
        key = hashlib.sha256(f"{state}{command}{extra}{digest_of([path])}".encode()).hexdigest()
        mark = os.path.join(options.cache_folder, key)
        if os.path.exists(mark):
            return name, True, ""
        run = subprocess.run([TIDY, "-p", plain_folder.name, "--quiet", *extra, path], capture_output=True, text=True,
                             check=False)
        if run.returncode == 0:
            with open(mark, "w", encoding="ascii"):
                pass
            return name, True, ""
        # "N warnings generated" is all there is to read on standard error, unless clang-tidy itself fell over.
        said = run.stdout or run.stderr
        return name, False, said

    passed = failed = 0
    seen = set()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for name, clean, said in pool.map(tidy, sorted(files.items())):
            passed += clean
            failed += not clean
            if not clean and said not in seen:  # a header's mistake is told once
                seen.add(said)
                print(f"FAILED {name}\n{said}")
    if not files:
        print("no files to read")
        failed = 1
    with open(options.result, "w", encoding="ascii") as file:
        file.write(f"{passed} {failed}\n")
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
