"""The generated reference has everything that the module has; and the site that Sphinx makes of it is whole, and its
search finds everything by name."""

import functools
import html
import inspect
import json
import re
import shutil
import subprocess
from pathlib import Path

import pytest
import site_links
import zvrkit.sim
from reference import companion, failures, markup, models, modules, package, pictures, simulator

import pyzvr

ROOT = Path(__file__).parents[2]
ENTRY = re.compile(r"^ *(?:\.\. py:\w+::)? +(?:\w+\.)*(\w+)(?=\(|$)", re.MULTILINE)
CHROMIUM = shutil.which("chromium")


@functools.cache
def targets():
    return modules.targets_of_everything()


@functools.cache
def module_pages():
    return modules.Pages(targets()).all()


def entries(pages):
    return {name for text in pages.values() for name in ENTRY.findall(text)}


def names_of_the_module():
    """Functions, constants, classes, and what classes define, but for what the host's mappings and sets lend them."""
    found = set()
    for name, value in vars(pyzvr).items():
        if name.startswith("_") or inspect.ismodule(value):
            continue
        found.add(name)
        if inspect.isclass(value) and name not in pyzvr.HANDLE_LIST and not issubclass(value, BaseException):
            found |= {
                inner
                for inner, member in vars(value).items()
                if not inner.startswith("_")
                and getattr(member, "__module__", None) != "collections.abc"
                and (callable(member) or isinstance(member, (property, staticmethod, classmethod)))
            }
    return found - {"annotations"}


def test_everything_public_of_the_module_has_an_entry():
    pages = {
        **module_pages(),
        **failures.pages(targets()),
        **{name: f".. py:class:: {name}()" for name in package.models()},
    }
    assert names_of_the_module() - entries(pages) == set()


def test_an_entry_has_both_forms_and_what_the_docstring_says():
    (entry,) = re.findall(
        r"\.\. py:method:: DIOModule\.DI_readPort\(.*?(?=\n\.\. py:)", module_pages()["modules/dio.rst"], re.DOTALL
    )
    assert "DIOModule.DI_readPort(port: int, timeout: float = 3) -> list[int]" in entry
    assert "DIOModule_async.DI_readPort_async(port: int) -> list[int]" in entry
    assert ":param timeout: seconds in which the device must answer, above 0. Only the blocking form has it." in entry
    assert (
        ":raises ReceivePacketTimeoutError: blocking form:" in entry
        and ":raises asyncio.TimeoutError: awaitable form:" in entry
    )
    assert ":raises DIPortNotAvaliableError: the model has no such port." in entry
    assert ":Sends: :py:data:`READ_AND_GET_DI" in entry


@pytest.mark.parametrize("form", ["blocking", "awaitable"])
def test_no_argument_return_or_failure_of_an_operation_is_left_out(form):
    pages = modules.Pages(targets())
    for name in package.documented():
        for operation in package.operations_of(name):
            value = operation.value if form == "blocking" else operation.other and operation.other[2]
            if value is None:
                continue
            said, text = value.__doc__ or "", "\n".join(pages.entry(operation))
            for argument in re.findall(r"^    \*{0,2}(\w+) \(", said.partition("\nReturns:")[0], re.MULTILINE):
                assert f"{argument}: " in text, operation.signatures
            raised = said.partition("\nRaises:\n")[2]
            for failure in re.findall(r"^    ([\w., ]+?):", raised, re.MULTILINE):
                assert all(f":raises {each}: " in text for each in failure.split(", ")), operation.signatures
            assert ("\nReturns:\n" in said) == (":returns: " in text), operation.signatures


def test_every_failure_has_code_bases_and_what_to_do():
    pages = failures.pages(targets())
    for name, cls in package.failures().items():
        (entry,) = re.findall(
            rf"\.\. py:exception:: {name}\n.*?(?=\n\.\. py:|\Z)", "\n".join(pages.values()), re.DOTALL
        )
        assert ":What to do: " in entry and ":Derives from: " in entry
        code = getattr(cls, "code", None)
        assert code is None or f"``{code}``" in entry
    assert "status 10;" in pages["failures/device.rst"]


def test_compatibility_notes_and_code_name_each_other():
    page = (ROOT / "docs/reference/compatibility.md").read_text()
    code = "".join(path.read_text() for path in sorted((ROOT / "src").rglob("*.[ch]*")))
    marked = re.findall(r'(?:Compat|compatibility(?: |"\s*")note(?: |"\s*"))\s*(\d+)', code)
    assert sorted(set(map(int, marked))) == list(range(1, len(re.findall(r"(?m)^\| \d+ \|", page)) + 1))


