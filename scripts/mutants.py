#!/usr/bin/env python3
"""Mutation testing for the library: plants one fault at a time and checks
that the Linux unit tests catch it.

    scripts/mutants.py [-n 40] [--seed 1] [--only FILE...] [--list]

The mutants are generic operator edits on real code lines of source/ (the
portable and Linux sources; the Windows sources are not built here) and of
the function bodies in include/ headers:

    relational   <  <=  >  >=   each moved across its boundary
    equality     ==  !=          swapped
    arithmetic   +  -  +=  -=    swapped
    logical      &&  ||          swapped
    constant     an integer literal plus or minus one
    status       a returned STATUS_CODE_* replaced by another
    delete       an expression statement replaced by an empty block

Comments, string and character literals and preprocessor lines are never
touched. Each candidate gets a key hashed from the seed, its file, the text
of its line and the edit; the sample is the N smallest keys. The same seed
therefore gives the same mutants over the same sources, and an edit
elsewhere in the tree does not change which mutants the untouched lines get,
so runs before and after a change of the tests compare like with like.

Work happens in a copy of the working tree (tracked and untracked files that
git does not ignore) under the work directory, built with the default
preset: the checkout itself is never written to. Each mutant is written into
the copy, built incrementally, run against the unit tests (CTest label
"unit") with a timeout, and the original file is put back whatever happens,
interrupt included. A mutant is killed when the build succeeds and a test
fails or times out, survived when every test passes, and "did not compile"
when the build fails, and "no code change" when the build leaves every
library and test binary the same once stripped (code in a preprocessor
branch not compiled here, a store the compiler drops): no test can tell
such a mutant from the original. The kill rate is killed / (killed +
survived). The copy is built with libstdc++'s assertions on, so a mutant
that indexes past a container fails loudly instead of by chance.
"""

import argparse
import dataclasses
import hashlib
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

SOURCE_GLOBS = ["source/*.cpp", "source/*.h", "source/Linux/*.cpp", "source/Linux/*.h",
                "source/*/*.cpp", "source/*/*.h", "include/**/*.h"]
EXCLUDED_DIRS = ("source/Windows/",)

STATUS_SUCCESS = "STATUS_CODE_SUCCESS"
STATUS_FAILURE = "STATUS_CODE_FAILURE"
STATUS_OTHER = "STATUS_CODE_INVALID_PARAMETER"


@dataclass(frozen=True)
class Mutant:
    path: str       # relative to the root
    line: int       # 1-based
    column: int     # 0-based offset of the edit in the line
    kind: str
    old: str
    new: str
    context: str = ""  # the line's text and how many equal lines came before it

    def describe(self, text_line):
        return f"{self.path}:{self.line}: {self.kind}: `{self.old}` -> `{self.new}`   | {text_line.strip()}"


# ---------------------------------------------------------------- scanning

def code_mask(text):
    """One flag per character: True where the character is code (not inside a
    comment or a string or character literal)."""
    mask = [True] * len(text)
    i, n = 0, len(text)
    while i < n:
        c = text[i]
        if text.startswith("//", i):
            j = text.find("\n", i)
            j = n if j < 0 else j
            for k in range(i, j):
                mask[k] = False
            i = j
        elif text.startswith("/*", i):
            j = text.find("*/", i + 2)
            j = n if j < 0 else j + 2
            for k in range(i, j):
                mask[k] = False
            i = j
        elif c == 'R' and text.startswith('R"', i) and (i == 0 or not (text[i - 1].isalnum() or text[i - 1] == '_')):
            open_paren = text.find("(", i + 2)
            delimiter = text[i + 2:open_paren]
            j = text.find(")" + delimiter + '"', open_paren)
            j = n if j < 0 else j + len(delimiter) + 2
            for k in range(i, j):
                mask[k] = False
            i = j
        elif c in "\"'":
            # A digit separator (1'000) is not a character literal.
            if c == "'" and i > 0 and text[i - 1].isalnum() and i + 1 < n and text[i + 1].isalnum():
                i += 1
                continue
            j = i + 1
            while j < n and text[j] != c and text[j] != "\n":
                j += 2 if text[j] == "\\" else 1
            j = min(j + 1, n)
            for k in range(i, j):
                mask[k] = False
            i = j
        else:
            i += 1
    return mask


