#!/usr/bin/env python3
"""Checks what the tables of stored configurations refer to.

Reads files in ConfD's XML load format, by the data model's own list of
references and with nothing of the command that drew them: every row that is
referred to has to be there, hidden rows have to agree with visible ones, and
the numbers that are handed out next have to be free.
"""

import argparse
import ipaddress
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from typing import Dict, Iterator, List, NamedTuple, Set, Tuple

from load_format import parsed

Row = Dict[str, str]
Key = Tuple[str, ...]


class Reference(NamedTuple):
    kind: str
    place: str
    holds: bool


PEER_KEYS = (
    "bgpRmEntIndex", "bgpPeerLocalAddrType", "bgpPeerLocalAddr", "bgpPeerLocalPort",
    "bgpPeerRemoteAddrType", "bgpPeerRemoteAddr", "bgpPeerRemotePort", "bgpPeerLocalAddrScopeId",
)
RULE_KEYS = ("rtmRedistFteIndex", "rtmRedistEntryId")
MAP_KEYS = ("bgpRmEntIndex", "bgpRouteMapIndex", "bgpRouteMapEntryIndex")


class Tables:
    """The rows of one configuration, by their path."""

    def __init__(self, root: ElementTree.Element) -> None:
        self._elements: Dict[str, List[ElementTree.Element]] = {}
        self._rows: Dict[str, List[Row]] = {}  # of the paths asked for
        self._add(root, "")

    def _add(self, parent: ElementTree.Element, path: str) -> None:
        for child in parent:
            below = f"{path}/{child.tag}"
            self._elements.setdefault(below, []).append(child)
            self._add(child, below)

    def rows(self, path: str) -> List[Row]:
        if path not in self._rows:
            self._rows[path] = [leaves(element) for element in self._elements.get(path, [])]
        return self._rows[path]

    def inside(self, path: str, inner: str) -> Iterator[Tuple[Row, Row]]:
        """Each row at the path with each of the rows named so within it."""
        for element in self._elements.get(path, []):
            for child in element:
                if child.tag == inner:
                    yield leaves(element), leaves(child)

    def keys(self, path: str, *names: str) -> Set[Key]:
        return {key(row, *names) for row in self.rows(path)}

    def texts(self, path: str) -> List[str]:
        return [element.text or "" for element in self._elements.get(path, [])]


def leaves(element: ElementTree.Element) -> Row:
    return {child.tag: child.text or "" for child in element if len(child) == 0}


def key(row: Row, *names: str) -> Key:
    return tuple(row.get(name, "") for name in names)


def text_of_octets(octets: str) -> str:
    return str(ipaddress.ip_address(bytes.fromhex(octets.replace(":", ""))))


BGP = "/DC-BGP-MIB/"
RTM = "/DC-RTM-MIB/"
PEER = BGP + "bgpPeerTable/bgpPeerEntry"
ROUTER_FAMILY = BGP + "bgpRmAfiSafiTable/bgpRmAfiSafiEntry"
RECORD = BGP + "bgpConfigTable/bgpConfigEntry"
FAMILY = BGP + "bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry"
JOIN = BGP + "bgpRmAfmJoinTable/bgpRmAfmJoinEntry"
NETWORK = BGP + "bgpNmEntTable/bgpNmEntEntry"
LISTEN = BGP + "bgpNmListenTable/bgpNmListenEntry"
ROUTE_MAP = BGP + "bgpRouteMapTable/bgpRouteMapEntry"
ENTITY = BGP + "bgpRmEntTable/bgpRmEntEntry"
RTM_ENTITY = RTM + "rtmEntityTable/rtmEntityEntry"
RULE = RTM + "rtmRedistTable/rtmRedistEntry"
ACCESS = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry"
ACCESS_HIDDEN = "/internal/aallPreAccessListEntry-hidden/"
RULE_HIDDEN = "/internal/rtmRedistEntry-hidden/"
NAMES = "/prefix-list-internal/"


def of_entity(tables: Tables) -> Iterator[Reference]:
    entities = tables.keys(ENTITY, "bgpRmEntIndex")
    for path in (PEER, ROUTER_FAMILY, JOIN, ROUTE_MAP, RECORD):
        for row in tables.rows(path):
            yield Reference(f"entity of {path}", str(row), key(row, "bgpRmEntIndex") in entities)


def of_neighbors(tables: Tables) -> Iterator[Reference]:
    peers = tables.keys(PEER, *PEER_KEYS)
    maps = tables.keys(ROUTE_MAP, "bgpRmEntIndex", "bgpRouteMapIndex")
    networks = tables.keys(NETWORK, "bgpNmEntIndex")
    for path in (FAMILY, BGP + "bgpPeerStatusTable/bgpPeerStatusEntry"):
        for row in tables.rows(path):
            yield Reference(f"neighbour of {path}", str(row), key(row, *PEER_KEYS) in peers)
    for row in tables.rows(FAMILY):
        for leaf in ("bgpPeerAfiSafiInMapIndex", "bgpPeerAfiSafiOutMapIndex"):
            if row.get(leaf, "0") != "0":
                yield Reference(leaf, str(row), key(row, "bgpRmEntIndex", leaf) in maps)
    for row in tables.rows(PEER):
        if row.get("bgpPeerLocalNm", "0") != "0":
            yield Reference("bgpPeerLocalNm", str(row), key(row, "bgpPeerLocalNm") in networks)


