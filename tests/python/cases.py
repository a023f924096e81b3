"""Cases that many tests have in common."""

from typing import NamedTuple


class Exchange(NamedTuple):
    """One exchange of an operation: what it sends, and what it makes of the reply."""

    operation: str
    arguments: tuple
    command: object  # its name, or its number
    sent: list  # bytes of the payload
    reply: bytes
    result: object
    model: str = ""  # where a table has several
    kept_in: str | None = None  # field of the object that keeps the result


def operation_of(case):
    """Names a case in what pytest prints."""
    return case.operation
