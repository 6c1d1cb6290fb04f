#!/usr/bin/python3
"""Renders the page and the console summary of rollouts and looks at them in a headless Chromium.

  tests/rollout/page/page_test.py TREE BUILD_DIR DIR

Everything is written below DIR. At the width of a phone and of a desk, light and dark, no page may
scroll sideways, lack a server, say a word on the browser's console, or hold markup, links or
characters that a text of the data brought along. Skipped with 77 where a program for it is missing.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import urllib.parse

import jsonschema
import yaml

import fixture

try:
    import browser
except ImportError:
    browser = None

NEEDED = {"ansible-playbook": "ansible-core", "chromium": "chromium", "chromedriver": "chromium-driver"}
KINDS = ("mixed", "one", "many", "hostile")
CARDS = {"mixed": 8, "one": 0, "many": 38}
# What doesn't show, or turns the direction of writing; line feeds and tabs may stay.
UNSEEN = re.compile("[\0-\x08\x0b-\x1f\x7f-\x9f\xad\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]")
# All that the template itself is made of.
ELEMENTS = set("""html head meta link title style body header main section footer article h1 h2 h3 p ul ol
    li dl dt dd a b strong small span code wbr details summary table thead tbody tr th td div time""".split())
LOOK = """
const all = [...document.querySelectorAll('*')];
return {
  width: document.documentElement.scrollWidth,
  cut: all.filter(e => e.scrollWidth > e.clientWidth + 1 && getComputedStyle(e).overflowX !== 'visible'
      && !e.closest('thead')).map(e => e.outerHTML.slice(0, 99)),
  narrowest: Math.min(...[...document.querySelectorAll('tbody td')].map(e => e.offsetWidth || 999)),
  rows: [...document.querySelectorAll('tbody tr')].map(e => e.innerText),
  states: [...document.querySelectorAll('tbody td:nth-child(2) .badge')].map(e => e.innerText),
  cards: document.querySelectorAll('article').length,
  named: [...document.querySelectorAll('article')].map(e => e.innerText).join('\\n'),
  elements: [...new Set(all.map(e => e.localName))],
  handlers: all.filter(e => [...e.attributes].some(a => /^on|^src|^style$/.test(a.name))).length,
  links: [...document.querySelectorAll('a')].map(e => e.getAttribute('href')),
  targets: [...document.querySelectorAll('[id]')].map(e => '#' + e.id),
  ground: getComputedStyle(document.body).backgroundColor,
  title: document.title, text: document.body.textContent};