def test_what_is_new_and_told_of_nowhere_fails_the_build(monkeypatch):
    monkeypatch.setattr(pyzvr, "NewModule", type("NewModule", (), {"__module__": "pyzvr"}), raising=False)
    with pytest.raises(LookupError, match="no page tells of pyzvr.NewModule"):
        modules.Pages(targets()).all()
    with pytest.raises(LookupError, match="what to do about pyzvr.NewFailure"):
        failures.remedy("NewFailure")


def test_every_model_has_a_page_and_a_picture_of_its_pins(tmp_path):
    words = models.draw(tmp_path)
    pages = models.pages(words, targets())
    table = json.loads(
        subprocess.run([zvrkit.sim.program(), "--table"], capture_output=True, text=True, check=True).stdout
    )
    for row in table:
        name = row["model"]
        picture, page = (tmp_path / f"{name}.svg").read_text(), pages[f"models/{name}.rst"]
        drawn = {
            (int(port), int(pin)): kind
            for port, pin, kind in re.findall(r"<title>port (\d+) pin (\d+): ([a-z ]+)</title>", picture)
        }
        pins = {
            kind: {(int(port), pin) for port, numbers in row[f"digital_{kind}s"].items() for pin in numbers}
            for kind in ("input", "output")
        }
        for kind in pins if issubclass(getattr(pyzvr, name), pyzvr.DIOModule) else ():
            assert {place for place, shown in drawn.items() if kind in shown} == pins[kind], name
        for bus, ports in row["buses"].items():
            for port in ports:
                assert f">{bus.upper()} {port}</text>" in picture, name
        assert len(re.findall(r">Analog input [^<]*</text>", picture)) == len(row["analog_inputs"])
        assert f"   :alt: {row['name']}, " in page and f"../figures/models/{name}.svg"[2:] in page
        # What is drawn stays inside, and is read on a telephone.
        assert all(0 <= float(x) <= 440 for x in re.findall(r' x="([^"]*)"', picture))
        assert min(int(size) for size in re.findall(r'font-size="(\d+)"', picture)) >= 11
    assert len(table) == len(pages) - 1


@pytest.mark.parametrize(
    ("numbers", "text"), [([], ""), ([3], "3"), ([0, 1], "0, 1"), ([0, 1, 2, 6, 7], "0 to 2, 6, 7")]
)
def test_runs_of_pins_are_told_as_such(numbers, text):
    assert pictures.spans(numbers) == text


@pytest.mark.parametrize(
    ("text", "wanted"),
    [
        ("`DI_readPort`s", ":py:meth:`DI_readPort <pyzvr.DIOModule.DI_readPort>`\\ s"),
        ("a_ *b* |c|", r"a\_ \*b\* \|c\|"),
        ("`timeout` above", "``timeout`` above"),
        ("(compatibility note 12)", "(:doc:`compatibility note 12 </reference/compatibility>`)"),
    ],
)
def test_texts_of_docstrings_become_markup(text, wanted):
    assert markup.line(text, targets()) == wanted


@pytest.mark.parametrize(
    ("program", "lines"),
    [
        ("zvr-sim", {"cut", "stall", "wave", "level", "refuse"}),
        ("zvr-sim-usb", {"plug", "unplug", "late", "transfers", "stall", "refuse"}),
    ],
)
def test_the_simulator_pages_have_every_option_and_line(program, lines):
    try:
        command = [zvrkit.sim.program(program), "--help"]
    except zvrkit.sim.SimulatorError as missing:
        pytest.skip(str(missing))
    page = simulator.page(program, "")
    shown = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    assert set(re.findall(r"^  (--[\w-]+)", shown, re.MULTILINE)) == set(
        re.findall(r"^\.\. option:: (--[\w-]+)", page, re.MULTILINE)
    )
    assert lines <= set(re.findall(r"^\.\. option:: ([a-z]+)", page, re.MULTILINE))


def test_the_companion_pages_have_what_is_public_of_it():
    pages = companion.pages()
    assert {
        "device",
        "usb",
        "Place",
        "Bus",
        "BusDevice",
        "SimulatorError",
        "restart_beside_usb",
        "cut",
        "stall",
        "wave",
        "level",
        "refuse",
    } <= entries({"": pages["zvrkit/zvrkit.sim.rst"]})
    assert (
        "simulated_device" in pages["zvrkit/zvrkit.pytest_plugin.rst"]
        and "Reconnecting" in pages["zvrkit/zvrkit.connection.rst"]
    )


