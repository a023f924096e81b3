"""Checks the built site: every link inside it leads to a page and a place that are there, and nothing is loaded from
elsewhere. Links of the text to other sites are left alone.

    site_links.py FOLDER
"""

import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

LOADS = {("script", "src"), ("img", "src"), ("link", "href"), ("iframe", "src"), ("source", "src")}
NOT_LOADED = {"canonical", "search", "index", "next", "prev"}


class Page(HTMLParser):

    def __init__(self, path):
        super().__init__()
        self.places, self.links, self.loads, self.twice = set(), [], [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        found = dict(attrs)
        for key in {found.get("id"), found.get("name") if tag == "a" else None} - {None}:
            if key in self.places:
                self.twice.append(key)
            self.places.add(key)
        if tag == "a" and found.get("href"):
            self.links.append(found["href"])
        for name, key in LOADS:
            if name == tag and found.get(key) and found.get("rel") not in NOT_LOADED:
                self.loads.append(found[key])


def faults(site):
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    for path, page in pages.items():
        here = path.relative_to(site)
        yield from (f"{here}: has the name {key} twice" for key in page.twice)
        for target in page.links + page.loads:
            parts = urlsplit(target)
            if parts.scheme or parts.netloc:
                if target in page.loads and parts.scheme != "data":
                    yield f"{here}: loads {target} from elsewhere"
                continue
            file = (path.parent / unquote(parts.path)).resolve() if parts.path else path
            if not file.exists():
                yield f"{here}: nothing is at {target}"
            elif parts.fragment and file in pages and unquote(parts.fragment) not in pages[file].places:
                yield f"{here}: {target} has no such place"


def imports(site):
    """What style sheets and programs load: nothing that the site has not."""
    for path in sorted([*site.rglob("*.css"), *site.rglob("*.js")]):
        text = path.read_text(encoding="utf-8", errors="replace")
        for target in re.findall(
            r"@import (?:url\()?[\"']?([^\"')]+)|^import .* from [\"'](.*)[\"']", text, re.MULTILINE
        ):
            yield f"{path.relative_to(site)}: imports {''.join(target)}"


def main():
    site = Path(sys.argv[1]).resolve()
    if not (site / "index.html").exists():
        sys.exit(f"no site at {site}")
    found = [*faults(site), *imports(site)]
    if found:
        sys.exit("\n".join(found))


if __name__ == "__main__":
    main()
