#!/usr/bin/python3
"""Compares, file by file, the words that Recoll and Velmora read, after a run of bench/office.sh.

  bench/compare_texts.py FOLDER [WORK FOLDER]      (packages python3-recoll, python3-zstandard)

Prints for each name ending how many of Recoll's words stand in Velmora's index too, then the files
that miss most. What is missing is to be looked at: markup, encoded attachments and technical data
of pictures are no loss.
SPDX-License-Identifier: AGPL-3.0-or-later
"""
import collections
import os
import re
import sqlite3
import sys
import unicodedata
import urllib.parse

import zstandard
from recoll import recoll

LETTERS = re.compile(r"[^\W\d_]{3,}")
CHUNKS_PER_DOCUMENT = 1 << 20  # of the numbers of stored text


def words(text):
    text = unicodedata.normalize("NFKD", text.lower())
    return set(LETTERS.findall("".join(c for c in text if not unicodedata.combining(c))))


def velmora_words(index):
    database = sqlite3.connect(f"file:{index}?mode=ro", uri=True)
    files = {
        number: os.path.join(os.fsdecode(folder), os.fsdecode(name))
        for number, folder, name in database.execute(
            "SELECT d.id, f.path, d.file FROM document d JOIN folder f ON f.id = d.folder")
    }
    found = collections.defaultdict(set)
    unpack = zstandard.ZstdDecompressor()
    for number, plain, packed in database.execute("SELECT id, plain, text FROM chunk"):
        text = unpack.decompress(packed, max_output_size=plain + 1) if plain else b""
        found[files[number // CHUNKS_PER_DOCUMENT]] |= words(text.decode("utf-8", "replace"))
    return found


def recoll_words(config, folder):
    os.environ["RECOLL_CONFDIR"] = config
    query = recoll.connect().query()
    query.execute("dir:" + folder, fetchtext=True)
    found = collections.defaultdict(set)
    for document in query:
        file = urllib.parse.unquote(document.url.removeprefix("file://"))
        found[file] |= words(document.text or "")
    return found


def main():
    folder = os.path.realpath(sys.argv[1])
    work = sys.argv[2] if len(sys.argv) > 2 else "/tmp/velmora-bench-office"
    own = velmora_words(os.path.join(work, "archive/indexes/SHARED/index_a.ix"))
    kinds = collections.defaultdict(lambda: [0, 0, 0])
    losses = []
    for file, theirs in recoll_words(os.path.join(work, "recoll"), folder).items():
        missing = theirs - own.get(file, set())
        kind = kinds[os.path.splitext(file)[1].lower()]
        for place, count in enumerate((1, len(theirs), len(theirs) - len(missing))):
            kind[place] += count
        if missing:
            losses.append((len(missing), len(theirs), file, sorted(missing)[:8]))
    print("ending      files   Recoll's words   of these also Velmora's")
    for ending, (files, theirs, common) in sorted(kinds.items(), key=lambda item: -item[1][1]):
        if files > 2 and theirs:
            print(f"{ending:10} {files:6} {theirs:16} {100 * common / theirs:14.1f} %")
    for loss in sorted(losses, reverse=True)[:40]:
        print("missing {} of {} in {}: {}".format(*loss[:3], " ".join(loss[3])))


if __name__ == "__main__":
    main()
