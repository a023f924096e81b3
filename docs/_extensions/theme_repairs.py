"""Mends what Debian's build of the theme lacks: the colours of a dark system, and the style sheet that it imports from a
web server's own folder. A theme that has both stays as it is."""

import re
from pathlib import Path

NORMALIZE = Path("/usr/share/javascript/normalize.css/normalize.css")
IMPORT = re.compile(r"@import url\((/[^)]*)\);\n?")
DARK = re.compile(r'^  body\[data-theme="dark"\] (\{.*?\n?[^\n]*\})', re.DOTALL | re.MULTILINE)


def mended(style):
    if IMPORT.search(style):
        style = (NORMALIZE.read_text(encoding="utf-8") if NORMALIZE.exists() else "") + IMPORT.sub("", style)
    if "prefers-color-scheme" not in style:
        colours = DARK.search(style)[1]
        style += f'@media screen and (prefers-color-scheme: dark) {{\n  body:not([data-theme="light"]) {colours}\n}}\n'
    return style


def mend(app, failure):
    place = Path(app.outdir) / "_static/styles/furo.css"
    if failure is None and app.builder.format == "html" and place.exists():
        place.write_text(mended(place.read_text(encoding="utf-8")), encoding="utf-8")


def setup(app):
    app.connect("build-finished", mend)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
