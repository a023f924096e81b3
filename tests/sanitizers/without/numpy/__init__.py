"""Stands in for a library of arrays, whose import alone leaves leaks of the interpreter's own behind."""

raise ImportError("not under the sanitizers")
