#!/usr/bin/env python3
"""Checks the translations beside this script against each other and against the code.

    check_translations.py             fails on missing, empty, unfinished, obsolete and doubled entries
    check_translations.py --strict    fails on entries that the code does not use as well

Keys are what the library's sources pass to tr(), translate(), QT_TR_NOOP() and QT_TRANSLATE_NOOP(), and what
the forms show: texts that begin with "LAB_". The context of a key is the class around it. One line per
finding; the exit code is 1 when there is any.
"""

import argparse
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
LIBRARY = ("actions", "plugin", "relay", "streamlabs", "uikit")

# A comment goes, a literal stays: "//" inside a literal begins no comment.
LITERAL_OR_COMMENT = re.compile(
    r'(R"(\w*)\(.*?\)\2"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\])\')|//[^\n]*|/\*.*?\*/', re.DOTALL)
# What opens the class that the code below it belongs to: a class, or a member defined at the left margin.
SCOPE = re.compile(
    r"^(?:class|struct)\s+(?:\w+\s+)?(?P<class>\w+(?:::\w+)*)(?=\s*(?:final\s*)?[:{])(?!::)"
    r"|^(?!\s)[^;{}()#=]*?\b(?P<member>\w+(?:::\w+)*)::~?\w+\s*\(", re.MULTILINE)
KEY = re.compile(
    r'(?:\b(?P<owner>\w+(?:::\w+)*)::)?\b(?:'
    r'(?:tr|QT_TR_NOOP|QT_TR_N_NOOP)\s*\('
    r'|(?:translate|QT_TRANSLATE_NOOP|QT_TRANSLATE_N_NOOP)\s*\(\s*"(?P<context>[^"]+)"\s*,'
    r')\s*"(?P<key>LAB_[^"]*)"')
PLACEHOLDER = re.compile(r"%L?(?:\d{1,2}|n)")


def root_of(path):
    """The root element of an XML file; ends the program when there is none."""
    try:
        return ElementTree.parse(path).getroot()
    except ElementTree.ParseError as error:
        sys.exit(f"{path.name}: {error}")


def keys_of_source(path):
    """Yields (context, key) for every key in a source or a header."""
    code = LITERAL_OR_COMMENT.sub(lambda match: match[1] or " ", path.read_text(encoding="utf-8"))
    scopes = [(match.start(), match["class"] or match["member"]) for match in SCOPE.finditer(code)]
    for match in KEY.finditer(code):
        around = [scope for start, scope in scopes if start < match.start()]
        yield match["context"] or match["owner"] or (around[-1] if around else path.stem), match["key"]


def keys_of_form(path):
    """Yields (context, key) for every key in a Designer form."""
    form = root_of(path)
    for text in form.iter("string"):
        if (text.text or "").startswith("LAB_") and text.get("notr") != "true":
            yield form.findtext("class"), text.text


def keys_of_code():
    """Maps every (context, key) to the file that uses it."""
    readers = {".cpp": keys_of_source, ".h": keys_of_source, ".ui": keys_of_form}
    paths = (path for folder in LIBRARY for path in (ROOT / folder).rglob("*") if path.suffix in readers)
    return {entry: path.relative_to(ROOT) for path in sorted(paths) for entry in readers[path.suffix](path)}


def entries_of(path):
    """Yields (context, key, state, texts) for every entry; the state is empty, "unfinished" or "obsolete"."""
    for context in root_of(path).iter("context"):
        for message in context.iter("message"):
            for translation in message.iter("translation"):
                state = translation.get("type", "")
                forms = translation.findall("numerusform") or [translation]
                texts = ["".join(form.itertext()) for form in forms]
                yield (context.findtext("name"), message.findtext("source"),
                    "obsolete" if state == "vanished" else state, texts)


def findings_in(entries):
    """Yields (context, key, finding) for what is wrong with the entries of one file."""
    for (context, key), count in Counter((context, key) for context, key, _, _ in entries).items():
        if count > 1:
            yield context, key, f"stands here {count} times"
    for context, key, state, texts in entries:
        if state:
            yield context, key, state
        elif not all(text.strip() for text in texts):
            yield context, key, "empty"
        elif any(set(PLACEHOLDER.findall(text)) != set(PLACEHOLDER.findall(key)) for text in texts):
            yield context, key, "its placeholders (%1, %n) differ from the key's"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--strict", action="store_true",
        help="also fail on entries that the code does not use; they may belong to classes that are still to "
        "come, so this is off unless asked for")
    strict = parser.parse_args().strict

    files = {path: list(entries_of(path)) for path in sorted(HERE.glob("language_*.ts"))}
    used = keys_of_code()
    if not files or not used:
        sys.exit(f"{HERE}: no translations, or no keys in the code")
    # A language misses what the code uses, and what another language has.
    users = {(context, key): path.name for path, entries in files.items()
        for context, key, state, _ in entries if state != "obsolete"} | used

    findings = []
    for path, entries in files.items():
        there = {(context, key) for context, key, _, _ in entries}
        missing = sorted(users.keys() - there)
        findings += [(path, *finding) for finding in findings_in(entries)]
        findings += [(path, *entry, f"missing, {users[entry]} has it") for entry in missing]
        if strict:
            findings += [(path, *entry, "unused") for entry in sorted(there - used.keys())]
    for path, context, key, finding in findings:
        print(f"{path.name}: {context}: {key}: {finding}")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
