"""Links to what the tree has and the site has not, such as a folder, are shown as text; others are refused."""

import os
from pathlib import Path

from docutils import nodes


def shown_as_text(app, env, node, content):
    if node.get("reftype") not in ("any", "doc"):
        return None
    target = node["reftarget"].partition("#")[0]
    place = Path(os.path.normpath(Path(app.srcdir) / Path(node["refdoc"]).parent / target))
    # The pages lie beside links to all else of the tree.
    outside = not place.is_relative_to(app.srcdir)
    if not target or not (outside and place.exists()) and place.name != "README.md":
        return None
    return nodes.inline("", "", *content.children)


def setup(app):
    app.connect("missing-reference", shown_as_text)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