def masked_lines(text):
    """The file's lines with every non-code character replaced by a blank, so
    that offsets match the original lines."""
    mask = code_mask(text)
    chars = [ch if (keep or ch == "\n") else " " for ch, keep in zip(text, mask)]
    return "".join(chars).split("\n")


def code_line_flags(lines, header):
    """Which lines may be mutated. Preprocessor lines never; in a header only
    lines inside function bodies (a block opened after a ')' or inside another
    code block), so declarations and data of headers are left alone."""
    flags = []
    stack = []          # True for a code block
    head = ""           # text since the last ; { or }
    continuation = False
    for line in lines:
        stripped = line.strip()
        preprocessor = continuation or stripped.startswith("#")
        continuation = preprocessor and line.rstrip().endswith("\\")
        if preprocessor:
            flags.append(False)
            continue
        in_code = (bool(stack) and stack[-1]) if header else True
        flags.append(in_code and stripped != "")
        for ch in line:
            if ch == "{":
                parent = bool(stack) and stack[-1]
                stack.append(parent or ")" in head)
                head = ""
            elif ch == "}":
                if stack:
                    stack.pop()
                head = ""
            elif ch == ";":
                head = ""
            else:
                head += ch
        head += " "
    return flags


RELATIONAL = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
SWAPS = {"==": "!=", "!=": "==", "+": "-", "-": "+", "+=": "-=", "-=": "+=", "&&": "||", "||": "&&"}
KIND = {"==": "equality", "!=": "equality", "+": "arithmetic", "-": "arithmetic", "+=": "arithmetic",
        "-=": "arithmetic", "&&": "logical", "||": "logical"}

OPERATOR = re.compile(r"(?<= )(<=|>=|<|>|==|!=|\+=|-=|\+|-|&&|\|\|)(?= )")
NUMBER = re.compile(r"(?<![\w.])(0[xX][0-9a-fA-F]+|\d+)([uUlL]*)(?![\w.'])")
STATUS = re.compile(r"\bSTATUS_CODE_[A-Z_]+\b")
DECLARATION = re.compile(r"^[\w:<>,*&\s]+?[\s*&]+\w+\s*(=|\(|\{|;|\[)")
STATEMENT_START = re.compile(r"^(\+\+|--|\*|\(|[A-Za-z_:])")
NON_DELETABLE = re.compile(r"^(return|case|default|public|private|protected|using|typedef|template|"
                           r"namespace|friend|static_assert|co_return|else|do)\b")


def line_mutants(path, number, code, original, previous_code):
    out = []
    stripped = code.strip()
    for match in OPERATOR.finditer(code):
        old = match.group(1)
        new = RELATIONAL.get(old) or SWAPS[old]
        kind = "relational" if old in RELATIONAL else KIND[old]
        out.append(Mutant(path, number, match.start(1), kind, old, new))
    for match in NUMBER.finditer(code):
        digits, suffix = match.group(1), match.group(2)
        value = int(digits, 0) if not (len(digits) > 1 and digits[0] == "0" and digits[1].isdigit()) else int(digits, 8)
        hexadecimal = digits.lower().startswith("0x")
        for delta in (1, -1):
            changed = value + delta
            if changed < 0:
                continue
            text = (("0x%X" % changed) if hexadecimal else str(changed)) + suffix
            out.append(Mutant(path, number, match.start(1), "constant", digits + suffix, text))
    if stripped.startswith("return"):
        for match in STATUS.finditer(code):
            old = match.group(0)
            new = STATUS_FAILURE if old == STATUS_SUCCESS else (STATUS_OTHER if old == STATUS_FAILURE else STATUS_SUCCESS)
            out.append(Mutant(path, number, match.start(0), "status", old, new))
    # An expression statement alone on its line, after a line that ended the
    # previous statement or opened a block or a control statement.
    previous = previous_code.strip()
    if (stripped.endswith(";") and STATEMENT_START.match(stripped) and not NON_DELETABLE.match(stripped)
            and not DECLARATION.match(stripped) and stripped.count("(") == stripped.count(")")
            and stripped.count(";") == 1
            and (previous.endswith((";", "{", "}", ")")) or previous == "else" or previous == "")):
        start = code.index(stripped)
        out.append(Mutant(path, number, start, "delete", original[start:start + len(stripped)], "{}"))
    return out


