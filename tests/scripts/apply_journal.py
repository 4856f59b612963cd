#!/usr/bin/env python3
"""Applies the changes of a rehearsal to the stored configuration.

Reads the stored configuration and the JSON report alone, and says where what
comes of it differs from the upgraded configuration that the rehearsal wrote.
Namespaces are not looked at: no two modules have elements of one name in one
place.
"""

import argparse
import json
import sys
import xml.etree.ElementTree as ElementTree
from typing import Any, Dict, List, Optional, Tuple

Element = ElementTree.Element
Change = Dict[str, Any]


def local_name(element: Element) -> str:
    return element.tag.rsplit("}", 1)[-1]


def named(parent: Element, name: str) -> List[Element]:
    return [child for child in parent if local_name(child) == name]


def below(parent: Element, name: str, make: bool) -> Optional[Element]:
    """The container of that name, the first where there are several."""
    found = named(parent, name)
    if found:
        return found[0]
    return ElementTree.SubElement(parent, name) if make else None


def has_keys(entry: Element, keys: Dict[str, str]) -> bool:
    return all(any((leaf.text or "").strip() == text.strip() for leaf in named(entry, name))
               for name, text in keys.items())


def names(path: str) -> List[str]:
    return [name for name in path.split("/") if name]


class Journal:
    """The configuration while changes are applied to it."""

    def __init__(self, root: Element) -> None:
        self._root = root

    def _parent(self, change: Change, make: bool) -> Tuple[Element, str]:
        """Where entries of the change's list stand, and what they are called."""
        at = self._root
        way = names(change["list"])
        for around in change.get("within", []):
            steps = names(around["list"])
            at = self._entry(at, way[:len(steps)], around["keys"])
            way = way[len(steps):]
        for name in way[:-1]:
            found = below(at, name, make)
            if found is None:
                raise KeyError(change["path"])
            at = found
        return at, way[-1]

    @staticmethod
    def _entry(at: Element, way: List[str], keys: Dict[str, str]) -> Element:
        places = [at]
        for name in way:
            places = [child for place in places for child in named(place, name)]
        for entry in places:
            if has_keys(entry, keys):
                return entry
        raise KeyError(f"{'/'.join(way)} {keys}")

    def find(self, change: Change, keys: Dict[str, str]) -> Tuple[Element, Element]:
        """An entry, and the element it stands in. Of several containers of a name each is looked through."""
        parents = [self._root]
        way = names(change["list"])
        for around in change.get("within", []):
            steps = names(around["list"])
            parents = [self._entry(parents[0], way[:len(steps)], around["keys"])]
            way = way[len(steps):]
        for name in way[:-1]:
            parents = [child for parent in parents for child in named(parent, name)]
        for parent in parents:
            for entry in named(parent, way[-1]):
                if has_keys(entry, keys):
                    return parent, entry
        raise KeyError(f"{change['list']} {keys}")

    def create(self, change: Change) -> None:
        parent, name = self._parent(change, True)
        entry = ElementTree.SubElement(parent, name)
        for key, text in change["keys"].items():
            ElementTree.SubElement(entry, key).text = text
        self.set_leaves(entry, change)

    @staticmethod
    def set_leaves(entry: Element, change: Change) -> None:
        for leaf in change["leaves"]:
            *containers, name = names(leaf["name"])
            at = entry
            for container in containers:
                found = below(at, container, True)
                assert found is not None
                at = found
            for old in named(at, name):
                at.remove(old)
            after = leaf["after"]
            for text in after if isinstance(after, list) else [after]:
                if text is not None:
                    ElementTree.SubElement(at, name).text = text

    def apply(self, changes: List[Change]) -> None:
        # All rows are looked up before the first key changes: rows may take each other's places.
        rows = [(change, *self.find(change, (change.get("from") or change)["keys"]))
                for change in changes if change["path"] != "/" and change["fate"] != "new"]
        for change, parent, entry in rows:
            if change["fate"] == "removed":
                parent.remove(entry)
                continue
            for key, text in change["keys"].items():
                named(entry, key)[0].text = text
            self.set_leaves(entry, change)
        for change in changes:
            if change["path"] == "/":
                self.set_leaves(self._root, change)
            elif change["fate"] == "new":
                self.create(change)


def content(element: Element) -> Any:
    """What an element holds, whatever the order; none for an empty container."""
    if len(element) == 0:
        return (element.text or "").strip()
    inner = [(local_name(child), content(child)) for child in filled(element)]
    return sorted(((name, each) for name, each in inner if each != []), key=repr)


def filled(element: Element) -> List[Element]:
    """The children that hold something: whether an empty container stands there says nothing."""
    return [child for child in element if len(child) or (child.text or "").strip()]


def rows_of(element: Element, path: str = "") -> List[str]:
    """Every leaf with its way and what stands beside it, a line each, for a comparison that tells the difference."""
    lines = []
    for child in filled(element):
        name = f"{path}/{local_name(child)}"
        lines += rows_of(child, name) if len(child) else [f"{name} {(child.text or '').strip()}"]
    return lines


def merged(root: Element) -> Element:
    """One container for all of the same name at the top and one below, as a result has them."""
    whole = ElementTree.Element("config")

    def put(target: Element, source: Element, lists: frozenset) -> None:
        for child in source:
            same = [each for each in named(target, local_name(child))] if len(child) else []
            if same and is_container(child) and is_container(same[0]):
                put(same[0], child, lists)
            else:
                target.append(child)

    def is_container(element: Element) -> bool:
        return all(len(child) > 0 for child in element)

    put(whole, root, frozenset())
    return whole


def differences(stored: str, report: str, upgraded: str) -> List[str]:
    """What the stored configuration with the changes has that the upgraded one has not, and the other way round."""
    with open(report, encoding="utf-8") as file:
        changes = json.load(file)["changes"]
    root = merged(ElementTree.parse(stored).getroot())
    Journal(root).apply(changes)
    made = content(root)
    written = content(merged(ElementTree.parse(upgraded).getroot()))
    if made == written:
        return []
    made_lines = sorted(rows_of(root))
    written_lines = sorted(rows_of(ElementTree.parse(upgraded).getroot()))
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
