"""A page for each module: its classes, and every operation in both forms."""

import re

import pyzvr
from reference import markup, package, wire

HIDDEN = (
    "Steps and single exchanges",
    "What the operations above are made of. They check less, and a program may call or replace them.",
)


class Pages:

    def __init__(self, targets):
        self.targets = targets
        self.wire = wire.of_all()

    def all(self):
        """Texts by the pages' names."""
        pages = {f"modules/{slug}.rst": self.page(slug) for slug in package.PAGES}
        pages["modules/index.rst"] = self.index()
        pages["modules/functions.rst"] = self.functions()
        pages["modules/constants.rst"] = self.constants()
        pages |= wire.pages(self.wire, self.targets)
        for name in package.public_classes():
            if name not in package.failures() and name not in package.models():
                package.page_of(name)
        return pages

    def index(self):
        lines = markup.heading("Modules")
        lines += [
            "One page for each module. An operation whose name ends in ``_async`` is awaited in an event loop; the one "
            "without blocks, and takes a ``timeout``.",
            "",
        ]
        for chapter, pages in package.CHAPTERS.items():
            lines += markup.heading(chapter, "-") + markup.toctree(pages)
        return "\n".join(
            lines + markup.heading("Functions and constants", "-") + markup.toctree(["functions", "constants"])
        )

    def page(self, slug):
        title, names = package.PAGES[slug]
        lines = [f".. _module-{slug}:", "", *markup.heading(title), ".. py:currentmodule:: pyzvr", ""]
        summary = package.Doc(getattr(pyzvr, names[0]).__doc__).text.split("\n\n")[0]
        lines += [markup.line(summary, self.targets), ""]
        lines += self.had_by(names[0])
        operations = [each for name in names for each in package.operations_of(name)]
        public = [each for each in operations if package.is_public(each.name)]
        hidden = [each for each in operations if not package.is_public(each.name)]
        if public:
            lines += self.overview(public)
        distinct = len({each.name for each in public}) == len(public)
        for cls in dict.fromkeys("" if distinct else each.cls for each in public):
            title = ("Operations" if hidden else "Methods") + (f" of {cls}" if cls else "")
            lines += markup.heading(title, "-")
            lines += [each for operation in public if cls in ("", operation.cls) for each in self.entry(operation)]
        if hidden:
            title, text = HIDDEN
            lines += markup.heading(title, "-") + [text, ""]
            lines += [each for operation in hidden for each in self.entry(operation)]
        lines += markup.heading("Classes", "-")
        lines += [each for name in names for each in self.class_entry(name)]
        return "\n".join(lines)

    def overview(self, operations):
        """What there is, at a glance."""
        rows = {}
        for each in operations:
            rows.setdefault(each.name, [self.targets.role(each.name, f"pyzvr.{each.cls}"), self.first_sentence(each)])
        return markup.table(["Name", "What it does"], list(rows.values()), (2, 3))

    def first_sentence(self, operation):
        paragraph = " ".join(operation.doc.text.split("\n\n")[0].split())
        sentence = re.match(r"(.*?\.)(?= [A-Z]|$)", paragraph)
        return markup.line(sentence[1] if sentence else paragraph, self.targets, f"pyzvr.{operation.cls}")

    def had_by(self, name):
        models = [model for model in package.models() if issubclass(getattr(pyzvr, model), getattr(pyzvr, name))]
        if not models:
            return []
        links = ", ".join(f":py:class:`{model} <pyzvr.{model}>`" for model in models)
        return [f"Models that have it: {links}.", ""]

    def class_entry(self, name):
        doc = package.Doc(getattr(pyzvr, name).__doc__)
        bases = [base.__name__ for base in getattr(pyzvr, name).__bases__ if base.__name__ in package.public_classes()]
        both = hasattr(pyzvr, name + "_async")
        lines = [f".. py:class:: {name}", ""]
        body = markup.paragraphs(doc.text, self.targets, f"pyzvr.{name}")
        if bases:
            body += ["Derives from " + ", ".join(f":py:class:`{base}`" for base in bases) + ".", ""]
        for attribute, kind, text in doc.attributes:
            body += [
                f".. py:attribute:: {attribute}",
                f"   :type: {kind}",
                "",
                "   " + markup.line(text, self.targets),
                "",
            ]
        for key, value in package.properties_of(name).items():
            if key not in [each[0] for each in doc.attributes]:
                kind = value.fget.__stub__.split(" -> ")[1].removesuffix(": ...")
                body += [f".. py:property:: {key}", f"   :type: {kind}", ""]
                body += markup.indented(
                    markup.paragraphs(package.Doc(value.__doc__).text, self.targets, f"pyzvr.{name}")
                )
        lines += markup.indented(body)
        if both:
            lines += [
                f".. py:class:: {name}_async",
                "",
                f"   The awaitable form of :py:class:`{name}`. A product has both.",
                "",
            ]
        return lines

    def entry(self, operation, directive="py:method"):
        first, *more = operation.signatures
        head = f".. {directive}:: "
        lines = [head + first, *(" " * len(head) + each for each in more)]
        lines += ["   :async:"] if operation.is_async else []
        lines += ["   :staticmethod:"] if operation.is_static else []
        return lines + [""] + markup.indented(self.body(operation, f"pyzvr.{operation.cls}"))

    def body(self, operation, prefer):
        doc, text = operation.doc, lambda each: markup.line(each, self.targets, prefer)
        other = package.Doc(operation.other[2].__doc__) if operation.other else None
        lines = markup.paragraphs(doc.text, self.targets, prefer)
        if other and other.text != doc.text:
            lines += ["The awaitable form: " + text(other.text), ""]
        taken = [name for name, *_ in other.arguments] if other else None
        for name, kind, meaning in doc.arguments:
            only = " Only the blocking form has it." if taken is not None and name not in taken else ""
            lines += [f":param {markup.escaped(name)}: {text(meaning)}{only}", f":type {markup.escaped(name)}: {kind}"]
        if doc.returned:
            kind, _, meaning = doc.returned.partition(": ")
            lines += [":returns: " + (text(meaning) if meaning else text(kind))]
        if doc.source:
            lines += [":Comes from: " + text(doc.source.removesuffix(".")) + "."]
        if (operation.cls, operation.name) in self.wire:
            sent, _ = self.wire[operation.cls, operation.name]
            lines += [":Sends: " + text(sent)]
        raised = [(names, meaning, "") for names, _, meaning in doc.raises]
        if other:
            both = [each for each in doc.raises if each in other.raises]
            raised = [
                (names, meaning, "" if (names, kind, meaning) in both else "blocking form: ")
                for names, kind, meaning in doc.raises
            ]
            raised += [
                (names, meaning, "awaitable form: ")
                for names, kind, meaning in other.raises
                if (names, kind, meaning) not in both
            ]
        for names, meaning, form in raised:
            lines += [f":raises {name.strip()}: {form}{text(meaning)}" for name in names.split(",")]
        return [*lines, ""]

    def functions(self):
        lines = markup.heading("Functions") + [".. py:currentmodule:: pyzvr", "", "Functions of the package.", ""]
        for name, value in package.functions().items():
            operation = package.Operation("", name, value)
            signature = value.__stub__.removeprefix("async ").removeprefix("def ").removesuffix(": ...")
            lines += [
                f".. py:function:: {signature}",
                *(["   :async:"] if operation.is_async else []),
                "",
                *markup.indented(self.body(operation, "pyzvr")),
            ]
        return "\n".join(lines)

    def constants(self):
        lines = markup.heading("Constants") + [
            ".. py:currentmodule:: pyzvr",
            "",
            "Numbers of the commands and registers, " "and what the package tells of itself.",
            "",
        ]
        for name, value in package.constants().items():
            lines += [f".. py:data:: {name}"]
            lines += [f"   :value: {value!r}"] if len(repr(value)) < 60 else []
            lines += [""]
        return "\n".join(lines)


def targets_of_everything():
    targets = markup.Targets()
    arguments = {
        argument
        for name in package.documented()
        for operation in package.operations_of(name)
        for argument, *_ in operation.doc.arguments
    }
    for name in package.public_classes():
        targets.add(name, "exc" if name in package.failures() else "class", f"pyzvr.{name}")
        if name not in package.documented():
            continue
        for operation in package.operations_of(name):
            targets.add(operation.name, "meth", f"pyzvr.{operation.cls}.{operation.name}")
            if operation.other:
                cls, other, _ = operation.other
                targets.add(other, "meth", f"pyzvr.{cls}.{other}")
        doc = package.Doc(getattr(pyzvr, name).__doc__)
        # A name that arguments have, too, mostly means one of them.
        for attribute in ({each[0] for each in doc.attributes} | set(package.properties_of(name))) - arguments:
            targets.add(attribute, "attr", f"pyzvr.{name}.{attribute}")
    for name in package.functions():
        targets.add(name, "func", f"pyzvr.{name}")
    for name in package.constants():
        targets.add(name, "data", f"pyzvr.{name}")
    return targets
