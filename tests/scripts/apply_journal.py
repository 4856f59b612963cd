#!/usr/bin/env python3
"""Applies the changes of a rehearsal to the stored configuration.

Reads the stored configuration and the JSON report alone, and says where what
comes of it differs from the upgraded configuration that the rehearsal wrote.
"""

import argparse
import json
import sys
import xml.etree.ElementTree as ElementTree
from typing import Any, Dict, List, Optional, Tuple

from load_format import parsed

Element = ElementTree.Element
Change = Dict[str, Any]


def below(parent: Element, name: str) -> Element:
    """The container of that name, the first where there are several; made where there is none."""
    found = parent.find(name)
    if found is not None:
        return found
    return ElementTree.SubElement(parent, name)


def names(path: str) -> List[str]:
    return [name for name in path.split("/") if name]


class Entries:
    """The entries of lists by their keys, each list looked through once."""

    def __init__(self) -> None:
        self._by_keys: Dict[Tuple[Element, str, Tuple[str, ...]], Dict[Tuple[str, ...], Element]] = {}

    def find(self, parent: Element, name: str, keys: Dict[str, str]) -> Optional[Element]:
        of_list = (parent, name, tuple(keys))
        if of_list not in self._by_keys:
            by_keys: Dict[Tuple[str, ...], Element] = {}
            for entry in parent.findall(name):
                by_keys.setdefault(tuple((entry.findtext(key) or "").strip() for key in keys), entry)
            self._by_keys[of_list] = by_keys
        return self._by_keys[of_list].get(tuple(text.strip() for text in keys.values()))


class Journal:
    """The configuration while changes are applied to it."""

    def __init__(self, root: Element) -> None:
        self._root = root

    def _around(self, change: Change, entries: Entries) -> Tuple[Element, List[str]]:
        """The entry that the change's list is in, or the root, and the way from there."""
        at = self._root
        way = names(change["list"])
        for around in change.get("within", []):
            steps = len(names(around["list"]))
            _, at = self._entry(at, way[:steps], around["keys"], entries)
            way = way[steps:]
        return at, way

    @staticmethod
    def _entry(at: Element, way: List[str], keys: Dict[str, str], entries: Entries) -> Tuple[Element, Element]:
        """The element that an entry stands in, and the entry. Of several containers of a name each is looked through."""
        parents = [at]
        for name in way[:-1]:
            parents = [child for parent in parents for child in parent.findall(name)]
        for parent in parents:
            entry = entries.find(parent, way[-1], keys)
            if entry is not None:
                return parent, entry
        raise KeyError(f"{'/'.join(way)} {keys}")

    def create(self, change: Change) -> None:
        at, way = self._around(change, Entries())
        for name in way[:-1]:
            at = below(at, name)
        entry = ElementTree.SubElement(at, way[-1])
        for key, text in change["keys"].items():
            ElementTree.SubElement(entry, key).text = text
        self.set_leaves(entry, change)

    @staticmethod
    def set_leaves(entry: Element, change: Change) -> None:
        for leaf in change["leaves"]:
            *containers, name = names(leaf["name"])
            at = entry
            for container in containers:
                at = below(at, container)
            for old in at.findall(name):
                at.remove(old)
            after = leaf["after"]
            for text in after if isinstance(after, list) else [after]:
                if text is not None:
                    ElementTree.SubElement(at, name).text = text

    def apply(self, changes: List[Change]) -> None:
        # All rows are looked up before the first key changes: rows may take each other's places.
        entries = Entries()
        rows = [(change, *self._entry(*self._around(change, entries), (change.get("from") or change)["keys"], entries))
                for change in changes if change["path"] != "/" and change["fate"] != "new"]
        for change, parent, entry in rows:
            if change["fate"] == "removed":
                parent.remove(entry)
                continue
            for key, text in change["keys"].items():
                entry.find(key).text = text  # type: ignore[union-attr]
            self.set_leaves(entry, change)
        for change in changes:
            if change["path"] == "/":
                self.set_leaves(self._root, change)
            elif change["fate"] == "new":
                self.create(change)


def content(element: Element) -> str:
    """What an element holds, whatever the order, in one text; none for an empty container.

    The control characters that part its pieces cannot stand in XML.
    """
    if len(element) == 0:
        return (element.text or "").strip()
    inner = [(child.tag, content(child)) for child in filled(element)]
    pieces = sorted(f"{name}\x01{each}" for name, each in inner if each)
    return "\x02" + "\x03".join(pieces) + "\x04" if pieces else ""


def filled(element: Element) -> List[Element]:
    """The children that hold something: whether an empty container stands there says nothing."""
    return [child for child in element if len(child) or (child.text or "").strip()]


def rows_of(element: Element, path: str = "") -> List[str]:
    """Every leaf with its way and what stands beside it, a line each, for a comparison that tells the difference."""
    lines = []
    for child in filled(element):
        name = f"{path}/{child.tag}"
        lines += rows_of(child, name) if len(child) else [f"{name} {(child.text or '').strip()}"]
    return lines


def merged(root: Element) -> Element:
    """One container for all of the same name at the top and one below, as a result has them."""
    whole = ElementTree.Element("config")

    def put(target: Element, source: Element) -> None:
        for child in source:
            same = target.find(child.tag) if len(child) else None
            if same is not None and is_container(child) and is_container(same):
                put(same, child)
            else:
                target.append(child)

    def is_container(element: Element) -> bool:
        return all(len(child) > 0 for child in element)

    put(whole, root)
    return whole


def differences(stored: str, report: str, upgraded: str) -> List[str]:
    """What the stored configuration with the changes has that the upgraded one has not, and the other way round."""
    with open(report, encoding="utf-8") as file:
        changes = json.load(file)["changes"]
    root = merged(parsed(stored))
    Journal(root).apply(changes)
    made = content(root)
    written = content(merged(parsed(upgraded)))
    if made == written:
        return []
    made_lines = sorted(rows_of(root))
    written_lines = sorted(rows_of(parsed(upgraded)))
    lines = [f"- {line}" for line in set(made_lines) - set(written_lines)]
    lines += [f"+ {line}" for line in set(written_lines) - set(made_lines)]
    return sorted(lines) or ["the same leaves in other rows"]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("stored", metavar="STORED.xml")
    parser.add_argument("report", metavar="REPORT.json")
    parser.add_argument("upgraded", metavar="UPGRADED.xml")
    arguments = parser.parse_args()
    found = differences(arguments.stored, arguments.report, arguments.upgraded)
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