def of_families(tables: Tables) -> Iterator[Reference]:
    """A family that a neighbour has on needs the router's own one up, unless the router has yet to learn IPv6."""
    up = {key(row, "bgpRmEntIndex", "bgpRmAfiSafiAfi", "bgpRmAfiSafiSafi")
          for row in tables.rows(ROUTER_FAMILY) if row.get("bgpRmAfiSafiAdminStatus") == "up"}
    without_ipv6 = {row["bgpRmEntIndex"] for row in tables.rows(ENTITY) if row.get("bgpRmEntSupportIpv6") == "false"}
    for row in tables.rows(FAMILY):
        if row.get("bgpPeerAfiSafiDisable") == "false":
            family = key(row, "bgpRmEntIndex", "bgpPeerAfiSafiAfi", "bgpPeerAfiSafiSafi")
            waits = family[1:] == ("ipv6", "unicast") and row["bgpRmEntIndex"] in without_ipv6
            yield Reference("family in use", str(row), waits or family in up)


def of_policies(tables: Tables) -> Iterator[Reference]:
    lists = tables.keys(ACCESS, "aallPreAccessListListIndex") | tables.keys(NAMES + "idx-to-name", "idx")
    for row in tables.rows(ROUTE_MAP):
        if row.get("bgpRouteMapMaPrefixList", "0") != "0":
            yield Reference("bgpRouteMapMaPrefixList", str(row), key(row, "bgpRouteMapMaPrefixList") in lists)
    numbers = tables.keys(NAMES + "name-to-idx", "name", "idx")
    names = tables.keys(NAMES + "idx-to-name", "val", "idx")
    yield from equal("name and number of a prefix list", numbers, names)
    yield from equal("prefix list and its name",
                     tables.keys("/prefix-list", "name"), tables.keys(NAMES + "name-to-idx", "name"))


def equal(kind: str, one: Set[Key], other: Set[Key]) -> Iterator[Reference]:
    for each in sorted(one | other):
        yield Reference(kind, str(each), each in one and each in other)


def of_network_manager(tables: Tables) -> Iterator[Reference]:
    entities = tables.keys(ENTITY, "bgpRmEntIndex")
    networks = tables.keys(NETWORK, "bgpNmEntIndex")
    for row in tables.rows(NETWORK):
        if "bgpNmEntRmIndex" in row:
            yield Reference("bgpNmEntRmIndex", str(row), key(row, "bgpNmEntRmIndex") in entities)
    for row in tables.rows(LISTEN):
        yield Reference("listen row", str(row), key(row, "bgpNmEntIndex") in networks)


def of_rtm(tables: Tables) -> Iterator[Reference]:
    rtms = tables.keys(RTM_ENTITY, "rtmEntityFteIndex")
    slaves = {"ariPrtnrRtm": rtms, "ariPrtnrBgp": tables.keys(ENTITY, "bgpRmEntIndex")}
    for row in tables.rows(JOIN):
        if row["bgpRmAfmJoin"] in ("1", "2") and "bgpRmAfmPartnerIndex" in row:
            yield Reference("bgpRmAfmPartnerIndex", str(row), key(row, "bgpRmAfmPartnerIndex") in rtms)
    for row in tables.rows(RTM + "rtmMjTable/rtmMjEntry"):
        slave = row["rtmMjSlaveType"]
        yield Reference("rtmMjRtmFteIndex", str(row), key(row, "rtmMjRtmFteIndex") in rtms)
        yield Reference(f"rtmMjSlaveFteId {slave}", str(row), key(row, "rtmMjSlaveFteId") in slaves[slave])
    for row in tables.rows(RULE):
        yield Reference("rtmRedistFteIndex", str(row), key(row, "rtmRedistFteIndex") in rtms)
    rules = tables.keys(RULE, *RULE_KEYS)
    for row in tables.rows("/redist-protocol"):
        yield Reference("redist-protocol", str(row), key(row, "rtm-index", "entry") in rules)


