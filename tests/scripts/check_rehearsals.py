#!/usr/bin/env python3
"""Checks rehearsals by what stands in the files before and after them.

A folder has NAME.xml (the stored configuration), NAME.upgraded.xml and
NAME.json (the report) of each. Counts, from the two configurations alone, the
prefix limits and actions that were rewritten, the neighbours' families that
were turned off, the rows that stayed behind and the references that lead
nowhere, and holds the findings of the report against them. Applies the
changes of the report to the stored configuration, which must give the other.
"""

import argparse
import ast
import json
import sys
from pathlib import Path
from typing import Any, Dict, Iterator, List, Optional, Set, Tuple

import apply_journal
from check_references import (BGP, CHECKS, ENTITY, FAMILY, JOIN, LISTEN, NETWORK, PEER, PEER_KEYS, RECORD, ROUTE_MAP,
                              ROUTER_FAMILY, RTM, RULE, RULE_KEYS, Key, Reference, Row, Tables, key)
from load_format import parsed

INTERNAL = "/internal/"
STATUS = BGP + "bgpPeerStatusTable/bgpPeerStatusEntry"
RTM_JOIN = RTM + "rtmMjTable/rtmMjEntry"
PROTOCOL = "/redist-protocol"
PROTOCOL_KEYS = ("rtm-index", "entry")
FAMILY_KEYS = PEER_KEYS + ("bgpPeerAfiSafiAfi", "bgpPeerAfiSafiSafi")
MAP_KEYS = ("bgpRmEntIndex", "bgpRouteMapIndex", "bgpRouteMapEntryIndex")
GLOBAL_INDEX = "1"
FIRST_VRF = 65537
BGP_TAG = "555337807"

# The tables that move to the global index, by their keys; the first one is the index.
MOVED = {
    INTERNAL + "rtmRedistEntry-hidden/rtmRedistEntry-set": ("entity", "rtm-index", "address", "length"),
    INTERNAL + "rtmRedistEntry-hidden/rtmRedistEntry-get": ("entity", "rtm-index", "entry"),
    **{INTERNAL + f"bgpRouteMapEntry-hidden/bgpRouteMapEntry{suffix}": ("entity", "map", "entry")
       for suffix in ("", "-get", "-set")},
    **{INTERNAL + f"bgpConfigEntry-hidden/bgpConfigEntry{suffix}": ("entity", "index")
       for suffix in ("", "-get", "-set")},
    INTERNAL + "bgpPeerEntry-global": ("entity", "peer"),
    INTERNAL + "bgpPeerEntry-prefix-list-hidden": ("entity", "peer"),
    INTERNAL + "match-ip-list-hidden": ("entity", "list"),
    INTERNAL + "neighbor-valid-hidden": ("entity", "address"),
    INTERNAL + "route-policy-valid-hidden": ("entity", "name"),
    INTERNAL + "router-afi-safi-hidden": ("entity", "afi", "safi"),
    INTERNAL + "neighbor-afi-safi-hidden": ("entity", "address", "afi", "safi"),
    ENTITY: ("bgpRmEntIndex",),
    ROUTER_FAMILY: ("bgpRmEntIndex", "bgpRmAfiSafiAfi", "bgpRmAfiSafiSafi"),
    PEER: PEER_KEYS,
    FAMILY: FAMILY_KEYS,
    STATUS: PEER_KEYS,
    ROUTE_MAP: MAP_KEYS,
    RECORD: ("bgpRmEntIndex", "bgpConfigIndex"),
    JOIN: ("bgpRmEntIndex", "bgpRmAfmJoin"),
    NETWORK: ("bgpNmEntIndex",),
    LISTEN: ("bgpNmEntIndex", "bgpNmListenIndex"),
}


