"""The notebook of first steps gives what is stored in it."""

from pathlib import Path

import pytest

nbformat = pytest.importorskip("nbformat")
nbclient = pytest.importorskip("nbclient")
pytest.importorskip("ipykernel")

NOTEBOOK = Path(__file__).parents[2] / "examples/first_steps.ipynb"


def outputs(notebook):
    """What each cell shows: its text, and in which other forms there is something."""
    return [[(output.output_type, output.get("text") or output.data["text/plain"], sorted(output.get("data", ())))
             for output in cell.outputs] for cell in notebook.cells if cell.cell_type == "code"]


def test_the_cells_show_what_is_stored_with_them():
    stored = nbformat.read(NOTEBOOK, as_version=4)
    fresh = nbformat.from_dict(stored)
    for cell in fresh.cells:
        cell.pop("outputs", None)
        if cell.cell_type == "code":
            cell.outputs = []
    nbclient.NotebookClient(fresh, timeout=60, kernel_name="python3").execute()
    assert outputs(fresh) == outputs(stored)
    assert any("text/html" in forms for cell in outputs(fresh) for _, _, forms in cell)  # the block is a table
    assert all(outputs(fresh)[number] for number in range(len(outputs(fresh))))
