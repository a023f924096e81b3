"""Ways to leave the interpreter, each for a process of its own that ends by coming to its end.

    python3 exit_lab.py SCENARIO FILE ADDRESS...   says what it saw, then "done" and the time

What is slow to end otherwise says "took" and the seconds. The library is imported where a scenario needs it, not before.
"""

import faulthandler
import io
import os
import signal
import sys
import time

import exit_calls
import exit_clients
import exit_loops
import exit_objects
import exit_processes
from exit_scenarios import MAIN, SCENARIOS, say

# Each registers its scenarios.
__all__ = ["SCENARIOS", "exit_calls", "exit_clients", "exit_loops", "exit_objects", "exit_processes"]

if __name__.endswith("main__"):
    sys.stdout = io.StringIO()  # what the library prints is no matter here

if __name__ == "__main__":
    faulthandler.register(signal.SIGUSR1)  # tells where it hangs; a watchdog's thread would hang a forked child
    chosen, path, *where = sys.argv[1:]
    try:
        SCENARIOS[chosen].body([int(word) if word.isdigit() else word for word in where], path)
    finally:
        if os.getpid() == MAIN:
            say("done", time.monotonic())