class Upgrade:
    """The configurations before and after one upgrade."""

    def __init__(self, stored: Path, upgraded: Path) -> None:
        self.before = Tables(parsed(str(stored)))
        self.after = Tables(parsed(str(upgraded)))
        entities = self.before.rows(ENTITY)
        self.entity = entities[0] if len(entities) == 1 else {}
        self.rekeyed = "bgpRmEntLocalAs" in self.entity and not self._is_mapped()

    def _is_mapped(self) -> bool:
        own = ("0", self.entity["bgpRmEntLocalAs"])
        return any((vrf["vrf-idx"], row["as"]) == own
                   for vrf, row in self.before.inside("/bgp-internal/bgp-vrf", "as-to-bgp-idx"))

    def pairs(self, path: str, names: Tuple[str, ...]) -> Iterator[Tuple[Row, Row]]:
        """Each stored row with the one that it has become: under its own index, or else under the global one."""
        after = {key(row, *names): row for row in self.after.rows(path)}
        for row in self.before.rows(path):
            own = key(row, *names)
            yield row, after.get(own) or after.get((GLOBAL_INDEX,) + own[1:], {})

    def rewritten(self, path: str, names: Tuple[str, ...], leaf: str) -> int:
        """Rows that had a value and have another; where there are none, those that had none and have one."""
        pairs = list(self.pairs(path, names))
        another = sum(1 for before, after in pairs if leaf in before and after.get(leaf) != before[leaf])
        return another or sum(1 for before, after in pairs if leaf not in before and leaf in after)

    def families_off(self) -> int:
        leaf = "bgpPeerAfiSafiDisable"
        return sum(1 for before, after in self.pairs(FAMILY, FAMILY_KEYS)
                   if before.get(leaf) != "true" and after.get(leaf) == "true")

    def left(self) -> Optional[int]:
        """Rows that the re-keying moves and that are where they were.

        None where the entity has a VRF instance's index: the files do not tell what is left from what is made there.
        """
        if not self.rekeyed:
            return 0
        index = self.entity["bgpRmEntIndex"]
        if int(index) >= FIRST_VRF:
            return None
        count = 0
        for path, names in MOVED.items():
            stored = self.before.keys(path, *names)
            for row in self.after.rows(path):
                own = key(row, *names)
                made_before = own[0] == index and (path != FAMILY or own[-1] == "mplsBgpVpn")
                count += own[0] != GLOBAL_INDEX and (own in stored or made_before)
                # A listen row's number is the index as well, or one more.
                count += path == LISTEN and own[0] == GLOBAL_INDEX and own[1] not in ("1", "2") and own in stored
        return count + self._left_joins() + len(self.rules_left()) + len(self.protocols_left())

    def _left_joins(self) -> int:
        names = ("rtmMjRtmFteIndex", "rtmMjSlaveFteId", "rtmMjSlaveType")
        stored = self.before.keys(RTM_JOIN, *names)
        joins = [key(row, *names) for row in self.after.rows(RTM_JOIN)]
        return sum(1 for join in joins if join[2] == "ariPrtnrBgp" and join[1] != GLOBAL_INDEX
                   and (join in stored or join[1] == self.entity["bgpRmEntIndex"]))

    def rules_left(self) -> Set[Key]:
        return self._stuck(RULE, RULE_KEYS, "rtmRedistInfoDest", "bgp")

    def protocols_left(self) -> Set[Key]:
        return self._stuck(PROTOCOL, PROTOCOL_KEYS, "protocol-xmltag", BGP_TAG)

    def _stuck(self, path: str, names: Tuple[str, ...], leaf: str, moves: str) -> Set[Key]:
        """The numbers move by as much as the entity's index does, one after the other: those that cannot."""
        if not self.rekeyed:
            return set()
        rows = [(key(row, *names), row.get(leaf) == moves) for row in self.before.rows(path)]
        shift = int(GLOBAL_INDEX) - int(self.entity["bgpRmEntIndex"])
        taken = {(int(own[0]), int(own[1])) for own, _ in rows}
        stuck: Set[Key] = set()
        for number in sorted((int(own[0]), int(own[1])) for own, moved in rows if moved):
            target = (number[0], (number[1] + shift) % 2**32)
            if target != number and target in taken:
                stuck.add((str(number[0]), str(number[1])))
            else:
                taken.remove(number)
                taken.add(target)
        return stuck


