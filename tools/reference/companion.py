"""Pages of `zvrkit`, from its modules: what is public of them, with signature and docstring."""

import importlib
import inspect

from reference import markup

MODULES = {
    "zvrkit": "What is imported with the package itself.",
    "zvrkit.sim": "Simulated devices for programs and tests.",
    "zvrkit.connection": "What keeps a box connected.",
    "zvrkit.pytest_plugin": "Fixtures for tests of your own; pytest finds them when `zvrkit` is installed.",
}


def public(module):
    """Names of a module that are meant for programs."""
    names = getattr(module, "__all__", None) or [
        name
        for name, value in vars(module).items()
        if not name.startswith("_") and getattr(value, "__module__", None) == module.__name__ and callable(value)
    ]
    return {name: getattr(module, name) for name in names}


def is_own(value, module):
    """Whether it is told of on this page: what is taken over from another module stands there."""
    return getattr(value, "__module__", module.__name__) in (module.__name__, "pathlib", "_pytest.fixtures")


def signature(value, name):
    try:
        text = str(inspect.signature(value))
    except (TypeError, ValueError):
        return name
    return name + text.replace("'", "").replace("(self, ", "(").replace("(self)", "()")


def members(cls):
    """Public methods and properties, also those of hidden bases."""
    found = {}
    for base in reversed(cls.__mro__):
        if base.__module__ == cls.__module__:
            found |= {
                name: value
                for name, value in vars(base).items()
                if not name.startswith("_") and (inspect.isfunction(value) or isinstance(value, property))
            }
    return found


def entry(name, value):
    if inspect.isclass(value):
        kind = "exception" if issubclass(value, Exception) else "class"
        lines = [f".. py:{kind}:: {name}", "", *markup.indented(markup.paragraphs(inspect.getdoc(value) or ""))]
        if not issubclass(value, Exception):
            for inner, member in members(value).items():
                lines += markup.indented(member_entry(inner, member, value))
        return lines
    function = inspect.unwrap(value)
    if inspect.isfunction(function):
        return [
            f".. py:function:: {signature(function, name)}",
            "",
            *markup.indented(markup.paragraphs(inspect.getdoc(function) or "")),
        ]
    return [f".. py:data:: {name}", ""]


def member_entry(name, member, cls):
    function = member.fget if isinstance(member, property) else member
    doc = inspect.getdoc(getattr(cls, name)) or ""
    if isinstance(member, property):
        kind = str(inspect.signature(function).return_annotation)
        head = [f".. py:property:: {name}", f"   :type: {kind}"]
    else:
        head = [f".. py:method:: {signature(function, name)}"]
    return [*head, "", *markup.indented(markup.paragraphs(doc))]


def page(name, summary):
    module = importlib.import_module(name)
    lines = markup.heading(name) + [markup.line(summary), "", f".. py:module:: {name}", ""]
    lines += markup.paragraphs(inspect.getdoc(module) or "")
    for each, value in public(module).items():
        if is_own(value, module):
            lines += entry(each, value)
        else:
            lines += [f":py:obj:`{value.__module__}.{each}` is here, too.", ""]
    return "\n".join(lines)


def pages():
    return {f"zvrkit/{name}.rst": page(name, summary) for name, summary in MODULES.items()}