def sample_key(seed, mutant):
    text = f"{seed}|{mutant.path}|{mutant.context}|{mutant.column}|{mutant.kind}|{mutant.new}"
    return hashlib.sha256(text.encode(errors="surrogateescape")).hexdigest()


def candidate_files(only):
    files = set()
    for pattern in SOURCE_GLOBS:
        for found in ROOT.glob(pattern):
            relative = found.relative_to(ROOT).as_posix()
            if not relative.startswith(EXCLUDED_DIRS):
                files.add(relative)
    if only:
        wanted = {Path(p).as_posix().lstrip("./") for p in only}
        missing = wanted - files
        if missing:
            sys.exit(f"mutants: not a mutable file: {', '.join(sorted(missing))}")
        files &= wanted
    return sorted(files)


def collect(files, root):
    mutants = []
    for relative in files:
        text = (root / relative).read_text(encoding="utf-8", errors="surrogateescape")
        lines = masked_lines(text)
        originals = text.split("\n")
        flags = code_line_flags(lines, relative.endswith(".h"))
        previous = ""
        seen = {}
        for index, (code, flag) in enumerate(zip(lines, flags)):
            if flag:
                text = originals[index].strip()
                seen[text] = seen.get(text, 0) + 1
                context = f"{text}#{seen[text]}"
                mutants.extend(dataclasses.replace(m, context=context)
                               for m in line_mutants(relative, index + 1, code, originals[index], previous))
            if code.strip():
                previous = code
    return mutants


# ---------------------------------------------------------------- the copy

def tree_files():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, check=True, capture_output=True).stdout
    return [f for f in listed.decode().split("\0") if f and (ROOT / f).is_file()]


def sync_copy(copy):
    """Makes the copy's files equal to the working tree's, writing only files
    that differ so that the copy's build stays incremental."""
    wanted = set(tree_files())
    copy.mkdir(parents=True, exist_ok=True)
    for relative in wanted:
        source, target = ROOT / relative, copy / relative
        data = source.read_bytes()
        if not target.is_file() or target.read_bytes() != data:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(data)
            shutil.copymode(source, target)
    for directory, subdirectories, names in os.walk(copy):
        if Path(directory) == copy:
            subdirectories[:] = [d for d in subdirectories if d != "build"]
        for name in names:
            found = Path(directory) / name
            if found.relative_to(copy).as_posix() not in wanted:
                found.unlink()


def run(command, cwd, timeout):
    try:
        result = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                timeout=timeout, start_new_session=True)
        return result.returncode, result.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired as expired:
        return None, (expired.stdout or b"").decode(errors="replace")


def binaries_digest(copy):
    """A digest of the stripped library and test programs: equal digests mean
    the mutant changed no code."""
    digest = hashlib.sha256()
    build_dir = copy / "build/default"
    files = sorted(p for p in list((build_dir / "lib").glob("*.so*")) + list((build_dir / "bin").glob("*"))
                   if p.is_file() and not p.is_symlink())
    stripped = build_dir / "mutants-stripped"
    for path in files:
        subprocess.run(["strip", "-R", ".note.gnu.build-id", "-o", str(stripped), str(path)], check=True,
                       capture_output=True)
        digest.update(path.name.encode() + b"\0" + stripped.read_bytes())
    stripped.unlink(missing_ok=True)
    return digest.hexdigest()


def build(copy, jobs, timeout):
    return run(["cmake", "--build", "--preset", "default", "-j", str(jobs)], copy, timeout)


def test(copy, jobs, timeout):
    return run(["ctest", "--test-dir", "build/default", "-L", "unit", "-j", str(jobs), "--timeout",
                str(timeout), "--stop-on-failure", "--output-on-failure"], copy, timeout * 4)


class Interrupted(Exception):
    pass


