"""A page of the simulator's options and of the lines that steer it, from what its programs say of themselves."""

import re
import subprocess

import zvrkit.sim
from reference import markup

OPTION = re.compile(r"  (-\S+.*?|[A-Z]\S+(?: \.\.\.)?)(?:  +(.*))?")
STEERING = re.compile(r"  ([a-z]+(?: \S+)*)  +(.*)")
PROGRAMS = {
    "zvr-sim": "The device side of a model on Ethernet, Wi-Fi or a serial line, in a process of its own.",
    "zvr-sim-usb": "The device side of models on USB, for one program at a time.",
}


def help_of(program):
    return subprocess.run(
        [zvrkit.sim.program(program), "--help"], capture_output=True, text=True, check=True, timeout=20
    ).stdout


def sections(text):
    """Options and steering lines as (section, head, text), in order."""
    found, section, steering = [], "", False
    for line in text.split("\n"):
        if line and not line.startswith(" "):
            section, steering = line.rstrip(":"), steering or "standard input" in line
        elif line.startswith("   ") and found:
            found[-1][2] += " " + line.strip()
        elif line.strip():
            match = (STEERING if steering else OPTION).fullmatch(line)
            found.append([section, match[1], match[2] or ""])
    return found


def options(program):
    """Names of the options."""
    return [head.split()[0] for _, head, _ in sections(help_of(program)) if head.startswith("-")]


def steering(program):
    """First words of the lines on standard input."""
    text = help_of(program)
    return [
        head.split()[0]
        for section, head, _ in sections(text)
        if "standard input" in section or "serial number" in section
    ]


def page(program, summary):
    lines = [
        f".. _{program}:",
        "",
        *markup.heading(program),
        summary,
        "",
        ":doc:`simulated-devices` tells what the simulated devices do.",
        "",
        f".. program:: {program}",
        "",
    ]
    last = None
    for section, head, text in sections(help_of(program)):
        if section != last:
            last, is_line = section, head[0].islower()
            lines += (
                markup.heading(re.split(r"[;,] ", section)[0] if is_line else section, "-")
                if not section.startswith("With")
                else []
            )
            lines += [markup.escaped(section) + ".", ""] if is_line or ";" in section else []
        lines += [f".. option:: {head}", "", "   " + markup.escaped(text), ""]
    return "\n".join(lines)


def pages():
    return {f"simulator/{program}.rst": page(program, summary) for program, summary in PROGRAMS.items()}