"""
failures = 0


def expect(kept, what):
    global failures
    if not kept:
        failures += 1
        print("FAILED:", what)


def check_data(tree, place, states):
    path = tree / "rollout/report.schema.json"
    schema = json.loads(path.read_text())
    known = schema["$defs"]["host"]["properties"]["state"]["enum"]
    expect(sorted(known) == sorted(state["state"] for state in states), "states of schema and table")
    validator = jsonschema.Draft202012Validator(schema, resolver=jsonschema.RefResolver(path.as_uri(), schema))
    for kind in KINDS:
        for error in validator.iter_errors(json.loads((place / kind / "report.json").read_text())):
            expect(False, f"{kind}/report.json: {error.json_path}: {error.message[:200]}")


def check_readme(tree):
    """The variables, each described in a row of a table."""
    rows = (tree / "rollout/README.md").read_text()
    described = set(re.findall(r"^\| `(zentrix_\w+)`", rows, re.M))
    arguments = (tree / "rollout/roles/zentrix/meta/argument_specs.yml").read_text()
    known = set(re.findall(r"^ +(zentrix_\w+):", arguments, re.M))
    expect(described == known, f"variables of rollout/README.md and of the role: {described ^ known}")


def render(tree, place):
    environment = {**os.environ, "HOME": str(place), "TMPDIR": str(place), "ANSIBLE_NOCOLOR": "1",
                   "ANSIBLE_LOCAL_TEMP": str(place / "ansible"), "ANSIBLE_REMOTE_TEMP": str(place / "ansible")}
    variables = {"tree": str(tree), "rollouts": [str(place / kind) for kind in KINDS]}
    subprocess.run(["ansible-playbook", "-i", "localhost,", "-e", json.dumps(variables),
                    tree / "tests/rollout/page/render.yml"], env=environment, check=True)


def check_links(place, kind, links, targets):
    for link in links:
        if link.startswith("#"):
            expect(link in targets, f"{kind}: nothing at {link}")
        elif kind == "hostile":
            expect(re.fullmatch(r"\./[\w.%/~-]+", link), f"{kind}: link {link}")
        else:
            path = place / kind / urllib.parse.unquote(link)
            expect(link.startswith("./") and path.is_file(), f"{kind}: no file for {link}")


def check_page(driver, place, kind, states, hosts, width, scheme):
    what = f"{kind} at {width}, {scheme}"
    browser.open_page(driver, place / kind / "report.html", width, scheme=scheme)
    # What is folded away must fit, too.
    driver.execute_script("document.querySelectorAll('details').forEach(e => e.open = true)")
    seen = driver.execute_script(LOOK)
    expect(seen["width"] <= width, f"{what}: scrolls sideways, {seen['width']} pixels")
    expect(not seen["cut"], f"{what}: cut off: {seen['cut']}")
    expect(seen["narrowest"] > (240 if width < 600 else 90), f"{what}: a cell of {seen['narrowest']} pixels")
    expect(driver.get_log("browser") == [], f"{what}: says something on the browser's console")
    labels = {state["state"]: state["label"] for state in states}
    sorted_hosts = sorted(hosts, key=lambda host: list(labels).index(host["state"]))
    expect(len(seen["rows"]) == len(hosts), f"{what}: {len(seen['rows'])} rows for {len(hosts)} servers")
    for host, row, badge in zip(sorted_hosts, seen["rows"], seen["states"]):
        expect(kind == "hostile" or row.startswith(host["host"]), f"{what}: no row for {host['host']}")
        expect(labels[host["state"]] in badge, f"{what}: {host['host']} shown as {badge}")
    needy = {state["state"] for state in states if state["needs_human"]}
    for host in hosts if kind != "hostile" else []:
        named = re.search(rf"(^|\s){re.escape(host['host'])}(\s|$)", seen["named"])
        expect(bool(named) == (host["state"] in needy), f"{what}: {host['host']} among those in need")
    expect(set(seen["elements"]) <= ELEMENTS, f"{what}: elements {set(seen['elements']) - ELEMENTS}")
    expect(seen["handlers"] == 0, f"{what}: attributes that a page of this kind has not")
    expect(not UNSEEN.search(seen["text"] + seen["title"]), f"{what}: characters that don't show")
    expect(kind != "hostile" or ("{{ 7 * 191 }}" in seen["text"] and "[U+202E]" in seen["text"]),
           f"{what}: the texts have changed")
    check_links(place, kind, seen["links"], seen["targets"])
    return seen


def check_values(seen):
    """Of several runs the first tells what was before, the last what is now."""
    rows = {row.split()[0]: " ".join(row.split()) for row in seen["rows"]}
    for host, texts in {
            "web1": ["BOOT7.10.4 → 7.12.5", "not needed"],
            "web2": ["BOOT7.10.4 → 7.12.5", "exit status 0, 2 runs", "rebooted", "kvlnfwup2.log"],
            "db1": ["mfw1 through 020000000001: FAILED (exit code 1)", "bc through 020000000001: IMAGE MISSING",
                    "020000000003: CRC CHECK FAILED", "FIRMWARE CORRUPTED"],
            "db2": ["020000000001 DOWN, no driver", "exit status 172"],
            "db3": ["BOOT7.10.4 → not known", "020000000001 DOWN, no driver"],
            "web3": ["flashed: bc stamp"],
            "web5": ["7.12b.4.3a since"],
            "store1": ["IPMI6.2.1 → 6.4.2", "EFI7.8.2", "stamp empty → 7.12b.4.3a"]}.items():
        for text in texts:
            expect(text in rows[host], f"row of {host} lacks {text}: {rows[host]}")


def check_summary(place, kind, in_need, hosts, cards):
    """A line for each of the first cards, and one below with the names where it is several servers'."""
    text = (place / kind / "summary.txt").read_text()
    lines = [line for line in text.splitlines() if not line.startswith("    ")]
    expect((f"{len(in_need)} of {hosts} server" if in_need else "no server needs") in lines[0], f"{kind}: {lines[0]}")
    expect(len(lines) == 1 + min(cards, 20) + (cards > 20), f"{kind}: {len(lines)} lines for {cards} cards")
    expect(all(len(line) < 400 * 8 for line in lines) and not UNSEEN.search(text), f"{kind}: summary's form")
    for host in in_need if kind == "mixed" else []:
        expect(re.search(rf"^ +(\S+, )*{host['host']}\b", text, re.M), f"no line for {host['host']}: {text}")


def main():
    tree, build, place = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    missing = [package for program, package in NEEDED.items() if not shutil.which(program)]
    missing += [] if browser else ["python3-selenium"]
    if missing:
        print("not tested, for want of", ", ".join(missing))
        return 77
    shutil.rmtree(place, ignore_errors=True)
    fixture.make(tree, build, place)
    states = yaml.safe_load((tree / "rollout/roles/zentrix/vars/states.yml").read_text())["zentrix_states"]
    needy = {state["state"] for state in states if state["needs_human"]}
    check_data(tree, place, states)
    check_readme(tree)
    render(tree, place)
    driver = browser.start(place)
    try:
        grounds = set()
        for kind in KINDS:
            hosts = json.loads((place / kind / "report.json").read_text())["hosts"]
            for width, scheme in ((360, "dark"), (1280, "light")):
                seen = check_page(driver, place, kind, states, hosts, width, scheme)
                grounds.add(seen["ground"])
            if kind == "mixed":
                check_values(seen)
            check_summary(place, kind, [host for host in hosts if host["state"] in needy], len(hosts), seen["cards"])
            # However many racks fail alike.
            expect(kind not in CARDS or seen["cards"] == CARDS[kind], f"{kind}: {seen['cards']} cards")
        expect(len(grounds) == 2, "light and dark look the same")
    finally:
        driver.quit()
    return 1 if failures else 0


sys.exit(main())
