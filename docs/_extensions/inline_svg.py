"""Puts the drawings of the build into the page itself, where they take the colours of its scheme and its letters.

A drawing's text alternative becomes its name; a page that shows one twice has its inner names twice, so it should not.
"""

import html
import re
from pathlib import Path

from docutils import nodes

HEAD = re.compile(r"^.*?<svg\b([^>]*)>", re.DOTALL)


def inlined(path, alternative):
    text = Path(path).read_text(encoding="utf-8")
    attributes = HEAD.match(text)[1]
    attributes = re.sub(r'\s(width|height|class)="[^"]*"', "", attributes)
    label = html.escape(alternative or "")
    return f'<svg class="drawing" role="img" aria-label="{label}"{attributes}>' + HEAD.sub("", text, count=1)


def replace_drawings(app, doctree, docname):
    if app.builder.format != "html":
        return
    for image in list(doctree.findall(nodes.image)):
        if image["uri"].startswith("figures/") and image["uri"].endswith(".svg"):
            code = inlined(Path(app.srcdir) / image["uri"], image.get("alt"))
            image.replace_self(nodes.raw("", code, format="html"))


def setup(app):
    app.connect("doctree-resolved", replace_drawings)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
