#!/usr/bin/env python3
# Counts texts to make engine/readers/CharsetModels.cpp.
# SPDX-License-Identifier: AGPL-3.0-or-later
"""make-charset-models.py FOLDER > engine/readers/CharsetModels.cpp

FOLDER holds one UTF-8 text for each language, named by its code (it.txt, ru.txt, ja.txt ...).
A few hundred kilobytes of running text are enough; translations of Debian's manuals
(debian-handbook, installation-guide) and the message catalogues of its base system were used.
"""
import collections
import math
import sys

ALPHABETIC = ("en it fr es de pt nl sv da nb fi ca pl cs sk hu ro hr sl tr lt lv et "
              "ru uk bg sr el he ar th").split()
IDEOGRAPHIC = {"ja": 500, "zh": 700, "zhtw": 700, "ko": 500}
EDGE = " "  # stands for whatever is no letter
RARE = 0.00004  # letters rarer than this are left out of an alphabet
HIGHEST = 40  # of a cost, in half bits


def words(text):
    return "".join(c if c.isalpha() or "\u0e30" <= c <= "\u0e4e" else EDGE for c in text.lower())


def alphabet_of(text):
    counts = collections.Counter(c for c in text if c != EDGE)
    total = sum(counts.values())
    foreign = [c for c in counts if not c.isascii()]
    # A language of another script has Latin letters for names only.
    latin = sum(counts[c] for c in foreign) < total / 2
    kept = [c for c in foreign if counts[c] > total * RARE]
    return EDGE + ("".join(chr(c) for c in range(97, 123)) if latin else "") + "".join(sorted(kept))


def costs_of(text, alphabet):
    place = {c: i for i, c in enumerate(alphabet)}
    size = len(alphabet)
    pairs = collections.Counter()
    previous = 0
    for c in text:
        at = place.get(c)
        if at is None:
            previous = 0
            continue
        if at or previous:
            pairs[previous, at] += 1
        previous = at
    rows = []
    for first in range(size):
        total = sum(pairs[first, second] for second in range(size))
        row = ""
        for second in range(size):
            share = (pairs[first, second] + 0.2) / (total + 0.2 * size)
            row += chr(48 + min(HIGHEST, round(-2 * math.log2(share))))
        rows.append(row)
    return rows


def common_of(text, count):
    def wanted(c):
        return "\u4e00" <= c <= "\u9fff" or "\uac00" <= c <= "\ud7a3"
    counts = collections.Counter(c for c in text if wanted(c))
    return "".join(sorted(c for c, _ in counts.most_common(count)))


def wrapped(text, width):
    return [text[i:i + width] for i in range(0, len(text), width)]


def quoted(text):
    return text.replace("\\", "\\\\").replace("\"", "\\\"").replace("?", "\\?")  # no trigraphs


def main():
    folder = sys.argv[1]
    read = lambda name: open(f"{folder}/{name}.txt", encoding="utf-8").read()
    print("// How languages write: made by tools/make-charset-models.py, not to be edited.")
    print("// SPDX-License-Identifier: AGPL-3.0-or-later")
    print('#include "engine/readers/CharsetModels.h"\n\n#include <array>\n')
    print("namespace engine {\nnamespace {\n\n// clang-format off")
    print("constexpr std::array kModels{")
    for name in ALPHABETIC:
        text = words(read(name))
        alphabet = alphabet_of(text)
        print(f'LanguageModel{{"{name}", U"{alphabet}",')
        for row in costs_of(text, alphabet):
            print(f'"{quoted(row)}"')
        print("},")
    print("};\n")
    for name, count in IDEOGRAPHIC.items():
        print(f"constexpr std::u32string_view kCommon_{name} =")
        print("\n".join(f'U"{line}"' for line in wrapped(common_of(read(name), count), 45)) + ";\n")
    print("// clang-format on\n\n} // namespace\n")
    print("std::span<const LanguageModel> LanguageModels() {\n    return kModels;\n}\n")
    print("std::u32string_view CommonCharacters(WritingSystem system) {\n    switch (system) {")
    for name, enum in (("ja", "Japanese"), ("zh", "SimplifiedChinese"),
                       ("zhtw", "TraditionalChinese"), ("ko", "Korean")):
        print(f"    case WritingSystem::{enum}:\n        return kCommon_{name};")
    print("    }\n    return {};\n}\n\n} // namespace engine")


if __name__ == "__main__":
    main()
