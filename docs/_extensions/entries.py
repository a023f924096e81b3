"""Marks the awaitable form in an entry that has the signatures of both forms, and sets the dashes of its fields."""

from docutils import nodes
from sphinx.domains.python import PyMethod


class Operation(PyMethod):

    def get_signature_prefix(self, sig):
        prefix = super().get_signature_prefix(sig)
        if "async" in self.options or not sig.partition("(")[0].endswith("_async"):
            return prefix
        self.options["async"] = None
        try:
            return super().get_signature_prefix(sig)
        finally:
            del self.options["async"]

    def _toc_entry_name(self, sig_node):
        """The contents of a page name the blocking form alone."""
        name = super()._toc_entry_name(sig_node)
        return "" if name.endswith("_async()") and len(self.arguments[0].split("\n")) > 1 else name


def set_dashes(app, doctree):
    """Sphinx writes two dashes there, for the smart quotes that would spoil the options of programs."""
    for text in list(doctree.findall(nodes.Text)):
        if text == " -- ":
            text.parent.replace(text, nodes.Text(" \N{EN DASH} "))


def setup(app):
    app.connect("doctree-read", set_dashes)
    app.add_directive_to_domain("py", "method", Operation, override=True)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