def test_broken_links_of_a_site_are_found(tmp_path):
    (tmp_path / "other.html").write_text('<p id="here">')
    (tmp_path / "index.html").write_text(
        '<script src="https://cdn.example/x.js"></script><a href="other.html#here">1</a>'
        '<a href="other.html#gone">2</a><a href="gone.html">3</a><a href="https://example/">4</a>'
    )
    (tmp_path / "style.css").write_text("@import url(/elsewhere.css);")
    assert list(site_links.imports(tmp_path)) == ["style.css: imports /elsewhere.css"]
    found = list(site_links.faults(tmp_path))
    assert len(found) == 3
    assert (
        "elsewhere" in found[2]
        and "other.html#gone has no such place" in found[0]
        and "nothing is at gone.html" in found[1]
    )


@pytest.fixture(scope="module")
def site():
    """What `make docs` has made of these pages and this module."""
    built = ROOT / "build/docs/html"
    index = built / "searchindex.js"
    sources = [Path(pyzvr.__file__), *(ROOT / "docs").rglob("*.*"), *(ROOT / "tools").rglob("*.py")]
    if not index.exists() or max(path.stat().st_mtime for path in sources) > index.stat().st_mtime:
        pytest.skip("`make docs` has not made this site")
    return built


def wanted_names():
    """All that the search has to find by its name."""
    operations = {
        each for name in package.documented() for operation in package.operations_of(name) for each in operation.names
    }
    options = {
        each for program in simulator.PROGRAMS for each in [*simulator.options(program), *simulator.steering(program)]
    }
    return sorted({*operations, *package.failures(), *package.models(), *options})


def test_links_of_the_site_lead_somewhere_and_pictures_are_told_in_words(site):
    assert [*site_links.faults(site), *site_links.imports(site)] == []
    page = (site / "reference/models/TarnDio.html").read_text()
    assert 'role="img" aria-label="Tarn-Dio, Ethernet: port 0 has outputs 0 to 5' in page


def shown(page):
    """What a browser makes of a page, scripts included."""
    if CHROMIUM is None:
        pytest.skip("chromium is not installed")
    command = [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--allow-file-access-from-files"]
    done = subprocess.run(
        [*command, "--virtual-time-budget=20000", "--dump-dom", page], capture_output=True, text=True, timeout=300
    )
    return done.stdout


@pytest.mark.parametrize(
    ("asked", "first"),
    [
        ("--drop", "reference/simulator/zvr-sim.html#cmdoption-zvr-sim-drop"),
        ("DI_readPort", "reference/modules/dio.html#pyzvr.DIOModule.DI_readPort"),
    ],
)
def test_a_reader_who_searches_sees_the_entry_first(site, asked, first):
    results = re.findall(
        r'<li><a href="([^"]*)"', shown((site / "search.html").as_uri() + "?q=" + asked).partition('class="search"')[2]
    )
    assert results[0] == first


def test_the_search_of_the_site_finds_everything_by_its_name(site):
    names = wanted_names()
    program = """
    const found = {};
    let best = [];
    _displayNextItem = results => { best = results.slice(-1); };
    for (const name of NAMES) {
        Search.query(name);
        found[name] = best.map(([page, title]) => title.split(".").pop());
    }
    document.body.textContent = JSON.stringify(found);
    """
    # The search page as it is, but that the results come here.
    search = (site / "_static/searchtools.js").read_text().replace("const _displayNextItem", "let _displayNextItem", 1)
    page_code = re.sub(r'<script src="_static/scripts/.*?</script>', "", (site / "search.html").read_text())
    page_code = page_code.replace('<script src="_static/searchtools.js"></script>', f"<script>{search}</script>")
    code = f"const NAMES = {json.dumps(names)};\naddEventListener('load', () => {{{program}}});"
    page = site / "search_test.html"
    page.write_text(page_code.replace("</body>", f"<script>{code}</script></body>"))
    dump = shown(page.as_uri())
    page.unlink()
    found = json.loads(html.unescape(re.search(r"<body[^>]*>(.*)</body>", dump, re.DOTALL)[1]))
    assert {name: best for name, best in found.items() if best != [name]} == {}