def of_vrfs(tables: Tables) -> Iterator[Reference]:
    config = "/internal/vrf-config/"
    named = tables.keys(config + "stringTOindex", "name")
    for path, leaf in ((ENTITY, "bgpRmEntVrfName"), (NETWORK, "bgpNmEntVrfName"), ("/router/bgp/vrf", "name")):
        for row in tables.rows(path):
            if row.get(leaf, ""):
                yield Reference(f"VRF of {path}", str(row), key(row, leaf) in named)
    yield from equal("name and number of a VRF", tables.keys(config + "stringTOindex", "name", "vrf-idx"),
                     tables.keys(config + "indexTOstring", "vname", "index"))
    numbers = tables.keys(ENTITY, "bgpRmEntLocalAs")
    for row in tables.rows("/router/bgp"):
        if "as-number" in row:  # the router, not the container of its settings
            yield Reference("AS of the router", str(row), key(row, "as-number") in numbers)
    vrfs = "/bgp-internal/bgp-vrf"
    of_as = tables.inside(vrfs, "as-to-bgp-idx")
    of_index = tables.inside(vrfs, "idx-to-bgp-as")
    yield from equal("AS and instance",
                     {key(vrf, "vrf-idx") + key(row, "as", "inst-idx") for vrf, row in of_as},
                     {key(vrf, "vrf-idx") + key(row, "as-number", "idx") for vrf, row in of_index})


def of_hidden_rows(tables: Tables) -> Iterator[Reference]:
    rules = {key(row, *RULE_KEYS) for row in tables.rows(RULE)}
    networks = tables.keys(RULE, "rtmRedistFteIndex", "rtmRedistAddrFilter", "rtmRedistAddrFilterLen")
    visible = {
        "bgpRouteMapEntry": (tables.keys(ROUTE_MAP, *MAP_KEYS), ("entity", "map", "entry")),
        "bgpConfigEntry": (tables.keys(RECORD, "bgpRmEntIndex", "bgpConfigIndex"), ("entity", "index")),
    }
    for table, (rows, names) in visible.items():
        for suffix in ("", "-get", "-set"):
            for row in tables.rows(f"/internal/{table}-hidden/{table}{suffix}"):
                yield Reference(f"hidden {table}{suffix}", str(row), key(row, *names) in rows)
    for row in tables.rows(RULE_HIDDEN + "rtmRedistEntry-get"):
        yield Reference("hidden rtmRedistEntry-get", str(row), key(row, "rtm-index", "entry") in rules)
    for row in tables.rows(RULE_HIDDEN + "rtmRedistEntry-set"):
        yield Reference("hidden rtmRedistEntry-set", str(row), key(row, "rtm-index", "address", "length") in networks)
    lists = tables.keys(ACCESS, "aallPreAccessListListIndex")
    yield from equal("hidden name of an access list", lists,
                     tables.keys(ACCESS_HIDDEN + "aallPreAccessListEntry-get", "list"))
    peers = {(row["bgpRmEntIndex"], text_of_octets(row["bgpPeerRemoteAddr"])): row for row in tables.rows(PEER)}
    for row in tables.rows("/internal/bgpPeerEntry-global"):
        peer = peers.get((row["entity"], row["peer"]))
        keys = " ".join(peer[name] or '""' for name in PEER_KEYS) if peer else ""
        yield Reference("hidden keys of a neighbour", str(row), row.get("keys") == keys)
    for path, leaf in (("bgpPeerEntry-prefix-list-hidden", "peer"), ("neighbor-valid-hidden", "address"),
                       ("neighbor-afi-safi-hidden", "address")):
        for row in tables.rows("/internal/" + path):
            yield Reference(path, str(row), key(row, "entity", leaf) in peers)


def of_next_numbers(tables: Tables) -> Iterator[Reference]:
    maps = "/internal/vrf-config/route-map/vrf"
    taken = {maps: [row["map-idx"] for row in tables.rows(maps + "/stringTOindex")],
             ACCESS_HIDDEN: [row["aallPreAccessListListIndex"] for row in tables.rows(ACCESS)],
             RULE_HIDDEN: [row["entry"] for row in tables.rows(RULE_HIDDEN + "rtmRedistEntry-get")],
             NAMES: [row["idx"] for row in tables.rows(NAMES + "idx-to-name")]}
    following = {maps: maps + "/next-index",
                 ACCESS_HIDDEN: ACCESS_HIDDEN + "aallPreAccessListEntry_next_free_index",
                 RULE_HIDDEN: RULE_HIDDEN + "rtmRedistEntry_next_free_index", NAMES: NAMES + "name-next-index"}
    for table, numbers in taken.items():
        if numbers:
            highest = max(int(number) for number in numbers)
            following_number = min((int(text) for text in tables.texts(following[table])), default=0)
            yield Reference(f"next number of {table}", str(following_number), following_number > highest)


CHECKS = (of_entity, of_neighbors, of_families, of_policies, of_network_manager, of_rtm, of_vrfs,
          of_hidden_rows, of_next_numbers)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("files", nargs="+", metavar="CONFIG.xml")
    parser.add_argument("--kinds", action="store_true", help="tell how often each kind of reference occurs")
    arguments = parser.parse_args()
    counts: Counter = Counter()
    broken = 0
    for file in arguments.files:
        tables = Tables(parsed(file))
        for check in CHECKS:
            for reference in check(tables):
                counts[reference.kind] += 1
                if not reference.holds:
                    broken += 1
                    print(f"{file}: broken: {reference.kind}: {reference.place}")
    if arguments.kinds:
        for kind, count in sorted(counts.items()):
            print(f"{count} {kind}")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