def on_signal(signum, _frame):
    raise Interrupted(signal.Signals(signum).name)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0],
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-n", "--count", type=int, default=int(os.environ.get("MUTANTS", 40)),
                        help="mutants to sample (default 40, or $MUTANTS)")
    parser.add_argument("--seed", type=int, default=int(os.environ.get("SEED", 1)),
                        help="random seed (default 1, or $SEED)")
    parser.add_argument("--only", nargs="+", metavar="FILE", help="mutate only these files")
    parser.add_argument("--workdir", default="build/mutants", help="where the copy lives (default build/mutants)")
    parser.add_argument("--timeout", type=int, default=60, help="seconds per test program (default 60)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2)
    parser.add_argument("--list", action="store_true", help="print the sampled mutants and stop")
    args = parser.parse_args()

    files = candidate_files(args.only)
    candidates = collect(files, ROOT)
    if not candidates:
        sys.exit("mutants: no candidate mutation")
    sample = sorted(candidates, key=lambda m: sample_key(args.seed, m))[:args.count]
    sample.sort(key=lambda m: (m.path, m.line, m.column, m.kind, m.new))
    kinds = {}
    for m in candidates:
        kinds[m.kind] = kinds.get(m.kind, 0) + 1
    print(f"mutants: {len(sample)} of {len(candidates)} candidates in {len(files)} files "
          f"(seed {args.seed}; {', '.join(f'{k} {v}' for k, v in sorted(kinds.items()))})")
    if args.list:
        for m in sample:
            print("  " + m.describe((ROOT / m.path).read_text(errors="surrogateescape").split("\n")[m.line - 1]))
        return 0

    workdir = (ROOT / args.workdir).resolve()
    copy = workdir / "tree"
    print(f"mutants: copying the working tree to {copy}")
    sync_copy(copy)
    code, output = run(["cmake", "--preset", "default", "-Wno-dev", "-DZANTOR_BUILD_BENCH=OFF",
                        "-DZANTOR_BUILD_EXAMPLES=OFF", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                        "-DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS"], copy, 600)
    if code != 0:
        print(output)
        sys.exit("mutants: configuring the copy failed")
    print("mutants: building and testing the unmutated copy")
    code, output = build(copy, args.jobs, 3600)
    if code != 0:
        print(output[-4000:])
        sys.exit("mutants: the unmutated copy does not build")
    code, output = test(copy, args.jobs, args.timeout)
    if code != 0:
        print(output[-4000:])
        sys.exit("mutants: the unit tests fail without any mutant")
    original_digest = binaries_digest(copy)

    for signum in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(signum, on_signal)

    results = {"killed": [], "survived": [], "did not compile": [], "no code change": []}
    started = time.monotonic()
    try:
        for index, mutant in enumerate(sample, 1):
            target = copy / mutant.path
            original = target.read_bytes()
            try:
                lines = original.decode(errors="surrogateescape").split("\n")
                line = lines[mutant.line - 1]
                assert line[mutant.column:mutant.column + len(mutant.old)] == mutant.old, mutant
                lines[mutant.line - 1] = line[:mutant.column] + mutant.new + line[mutant.column + len(mutant.old):]
                target.write_bytes("\n".join(lines).encode(errors="surrogateescape"))
                code, _ = build(copy, args.jobs, 1800)
                if code != 0:
                    outcome = "did not compile"
                elif binaries_digest(copy) == original_digest:
                    outcome = "no code change"
                else:
                    code, _ = test(copy, args.jobs, args.timeout)
                    outcome = "survived" if code == 0 else "killed"
            finally:
                target.write_bytes(original)
            results[outcome].append(mutant)
            print(f"[{index}/{len(sample)}] {outcome:15} {mutant.describe(line)}", flush=True)
    except Interrupted as interrupted:
        print(f"mutants: interrupted ({interrupted}); the copy is restored")
    finally:
        for signum in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(signum, signal.SIG_DFL)

    killed, survived = len(results["killed"]), len(results["survived"])
    failed, unchanged = len(results["did not compile"]), len(results["no code change"])
    rate = 100.0 * killed / (killed + survived) if killed + survived else 0.0
    print(f"\nmutants: killed {killed}, survived {survived}, did not compile {failed}, no code change {unchanged}; "
          f"kill rate {rate:.1f}% ({killed}/{killed + survived}); seed {args.seed}, "
          f"{time.monotonic() - started:.0f} s")
    if survived:
        print("survivors:")
        for mutant in results["survived"]:
            text = (ROOT / mutant.path).read_text(errors="surrogateescape").split("\n")[mutant.line - 1]
            print("  " + mutant.describe(text))
    return 0


if __name__ == "__main__":
    sys.exit(main())
