"""Mends what Debian's build of the theme lacks: the colours of a dark system, the style sheet that it imports from a
web server's own folder, and the part that its program imports, without which a page cannot change its colours. A
theme that has them stays as it is."""

import re
from pathlib import Path

NORMALIZE = Path("/usr/share/javascript/normalize.css/normalize.css")
IMPORT = re.compile(r"@import url\((/[^)]*)\);\n?")
IMPORTED = re.compile(r'^import \w+ from "\./([\w.-]+)";', re.MULTILINE)
DARK = re.compile(r'^  body\[data-theme="dark"\] (\{.*?\n?[^\n]*\})', re.DOTALL | re.MULTILINE)


def mended(style):
    if IMPORT.search(style):
        style = (NORMALIZE.read_text(encoding="utf-8") if NORMALIZE.exists() else "") + IMPORT.sub("", style)
    if "prefers-color-scheme" not in style:
        colours = DARK.search(style)[1]
        style += f'@media screen and (prefers-color-scheme: dark) {{\n  body:not([data-theme="light"]) {colours}\n}}\n'
    return style


def bundled(program, folder):
    """What is imported stands before it: pages opened as files cannot import."""
    return IMPORTED.sub(lambda found: (folder / found[1]).read_text(encoding="utf-8"), program)


def mend(app, failure):
    static = Path(app.outdir) / "_static"
    if failure is not None or app.builder.format != "html":
        return
    for place, change in (
        (static / "styles/furo.css", mended),
        (static / "scripts/furo.js", lambda text: bundled(text, static / "scripts")),
    ):
        place.write_text(change(place.read_text(encoding="utf-8")), encoding="utf-8")


def setup(app):
    app.connect("build-finished", mend)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
