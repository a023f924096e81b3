"""All generated pages, by their names below docs/reference."""

import contextlib
import io

from reference import companion, failures, models, modules, simulator


def pages(pictures):
    """Draws the pictures of models into a folder, too."""
    with contextlib.redirect_stdout(io.StringIO()):
        targets = modules.targets_of_everything()
        return {
            **modules.Pages(targets).all(),
            **models.pages(models.draw(pictures), targets),
            **failures.pages(targets),
            **failures.codes(targets),
            **simulator.pages(),
            **companion.pages(),
        }
