"""Marks the awaitable form in an entry that has the signatures of both forms."""

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


def setup(app):
    app.add_directive_to_domain("py", "method", Operation, override=True)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
