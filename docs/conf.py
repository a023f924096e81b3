"""How Sphinx makes the site. `make docs` runs it over build/docs/tree, where tools/site_tree.py lays these pages out
with the generated ones; it does not run over this folder."""

import re
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE / "_extensions"))

project = "pyzvr"
author = copyright = "the authors of pyzvr"
release = re.search(r"project\(pyzvr VERSION ([0-9.]+)", (HERE.parent / "CMakeLists.txt").read_text())[1]

extensions = [
    "myst_parser",
    "sphinx_copybutton",
    "entries",
    "inline_svg",
    "links_of_the_tree",
    "theme_repairs",
    "contents_of_pages",
]
exclude_patterns = ["README.md", "figures/*.md", "_static", "_extensions"]  # what is for readers of the tree alone
source_suffix = {".md": "markdown", ".rst": "restructuredtext"}
root_doc = "index"
primary_domain = "py"
highlight_language = "python"
add_module_names = False
toc_object_entries_show_parents = "hide"

smartquotes = False  # two dashes are an option

nitpicky = True
# The host's own types: nothing is fetched, so there is no index of them.
nitpick_ignore_regex = [
    ("py:.*", r"(asyncio|socket|queue|threading|collections|configparser|struct|subprocess|types)\..*"),
    ("py:class", r"Decimal|Callable|Iterable|Iterator|Mapping|MutableMapping|MutableSet|Sequence|Self|Any|memoryview"),
]

myst_enable_extensions = ["colon_fence", "deflist", "fieldlist"]
myst_heading_anchors = 4

copybutton_prompt_text = r">>> |\.\.\. |\$ "
copybutton_prompt_is_regexp = True
copybutton_only_copy_prompt_lines = False

html_theme = "furo"
html_title = f"pyzvr {release}"
html_static_path = ["_static"]
html_css_files = ["site.css"]
html_search_scorer = str(HERE / "_extensions/scorer.js")
html_copy_source = False
html_show_sphinx = False
html_theme_options = {
    # What the figures are drawn with, in both colour schemes.
    "light_css_variables": {
        "zvr-1": "#2563c9", "zvr-2": "#b85408", "zvr-3": "#17784a", "zvr-4": "#7745bd", "zvr-5": "#bb2f3b",
        "zvr-6": "#0d7480", "zvr-grid": "#d9dce1", "zvr-fill": "#f2f4f7"},
    "dark_css_variables": {
        "zvr-1": "#79aefc", "zvr-2": "#f2a25f", "zvr-3": "#62cc93", "zvr-4": "#bd9bf5", "zvr-5": "#fb8088",
        "zvr-6": "#5cc8d4", "zvr-grid": "#3a3d42", "zvr-fill": "#212429"},
}  # fmt: skip
