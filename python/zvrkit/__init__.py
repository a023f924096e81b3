"""What users of `pyzvr` need around it: simulated devices, fixtures for tests, and the examples.

Each part is imported by its name, `import zvrkit.sim`; none needs another one.
"""

from pathlib import Path

from zvrkit.connection import reconnecting

__all__ = ["EXAMPLES", "reconnecting"]

#: The folder of the examples. The names in `pyzvr.EXAMPLE_CONSOLE_DICT` count from its parent.
EXAMPLES = Path(__file__).parent / "examples"
