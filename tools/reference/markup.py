"""reStructuredText of what docstrings say."""

import re

CODE = re.compile(r"`([^`]+)`")
NOTE = re.compile(r"compatibility note \d+")


class Targets:
    """What a name in a text can lead to."""

    def __init__(self):
        self.roles = {}  # by name: roles and full names

    def add(self, name, role, full):
        self.roles.setdefault(name, []).append((role, full))

    def role(self, name, prefer=""):
        """A cross-reference to the only thing of that name, or to the one of the class that is spoken of."""
        found = self.roles.get(name.removesuffix("()"), [])
        near = [each for each in found if prefer and each[1].startswith(prefer + ".")]
        if len(near or found) != 1:
            return literal(name)
        kind, full = (near or found)[0]
        return f":py:{kind}:`{name} <{full}>`"


def literal(text):
    return f"``{text}``"


def escaped(text):
    return re.sub(r"([\\*_|`])", r"\\\1", text)


def line(text, targets=None, prefer=""):
    """One paragraph, with names of the library as cross-references."""
    parts = CODE.split(" ".join(text.split()))
    for place in range(1, len(parts), 2):
        before, after = parts[place - 1], parts[place + 1]
        code = targets.role(parts[place], prefer) if targets else literal(parts[place])
        # Markup must not touch letters.
        parts[place] = (
            ("\\ " if re.search(r"[^\s(\[\"'/-]$", before) else "")
            + code
            + ("\\ " if re.match(r"[^\s.,:;!?)\]\"'/-]", after) else "")
        )
    return "".join(
        part if place % 2 else NOTE.sub(r":doc:`\g<0> </reference/compatibility>`", escaped(part))
        for place, part in enumerate(parts)
    )


def paragraphs(text, targets=None, prefer=""):
    """Paragraphs and indented examples of a docstring."""
    lines = []
    for part in re.split(r"\n\s*\n", text.strip("\n")):
        if part.startswith("    "):
            kind = "pycon" if part.lstrip().startswith(">>>") else "python"
            lines += [f".. code-block:: {kind}", "", *("   " + each.removeprefix("    ") for each in part.split("\n"))]
        else:
            lines.append(line(part, targets, prefer))
        lines.append("")
    return lines


def heading(title, sign="="):
    return [title, sign * len(title), ""]


def indented(lines, width=3):
    return [" " * width + each if each else "" for each in lines]


def table(head, rows, widths=None):
    """A table of cells that are markup already."""
    lines = [".. list-table::", "   :header-rows: 1"]
    if widths:
        lines.append("   :widths: " + " ".join(map(str, widths)))
    lines.append("")
    for row in [head, *rows]:
        for place, cell in enumerate(row):
            lines.append(("   * - " if place == 0 else "     - ") + (cell or "\\"))
    return [*lines, ""]


def toctree(names, caption=None):
    lines = [".. toctree::", "   :maxdepth: 1"]
    lines += [f"   :caption: {caption}"] if caption else []
    return [*lines, "", *("   " + name for name in names), ""]
