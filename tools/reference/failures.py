"""Pages of the failures: code, text and bases, when each arises, and what to do."""

import collections
import functools
import re

import pyzvr
from reference import markup, package
from reference.remedies import REMEDIES

GROUPS = {
    "general": ("Bases of all failures", "What to catch to catch many."),
    "connection": ("Connections and links", "The device is not reached, or no longer."),
    "arguments": ("Arguments", "What a call is given does not fit, whatever its module."),
    "device": (
        "Refusals of the device",
        "The device answers, and says no. Operations return these codes as negative numbers; "
        "`checkFirmwareError` makes the failure of a status.",
    ),
    "digital": ("Digital lines", "Ports, pins and channels."),
    "analog": ("Analog inputs and outputs", "Ports, channels, modes and rates."),
    "sensing": ("Sensors and resistors", "Temperature, attitude, relays, resistors."),
    "buses": ("Serial buses", "I2C, SPI, UART and CAN."),
    "motion": (
        "Motion",
        "Controllers, drive, and slots of the chassis. What derives from `ZVRWarning` is raised all the same.",
    ),
    "drone": ("Flight controller", "Modes, heights and angles."),
    "warnings": ("Warnings", "Issued with `warnings.warn`, not raised: the work goes on."),
}
BY_HUNDREDS = {81: "digital", 82: "analog", 83: "analog", 84: "sensing", 85: "sensing", 93: "sensing", 86: "buses",
               87: "buses",
               88: "buses", 89: "buses", 91: "motion", 92: "motion", 94: "drone"}  # fmt: skip
LINK = re.compile(r"(USB|Network|UART)Connection\w*|ReceivePacketTimeoutError|USB\w*Error")
MOST_CAUSES, MOST_OPERATIONS = 8, 6


def group_of(name):
    code = getattr(getattr(pyzvr, name), "code", None)
    if LINK.fullmatch(name):
        return "connection"
    if name.startswith("PAWL"):
        return "motion"
    if code is None:
        return "general"
    if code > 0:
        return "warnings"
    if -7999 <= code <= -7000:
        return "device"
    return "arguments" if -8099 <= code <= -8000 else BY_HUNDREDS[-code // 100]


def remedy(name):
    for form, text in REMEDIES.items():
        if re.fullmatch(form, name):
            return text
    raise LookupError(f"nothing says what to do about pyzvr.{name}: add it to REMEDIES of tools/reference/remedies.py")


@functools.cache
def statuses():
    """By failure: the device's statuses that stand for it."""
    found = collections.defaultdict(list)
    for status in range(256):
        try:
            pyzvr.checkFirmwareError(status)
        except pyzvr.Error as failure:
            found[type(failure)].append(status)
    return {
        cls: f"status {numbers[0]}" if len(numbers) == 1 else "any status without a class of its own"
        for cls, numbers in found.items()
    }


def causes():
    """By failure: its conditions, each with the operations that raise it then."""
    found = collections.defaultdict(lambda: collections.defaultdict(list))
    for name in package.public_classes():
        if name not in package.documented():
            continue
        for operation in package.operations_of(name):
            for raised, _, text in operation.doc.raises:
                for each in raised.split(", "):
                    found[each][text].append(operation)
    return found


def operations(found, targets):
    """Links to a few of them, those for programs first."""
    ordered = sorted(found, key=lambda each: not package.is_public(each.name))
    links = [targets.role(each.name, f"pyzvr.{each.cls}") for each in ordered[:MOST_OPERATIONS]]
    more = len(ordered) - len(links)
    return ", ".join(links) + (f" and {more} more" if more else "")


def entry(name, found, targets):
    cls = getattr(pyzvr, name)
    bases = [f":py:exc:`{base.__name__}`" for base in cls.__mro__[1:] if base not in (object, BaseException)]
    body = markup.paragraphs(package.Doc(cls.__doc__).text.split("\n\nIts code is")[0], targets)
    if getattr(cls, "code", None) is not None:
        body += [f":Code: {markup.literal(cls.code)}"]
    body += [":Derives from: " + ", ".join(bases)]
    if cls in statuses():
        body += [
            f":Arises: The device answers with {statuses()[cls]}; :py:func:`checkFirmwareError` raises it for that. "
            f"Operations that return a refusal return {cls.code}."
        ]
    arising = sorted(found.get(name, {}).items(), key=lambda each: -len(each[1]))
    if arising:
        body += [":Arises:"]
        body += [
            f"   - {markup.line(text, targets)} In {operations(raising, targets)}."
            for text, raising in arising[:MOST_CAUSES]
        ]
        if len(arising) > MOST_CAUSES:
            body += [f"   - {len(arising) - MOST_CAUSES} more conditions stand with the operations."]
    body += [":What to do: " + markup.line(remedy(name), targets), ""]
    return [f".. py:exception:: {name}", "", *markup.indented(body)]


def pages(targets):
    found, groups = causes(), collections.defaultdict(list)
    for name in package.failures():
        groups[group_of(name)].append(name)
    written = {}
    for slug, (title, text) in GROUPS.items():
        lines = markup.heading(title) + [".. py:currentmodule:: pyzvr", "", markup.line(text, targets), ""]
        for name in groups[slug]:
            lines += entry(name, found, targets)
        written[f"failures/{slug}.rst"] = "\n".join(lines)
    return written


def codes(targets):
    """The table of all codes."""
    rows = [
        [markup.literal(cls.code), targets.role(name), markup.escaped(cls.msg)]
        for name, cls in sorted(package.failures().items(), key=lambda each: abs(getattr(each[1], "code", None) or 0))
        if getattr(cls, "code", None) is not None
    ]
    lines = markup.heading("All codes") + [".. py:currentmodule:: pyzvr", ""]
    return {"failures/codes.rst": "\n".join(lines + markup.table(["Code", "Failure", "Text"], rows, (2, 6, 8)))}