# What the report's references are about: not what the command that draws routers agrees with itself on besides.
KINDS = ("entity of ", "neighbour of ", "bgpPeerAfiSafi", "bgpPeerLocalNm", "bgpRouteMapMaPrefixList", "bgpNmEntRmIndex",
         "listen row", "bgpRmAfmPartnerIndex", "rtmMj", "rtmRedistFteIndex", "redist-protocol", "VRF of ", "AS of the router",
         "hidden bgpRouteMapEntry-", "hidden bgpConfigEntry-", "hidden rtmRedistEntry-get")


# A row that stays behind has its key from before: that it refers to nothing there is told with the row.
BY_KEY = ("entity of ", "neighbour of ", "listen row", "rtmMj", "hidden bgp", "rtmRedistFteIndex",
          "redist-protocol")


def of_row_left(upgrade: Upgrade, reference: Reference) -> bool:
    if not upgrade.rekeyed or not reference.kind.startswith(BY_KEY):
        return False
    row: Row = ast.literal_eval(reference.place)
    if reference.kind == "rtmRedistFteIndex":
        return key(row, *RULE_KEYS) in upgrade.rules_left()
    if reference.kind == "redist-protocol":
        return key(row, *PROTOCOL_KEYS) in upgrade.protocols_left()
    own = [row[name] for name in ("bgpRmEntIndex", "bgpNmEntIndex", "rtmMjSlaveFteId", "entity") if name in row]
    return own[0] != GLOBAL_INDEX and int(own[0]) < FIRST_VRF and row.get("rtmMjSlaveType") != "ariPrtnrRtm"


def dangling(upgrade: Upgrade) -> Optional[int]:
    """References of the result that lead nowhere; none where left() tells none."""
    if upgrade.left() is None:
        return None
    return sum(1 for check in CHECKS for reference in check(upgrade.after)
               if reference.kind.startswith(KINDS) and not reference.holds and not of_row_left(upgrade, reference))


def counted(report: Dict[str, Any], finding: str, step: Optional[str] = None) -> int:
    return sum(each["count"] for each in report["findings"]
               if each["id"] == finding and step in (None, each["step"]))


def mistakes(folder: Path, name: str) -> List[str]:
    stored, upgraded, document = (folder / f"{name}{end}" for end in (".xml", ".upgraded.xml", ".json"))
    report = json.loads(document.read_text(encoding="utf-8"))
    upgrade = Upgrade(stored, upgraded)
    limits = upgrade.rewritten(PEER, PEER_KEYS, "bgpPeerConfigMaxPrfx")
    actions = (upgrade.rewritten(PEER, PEER_KEYS, "bgpPeerConfigDropWarn")
               + upgrade.rewritten(FAMILY, FAMILY_KEYS, "bgpPeerAfiSafiConfigDropWarn"))
    both = {
        "limits rewritten": (limits, counted(report, "limit-rewritten")),
        "actions rewritten": (actions, counted(report, "action-rewritten")),
        "families off": (upgrade.families_off(), counted(report, "family-off")),
        "references broken": (dangling(upgrade), sum(each["count"] for each in report["findings"]
                                                     if each["id"] == "reference-broken"
                                                     and "by the move" not in each["sentence"])),
        "rows left": (upgrade.left(), counted(report, "row-left", "update_rm_index")),
    }
    found = [f"{name}: {what}: {ours} by the files, {theirs} by the report"
             for what, (ours, theirs) in both.items() if ours not in (None, theirs)]
    found += [f"{name}: {line}" for line in apply_journal.differences(str(stored), str(document), str(upgraded))]
    return found


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    folder = parser.parse_args().folder
    names = sorted(path.name[:-len(".upgraded.xml")] for path in folder.glob("*.upgraded.xml"))
    found = [line for name in names for line in mistakes(folder, name)]
    for line in found[:100]:
        print(line)
    print(f"{len(names)} rehearsals, {len(found)} mistakes")
    return 1 if found or not names else 0


if __name__ == "__main__":
    sys.exit(main())
