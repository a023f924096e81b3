"""Lists a page's entries in the contents of the page alone. Sphinx keeps them in the tree of the whole site as well,
which it copies for every page; that would take most of the build."""

from docutils import nodes
from sphinx import addnodes


def is_entry(item):
    """Whether a line of the contents is that of an entry, with nothing else below it."""
    reference = next(iter(item.findall(nodes.reference)))
    return len(reference) == 1 and isinstance(reference[0], nodes.literal) and not any(item.findall(addnodes.toctree))


def forget(app, env, docnames):
    env.page_contents = {
        name: value for name, value in getattr(env, "page_contents", {}).items() if name not in docnames
    }


def part(app, env):
    for name, contents in env.tocs.items():
        if name not in env.page_contents:
            env.page_contents[name] = contents.deepcopy()
            for item in list(contents.findall(nodes.list_item)):
                if item.parent is not contents and is_entry(item):
                    item.parent.remove(item)


def show(app, pagename, templatename, context, doctree):
    if pagename in app.env.page_contents:
        contents = app.env.page_contents[pagename].deepcopy()
        for reference in contents.findall(nodes.reference):
            reference["refuri"] = reference["anchorname"] or "#"
        for toctree in list(contents.findall(addnodes.toctree)):
            toctree.parent.remove(toctree)
        for items in list(contents.findall(nodes.bullet_list)):
            if not items.children and items.parent is not None:
                items.parent.remove(items)
        context["toc"] = app.builder.render_partial(contents)["fragment"]


def setup(app):
    app.connect("env-before-read-docs", forget)
    app.connect("env-updated", part)
    app.connect("html-page-context", show, priority=100)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
